// The time zones of the countries.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace tarvo_remote_control {

using TimeZones = std::vector<const char*>;

// Country code (two capital letters, ISO 3166) to its IANA time-zone names. Built before main.
extern const std::map<std::string, TimeZones> kCountryTimeZones;

// The zones of a country in the table's order; none for a code that the table does not have.
const TimeZones& timeZonesOf(const std::string& country);

}  // namespace tarvo_remote_control
