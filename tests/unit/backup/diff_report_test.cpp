#include "backup/diff_report.h"

#include <gtest/gtest.h>

#include <sstream>

#include "backup/console.h"

namespace tarvo_backup {

namespace {

std::string printed(const std::vector<Difference>& differences, ColorMode mode = ColorMode::never) {
    std::istringstream in;
    std::ostringstream out;
    printDifferences(differences, Painter({.in = in, .out = out, .err = out}, mode), out);
    return out.str();
}

}  // namespace

TEST(DiffReport, HasAGroupForEachSectionAndForEachEntryOfAList) {
    EXPECT_EQ(printed({{"lnb", std::nullopt, "<lnb/>", true},
                       {"network/ip", "", "10.0.0.1"},
                       {"network/gateway", "10.0.0.2", std::nullopt},
                       {"network/dns1", std::nullopt, "10.0.0.3"},
                       {"modules/module[mac=a/b[1]]/lcn", "1", "2"},
                       {"modules/module[mac=a/b[1]]/x", "<x/>", std::nullopt, true},
                       {"maintenances/a]b/c", "1", "2"}}),
              "lnb: 1 difference\nlnb: added\n"
              "\nnetwork: 3 differences\nnetwork/ip: \"\" -> 10.0.0.1\n"
              "network/gateway: 10.0.0.2 -> (none)\nnetwork/dns1: (none) -> 10.0.0.3\n"
              "\nmodules/module[mac=a/b[1]]: 2 differences\n"
              "modules/module[mac=a/b[1]]/lcn: 1 -> 2\nmodules/module[mac=a/b[1]]/x: removed\n"
              "\nmaintenances: 1 difference\nmaintenances/a]b/c: 1 -> 2\n");
}

TEST(Console, ShowsEachStyleInItsColor) {
    std::istringstream in;
    std::ostringstream out;
    const Painter paint({.in = in, .out = out, .err = out}, ColorMode::always);
    EXPECT_EQ(paint(Style::heading, "x"), "\x1b[1mx\x1b[0m");
    EXPECT_EQ(paint(Style::added, "x"), "\x1b[32mx\x1b[0m");
    EXPECT_EQ(paint(Style::removed, "x"), "\x1b[31mx\x1b[0m");
    EXPECT_EQ(paint(Style::error, "x"), "\x1b[31mx\x1b[0m");
    EXPECT_EQ(paint(Style::changed, "x"), "\x1b[33mx\x1b[0m");
    EXPECT_EQ(paint(Style::warning, "x"), "\x1b[33mx\x1b[0m");
}

TEST(Console, KeepsATextOnOneLine) {
    EXPECT_EQ(onOneLine("a\tb\nc\x01\x1f\x7f\xc3\xa9\\"), "a\\tb\\nc\\x01\\x1f\\x7f\xc3\xa9\\");
}

}  // namespace tarvo_backup
