#include "backup/utc_time.h"

#include <array>

namespace tarvo_backup {

std::string utcText(std::time_t moment, const char* format) {
    std::tm utc{};
    gmtime_r(&moment, &utc);
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, &utc)};
}

}  // namespace tarvo_backup
