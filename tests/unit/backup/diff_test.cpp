#include "backup/diff.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>

#include "backup/tree.h"
#include "device/models.h"
#include "unit/backup/backup_test.h"

namespace tarvo_backup {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<Difference> between(const std::string& older, const std::string& newer,
                                DiffScope scope = {}) {
    return diff(configured(older), configured(newer), scope);
}

// "path: old -> new", with - for what is missing.
std::vector<std::string> lines(const std::vector<Difference>& differences) {
    std::vector<std::string> lines;
    for (const Difference& each : differences) {
        lines.push_back(each.path + ": " + each.oldText.value_or("-") + " -> " +
                        each.newText.value_or("-"));
    }
    return lines;
}

std::string module(const std::string& mac, const std::string& content) {
    return "<module><mac>" + mac + "</mac>" + content + "</module>";
}

std::string modules(const std::string& entries) { return "<modules>" + entries + "</modules>"; }

std::string service(int output, const std::string& sid, const std::string& content) {
    return "<service><outputId>" + std::to_string(output) + "</outputId><outputSid>" + sid +
           "</outputSid>" + content + "</service>";
}

std::string services(const std::string& entries) {
    return modules(module("02:01", "<services>" + entries + "</services>"));
}

std::string input(const std::string& content) {
    return modules(
        module("02:01", "<inputs><input><inputId>1</inputId>" + content + "</input></inputs>"));
}

std::string output(const std::string& before, const std::string& content) {
    return modules(module("02:01", before + "<outputs><output><outputId>1</outputId>" + content +
                                       "</output></outputs>"));
}

std::string goldenPath(std::string_view model) {
    return std::string(TARVO_GOLDEN_FOLDER) + "/" + std::string(model) + ".xml";
}

std::string goldenText(std::string_view model) {
    std::ostringstream content;
    content << std::ifstream(goldenPath(model)).rdbuf();
    return content.str();
}

// Entries of lists in another order, everywhere.
void shuffleLists(XmlNode& node, std::mt19937& random) {
    std::vector<XmlNode*> children;
    for (XmlNode& child : document::childrenOf(node)) {
        shuffleLists(child, random);
        children.push_back(&child);
    }
    // Several leaves of one name, such as the states of a service, are no entries.
    const bool isList =
        children.size() > 1 && (document::hasName(node, "preferredLanguages") ||
                                std::all_of(children.begin(), children.end(), [&](XmlNode* child) {
                                    return firstElement(*child) != nullptr &&
                                           document::sameText(child->name(), children[0]->name());
                                }));
    if (isList) {
        node.remove_all_nodes();
        std::shuffle(children.begin(), children.end(), random);
        for (XmlNode* child : children) {
            node.append_node(child);
        }
    }
}

}  // namespace

TEST(BackupDiff, AChangedNumberOfAServiceIsOneDifferenceWithItsPath) {
    EXPECT_THAT(lines(between(services(service(1, "501", "<lcn>17</lcn>")),
                              services(service(1, "501", "<lcn>18</lcn>")))),
                ElementsAre("modules/module[mac=02:01]/services/"
                            "service[outputId=1,outputSid=501]/lcn: 17 -> 18"));
}

TEST(BackupDiff, EntriesThatMovedAreNotADifference) {
    EXPECT_THAT(between(modules(module("02:01", "<attenuation>1</attenuation>") +
                                module("02:02", "<attenuation>2</attenuation>")),
                        modules(module("02:02", "<attenuation>2</attenuation>") +
                                module("02:01", "<attenuation>1</attenuation>"))),
                IsEmpty());
}

TEST(BackupDiff, ElementsThatMovedInsideTheirParentAreNotADifference) {
    EXPECT_THAT(between("<lnb><oscLowFreq>9750</oscLowFreq><oscHighFreq>10600</oscHighFreq></lnb>"
                        "<network><ip>10.0.0.1</ip></network>",
                        "<network><ip>10.0.0.1</ip></network>"
                        "<LNB><oschighfreq>10600</oschighfreq><oscLowFreq>9750</oscLowFreq></LNB>"),
                IsEmpty());
}

TEST(BackupDiff, ElementsOfOneNameBelongTogetherByOrder) {
    EXPECT_THAT(lines(between("<lnb><oscLowFreq>1</oscLowFreq><oscLowFreq>2</oscLowFreq></lnb>",
                              "<lnb><oscHighFreq>0</oscHighFreq><oscLowFreq>1</oscLowFreq>"
                              "<oscLowFreq>3</oscLowFreq></lnb>")),
                ElementsAre("lnb/oscLowFreq: 2 -> 3", "lnb/oscHighFreq: - -> 0"));
}

TEST(BackupDiff, AnEntryThatIsOnlyInOneDocumentIsOneDifference) {
    const auto differences =
        between(services(service(1, "501", "")), services(service(2, "502", "")));
    EXPECT_THAT(
        lines(differences),
        ElementsAre("modules/module[mac=02:01]/services/service[outputId=1,outputSid=501]: "
                    "<service><outputId>1</outputId><outputSid>501</outputSid></service> -> -",
                    "modules/module[mac=02:01]/services/service[outputId=2,outputSid=502]: "
                    "- -> <service><outputId>2</outputId><outputSid>502</outputSid></service>"));
    ASSERT_EQ(differences.size(), 2U);
    EXPECT_TRUE(differences[0].holdsElements);
}

TEST(BackupDiff, EntriesWithoutAnIdentityBelongTogetherByContentAndWhatIsLeftByOrder) {
    const std::string first = "<serviceEPG><sid>1</sid><name>One</name></serviceEPG>";
    const std::string second = "<serviceEPG><sid>2</sid><name>Two</name></serviceEPG>";
    const std::string third = "<serviceEPG><sid>3</sid><name>Three</name></serviceEPG>";
    const std::string changed = "<serviceEPG><name>Deux</name><sid>2</sid></serviceEPG>";
    EXPECT_THAT(lines(between("<serviceEPGs>" + first + second + third + "</serviceEPGs>",
                              "<serviceEPGs>" + third + changed + first + "</serviceEPGs>")),
                ElementsAre("serviceEPGs/serviceEPG[2]/name: Two -> Deux"));
}

TEST(BackupDiff, EntriesWithADoubledIdentityBelongTogetherByContentFirst) {
    const auto pid = [](int order) {
        return "<pidOrder><languageCode/><streamId>7</streamId><type>4</type><order>" +
               std::to_string(order) + "</order></pidOrder>";
    };
    const auto withPids = [](const std::string& pids) {
        return services(service(1, "501", "<pidOrders>" + pids + "</pidOrders>"));
    };
    EXPECT_THAT(between(withPids(pid(1) + pid(2)), withPids(pid(2) + pid(1))), IsEmpty());
    EXPECT_THAT(lines(between(withPids(pid(1) + pid(2)), withPids(pid(3) + pid(1)))),
                ElementsAre("modules/module[mac=02:01]/services/service[outputId=1,outputSid=501]/"
                            "pidOrders/pidOrder[languageCode=,streamId=7,type=4]/order: 2 -> 3"));
}

TEST(BackupDiff, ALanguageIdentifiesItself) {
    EXPECT_THAT(lines(between("<preferredLanguages><language>fra</language><language>eng</language>"
                              "</preferredLanguages>",
                              "<preferredLanguages><language>eng</language><language>ita</language>"
                              "</preferredLanguages>")),
                ElementsAre("preferredLanguages/language[fra]: fra -> -",
                            "preferredLanguages/language[ita]: - -> ita"));
}

TEST(BackupDiff, ComparesTheOrderThatCountsWhenAskedTo) {
    const auto languages = [](const std::string& first, const std::string& second) {
        return "<preferredLanguages><language>" + first + "</language><language>" + second +
               "</language></preferredLanguages>";
    };
    const auto module = [](const std::string& mac) {
        return "<module><mac>" + mac + "</mac></module>";
    };
    EXPECT_THAT(between(languages("fra", "eng"), languages("eng", "fra")), IsEmpty());
    EXPECT_EQ(between(languages("fra", "eng"), languages("eng", "fra"), {.order = true}).size(),
              1U);
    EXPECT_THAT(between(languages("fra", "eng"), languages("fra", "eng"), {.order = true}),
                IsEmpty());
    EXPECT_THAT(between("<x><y/><z/></x>", "<x><z/><y/></x>", {.order = true}), IsEmpty());
    EXPECT_THAT(between(modules(module("02:01") + module("02:02")),
                        modules(module("02:02") + module("02:01")), {.order = true}),
                IsEmpty());
}

TEST(BackupDiff, NumbersAreTheSameWhereTheImportTakesThemForTheSame) {
    EXPECT_THAT(between(services(service(1, "501", "<lcn>017</lcn><decrypt>1</decrypt>")),
                        services(service(1, "0501", "<lcn>17</lcn><decrypt>01</decrypt>"))),
                IsEmpty());
    // Compared as a text: another text is written.
    EXPECT_THAT(lines(between(output("", "<frequency>0474</frequency>"),
                              output("", "<frequency>474</frequency>"))),
                ElementsAre("modules/module[mac=02:01]/outputs/output[outputId=1]/frequency: "
                            "0474 -> 474"));
}

TEST(BackupDiff, ACodeAndItsTextAreOne) {
    EXPECT_THAT(between("<diseqcs><diseqc><id>1</id><band>high</band></diseqc></diseqcs>",
                        "<diseqcs><diseqc><id>1</id><band>HIGH</band></diseqc></diseqcs>"),
                IsEmpty());
    EXPECT_THAT(between(input("<type>0</type><streamID>auto</streamID><band>low</band>"),
                        input("<type>00</type><streamID>-2</streamID><band>0</band>")),
                IsEmpty());
    // The import takes input texts of a bandwidth exactly.
    EXPECT_THAT(lines(between(input("<bandwidth>8 MHz</bandwidth>"),
                              input("<bandwidth>8 mhz</bandwidth>"))),
                ElementsAre("modules/module[mac=02:01]/inputs/input[inputId=1]/bandwidth: "
                            "8 MHz -> 8 mhz"));
}

TEST(BackupDiff, AnIdOfARowIsOneWithItselfAlone) {
    const auto position = [](const std::string& id) {
        return "<diseqcs><diseqc><id>" + id + "</id></diseqc></diseqcs>";
    };
    EXPECT_THAT(lines(between(position("3000000000"), position("3000000001"))),
                ElementsAre("diseqcs/diseqc[id=3000000000]: "
                            "<diseqc><id>3000000000</id></diseqc> -> -",
                            "diseqcs/diseqc[id=3000000001]: "
                            "- -> <diseqc><id>3000000001</id></diseqc>"));
    for (const char* other : {"+1", "01", "1 ", "1.0"}) {
        EXPECT_EQ(between(position("1"), position(other)).size(), 2U) << other;
    }
    EXPECT_THAT(between(position("3000000000"), position("3000000000")), IsEmpty());
}

TEST(BackupDiff, WhatIsNotATextOfAHomeChannelIsTheImportsCodeOne) {
    const auto band = [](const std::string& text) {
        return "<homeChannels><homechannel><id>1</id><band>" + text +
               "</band></homechannel></homeChannels>";
    };
    EXPECT_THAT(between(band("high"), band("upper")), IsEmpty());
    EXPECT_THAT(lines(between(band("low"), band("upper"))),
                ElementsAre("homeChannels/homechannel[id=1]/band: low -> upper"));
}

TEST(BackupDiff, TheCodesOfAConstellationAreThoseOfTheModulesOutputMode) {
    const std::string cable = "<modoSalidaRF>1</modoSalidaRF>";
    EXPECT_THAT(between(output(cable, "<constellation>256 QAM</constellation>"),
                        output(cable, "<constellation>4</constellation>")),
                IsEmpty());
    EXPECT_THAT(between(output("", "<constellation>64 QAM</constellation>"),
                        output("", "<constellation>2</constellation>")),
                IsEmpty());
}

TEST(BackupDiff, AMissingElementIsNotAnEmptyOne) {
    EXPECT_THAT(lines(between("<network><dns2/></network>", "<network></network>")),
                ElementsAre("network/dns2:  -> -"));
}

TEST(BackupDiff, ATextThatIsGoneIsADifference) {
    EXPECT_THAT(lines(between("<network><ip>10.0.0.1</ip></network>", "<network><ip/></network>")),
                ElementsAre("network/ip: 10.0.0.1 -> "));
}

TEST(BackupDiff, NamesAreTheSameInAnyLetterCase) {
    EXPECT_THAT(between("<network><ip>1</ip></network>", "<NETWORK><IP>1</IP></NETWORK>"),
                IsEmpty());
}

TEST(BackupDiff, AnElementInsideAValueIsADifference) {
    const std::string plain = "<network><ip>10.0.0.1</ip></network>";
    const std::string filled = "<network><ip>10.0.0.1<x/></ip></network>";
    EXPECT_THAT(lines(between(plain, filled)), ElementsAre("network/ip/x: - -> "));
    EXPECT_THAT(lines(between(filled, plain)), ElementsAre("network/ip/x:  -> -"));
    EXPECT_THAT(between(filled, filled), IsEmpty());
}

TEST(BackupDiff, OfSeveralElementsOfANameTheLastMayBeGone) {
    EXPECT_THAT(
        lines(between("<network><ip>1</ip><ip>2</ip></network>", "<network><ip>1</ip></network>")),
        ElementsAre("network/ip: 2 -> -"));
}

TEST(BackupDiff, UnknownEntriesOfAListBelongTogetherByContent) {
    EXPECT_THAT(
        between("<diseqcs><a>1</a><a>2</a></diseqcs>", "<diseqcs><a>2</a><a>1</a></diseqcs>"),
        IsEmpty());
}

TEST(BackupDiff, EntriesWithADoubledIdentityBelongTogetherWhateverTheirState) {
    const auto input = [](const std::string& frequency, const std::string& quality) {
        return "<input><inputId>1</inputId><type>0</type><frequency>" + frequency +
               "</frequency><inputStatus><signalQuality>" + quality +
               "</signalQuality></inputStatus></input>";
    };
    const auto inputs = [](const std::string& entries) {
        return modules(module("02:01", "<inputs>" + entries + "</inputs>"));
    };
    EXPECT_THAT(between(inputs(input("11000", "Good") + input("12000", "Bad")),
                        inputs(input("12000", "Good") + input("11000", "Bad"))),
                IsEmpty());
}

TEST(BackupDiff, WhatHasNoConfigurationIsNotCompared) {
    EXPECT_THAT(diff(parsed("<x/>"), configured("<network/>")), IsEmpty());
    EXPECT_THAT(diff(configured("<network/>"), parsed("<x/>")), IsEmpty());
}

TEST(BackupDiff, ACamListThatIsNewIsADifference) {
    EXPECT_THAT(lines(diff(parsed("<backup><configuration/></backup>"),
                           parsed("<backup><configuration/><vsecureCAMList/></backup>"))),
                ElementsAre("vsecureCAMList: - -> "));
}

TEST(BackupDiff, LiveStateIsLeftOutUnlessAskedFor) {
    const auto quality = [](const std::string& text) {
        return input("<inputStatus><signalQuality>" + text + "</signalQuality></inputStatus>");
    };
    EXPECT_THAT(between(quality("Good"), quality("Bad")), IsEmpty());
    EXPECT_THAT(between(quality("Good"), input("")), IsEmpty());
    EXPECT_THAT(lines(between(quality("Good"), quality("Bad"), {.liveState = true})),
                ElementsAre("modules/module[mac=02:01]/inputs/input[inputId=1]/inputStatus/"
                            "signalQuality: Good -> Bad"));
}

TEST(BackupDiff, ElementsThatTheImportDoesNotKnowAreComparedByNameAndText) {
    EXPECT_THAT(
        lines(between("<future><a>1</a><b>2</b></future>", "<future><b>2</b><a>01</a></future>")),
        ElementsAre("future/a: 1 -> 01"));
}

TEST(BackupDiff, ABackupsConfigurationIsComparedWithAPlainOne) {
    const Document backup = parsed(
        "<backup><configuration><lnb><oscLowFreq>1</oscLowFreq></lnb></configuration>"
        "<vsecureCAMList><cam><serialNumber>7</serialNumber></cam></vsecureCAMList></backup>");
    const Document plain = configured("<lnb><oscLowFreq>2</oscLowFreq></lnb>");
    EXPECT_THAT(lines(diff(backup, plain)),
                ElementsAre("lnb/oscLowFreq: 1 -> 2",
                            "vsecureCAMList: <vsecureCAMList><cam><serialNumber>7</serialNumber>"
                            "</cam></vsecureCAMList> -> -"));
}

TEST(BackupDiff, APublicKeyIsTheSameWhateverItsWhiteSpace) {
    const auto cam = [](const std::string& key) {
        return parsed(
            "<backup><configuration/><vsecureCAMList><cam><serialNumber>7"
            "</serialNumber><publicKey>" +
            key +
            "</publicKey></cam></vsecureCAMList>"
            "</backup>");
    };
    EXPECT_THAT(diff(cam("ab\ncd"), cam("abcd")), IsEmpty());
    EXPECT_THAT(lines(diff(cam("abcd"), cam("abce"))),
                ElementsAre("vsecureCAMList/cam[serialNumber=7]/publicKey: abcd -> abce"));
}

TEST(BackupDiff, ADocumentInAnyOrderOfItsListsIsTheSame) {
    std::mt19937 random(12);
    for (const std::string_view model : tarvo_remote_control::model::kAll) {
        const std::string text = goldenText(model);
        ASSERT_FALSE(text.empty()) << model;
        std::string copy = text;
        document::XmlDocument tree;
        document::parse(tree, copy);
        shuffleLists(tree, random);
        const std::string shuffled = document::printed(tree);
        EXPECT_NE(shuffled, document::printed(parsed(text).tree())) << model;
        EXPECT_THAT(lines(diff(parsed(text), parsed(shuffled), {.liveState = true})), IsEmpty())
            << model;
    }
}

namespace {

// The verb over a golden document and one in which a text was replaced.
Ran ranDiff(const std::string& text, const std::string& replacement,
            std::vector<const char*> options = {}, bool outIsTerminal = false) {
    static const std::string path = goldenPath("QRA-310");
    std::string changed = goldenText("QRA-310");
    for (std::size_t place = changed.find(text); place != std::string::npos;
         place = changed.find(text, place + replacement.size())) {
        changed.replace(place, text.size(), replacement);
    }
    options.insert(options.begin(), {"diff", path.c_str(), "-"});
    return ran(options, changed, outIsTerminal);
}

}  // namespace

TEST(BackupDiffVerb, SaysNothingOfDocumentsThatAreTheSame) {
    const Ran same = ranDiff("<lnb>", "<lnb>");
    EXPECT_EQ(same.status, ExitStatus::done);
    EXPECT_EQ(same.out, "");
    EXPECT_EQ(same.err, "");
}

TEST(BackupDiffVerb, PrintsDifferencesInGroupsAndEndsWithStatusOne) {
    const Ran different =
        ranDiff("<oscLowFreq>9750</oscLowFreq>", "<oscLowFreq>97\n50</oscLowFreq>");
    EXPECT_EQ(different.status, ExitStatus::differences);
    EXPECT_EQ(different.out, "lnb: 1 difference\nlnb/oscLowFreq: 9750 -> 97\\n50\n");
}

TEST(BackupDiffVerb, UsesColorsOnATerminalUnlessToldOtherwise) {
    const char* element = "<oscLowFreq>9750</oscLowFreq>";
    const char* changed = "<oscLowFreq>9751</oscLowFreq>";
    const std::string colored =
        "\x1b[1mlnb: 1 difference\x1b[0m\n"
        "lnb/oscLowFreq: \x1b[31m9750\x1b[0m -> \x1b[32m9751\x1b[0m\n";
    EXPECT_EQ(ranDiff(element, changed, {}, true).out, colored);
    EXPECT_EQ(ranDiff(element, changed, {"--color", "always"}).out, colored);
    EXPECT_EQ(ranDiff(element, changed, {"--color=never"}, true).out,
              ranDiff(element, changed).out);
}

TEST(BackupDiffVerb, PrintsJson) {
    EXPECT_EQ(ranDiff("<oscLowFreq>9750</oscLowFreq>", "", {"--json"}).out,
              "[\n  {\n    \"path\": \"lnb/oscLowFreq\",\n    \"old\": \"9750\",\n"
              "    \"new\": null\n  }\n]\n");
    EXPECT_EQ(ranDiff("<lnb>", "<lnb>", {"--json"}).out, "[]\n");
}

TEST(BackupDiffVerb, TakesAnEmptyFileForAnEmptyConfiguration) {
    const Ran ended = ran({"diff", "-", "/dev/null"}, "<configuration><lnb/></configuration>");
    EXPECT_EQ(ended.status, ExitStatus::differences);
    EXPECT_EQ(ended.out, "lnb: 1 difference\nlnb: \"\" -> (none)\n");
    EXPECT_EQ(ran({"diff", "-", "-"}).status, ExitStatus::usage);
}

TEST(BackupDiffVerb, RefusesWhatIsNotAConfiguration) {
    const Ran refused = ran({"diff", goldenPath("QRA-310").c_str(), "-"}, "<other/>");
    EXPECT_EQ(refused.status, ExitStatus::usage);
    EXPECT_EQ(refused.err, "tarvo-backup: standard input: no 'configuration' element\n");
    EXPECT_EQ(ran({"diff", "-", "-"}).err,
              "tarvo-backup: only one of the documents can be standard input\n");
}

}  // namespace tarvo_backup
