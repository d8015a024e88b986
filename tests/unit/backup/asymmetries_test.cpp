#include "backup/asymmetries.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "backup/plan.h"
#include "support/fake_device.h"
#include "unit/backup/backup_test.h"

namespace tarvo_backup {

namespace {

struct Entry {
    std::string what;
    std::string remedy;
};

// The rows of the table in the operators' document.
std::vector<Entry> documentedEntries() {
    std::ifstream file(TARVO_ASYMMETRIES_DOCUMENT);
    std::vector<Entry> entries;
    for (std::string line; std::getline(file, line);) {
        const std::size_t bar = line.find(" | ");
        if (line.starts_with("| ") && bar != std::string::npos && line.ends_with(" |")) {
            entries.push_back(
                {line.substr(2, bar - 2), line.substr(bar + 3, line.size() - bar - 5)});
        }
    }
    if (!entries.empty()) {
        entries.erase(entries.begin());  // the headings
    }
    return entries;
}

}  // namespace

TEST(Asymmetries, AreThoseOfTheOperatorsDocumentInItsWords) {
    const auto documented = documentedEntries();
    const auto known = knownAsymmetries();
    ASSERT_EQ(documented.size(), known.size());
    ASSERT_FALSE(known.empty());
    for (std::size_t place = 0; place < known.size(); ++place) {
        EXPECT_TRUE(documented[place].what.starts_with("**" + std::string(known[place].what)))
            << documented[place].what;
        EXPECT_EQ(documented[place].remedy, known[place].remedy);
    }
}

namespace {

// Whether restoring the document, of which this plan tells, meets what is described so.
bool meets(std::string_view what, const Document& document, const Plan& plan) {
    const auto met = asymmetriesMetBy(document, plan);
    return std::any_of(met.begin(), met.end(),
                       [what](const Asymmetry* each) { return each->what == what; });
}
bool meets(std::string_view what, const std::string& sections) {
    return meets(what, configured(sections), {});
}
bool meets(std::string_view what, const Plan& plan) { return meets(what, configured(""), plan); }

Plan notTaking(const Difference& difference) {
    Plan plan;
    plan.notTaken = {difference};
    return plan;
}

Plan changing(const std::string& table, RowChange::Kind kind) {
    Plan plan;
    plan.rows = {{.table = table, .row = "1", .mac = "", .kind = kind, .cells = {}}};
    return plan;
}

}  // namespace

TEST(Asymmetries, AreNotMetByADocumentWithoutAConfiguration) {
    EXPECT_TRUE(asymmetriesMetBy(parsed("<x/>"), {}).empty());
}

TEST(Asymmetries, OfARfOutputModeAreOfModulesWithOutputs) {
    constexpr auto kWhat = "RNB-K408: a module has no `modoSalidaRF`";
    EXPECT_TRUE(meets(kWhat, "<modules><module><outputs/></module></modules>"));
    EXPECT_FALSE(meets(kWhat, "<modules><module/></modules>"));
    EXPECT_FALSE(meets(
        kWhat, "<modules><module><modoSalidaRF>0</modoSalidaRF><outputs/></module></modules>"));
}

TEST(Asymmetries, OfBlanksAreOfTextsThatBecomeEmpty) {
    constexpr auto kWhat = "A text of blanks only";
    EXPECT_TRUE(meets(kWhat, notTaking({"identification/location", " \t", ""})));
    EXPECT_FALSE(meets(kWhat, notTaking({"identification/location", "roof", ""})));
    EXPECT_FALSE(meets(kWhat, notTaking({"identification/location", " ", "roof"})));
    EXPECT_FALSE(meets(kWhat, notTaking({"identification/location", std::nullopt, ""})));
}

TEST(Asymmetries, OfAFrequencyAreInAnErrorOrAComplaint) {
    constexpr auto kWhat = "A frequency that the tuner cannot receive";
    const std::string text = "Resulting intermediate frequency is out of range. Please check";
    Plan failing;
    failing.errors = {{401, text, std::nullopt}};
    Plan complaining;
    complaining.complaints = {"something else", text};
    EXPECT_TRUE(meets(kWhat, failing));
    EXPECT_TRUE(meets(kWhat, complaining));
    EXPECT_FALSE(meets(kWhat, Plan()));
}

TEST(Asymmetries, OfAnInputThatIsSwitchedAreInASecondTry) {
    constexpr auto kWhat = "A terrestrial or cable input";
    Plan plan;
    plan.tries = 2;
    EXPECT_TRUE(meets(kWhat, plan));
    plan.status = app::ExitStatus::failure;
    EXPECT_FALSE(meets(kWhat, plan));
    EXPECT_FALSE(meets(kWhat, Plan()));
}

TEST(Asymmetries, OfACodeWithoutTextAreOfElementsThatTheImportTakesAsCodes) {
    constexpr auto kWhat = "A code that has no text";
    const auto scrambling = [](const std::string& content) {
        return "<scramblings><scrambling>" + content + "</scrambling></scramblings>";
    };
    EXPECT_TRUE(meets(kWhat, scrambling("<mode/>")));
    EXPECT_TRUE(meets(kWhat, "<diseqcs><diseqc><BAND></BAND></diseqc></diseqcs>"));
    EXPECT_TRUE(meets(kWhat,
                      "<modules><module><outputs><output><constellation/></output></outputs>"
                      "</module></modules>"));
    EXPECT_FALSE(meets(kWhat, scrambling("<mode>even</mode>")));
    EXPECT_FALSE(meets(kWhat, scrambling("<oddKey/>")));
    EXPECT_FALSE(meets(kWhat, "<modules><module><CardStatus/></module></modules>"));
    EXPECT_FALSE(meets(kWhat, "<lnb><mode/></lnb>"));
}

TEST(Asymmetries, OfANitPatternAreOfAVersionWithoutANumberAndOfANumberWithoutAType) {
    constexpr auto kWhat =
        "A NIT pattern with a version but no number, or with a number above 1 and no type";
    const auto network = [](const std::string& content) {
        return "<dvbNetworks><dvbNetwork>" + content + "</dvbNetwork></dvbNetworks>";
    };
    EXPECT_TRUE(meets(kWhat, network("<versionNITPatron>3</versionNITPatron>")));
    EXPECT_FALSE(meets(kWhat, network("<other>3</other>")));
    EXPECT_TRUE(meets(kWhat, network("<nitPatron>2</nitPatron>")));
    // The import reads them in their order.
    EXPECT_TRUE(meets(kWhat, network("<nitPatron>2</nitPatron><tipoNITPatron>1</tipoNITPatron>")));
    EXPECT_FALSE(meets(kWhat, network("<nitPatron>1</nitPatron>")));
    EXPECT_FALSE(meets(kWhat, network("<tipoNITPatron>1</tipoNITPatron><nitPatron>2</nitPatron>")));
    EXPECT_FALSE(meets(kWhat, network("")));
}

TEST(Asymmetries, OfANetworksNumberAreOfAZeroThatIsNotTaken) {
    constexpr auto kWhat = "A setting of 0 in a DVB network";
    EXPECT_TRUE(meets(kWhat, notTaking({"dvbNetworks/dvbNetwork[id=1]/onid", "0", "5"})));
    EXPECT_FALSE(meets(kWhat, notTaking({"dvbNetworks/dvbNetwork[id=1]/onid", "0", ""})));
    EXPECT_FALSE(meets(kWhat, notTaking({"dvbNetworks/dvbNetwork[id=1]/onid", "1", "5"})));
    EXPECT_FALSE(meets(kWhat, notTaking({"lnb/low", "0", "5"})));
}

TEST(Asymmetries, OfANewNetworkAreOfARowThatIsAdded) {
    constexpr auto kWhat = "A setting of 0 in a DVB network that is new to the device";
    EXPECT_TRUE(meets(kWhat, changing("RedesCabecera", RowChange::Kind::added)));
    EXPECT_FALSE(meets(kWhat, changing("RedesCabecera", RowChange::Kind::changed)));
    EXPECT_FALSE(meets(kWhat, changing("DiSEqCGlobal", RowChange::Kind::added)));
}

TEST(Asymmetries, OfWhatIsNotTakenAreOfItsElementAlone) {
    constexpr auto kType = "`type` of an output";
    constexpr auto kIds = "`onid` and `tsid` of home channels";
    EXPECT_TRUE(meets(kType, notTaking({"modules/module[1]/outputs/output[1]/type", "1", "2"})));
    EXPECT_FALSE(meets(kType, notTaking({"modules/module[1]/inputs/input[1]/type", "1", "2"})));
    EXPECT_FALSE(meets(kType, notTaking({"modules/module[1]/outputs/output[1]/onid", "1", "2"})));
    EXPECT_TRUE(meets(kIds, notTaking({"homeChannels/homechannel[id=1]/onid", "1", "2"})));
    EXPECT_TRUE(meets(kIds, notTaking({"homeChannels/homechannel[id=1]/tsid", "1", "2"})));
    EXPECT_FALSE(meets(kIds, notTaking({"homeChannels/homechannel[id=1]/band", "1", "2"})));
}

TEST(Asymmetries, OfALongNumberAreOfOneThatIsCut) {
    constexpr auto kWhat = "Numbers of more than nine characters";
    const auto module = [](const std::string& content) {
        return "<modules><module>" + content + "</module></modules>";
    };
    EXPECT_TRUE(meets(kWhat, module("<attenuation>1234567890</attenuation>")));
    EXPECT_FALSE(meets(kWhat, module("<attenuation>0123456789</attenuation>")));
    EXPECT_FALSE(meets(kWhat, module("<serialNumber>1234567890</serialNumber>")));
    EXPECT_FALSE(meets(kWhat, module("<attenuate>1234567890</attenuate>")));
}

TEST(Asymmetries, OfRowsThatAreNumberedAnewAreOfTheirTables) {
    constexpr auto kWhat = "Rows that the document cannot name";
    EXPECT_TRUE(meets(kWhat, changing("AudioLanguageListGlobal", RowChange::Kind::added)));
    EXPECT_TRUE(meets(kWhat, changing("Service_EPG", RowChange::Kind::removed)));
    EXPECT_FALSE(meets(kWhat, changing("RedesCabecera", RowChange::Kind::added)));
}

TEST(Asymmetries, OfMarkedRowsAreOfOutputsAndStreams) {
    constexpr auto kWhat = "Restoring an unchanged backup marks rows";
    const auto marking = [](const std::string& table, const std::string& column) {
        Plan plan = changing(table, RowChange::Kind::changed);
        plan.rows[0].cells = {{column, "0", "1"}};
        return plan;
    };
    EXPECT_TRUE(meets(kWhat, marking("RFOutGlobal", "Estado")));
    EXPECT_TRUE(meets(kWhat, marking("PIDsSalidaGlobal", "EstadoPID")));
    EXPECT_FALSE(meets(kWhat, marking("RedesModulos", "estado")));
}

namespace {

using AsymmetriesOfAModel = test::DeviceTest;

}  // namespace

TEST_F(AsymmetriesOfAModel, OfASecondOutputAreOfTwoModels) {
    constexpr auto kWhat = "LMV-502, LMV-512";
    const Plan plan = changing("SalidasLogicasGlobal", RowChange::Kind::changed);
    becomeModel("LMV-512");
    EXPECT_TRUE(meets(kWhat, plan));
    EXPECT_FALSE(meets(kWhat, Plan()));
    becomeModel("QRA-310");
    EXPECT_FALSE(meets(kWhat, plan));
}

TEST(Asymmetries, OfAPercentAreOfATextThatHasOne) {
    constexpr auto kWhat = "The first \"%\" of a changed text";
    EXPECT_TRUE(meets(kWhat, notTaking({"identification/location", "5%", "5 "})));
    EXPECT_FALSE(meets(kWhat, notTaking({"identification/location", "5", "5 "})));
    EXPECT_FALSE(meets(kWhat, notTaking({"identification/location", "5%", std::nullopt})));
    EXPECT_FALSE(meets(kWhat, notTaking({"identification/location", std::nullopt, "5%"})));
}

}  // namespace tarvo_backup
