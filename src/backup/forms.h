// What people write as an address, a date and the like, whatever the import makes of it.
#pragma once

#include <optional>
#include <string_view>

namespace tarvo_backup {

// Dotted IPv4.
bool isDottedAddress(std::string_view text);

// A dotted address whose ones all stand before its zeros.
bool isNetworkMask(std::string_view text);

// Twelve hexadecimal digits, in pairs parted by ':' or '-' or not parted at all.
bool isHardwareAddress(std::string_view text);

// A day of the calendar, as "2024-02-29" or with the day first, with or without a time of the day
// behind it. '-', '/' and '.' part it.
bool isDate(std::string_view text);

bool isHour(std::string_view text);
bool isMinute(std::string_view text);

// The id of a row, if SQLite takes the text for one: in its notation or as "2.0" or "1e2".
std::optional<long long> rowIdOf(const char* text);

// Whether SQLite's LIKE may find such an id by the text as a pattern, in which `_` and `%` stand
// for any characters.
bool isRowIdPattern(std::string_view text);

}  // namespace tarvo_backup
