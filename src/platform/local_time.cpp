#include "platform/local_time.h"

#include <array>

namespace platform {

std::string localTimeText(std::time_t time, const char* format) {
    std::array<char, 30> text{};
    const std::tm* local = std::localtime(&time);  // NOLINT(concurrency-mt-unsafe): one thread
    if (local == nullptr || std::strftime(text.data(), text.size(), format, local) == 0) {
        return "";
    }
    return text.data();
}

}  // namespace platform
