// The time zones of the countries.
#pragma once

#include <string_view>
#include <vector>

namespace tarvo_remote_control {

// The IANA names of a country's time zones in the table's order. `country` is an ISO 3166 code of
// two capital letters; none for a country without zones and for any other text.
std::vector<std::string_view> timeZonesOf(std::string_view country);

}  // namespace tarvo_remote_control
