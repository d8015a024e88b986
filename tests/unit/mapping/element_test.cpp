#include "mapping/element.h"

#include <gtest/gtest.h>

#include "db/schema.h"
#include "mapping/document_tree.h"

namespace mapping {

namespace {

std::string modelsOf(ExportedBy exportedBy) {
    std::string models;
    for (const char* model :
         {"QRA-310", "LMV-502", "PKD-707", "RNB-K408", "WVX-AQ4", "LMV-512", "WVX-BQ4", "XYZ-1"}) {
        if (isExportedBy(exportedBy, model)) {
            models += (models.empty() ? "" : " ") + std::string(model);
        }
    }
    return models;
}

}  // namespace

TEST(ExportedBy, NamesTheModels) {
    EXPECT_EQ(modelsOf(ExportedBy::all),
              "QRA-310 LMV-502 PKD-707 RNB-K408 WVX-AQ4 LMV-512 WVX-BQ4 XYZ-1");
    EXPECT_EQ(modelsOf(ExportedBy::rnb), "RNB-K408");
    EXPECT_EQ(modelsOf(ExportedBy::exceptRnb),
              "QRA-310 LMV-502 PKD-707 WVX-AQ4 LMV-512 WVX-BQ4 XYZ-1");
    EXPECT_EQ(modelsOf(ExportedBy::familyA), "QRA-310 LMV-502 PKD-707");
    EXPECT_EQ(modelsOf(ExportedBy::familyAOrLmv), "QRA-310 LMV-502 PKD-707 LMV-512");
    EXPECT_EQ(modelsOf(ExportedBy::familyAOrWvxa), "QRA-310 LMV-502 PKD-707 WVX-AQ4");
    EXPECT_EQ(modelsOf(ExportedBy::exceptWvxb),
              "QRA-310 LMV-502 PKD-707 RNB-K408 WVX-AQ4 LMV-512 XYZ-1");
}

TEST(Column, IsAColumnOfTheEnumeratorsTable) {
    const Column column = tarvodb::NimGlobal::fe;
    EXPECT_TRUE(column.isOf(tarvodb::NimGlobal::info));
    EXPECT_FALSE(column.isOf(tarvodb::NimQAMGlobal::info));
    EXPECT_EQ(column.table->columns[column.index], "fe");
    EXPECT_FALSE(Column().exists());
}

TEST(Form, IsANumberUnlessTheRowSaysOtherwise) {
    EXPECT_EQ(formOf(rowNamed(kDvbNetwork, "nid")), Form::number);
    EXPECT_EQ(formOf(rowNamed(kDvbNetwork, "name")), Form::text);
    EXPECT_EQ(formOf(rowNamed(kDvbNetwork, "OutputNITDate")), Form::text);
    EXPECT_EQ(formOf(rowNamed(kDvbNetwork, "autoBlockPIDs")), Form::none);
    EXPECT_EQ(formOf(rowNamed(kPidMask, "data")), Form::onOff);
    EXPECT_EQ(formOf(rowNamed(kDiseqc, "band")), Form::code);
    EXPECT_EQ(formOf(rowNamed(kSatelliteTuner, "streamID")), Form::codeOrNumber);
    EXPECT_EQ(formOf(rowNamed(kNetwork, "ip")), Form::address);
    EXPECT_EQ(formOf(rowNamed(kSections, "lnb")), Form::none);
}

TEST(ImportedRange, IsWhatPassesEveryCheck) {
    const Range outputSid = importedRange(rowNamed(kService, "outputSid"));
    EXPECT_EQ(outputSid.lowest, 1);
    EXPECT_EQ(outputSid.highest, 65535);
    EXPECT_FALSE(importedRange(rowNamed(kService, "olcn")).isLimited());
}

TEST(ImportedTexts, AreTheExportedOnesWhereTheSidesAgree) {
    const Element& mode = rowNamed(kSatelliteTuner, "PLSmode");
    EXPECT_STREQ(document::codeText(importedTexts(mode), 1), "root");
    EXPECT_STREQ(document::codeText(mode.texts, 1), "gold");
    EXPECT_STREQ(document::codeText(importedTexts(rowNamed(kSatelliteTuner, "band")), 1), "high");
}

TEST(ExportedTexts, AreTheConstellationsOfTheRfOutputMode) {
    const Element& constellation = rowNamed(kRfOutput, "constellation");
    EXPECT_STREQ(document::codeText(exportedTexts(constellation, 0), 0), "QPSK");
    EXPECT_STREQ(document::codeText(exportedTexts(constellation, 0), 4), "");
    for (const int mode : {1, 2, -1}) {
        SCOPED_TRACE(mode);
        EXPECT_STREQ(document::codeText(exportedTexts(constellation, mode), 0), "16 QAM");
        EXPECT_STREQ(document::codeText(importedTexts(constellation, mode), 4), "256 QAM");
    }
    EXPECT_STREQ(document::codeText(exportedTexts(rowNamed(kRfOutput, "formatIQ"), 1), 1),
                 "Reversed");
}

TEST(ElementOf, FindsTheRowOfATable) {
    document::XmlDocument document;
    document::parseCopy(document, "<FREQUENCY/>");
    const document::XmlNode& node = *document.first_node();
    EXPECT_EQ(elementOf(kRfOutput, node), &rowNamed(kRfOutput, "frequency"));
    EXPECT_EQ(elementOf(kRfOutput, node, tarvodb::RFOutGlobal::info),
              &rowNamed(kRfOutput, "frequency"));
    EXPECT_EQ(elementOf(kRfOutput, node, tarvodb::NimGlobal::info), nullptr);
    EXPECT_EQ(elementOf(kOutput, node), nullptr);
}

TEST(ChildOf, LooksIntoTheChildTables) {
    EXPECT_EQ(childOf(kOutputs[0], "outputID"), &rowNamed(kOutput, "outputId"));
    EXPECT_EQ(childOf(kOutputs[0], "codeRate"), &rowNamed(kRfOutput, "codeRate"));
    EXPECT_EQ(childOf(kInputs[0], "symbolRate"), &rowNamed(kCableTuner, "symbolRate"));
    EXPECT_EQ(childOf(kOutputs[0], "lcn"), nullptr);
}

TEST(NameExactly, IsEachMeantElementOnceAndNoOther) {
    struct Named {
        const char* name;
    };
    const auto isNumber = [](const Element& element) { return formOf(element) == Form::number; };
    const Named lnb[] = {{"oscBandaSatelite"}, {"oscLowFreq"}, {"oscHighFreq"}, {"oscBandaCFreq"}};
    EXPECT_TRUE(nameExactly(lnb, kLnb, isNumber));
    EXPECT_FALSE(nameExactly(lnb, kMaintenance, isNumber));
    const Named one[] = {{"oscLowFreq"}};
    EXPECT_TRUE(nameOnly(one, kLnb));
    EXPECT_FALSE(nameExactly(one, kLnb, isNumber));
    const Named twice[] = {{"hour"}, {"min"}, {"min"}};
    EXPECT_FALSE(nameExactly(twice, kMaintenance, isNumber));
    const Named further[] = {{"hour"}, {"min"}, {"active"}};
    EXPECT_TRUE(nameOnly(further, kMaintenance));
    EXPECT_FALSE(nameExactly(further, kMaintenance, isNumber));
    const Named unknown[] = {{"hour"}, {"MIN"}};
    EXPECT_FALSE(nameOnly(unknown, kMaintenance));
}

TEST(RowNamed, MustBeThere) {
    EXPECT_STREQ(rowNamed(kNetwork, "ip").name, "ip");
    EXPECT_THROW(rowNamed(kNetwork, "IP"), std::out_of_range);
}

}  // namespace mapping
