#include "import/time_zones.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace {

using tarvo_remote_control::timeZonesOf;
using testing::ElementsAre;
using testing::IsEmpty;

// The countries that have time zones, asked for with every code of two capital letters.
std::map<std::string, std::vector<std::string_view>> countriesWithZones() {
    std::map<std::string, std::vector<std::string_view>> countries;
    for (char first = 'A'; first <= 'Z'; ++first) {
        for (char second = 'A'; second <= 'Z'; ++second) {
            const std::string country = {first, second};
            if (auto zones = timeZonesOf(country); !zones.empty()) {
                countries[country] = std::move(zones);
            }
        }
    }
    return countries;
}

TEST(TimeZones, TwoHundredAndFortyTwoCountriesHave416) {
    std::size_t names = 0;
    for (const auto& [country, zones] : countriesWithZones()) {
        names += zones.size();
    }
    EXPECT_EQ(countriesWithZones().size(), 242U);
    EXPECT_EQ(names, 416U);
}

TEST(TimeZones, ACountryHasItsZonesInTheTablesOrder) {
    EXPECT_THAT(timeZonesOf("ES"), ElementsAre("Africa/Ceuta", "Atlantic/Canary", "Europe/Madrid"));
    EXPECT_THAT(timeZonesOf("PT"),
                ElementsAre("Atlantic/Azores", "Atlantic/Madeira", "Europe/Lisbon"));
    EXPECT_THAT(timeZonesOf("FR"), ElementsAre("Europe/Paris"));
}

TEST(TimeZones, TheFirstAndTheLastCountryAreFound) {
    EXPECT_THAT(timeZonesOf("AD"), ElementsAre("Europe/Andorra"));
    EXPECT_THAT(timeZonesOf("ZW"), ElementsAre("Africa/Harare"));
}

TEST(TimeZones, CountriesWithSeveralZonesHaveAllOfThem) {
    const std::map<std::string, std::size_t> several = {
        {"AQ", 10}, {"AR", 12}, {"AU", 13}, {"BR", 16}, {"CA", 28}, {"CD", 2}, {"CL", 2}, {"CN", 2},
        {"DE", 2},  {"EC", 2},  {"ES", 3},  {"FM", 3},  {"GL", 4},  {"ID", 4}, {"KI", 3}, {"KZ", 5},
        {"MH", 2},  {"MN", 3},  {"MX", 11}, {"MY", 2},  {"NZ", 2},  {"PF", 3}, {"PG", 2}, {"PS", 2},
        {"PT", 3},  {"RU", 26}, {"UA", 3},  {"UM", 3},  {"US", 29}, {"UZ", 2}};
    std::map<std::string, std::size_t> found;
    for (const auto& [country, zones] : countriesWithZones()) {
        if (zones.size() > 1) {
            found[country] = zones.size();
        }
    }
    EXPECT_EQ(found, several);
}

// A misspelt or displaced name would not be seen by the counts: the whole table, a line per country
// in the order of the codes, has a known FNV-1a hash.
TEST(TimeZones, EveryNameIsSpeltAndPlacedAsInTheTable) {
    std::string table;
    for (const auto& [country, zones] : countriesWithZones()) {
        table += country;
        for (const std::string_view zone : zones) {
            table.append(" ").append(zone);
        }
        table += "\n";
    }
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : table) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    EXPECT_EQ(table.size(), 7588U);
    EXPECT_EQ(hash, 0x53d51fb2ac0e3703U);
}

TEST(TimeZones, ACountryWithoutZonesAndAnUnknownCodeHaveNone) {
    for (const char* country : {"AN", "BV", "HM", "XX", "", "E", "ESP", "es"}) {
        EXPECT_THAT(timeZonesOf(country), IsEmpty()) << country;
    }
}

}  // namespace
