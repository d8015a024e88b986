#include "text/to_int.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace text {

int toInt(const char* text) {
    using Range = std::numeric_limits<int>;
    const long long number = text == nullptr ? 0 : std::strtoll(text, nullptr, 10);
    return static_cast<int>(std::clamp<long long>(number, Range::min(), Range::max()));
}

}  // namespace text
