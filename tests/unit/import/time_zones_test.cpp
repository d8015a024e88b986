#include "import/time_zones.h"

#include <gmock/gmock.h>

#include <cstdint>

namespace {

using tarvo_remote_control::kCountryTimeZones;
using tarvo_remote_control::timeZonesOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;

TEST(TimeZones, TheTableHas245CodesAnd416Names) {
    std::size_t names = 0;
    for (const auto& [country, zones] : kCountryTimeZones) {
        names += zones.size();
    }
    EXPECT_EQ(kCountryTimeZones.size(), 245U);
    EXPECT_EQ(names, 416U);
}

TEST(TimeZones, ThreeCountriesHaveNone) {
    std::vector<std::string> without;
    for (const auto& [country, zones] : kCountryTimeZones) {
        if (zones.empty()) {
            without.push_back(country);
        }
    }
    EXPECT_THAT(without, ElementsAre("AN", "BV", "HM"));
}

TEST(TimeZones, CodesAreTwoCapitalLetters) {
    for (const auto& [country, zones] : kCountryTimeZones) {
        EXPECT_THAT(country, testing::MatchesRegex("[A-Z][A-Z]"));
    }
}

TEST(TimeZones, ACountryHasItsZonesInTheTablesOrder) {
    EXPECT_THAT(timeZonesOf("ES"), ElementsAre(StrEq("Africa/Ceuta"), StrEq("Atlantic/Canary"),
                                               StrEq("Europe/Madrid")));
    EXPECT_THAT(timeZonesOf("PT"), ElementsAre(StrEq("Atlantic/Azores"), StrEq("Atlantic/Madeira"),
                                               StrEq("Europe/Lisbon")));
    EXPECT_THAT(timeZonesOf("FR"), ElementsAre(StrEq("Europe/Paris")));
}

TEST(TimeZones, CountriesWithSeveralZonesHaveAllOfThem) {
    const std::map<std::string, std::size_t> several = {
        {"AQ", 10}, {"AR", 12}, {"AU", 13}, {"BR", 16}, {"CA", 28}, {"CD", 2}, {"CL", 2}, {"CN", 2},
        {"DE", 2},  {"EC", 2},  {"ES", 3},  {"FM", 3},  {"GL", 4},  {"ID", 4}, {"KI", 3}, {"KZ", 5},
        {"MH", 2},  {"MN", 3},  {"MX", 11}, {"MY", 2},  {"NZ", 2},  {"PF", 3}, {"PG", 2}, {"PS", 2},
        {"PT", 3},  {"RU", 26}, {"UA", 3},  {"UM", 3},  {"US", 29}, {"UZ", 2}};
    std::map<std::string, std::size_t> found;
    for (const auto& [country, zones] : kCountryTimeZones) {
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
    for (const auto& [country, zones] : kCountryTimeZones) {
        table += country;
        for (const char* zone : zones) {
            table += std::string(" ") + zone;
        }
        table += "\n";
    }
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : table) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    EXPECT_EQ(table.size(), 7597U);
    EXPECT_EQ(hash, 0x4fce71b5f71e42ffU);
}

TEST(TimeZones, AnUnknownCodeHasNoZones) {
    EXPECT_THAT(timeZonesOf("XX"), IsEmpty());
    EXPECT_THAT(timeZonesOf(""), IsEmpty());
    EXPECT_THAT(timeZonesOf("es"), IsEmpty());
}

}  // namespace
