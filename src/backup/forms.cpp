#include "backup/forms.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

#include "backup/values.h"
#include "text/to_int.h"

namespace tarvo_backup {

namespace {

bool isDigit(char character) { return character >= '0' && character <= '9'; }

bool isHexadecimal(char character) {
    return isDigit(character) || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

bool isFromTo(std::string_view text, int lowest, int highest) {
    const int number = text::toInt(std::string(text).c_str());
    return isWholeNumber(text) && number >= lowest && number <= highest;
}

// The text up to any of `ends`, which is taken off together with it.
std::string_view takeUpTo(std::string_view& text, std::string_view ends) {
    const std::string_view taken = text.substr(0, text.find_first_of(ends));
    text.remove_prefix(std::min(taken.size() + 1, text.size()));
    return taken;
}

// The number that a text of at most `digits` digits is.
std::optional<unsigned> unsignedOf(std::string_view text, std::size_t digits) {
    if (text.empty() || text.size() > digits || !std::all_of(text.begin(), text.end(), isDigit)) {
        return std::nullopt;
    }
    return static_cast<unsigned>(std::stoul(std::string(text)));
}

std::optional<std::uint32_t> dottedAddressOf(std::string_view text) {
    std::uint32_t address = 0;
    const auto points = std::count(text.begin(), text.end(), '.');
    for (int place = 0; place < 4; ++place) {
        const auto number = unsignedOf(takeUpTo(text, "."), 3);
        if (!number || *number > 255) {
            return std::nullopt;
        }
        address = address << 8U | *number;
    }
    return points == 3 ? std::optional(address) : std::nullopt;
}

bool isTimeOfDay(std::string_view text) {
    const auto parts = std::count(text.begin(), text.end(), ':');
    const bool hasHour = isHour(takeUpTo(text, ":"));
    const bool hasMinute = isMinute(takeUpTo(text, ":"));
    return hasHour && hasMinute && (parts == 1 || (parts == 2 && isMinute(text)));
}

bool isDay(std::string_view text) {
    const std::size_t separator = text.find_first_of("-/.");
    if (separator == std::string_view::npos) {
        return false;
    }
    const std::string_view ends = text.substr(separator, 1);
    const bool isYearFirst = separator == 4;
    std::array<unsigned, 3> parts{};
    for (std::size_t place = 0; place < parts.size(); ++place) {
        const bool isYear = place == (isYearFirst ? 0U : 2U);
        const bool isLast = place + 1 == parts.size();
        const auto number = unsignedOf(isLast ? text : takeUpTo(text, ends), isYear ? 4 : 2);
        if (!number) {
            return false;
        }
        parts[place] = *number;
    }
    if (isYearFirst) {
        std::swap(parts[0], parts[2]);
    }
    // Not <chrono>'s calendar, which g++ 10 lacks. A day that does not exist comes back as another.
    std::tm date{};
    date.tm_mday = static_cast<int>(parts[0]);
    date.tm_mon = static_cast<int>(parts[1]) - 1;
    date.tm_year = static_cast<int>(parts[2]) - 1900;
    const std::tm asked = date;
    timegm(&date);
    return date.tm_mday == asked.tm_mday && date.tm_mon == asked.tm_mon;
}

}  // namespace

bool isDottedAddress(std::string_view text) { return dottedAddressOf(text).has_value(); }

bool isNetworkMask(std::string_view text) {
    const auto mask = dottedAddressOf(text);
    // The zeros of a mask are ones of its complement, one less than a power of two.
    return mask && (~*mask & (~*mask + 1)) == 0;
}

bool isHardwareAddress(std::string_view text) {
    constexpr std::size_t kPairs = 6;
    const bool isParted = text.size() == 3 * kPairs - 1 && (text[2] == ':' || text[2] == '-');
    if (!isParted && text.size() != 2 * kPairs) {
        return false;
    }
    for (std::size_t place = 0; place < text.size(); ++place) {
        const bool isSeparator = isParted && place % 3 == 2;
        if (isSeparator ? text[place] != text[2] : !isHexadecimal(text[place])) {
            return false;
        }
    }
    return true;
}

bool isDate(std::string_view text) {
    const std::string_view day = takeUpTo(text, " T");
    return isDay(day) && (text.empty() || isTimeOfDay(text));
}

bool isHour(std::string_view text) { return isFromTo(text, 0, 23); }

bool isMinute(std::string_view text) { return isFromTo(text, 0, 59); }

std::optional<long long> rowIdOf(const char* text) {
    if (isWholeNumber(text)) {
        errno = 0;
        const long long number = std::strtoll(text, nullptr, 10);
        return errno == ERANGE ? std::nullopt : std::optional(number);
    }
    if (std::string_view(text).find_first_not_of(" \t\n\v\f\r+-.0123456789eE") !=
        std::string_view::npos) {
        return std::nullopt;
    }
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    const bool isRead = end != text && std::string_view(end).find_first_not_of(" \t\n\v\f\r") ==
                                           std::string_view::npos;
    constexpr double kBeyondRowIds = 9223372036854775808.0;
    if (!isRead || value != std::floor(value) || std::fabs(value) >= kBeyondRowIds) {
        return std::nullopt;
    }
    return static_cast<long long>(value);
}

bool isRowIdPattern(std::string_view text) {
    const std::size_t sign = text.rfind('-');
    return text.find_first_of("_%") != std::string_view::npos &&
           text.find_first_not_of("_%-0123456789") == std::string_view::npos &&
           (sign == std::string_view::npos || sign == text.find_first_not_of('%'));
}

}  // namespace tarvo_backup
