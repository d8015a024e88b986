#include "backup/values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "mapping/document_tree.h"
#include "unit/backup/backup_test.h"

namespace tarvo_backup {

using mapping::Element;
using mapping::rowNamed;

namespace {

std::string canonical(const Element& row, const std::string& text) {
    const Document document = parsed("<x>" + text + "</x>");
    return canonicalText(&row, *document.tree().first_node());
}

}  // namespace

TEST(BackupValues, ATextIsWhatItIsWhereNothingIsKnownOfIt) {
    const Document document = parsed("<x> 05 </x>");
    EXPECT_EQ(canonicalText(nullptr, *document.tree().first_node()), " 05 ");
    EXPECT_EQ(canonical(rowNamed(mapping::kDvbNetwork, "nid"), "05"), "05");
    EXPECT_EQ(canonical(rowNamed(mapping::kModule, "isMaster"), "01"), "01");
    EXPECT_EQ(canonical(rowNamed(mapping::kCam, "serialNumber"), "01"), "01");
    EXPECT_EQ(canonical(rowNamed(mapping::kPidOrder, "streamId"), "01"), "01");
}

TEST(BackupValues, ANumberIsItsValue) {
    const Element& attenuation = rowNamed(mapping::kModule, "attenuation");
    EXPECT_EQ(canonical(attenuation, "+05 "), "5");
    EXPECT_EQ(canonical(attenuation, "5abc"), "5");
    EXPECT_EQ(canonical(attenuation, "abc"), "0");
    EXPECT_EQ(canonical(rowNamed(mapping::kInput, "inputId"), "01x"), "1");
    EXPECT_EQ(canonical(rowNamed(mapping::kCableTuner, "symbolRate"), "06900"), "6900");
    EXPECT_EQ(canonical(rowNamed(mapping::kDvbNetwork, "tvType"), "07"), "7");
    EXPECT_EQ(canonical(rowNamed(mapping::kService, "lcn"), "007"), "7");
}

// The import looks for a row whose id is LIKE it: "07" finds no row 7, but makes a new one.
TEST(BackupValues, AnIdOfARowIsTheTextThatItIsFoundBy) {
    for (const Element* id :
         {&rowNamed(mapping::kDiseqc, "id"), &rowNamed(mapping::kDvbNetwork, "id"),
          &rowNamed(mapping::kHomeChannel, "id")}) {
        for (const char* text :
             {"7", "07", "+7", "7 ", "7x", "3000000001", "-9223372036854775808"}) {
            EXPECT_EQ(canonical(*id, text), text);
        }
    }
}

TEST(BackupValues, ACodeIsItsText) {
    const Element& band = rowNamed(mapping::kDiseqc, "band");
    EXPECT_EQ(canonical(band, "LOW"), "low");
    EXPECT_EQ(canonical(band, "1"), "high");
    EXPECT_EQ(canonical(band, "2"), "2");
    EXPECT_EQ(canonical(band, "upper"), "upper");
    const Element& hierarchy = rowNamed(mapping::kTerrestrialTuner, "hierarchy");
    EXPECT_EQ(canonical(hierarchy, "low priority"), "low priority");
    EXPECT_EQ(canonical(hierarchy, "1"), "Low Priority");
}

TEST(BackupValues, WhatIsNotACodeMayStandForCodeOne) {
    const Element& polarity = rowNamed(mapping::kHomeChannel, "polarity");
    EXPECT_EQ(canonical(polarity, "vertical"), "vertical");
    EXPECT_EQ(canonical(polarity, "0"), "vertical");
    EXPECT_EQ(canonical(polarity, "circular"), "horizontal");
    EXPECT_EQ(canonical(polarity, "7"), "horizontal");
}

TEST(BackupValues, ACodeMayBeANumberWhereTheImportTakesOne) {
    const Element& stream = rowNamed(mapping::kSatelliteTuner, "streamID");
    EXPECT_EQ(canonical(stream, "-2"), "auto");
    EXPECT_EQ(canonical(stream, "auto"), "auto");
    EXPECT_EQ(canonical(stream, "AUTO"), "0");
    EXPECT_EQ(canonical(stream, "05"), "5");
}

TEST(BackupValues, TheOutputModeOfAModuleCountsForTheOutputsBehindIt) {
    const std::string outputs =
        "<outputs><output><constellation/></output><output><constellation/></output></outputs>";
    const Document document =
        configured("<modules><module>" + outputs + "<modoSalidaRF>1</modoSalidaRF>" + outputs +
                   outputs + "<modoSalidaRF>0</modoSalidaRF>" + outputs + "</module><module>" +
                   outputs + "</module></modules>");
    std::vector<const document::XmlNode*> constellations;
    for (const auto& module : document::childrenOf(*document.configuration()->first_node())) {
        for (const auto& list : document::childrenOf(module)) {
            if (document::hasName(list, "outputs")) {
                for (const auto& output : document::childrenOf(list)) {
                    constellations.push_back(output.first_node());
                }
            }
        }
    }
    const Element& row = rowNamed(mapping::kRfOutput, "constellation");
    const auto inOrder = [&] {
        RfOutputModes known;
        std::vector<int> modes;
        for (const auto* constellation : constellations) {
            modes.push_back(known.at(row, *constellation));
        }
        return modes;
    };
    EXPECT_EQ(inOrder(), (std::vector{0, 0, 1, 1, 1, 1, 0, 0, 0, 0}));
    std::reverse(constellations.begin(), constellations.end());
    EXPECT_EQ(inOrder(), (std::vector{0, 0, 0, 0, 1, 1, 1, 1, 0, 0}));
    EXPECT_EQ(RfOutputModes().at(rowNamed(mapping::kRfOutput, "bandwidth"), *constellations[4]), 0);
}

TEST(BackupValues, ABitIsSetByNothingButOne) {
    const Element& text = rowNamed(mapping::kPidMask, "text");
    EXPECT_EQ(canonical(text, "1"), "1");
    EXPECT_EQ(canonical(text, "01"), "0");
}

TEST(BackupValues, AKeyIsWithoutWhiteSpace) {
    EXPECT_EQ(canonical(rowNamed(mapping::kCam, "publicKey"), " a b\n c"), "abc");
}

TEST(BackupValues, AWholeNumberIsOneFromEndToEnd) {
    for (const char* text : {"0", "-1", "+1", " 12 ", "\t7\n"}) {
        EXPECT_TRUE(isWholeNumber(text)) << text;
    }
    for (const char* text : {"", " ", "-", "1-", "--1", "1.0", "a", "1 2"}) {
        EXPECT_FALSE(isWholeNumber(text)) << text;
    }
}

TEST(BackupValues, WhatIsReadAsANumberIsStoredInNineCharacters) {
    EXPECT_EQ(storedText(rowNamed(mapping::kModule, "attenuation"), "01234567890"), "123456789");
    EXPECT_EQ(storedText(rowNamed(mapping::kSatelliteTuner, "streamID"), "-1234567890"),
              "-12345678");
    EXPECT_EQ(storedText(rowNamed(mapping::kCableTuner, "symbolRate"), "01234567890"),
              "01234567890");
    EXPECT_EQ(storedText(rowNamed(mapping::kDvbNetwork, "nid"), "01234567890"), "01234567890");
}

}  // namespace tarvo_backup
