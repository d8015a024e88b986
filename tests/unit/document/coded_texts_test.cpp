#include "document/coded_texts.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <string>
#include <vector>

namespace document {

namespace {

using Rows = std::map<int, std::string>;

struct NamedTable {
    const char* name;
    CodeTable table;
    Rows rows;
};

const std::vector<NamedTable> kTables = {
    {"polarity", kPolarity, {{0, "vertical"}, {1, "horizontal"}}},
    {"band", kBand, {{0, "low"}, {1, "high"}}},
    {"input bandwidth", kInputBandwidth, {{0, "6 MHz"}, {1, "7 MHz"}, {2, "8 MHz"}}},
    {"hierarchy", kHierarchy, {{0, "High Priority"}, {1, "Low Priority"}}},
    {"exported PLS mode", kPlsModeExported, {{1, "gold"}, {2, "root"}}},
    {"imported PLS mode", kPlsModeImported, {{0, "auto"}, {1, "root"}, {2, "gold"}}},
    {"automatic id", kAutomaticId, {{-2, "auto"}}},
    {"signal quality", kSignalQuality, {{0, "Bad"}, {1, "Marginal"}, {2, "Good"}}},
    {"OFDM mode", kModeOFDM, {{0, "2K"}, {1, "8K"}}},
    {"output bandwidth", kOutputBandwidth, {{0, "8 MHz"}, {1, "7 MHz"}, {2, "6 MHz"}}},
    {"guard interval", kGuardInterval, {{0, "1/32"}, {1, "1/16"}, {2, "1/8"}, {3, "1/4"}}},
    {"DVB-T constellation", kConstellationDvbT, {{0, "QPSK"}, {1, "16 QAM"}, {2, "64 QAM"}}},
    {"DVB-C constellation",
     kConstellationDvbC,
     {{0, "16 QAM"}, {1, "32 QAM"}, {2, "64 QAM"}, {3, "128 QAM"}, {4, "256 QAM"}}},
    {"code rate", kCodeRate, {{0, "1/2"}, {1, "2/3"}, {2, "3/4"}, {3, "5/6"}, {4, "7/8"}}},
    {"spectrum", kSpectrum, {{0, "Normal"}, {1, "Reversed"}}},
    {"card status",
     kCardStatus,
     {{1, "OK"}, {2, "No SmartCard"}, {3, "Mute SmartCard"}, {4, "Not Supported"}}},
    {"scrambling mode", kScramblingMode, {{0, "even"}, {1, "odd"}, {2, "toggle"}}},
};

}  // namespace

TEST(CodedTexts, HaveTheTextOfEachCode) {
    for (const NamedTable& each : kTables) {
        SCOPED_TRACE(each.name);
        Rows rows;
        for (const CodeText& row : each.table) {
            rows[row.code] = row.text;
            EXPECT_STREQ(codeText(each.table, row.code, "none"), row.text);
        }
        EXPECT_EQ(rows, each.rows);
        EXPECT_EQ(each.table.size(), each.rows.size());
    }
}

TEST(CodedTexts, HaveTheCodeOfEachText) {
    for (const NamedTable& each : kTables) {
        SCOPED_TRACE(each.name);
        for (const auto& [code, text] : each.rows) {
            EXPECT_EQ(codeOfAnyCase(each.table, text.c_str()), code);
            EXPECT_EQ(codeOfExactly(each.table, text.c_str()), code);
        }
    }
}

TEST(CodedTexts, AreEmptyOutsideTheirTableUnlessItNamesAnother) {
    for (const NamedTable& each : kTables) {
        SCOPED_TRACE(each.name);
        for (const int code :
             {each.rows.begin()->first - 1, each.rows.rbegin()->first + 1, INT_MIN, INT_MAX}) {
            EXPECT_STREQ(codeText(each.table, code), "") << code;
            EXPECT_STREQ(codeText(each.table, code, "other"), "other") << code;
        }
    }
}

TEST(CodedTexts, HaveNoCodeForAnotherText) {
    for (const NamedTable& each : kTables) {
        SCOPED_TRACE(each.name);
        const std::string first = each.rows.begin()->second;
        for (const std::string& text :
             {std::string(), first + " ", " " + first, first.substr(1), first + "x"}) {
            EXPECT_EQ(codeOfAnyCase(each.table, text.c_str()), std::nullopt) << text;
            EXPECT_EQ(codeOfExactly(each.table, text.c_str()), std::nullopt) << text;
        }
    }
}

TEST(CodedTexts, IgnoreLetterCaseUnlessComparedExactly) {
    EXPECT_EQ(codeOfAnyCase(kBand, "HIGH"), 1);
    EXPECT_EQ(codeOfExactly(kBand, "HIGH"), std::nullopt);
    EXPECT_EQ(codeOfAnyCase(kConstellationDvbC, "256 qam"), 4);
    EXPECT_EQ(codeOfExactly(kConstellationDvbC, "256 qam"), std::nullopt);
    EXPECT_EQ(codeOfAnyCase(kInputBandwidth, "8 mhz"), 2);
    EXPECT_EQ(codeOfExactly(kInputBandwidth, "8 mhz"), std::nullopt);
}

TEST(CodedTexts, NameWhatAnyOtherCodeMeans) {
    EXPECT_STREQ(kPlsModeExportedOtherwise, "auto");
    EXPECT_STREQ(kCardStatusOtherwise, "No API");
    EXPECT_STREQ(kSignalUnlocked, "Unlocked");
}

}  // namespace document
