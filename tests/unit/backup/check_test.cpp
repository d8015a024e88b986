#include "backup/check.h"

#include <gmock/gmock.h>

#include "unit/backup/backup_test.h"

namespace tarvo_backup {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

// "error: path: message"
std::vector<std::string> lines(const std::vector<Finding>& findings) {
    std::vector<std::string> lines;
    for (const Finding& each : findings) {
        lines.push_back(std::string(each.severity == Severity::error ? "error: " : "warning: ") +
                        each.path + (each.path.empty() ? "" : ": ") + each.message);
    }
    return lines;
}

std::vector<std::string> checked(const std::string& sections) {
    return lines(check(configured(sections)));
}

constexpr const char* kMac = "<mac>02:00:00:00:00:01</mac>";
constexpr const char* kModule = "modules/module[mac=02:00:00:00:00:01]/";

// A module that a headend can have, with this in it.
std::string module(const std::string& content) {
    return "<modules><module>" + std::string(kMac) + content + "</module></modules>";
}

std::string input(const std::string& type, const std::string& content) {
    return module("<inputs><input><inputId>2</inputId><type>" + type + "</type>" + content +
                  "</input></inputs>");
}

std::string service(const std::string& content) {
    return module("<services><service><outputId>1</outputId><outputSid>7</outputSid>" + content +
                  "</service></services>");
}

}  // namespace

TEST(BackupCheck, TellsEveryFaultWithItsPlace) {
    const auto findings =
        check(parsed("<configuration>\n  <network>\n    <ip>not-an-ip</ip>\n  </network>\n"
                     "  <diseqcs><diseqc/></diseqcs>\n</configuration>\n"));
    EXPECT_THAT(lines(findings), ElementsAre("warning: network/ip: 'not-an-ip' is no address",
                                             "error: diseqcs/diseqc[1]: has no 'id'"));
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].position, (Position{3, 6}));
    EXPECT_EQ(findings[1].position, (Position{5, 13}));
}

TEST(BackupCheck, FindsNoFaultInWhatIsSound) {
    EXPECT_THAT(checked("<network><ip>10.0.0.1</ip><dns2/><dhcp>1</dhcp></network>"
                        "<maintenances><maintenance><hour>3</hour><min>30</min><active>1</active>"
                        "</maintenance></maintenances>" +
                        input("0", "<band>HIGH</band><streamID>auto</streamID><rfLoop>1</rfLoop>")),
                IsEmpty());
}

TEST(BackupCheck, AnUnknownElementComesWithTheNearestNameOrItsPlace) {
    EXPECT_THAT(
        checked("<identificaton/><ip/><network><dns3/></network><lnb>5</lnb><zzzzz/>"),
        ElementsAre("warning: identificaton: unknown element; did you mean "
                    "'identification'?",
                    "warning: ip: unknown element; it belongs into 'network'",
                    "warning: network/dns3: unknown element; did you mean 'dns1'?",
                    "warning: lnb: text between elements", "warning: zzzzz: unknown element"));
}

TEST(BackupCheck, AListTakesItsEntriesAlone) {
    EXPECT_THAT(checked("<preferredLanguages><lang>fra</lang></preferredLanguages>"
                        "<homeChannels>x<homechannel><id>1</id></homechannel></homeChannels>"),
                ElementsAre("error: preferredLanguages/lang: only 'language' may be here",
                            "error: homeChannels: text between elements"));
}

TEST(BackupCheck, WhatAnElementMustHaveIsMissed) {
    EXPECT_THAT(checked("<maintenances><maintenance><hour>3</hour></maintenance></maintenances>"),
                ElementsAre("error: maintenances/maintenance[1]: has no 'min'",
                            "error: maintenances/maintenance[1]: has no 'active'"));
    EXPECT_THAT(
        checked(module("<inputs><input><inputId>1</inputId></input></inputs>")),
        ElementsAre(std::string("error: ") + kModule + "inputs/input[inputId=1]: has no 'type'"));
    EXPECT_THAT(checked("<scramblings><scrambling/></scramblings>"),
                ElementsAre("error: scramblings/scrambling[1]: has no 'name'"));
}

TEST(BackupCheck, NumbersOutOfRangeAreErrorsWhereTheImportRefusesThem) {
    EXPECT_THAT(checked(module("<outputs><output><outputId>3</outputId></output></outputs>")),
                ElementsAre(std::string("error: ") + kModule +
                            "outputs/output[outputId=3]/outputId: '3' is not allowed; it must be "
                            "from 1 to 2"));
    EXPECT_THAT(checked(service("<inputSid>65536</inputSid>")),
                ElementsAre(std::string("error: ") + kModule +
                            "services/service[outputId=1,outputSid=7]/inputSid: '65536' is not "
                            "allowed; it must be at most 65535"));
    EXPECT_THAT(checked("<serviceEPGs><serviceEPG><lcn/></serviceEPG></serviceEPGs>"),
                ElementsAre("error: serviceEPGs/serviceEPG[1]/lcn: '' is not allowed; it must be "
                            "from 1 to 65535"));
}

TEST(BackupCheck, OfWhatAnElementMustHaveTheFirstCounts) {
    EXPECT_THAT(checked(module("<inputs><input><inputId>1</inputId><type>0</type><type>9</type>"
                               "</input></inputs>")),
                ElementsAre(std::string("warning: ") + kModule +
                            "inputs/input[inputId=1]/type: given twice"));
}

TEST(BackupCheck, ATextThatIsNotACodeIsAnErrorUnlessTheImportHasACodeForIt) {
    EXPECT_THAT(checked("<diseqcs><diseqc><id>1</id><band>upper</band></diseqc></diseqcs>"
                        "<homeChannels><homechannel><id>1</id><band>upper</band></homechannel>"
                        "</homeChannels>"),
                ElementsAre("error: diseqcs/diseqc[id=1]/band: 'upper' is not allowed; it must be "
                            "'low' or 'high'",
                            "warning: homeChannels/homechannel[id=1]/band: 'upper' is not allowed; "
                            "it must be 'low' or 'high'"));
}

TEST(BackupCheck, TheTextsOfAConstellationAreThoseOfTheModulesOutputMode) {
    const std::string outputs =
        "<outputs><output><outputId>1</outputId><constellation>256 QAM</constellation></output>"
        "</outputs>";
    EXPECT_THAT(checked(module("<modoSalidaRF>1</modoSalidaRF>" + outputs)), IsEmpty());
    EXPECT_THAT(checked(module(outputs + "<modoSalidaRF>1</modoSalidaRF>")),
                ElementsAre(HasSubstr("'256 QAM' is not allowed; it must be 'QPSK', '16 QAM' or "
                                      "'64 QAM'")));
}

TEST(BackupCheck, OfAnInputOnlyTheElementsOfItsTypeCount) {
    EXPECT_THAT(checked(input("1", "<band>upper</band><bandwidth>9 MHz</bandwidth>")),
                ElementsAre(std::string("warning: ") + kModule +
                                "inputs/input[inputId=2]/band: an input of this type has no such "
                                "element",
                            std::string("error: ") + kModule +
                                "inputs/input[inputId=2]/bandwidth: '9 MHz' is not allowed; it "
                                "must be '6 MHz', '7 MHz' or '8 MHz'"));
    EXPECT_THAT(checked(input("0", "<rfLoop>2</rfLoop>")), ElementsAre(HasSubstr("error: ")));
    // Perhaps there is no satellite tuner to set.
    EXPECT_THAT(checked(input("1", "<rfLoop>2</rfLoop>")), ElementsAre(HasSubstr("warning: ")));
}

TEST(BackupCheck, WhatAnExportWritesOnceForEachRowMayComeTwice) {
    EXPECT_THAT(checked(module("<swVersion>1</swVersion><swVersion>1</swVersion>")), IsEmpty());
}

TEST(BackupCheck, AnLcnBelowOneIsAnErrorWhereNoHeadendCanHaveItAlready) {
    EXPECT_THAT(checked(service("<lcn>0</lcn>")), IsEmpty());
    EXPECT_THAT(checked(service("<lcn>5</lcn><lcn>0</lcn>")),
                ElementsAre(HasSubstr("given twice"), HasSubstr("error: ")));
}

TEST(BackupCheck, TheNumbersOfTheNitPatternMustFitEachOther) {
    const auto network = [](const std::string& content) {
        return "<dvbNetworks><dvbNetwork><id>1</id>" + content + "</dvbNetwork></dvbNetworks>";
    };
    EXPECT_THAT(checked(network("<tipoNITPatron>1</tipoNITPatron><nitPatron>7</nitPatron>"
                                "<versionNITPatron>3</versionNITPatron>")),
                IsEmpty());
    EXPECT_THAT(checked(network("<nitPatron>7</nitPatron>")),
                ElementsAre("error: dvbNetworks/dvbNetwork[id=1]/nitPatron: '7' is not allowed; "
                            "without a 'tipoNITPatron' before it it must be 0 or 1"));
    EXPECT_THAT(checked(network("<versionNITPatron>3</versionNITPatron>")),
                ElementsAre("error: dvbNetworks/dvbNetwork[id=1]/versionNITPatron: '3' is not "
                            "allowed; without a 'nitPatron' before it it must be 0"));
    EXPECT_THAT(checked(network("<pattern>2</pattern>")),
                ElementsAre(HasSubstr("/pattern: unknown element")));
    EXPECT_THAT(checked(network("<tipoNITPatron>2</tipoNITPatron>")),
                ElementsAre(HasSubstr("error: dvbNetworks/dvbNetwork[id=1]/tipoNITPatron: '2'")));
}

TEST(BackupCheck, AnIdOfARowIsANumberThatIsThereOnce) {
    const auto networks = [](const std::vector<std::string>& ids) {
        std::string entries;
        for (const std::string& id : ids) {
            entries += "<dvbNetwork><id>" + id + "</id></dvbNetwork>";
        }
        return "<dvbNetworks>" + entries + "</dvbNetworks>";
    };
    EXPECT_THAT(checked(networks({"1", "2.0", "+3"})), IsEmpty());
    EXPECT_THAT(checked(networks({"1", "01"})),
                ElementsAre("error: dvbNetworks/dvbNetwork[id=01]: is there twice, by what "
                            "identifies it"));
    EXPECT_THAT(checked(networks({"one"})),
                ElementsAre("error: dvbNetworks/dvbNetwork[id=one]/id: 'one' is no number"));
    // As a pattern it may find a row.
    for (const char* pattern : {"_", "%", "1_", "-%", "%-1", "%%5"}) {
        EXPECT_THAT(checked(networks({pattern})), ElementsAre(HasSubstr("warning: "))) << pattern;
    }
    for (const char* pattern : {"a%", "_-1", "1%-", "%--", "_.5"}) {
        EXPECT_THAT(checked(networks({pattern})), ElementsAre(HasSubstr("error: "))) << pattern;
    }
}

TEST(BackupCheck, DoubledIdentitiesThatTheImportTakesAreWarnings) {
    EXPECT_THAT(checked("<preferredLanguages><language>fra</language><language>fra</language>"
                        "</preferredLanguages>"),
                ElementsAre("warning: preferredLanguages/language[fra]: is there twice, by what "
                            "identifies it"));
}

TEST(BackupCheck, AModuleWithoutAMacFitsNoHeadendIfItTellsItsKind) {
    EXPECT_THAT(checked("<modules><module><family>36</family></module></modules>"),
                ElementsAre("error: modules/module[1]: has no 'mac'"));
    EXPECT_THAT(checked("<modules><module/></modules>"),
                ElementsAre("warning: modules/module[1]: has no 'mac'"));
}

TEST(BackupCheck, ReferencesThatLeadNowhereAreWarnings) {
    EXPECT_THAT(
        checked("<dvbNetworks><dvbNetwork><id>1</id></dvbNetwork></dvbNetworks>"
                "<diseqcs><diseqc><id>1</id><position>4</position></diseqc></diseqcs>" +
                module("<dvbNetworkId>2</dvbNetworkId>"
                       "<inputs><input><inputId>1</inputId><type>0</type><diseqc>1</diseqc></input>"
                       "</inputs><services><service><outputId>1</outputId><outputSid>7</outputSid>"
                       "<inputId>2</inputId></service></services>")),
        ElementsAre(std::string("warning: ") + kModule +
                        "dvbNetworkId: there is no DVB network "
                        "'2'",
                    std::string("warning: ") + kModule +
                        "inputs/input[inputId=1]/diseqc: there is no DiSEqC position '1'",
                    std::string("warning: ") + kModule +
                        "services/service[outputId=1,outputSid=7]/inputId: there is no input "
                        "'2'"));
}

TEST(BackupCheck, OnlyTheLastListOfStreamsIsRead) {
    EXPECT_THAT(checked(service("<pidOrders><pid/></pidOrders><pidOrders/>")),
                ElementsAre(HasSubstr("warning: ")));
    EXPECT_THAT(checked(service("<pidOrders/><pidOrders><pid/></pidOrders>")),
                ElementsAre(HasSubstr("error: ")));
}

TEST(BackupCheck, AnUnknownEntryOfTheModulesListOfABackupIsSkipped) {
    EXPECT_THAT(lines(check(parsed("<backup><configuration/><vsecureCAMList><x/><cam/>"
                                   "</vsecureCAMList></backup>"))),
                ElementsAre("warning: vsecureCAMList/x: only 'cam' may be here",
                            "error: vsecureCAMList/cam[2]: has no 'serialNumber'"));
}

TEST(BackupCheck, ADocumentWithoutAConfigurationIsAnError) {
    EXPECT_THAT(lines(check(parsed("<Configuration/>"))),
                ElementsAre("error: no 'configuration' element"));
}

TEST(BackupCheck, AMarkBesideADocumentThatTheImportReadsIsAnUnknownElement) {
    for (const char* text : {"<redacted/><configuration/>", "<configuration/><redacted/>",
                             "<redacted/><backup><configuration/></backup>",
                             "<redacted><configuration><x/></configuration></redacted>"
                             "<configuration/>"}) {
        EXPECT_THAT(lines(check(parsed(text))), ElementsAre("warning: redacted: unknown element"))
            << text;
    }
    EXPECT_THAT(lines(check(parsed("<redacted><configuration/></redacted><backup/>"))),
                ElementsAre("error: no 'configuration' element"));
    EXPECT_THAT(lines(check(parsed("<x/><redacted><configuration/></redacted>"))),
                ElementsAre("error: secrets are masked; no import takes this document"));
}

TEST(BackupCheck, AnAddressHasFourNumbersUpTo255) {
    for (const char* address : {"0.0.0.0", "255.255.255.255", "10.20.30.40"}) {
        EXPECT_THAT(checked("<network><ip>" + std::string(address) + "</ip></network>"), IsEmpty());
    }
    for (const char* text : {"10..0.1", "10.-.0.1", "10.0.0.256", "10.0.0", "10.0.0.1.2",
                             "1000.0.0.1", "10.0.0.1 ", "10.a.0.1"}) {
        EXPECT_THAT(checked("<network><ip>" + std::string(text) + "</ip></network>"),
                    ElementsAre("warning: network/ip: '" + std::string(text) + "' is no address"));
    }
}

TEST(BackupCheck, AnIdOfARowIsWhatSqliteTakesForOne) {
    const auto position = [](const std::string& id) {
        return "<diseqcs><diseqc><id>" + id + "</id></diseqc></diseqcs>";
    };
    for (const char* id : {"7", " 7 ", "7.0", "1e2", "-3", "9223372036854775296",
                           "9223372036854775807", "-9223372036854775808", " +9223372036854775807\n",
                           "0000000000000000000000000000007", "9223372036854774784.0"}) {
        EXPECT_THAT(checked(position(id)), IsEmpty()) << id;
    }
    // SQLite takes a text with a point or an exponent for a double, which is no id at either end.
    for (const char* text :
         {"+", "1 2", "2.5", "1e30", "9223372036854775808", "-9223372036854775809",
          "99999999999999999999", "9223372036854775807.0", "-9223372036854775808.0"}) {
        EXPECT_THAT(
            checked(position(text)),
            ElementsAre(AllOf(StartsWith("error: diseqcs/diseqc[id="),
                              HasSubstr("]/id: '" + std::string(text) + "' is no number"))));
    }
}

TEST(BackupCheck, TheGreatestIdsOfRowsAreEachThereOnce) {
    const auto ids = [](const std::string& one, const std::string& other) {
        return checked("<homeChannels><homechannel><id>" + one +
                       "</id></homechannel><homechannel>"
                       "<id>" +
                       other + "</id></homechannel></homeChannels>");
    };
    EXPECT_THAT(ids("9223372036854775807", "9223372036854775806"), IsEmpty());
    EXPECT_THAT(ids("9223372036854775807", "+9223372036854775807"),
                ElementsAre("error: homeChannels/homechannel[id=+9223372036854775807]: is there "
                            "twice, by what identifies it"));
}

TEST(BackupCheck, OnOffAndNumbersMayBeEmpty) {
    EXPECT_THAT(checked("<network><dhcp/></network><dvbNetworks><dvbNetwork><id>1</id><nid/>"
                        "</dvbNetwork></dvbNetworks>"),
                IsEmpty());
    EXPECT_THAT(checked("<network><dhcp>2</dhcp></network><dvbNetworks><dvbNetwork><id>1</id>"
                        "<nid>one</nid></dvbNetwork></dvbNetworks>"),
                ElementsAre("warning: network/dhcp: '2' is no 1 or 0",
                            "warning: dvbNetworks/dvbNetwork[id=1]/nid: 'one' is no number"));
    EXPECT_THAT(checked("<network><dhcp>0</dhcp></network>"), IsEmpty());
}

TEST(BackupCheck, ACodeMayBeANumberWhereTheImportTakesOne) {
    EXPECT_THAT(checked(input("0", "<streamID>5</streamID>")), IsEmpty());
    EXPECT_THAT(checked(input("0", "<streamID>five</streamID>")),
                ElementsAre(std::string("warning: ") + kModule +
                            "inputs/input[inputId=2]/streamID: 'five' is neither a number nor "
                            "'auto'"));
}

TEST(BackupCheck, WhatTheDeviceReportsOfItselfIsNotLookedAt) {
    EXPECT_THAT(checked(module("<CAMVersion>?</CAMVersion><CardStatus>none of those</CardStatus>") +
                        "<dvbNetworks><dvbNetwork><id>1</id><OutputNITDate>?</OutputNITDate>"
                        "</dvbNetwork></dvbNetworks>"),
                IsEmpty());
    EXPECT_THAT(checked(input("0",
                              "<inputStatus><signalQuality>fair</signalQuality><quality/>"
                              "</inputStatus>")),
                ElementsAre(std::string("warning: ") + kModule +
                            "inputs/input[inputId=2]/inputStatus/quality: unknown element"));
}

TEST(BackupCheck, OfSeveralListsOfAnEntryTheEarlierAreNotRead) {
    EXPECT_THAT(checked("<serviceEPGs><serviceEPG><audiosEPGs><x/></audiosEPGs><audiosEPGs/>"
                        "</serviceEPG></serviceEPGs>"),
                ElementsAre("warning: serviceEPGs/serviceEPG[1]/audiosEPGs/x: only 'audiosEPG' may "
                            "be here"));
    EXPECT_THAT(checked("<serviceEPGs><serviceEPG><audiosEPGs><x/></audiosEPGs></serviceEPG>"
                        "</serviceEPGs>"),
                ElementsAre("error: serviceEPGs/serviceEPG[1]/audiosEPGs/x: only 'audiosEPG' may "
                            "be here"));
    EXPECT_THAT(checked(service("<pidOrders><pidOrder><type>1</type><type>2</type></pidOrder>"
                                "</pidOrders><pidOrders/>")),
                ElementsAre(HasSubstr("warning: ")));
}

TEST(BackupCheck, ElementsBesideTheOutermostAreUnknown) {
    EXPECT_THAT(lines(check(parsed("<zzzzz/><configuration/>"))),
                ElementsAre("warning: zzzzz: unknown element"));
    EXPECT_THAT(lines(check(parsed("<backup><zzzzz/><configuration/></backup>"))),
                ElementsAre("warning: zzzzz: unknown element"));
}

TEST(BackupCheck, AnInputWithoutATypeMayHaveTheElementsOfAnyType) {
    EXPECT_THAT(
        checked(module("<inputs><input><inputId>2</inputId><band>x</band></input></inputs>")),
        ElementsAre(std::string("error: ") + kModule + "inputs/input[inputId=2]: has no 'type'"));
}

TEST(BackupCheck, ALoopIsReadOfASatelliteInput2Alone) {
    const auto looped = [](const std::string& content) {
        return checked(module("<inputs><input>" + content + "<rfLoop>2</rfLoop></input></inputs>"));
    };
    EXPECT_THAT(looped("<inputId>2</inputId><type>0</type>"), ElementsAre(HasSubstr("error: ")));
    EXPECT_THAT(looped("<inputId>1</inputId><type>0</type>"), ElementsAre(HasSubstr("warning: ")));
    EXPECT_THAT(looped("<type>0</type>"),
                testing::UnorderedElementsAre(HasSubstr("has no 'inputId'"),
                                              HasSubstr("/rfLoop: '2' is not allowed")));
}

TEST(BackupCheck, AListOfModulesHoldsModules) {
    EXPECT_THAT(checked("<modules/>"),
                ElementsAre("warning: modules: holds no module, which only an RNB-K408 takes"));
    EXPECT_THAT(checked("<modules>x<module>" + std::string(kMac) + "</module></modules>"),
                ElementsAre("error: modules: text between elements"));
}

TEST(BackupCheck, AsManyMacsAsModulesFitAHeadend) {
    EXPECT_THAT(
        checked("<modules><module>" + std::string(kMac) + kMac +
                "</module><module>"
                "<family>36</family></module></modules>"),
        ElementsAre(HasSubstr("/mac: given twice"), "warning: modules/module[2]: has no 'mac'"));
    EXPECT_THAT(checked("<modules><module><family/><model/></module></modules>"),
                ElementsAre("warning: modules/module[1]: has no 'mac'"));
}

// Behind the fourth of what a module is found by.
TEST(BackupCheck, AMacThatTheImportDoesNotReadIsNone) {
    const std::string kind = "<family>36</family><model>2</model><isMaster>1</isMaster>";
    const auto found = [&](const std::string& first) {
        return checked("<modules><module>" + first + "</module><module>" + kind +
                       "</module></modules>");
    };
    EXPECT_THAT(found(kMac + kind + kMac), ElementsAre(HasSubstr("/mac: given twice"),
                                                       "error: modules/module[2]: has no 'mac'"));
    EXPECT_THAT(found("<mac/>" + kind + kMac),
                testing::Contains("warning: modules/module[2]: has no 'mac'"));
    EXPECT_THAT(checked("<modules><module>" + kind + kMac + "</module></modules>"), IsEmpty());
}

TEST(BackupCheck, WithTooFewMacsAnRnbTakesModulesAloneThatTellNoKindBeforeTheirs) {
    const auto found = [](const std::string& first) {
        return checked("<modules><module>" + first + kMac + "</module><module/></modules>");
    };
    for (const char* taken : {"", "<family/>", "<isMaster>1</isMaster>", "<name>x</name>"}) {
        EXPECT_THAT(found(taken), ElementsAre("warning: modules/module[2]: has no 'mac'")) << taken;
    }
    for (const char* refused : {"<family>36</family>", "<model>2</model>"}) {
        EXPECT_THAT(found(refused), ElementsAre("error: modules/module[2]: has no 'mac'"))
            << refused;
    }
    EXPECT_THAT(
        checked("<modules><module><isMaster>1</isMaster><mac/></module><module/></modules>"),
        testing::Contains("error: modules/module[2]: has no 'mac'"));
    EXPECT_THAT(checked("<modules><module><isMaster>1</isMaster></module></modules>"),
                ElementsAre("error: modules/module[1]: has no 'mac'"));
    // The second of an address is one that no module has.
    EXPECT_THAT(
        checked("<modules><module>" + std::string(kMac) +
                "</module><module><isMaster>1</isMaster>" + kMac + "</module><module/></modules>"),
        ElementsAre(HasSubstr("is there twice"), "error: modules/module[3]: has no 'mac'"));
    EXPECT_THAT(
        checked("<modules><module><isMaster>1</isMaster>" + std::string(kMac) +
                "</module><module>" + kMac + "</module><module/></modules>"),
        ElementsAre(HasSubstr("is there twice"), "warning: modules/module[3]: has no 'mac'"));
}

TEST(BackupCheck, AStrangerAmongModulesIsNoneOfThem) {
    for (const char* stranger : {"<x/>", "<x><mac/><mac/></x>"}) {
        EXPECT_THAT(checked("<modules>" + std::string(stranger) +
                            "<module><family>36</family></module></modules>"),
                    ElementsAre("error: modules/x: only 'module' may be here",
                                "error: modules/module[2]: has no 'mac'"));
    }
    EXPECT_THAT(checked("<modules>x</modules>"),
                ElementsAre("error: modules: text between elements"));
}

TEST(BackupCheck, ElementsInsideAValueAreNotRead) {
    EXPECT_THAT(checked("<network><ip>10.0.0.1<x/></ip></network>"),
                ElementsAre("warning: network/ip: holds elements, which are not read"));
}

TEST(BackupCheck, OfATextInPartsOneIsRead) {
    const auto location = [](const std::string& text) {
        return checked("<identification><location>" + text + "</location></identification>");
    };
    const auto parted = ElementsAre(
        "warning: identification/location: a comment or a CDATA section parts its text; one part "
        "is read");
    EXPECT_THAT(location("one<!-- --> two"), parted);
    EXPECT_THAT(location("one<![CDATA[two]]>"), parted);
    EXPECT_THAT(location("<!-- -->one"), IsEmpty());
    EXPECT_THAT(location("one<!-- --> "), IsEmpty());
    EXPECT_THAT(location("<![CDATA[one]]>"), IsEmpty());
}

TEST(BackupCheck, AMaintenanceIsAtATimeOfTheDay) {
    const auto at = [](const std::string& hour, const std::string& minute) {
        return checked("<maintenances><maintenance><hour>" + hour + "</hour><min>" + minute +
                       "</min><active>1</active></maintenance></maintenances>");
    };
    EXPECT_THAT(at("0", "0"), IsEmpty());
    EXPECT_THAT(at("23", "59"), IsEmpty());
    EXPECT_THAT(at("", ""), IsEmpty());
    EXPECT_THAT(at("24", "60"),
                ElementsAre("warning: maintenances/maintenance[1]/hour: '24' is no hour",
                            "warning: maintenances/maintenance[1]/min: '60' is no minute"));
    EXPECT_THAT(at("-1", "x"),
                ElementsAre("warning: maintenances/maintenance[1]/hour: '-1' is no hour",
                            "warning: maintenances/maintenance[1]/min: 'x' is no number"));
}

TEST(BackupCheck, AnLcnThatIsGivenTwiceMayStayAsItIs) {
    EXPECT_THAT(checked(service("<lcn>0</lcn><lcn>0</lcn>")),
                ElementsAre(HasSubstr("/lcn: given twice")));
    EXPECT_THAT(checked(service("<lcn>-1</lcn>")),
                ElementsAre(HasSubstr("/lcn: '-1' is no channel number")));
}

TEST(BackupCheck, ThePatternsThatNeedNothingBeforeThemAreTaken) {
    for (const char* content : {"<nitPatron>0</nitPatron>", "<nitPatron>1</nitPatron>",
                                "<versionNITPatron>0</versionNITPatron>"}) {
        EXPECT_THAT(checked("<dvbNetworks><dvbNetwork><id>1</id>" + std::string(content) +
                            "</dvbNetwork></dvbNetworks>"),
                    IsEmpty());
    }
}

TEST(BackupCheck, AReferenceToNothingLeadsNowhere) {
    const std::string lists =
        "<dvbNetworks><dvbNetwork/></dvbNetworks><diseqcs><diseqc><id>1</id></diseqc></diseqcs>";
    EXPECT_THAT(
        checked(lists + module("<dvbNetworkId>0</dvbNetworkId><inputs>x<input><inputId>1</inputId>"
                               "<type>0</type></input></inputs>")),
        ElementsAre("error: dvbNetworks/dvbNetwork[1]: has no 'id'",
                    std::string("error: ") + kModule + "inputs: text between elements"));
    EXPECT_THAT(checked(lists + "<modules>x</modules>"),
                testing::Contains("error: modules: text between elements"));
}

TEST(BackupCheck, FindsWhatTheXmlLibraryLetsPass) {
    EXPECT_THAT(
        checked("<lnb x='>'></network><network></NETWORK>"),
        ElementsAre("warning: </network> closes <lnb>", "warning: </NETWORK> closes <network>"));
    EXPECT_THAT(checked("<!-- <a> --><?pi <b>?><lnb/>"), IsEmpty());
    EXPECT_THAT(
        checked("<identification><location>\x01\x7f\xff\xc3\xa9\xed\xa0\x80</location>"
                "</identification>"),
        ElementsAre("warning: a control character", "warning: a control character",
                    "warning: a byte that is not UTF-8", "warning: a byte that is not UTF-8",
                    "warning: a byte that is not UTF-8", "warning: a byte that is not UTF-8"));
    EXPECT_THAT(checked("<![CDATA[<a>]]><!x <b><lnb a=\"<'\" b='\"'/><lnb\t/><lnb\n></lnb\r>"),
                ElementsAre("warning: text between elements"));
    EXPECT_THAT(checked("<" + std::string(41, 'n') + "/>"),
                ElementsAre("warning: " + std::string(41, 'n') + ": unknown element"));
    const std::string text = "<configuration/>";
    EXPECT_THAT(lines(check(parsed(text + '\0' + "<lnb>"))),
                ElementsAre("warning: a NUL character; the import reads nothing from here on"));
}

TEST(BackupCheck, AnAmpersandBeginsAReference) {
    const auto warnings = [](const std::string& text) {
        return checked("<identification><location>" + text + "</location></identification>").size();
    };
    for (const char* text :
         {"&amp;&lt;&gt;&quot;&apos;", "&#9;&#10;&#13;&#x20;&#233;&#xE9;&#xE000;&#x10FFFF;",
          "<![CDATA[&]]>", "<!-- & -->"}) {
        EXPECT_EQ(warnings(text), 0U) << text;
    }
    for (const char* text : {"A & B", "&", "&;", "&AMP;", "&eacute;", "&#1;", "&#xD800;",
                             "&#xFFFE;", "&#;", "&#x;", "&amp &"}) {
        EXPECT_GE(warnings(text), 1U) << text;
    }
    const auto findings =
        check(configured("<identification>\n<location>a &b;</location>"
                         "</identification>"));
    EXPECT_THAT(lines(findings), ElementsAre("warning: an '&' that stands for no character"));
    EXPECT_EQ(findings.at(0).position, (Position{2, 13}));
}

TEST(BackupCheck, OfTwoDiseqcEntriesOnePositionTheFirstCounts) {
    const auto positions = [](const std::vector<std::string>& contents) {
        std::string entries;
        for (const std::string& content : contents) {
            entries +=
                "<diseqc><id>" + std::to_string(entries.size()) + "</id>" + content + "</diseqc>";
        }
        return checked("<diseqcs>" + entries + "</diseqcs>");
    };
    EXPECT_THAT(positions({"<position>1</position>", "<position>2</position>"}), IsEmpty());
    EXPECT_THAT(positions({"<position>0</position>", "<position>0</position>", "", ""}), IsEmpty());
    EXPECT_THAT(positions({"<position>3</position>", "<position>03</position>"}),
                ElementsAre("warning: diseqcs/diseqc[id=49]/position: '03' is that of "
                            "diseqcs/diseqc[id=0] too"));
    // Of each the last counts.
    EXPECT_THAT(checked("<diseqcs><diseqc><id>1</id><position>1</position></diseqc></diseqcs>"
                        "<diseqcs><diseqc><id>2</id><position>1</position></diseqc></diseqcs>"),
                IsEmpty());
}

TEST(BackupCheck, AModuleHasAHardwareAddress) {
    const auto mac = [](const std::string& text) {
        return checked("<modules><module><mac>" + text + "</mac></module></modules>");
    };
    for (const char* address :
         {"02:1E:A4:00:10:01", "02:1e:a4:00:10:af", "02-1E-A4-00-10-01", "021EA4001001"}) {
        EXPECT_THAT(mac(address), IsEmpty()) << address;
    }
    for (const char* text : {"", "02:01", "02:1E:A4:00:10:0", "02:1E:A4:00:10:0G",
                             "02:1E:A4:00:10:0g", "02:1E:A4:00:10-01", "02:1E:A4:00:1001:",
                             "021EA400100 ", "02.1E.A4.00.10.01", "021EA40010010"}) {
        EXPECT_THAT(mac(text), ElementsAre(HasSubstr("/mac: '" + std::string(text) +
                                                     "' is no hardware address")));
    }
}

TEST(BackupCheck, ANetworkMaskIsOnesBeforeZeros) {
    const auto mask = [](const std::string& text) {
        return checked("<network><netmask>" + text + "</netmask></network>");
    };
    for (const char* text :
         {"", "255.255.255.0", "255.255.254.0", "255.255.255.255", "128.0.0.0", "0.0.0.0"}) {
        EXPECT_THAT(mask(text), IsEmpty()) << text;
    }
    for (const char* text :
         {"255.255.0.255", "255.255.253.0", "0.0.0.255", "192.168.1.1", "1.0.0.0"}) {
        EXPECT_THAT(mask(text), ElementsAre("warning: network/netmask: '" + std::string(text) +
                                            "' is no network mask"));
    }
    EXPECT_THAT(mask("255.255.255"),
                ElementsAre("warning: network/netmask: '255.255.255' is no address"));
}

TEST(BackupCheck, ADateIsADayOfTheCalendar) {
    const auto date = [](const std::string& text) {
        return checked("<identification><installationDate>" + text +
                       "</installationDate></identification>");
    };
    for (const char* text : {"", "2024-02-29", "29/02/2024", "29.2.24", "2000-02-29", "2024-1-1",
                             "2024-02-29 23:59:59", "2024-02-29T00:00", "31-12-1999 7:05"}) {
        EXPECT_THAT(date(text), IsEmpty()) << text;
    }
    for (const char* text : {"yesterday",
                             "2023-02-29",
                             "1900-02-29",
                             "2024-13-01",
                             "2024-00-10",
                             "31.04.2024",
                             "2024-02",
                             "2024-02-",
                             "2024-02-29-1",
                             "2024/02-29",
                             "2024-02-29 24:00",
                             "2024-02-29 12:60",
                             "2024-02-29 12",
                             "2024-02-29 12:00:60",
                             "2024-02-29 12:00:00:00",
                             "2024-02-29 noon",
                             "202-02-03",
                             "20240229",
                             "2024-002-29",
                             " 2024-02-29"}) {
        EXPECT_THAT(date(text), ElementsAre("warning: identification/installationDate: '" +
                                            std::string(text) + "' is no date as 2024-02-29"));
    }
    EXPECT_THAT(checked("<scramblings><scrambling><name>VSecure</name><date>2024-06-31</date>"
                        "</scrambling></scramblings>"),
                ElementsAre(HasSubstr("/date: '2024-06-31' is no date as 2024-02-29")));
    EXPECT_THAT(lines(check(parsed("<backup><configuration/><vsecureCAMList><cam><serialNumber>1"
                                   "</serialNumber><registerDate>x</registerDate></cam>"
                                   "</vsecureCAMList></backup>"))),
                ElementsAre("warning: vsecureCAMList/cam[serialNumber=1]/registerDate: 'x' is no "
                            "date as 2024-02-29"));
}

TEST(BackupCheck, ANumberOfMoreThanNineCharactersIsCutWhereItIsRead) {
    EXPECT_THAT(checked(module("<attenuation>123456789</attenuation>")), IsEmpty());
    EXPECT_THAT(checked(module("<attenuation>-12345678</attenuation>")), IsEmpty());
    EXPECT_THAT(checked(module("<attenuation>00000000012</attenuation>")), IsEmpty());
    EXPECT_THAT(checked(module("<attenuation>1234567890</attenuation>")),
                ElementsAre(std::string("warning: ") + kModule +
                            "attenuation: '1234567890' is too long; '123456789' is stored"));
    EXPECT_THAT(checked(module("<attenuation>-123456789</attenuation>")),
                ElementsAre(HasSubstr("'-123456789' is too long; '-12345678' is stored")));
    EXPECT_THAT(checked(module("<attenuation>99999999999</attenuation>")),
                ElementsAre(HasSubstr("'99999999999' is too long; '214748364' is stored")));
    EXPECT_THAT(checked(service("<lcn>1234567890</lcn>")),
                ElementsAre(HasSubstr("'1234567890' is too long; '123456789' is stored")));
    EXPECT_THAT(checked(input("0", "<streamID>1234567890</streamID>")),
                ElementsAre(HasSubstr("'1234567890' is too long; '123456789' is stored")));
}

TEST(BackupCheck, ANumberThatIsStoredAsItStandsHas32Bits) {
    const auto frequency = [](const std::string& text) {
        return checked(input("0", "<frequency>" + text + "</frequency>"));
    };
    EXPECT_THAT(frequency("2147483647"), IsEmpty());
    EXPECT_THAT(frequency("-2147483648"), IsEmpty());
    for (const char* text : {"2147483648", "-2147483649", "99999999999999999999"}) {
        EXPECT_THAT(frequency(text), ElementsAre(HasSubstr("/frequency: '" + std::string(text) +
                                                           "' is beyond numbers of 32 bits")));
    }
    EXPECT_THAT(checked(input("0", "<scramblingID>1234567890</scramblingID>")), IsEmpty());
    EXPECT_THAT(checked("<lnb><oscLowFreq>10000000000</oscLowFreq></lnb>"),
                ElementsAre("warning: lnb/oscLowFreq: '10000000000' is beyond numbers of 32 bits"));
    // Row ids are longer, and what is not read may be anything.
    EXPECT_THAT(checked("<homeChannels><homechannel><id>10000000000</id><onid>10000000000</onid>"
                        "</homechannel></homeChannels>"),
                IsEmpty());
}

namespace {

// A module of a number and a network with the services that are given as {output, sid, rest}.
struct Channel {
    int output;
    int sid;
    std::string rest;
};
std::string channels(int number, const std::string& content, const std::vector<Channel>& services) {
    std::string text = "<module><mac>02:00:00:00:00:0" + std::to_string(number) + "</mac>" +
                       content + "<services>";
    for (const Channel& each : services) {
        text += "<service><outputId>" + std::to_string(each.output) + "</outputId><outputSid>" +
                std::to_string(each.sid) + "</outputSid>" + each.rest + "</service>";
    }
    return text + "</services></module>";
}

}  // namespace

TEST(BackupCheck, AChannelNumberOfANetworkIsOneServices) {
    const std::string network1 = "<dvbNetworkId>1</dvbNetworkId>";
    const std::string network2 = "<dvbNetworkId>2</dvbNetworkId>";
    const Channel five{1, 7, "<lcn>5</lcn>"};
    const Channel otherFive{2, 8, "<lcn>05</lcn>"};
    const auto warning = [](int module, const char* service) {
        return "warning: modules/module[mac=02:00:00:00:00:0" + std::to_string(module) +
               "]/services/service[" + service +
               "]/lcn: '05' is that of "
               "modules/module[mac=02:00:00:00:00:01]/services/service[outputId=1,outputSid=7] too";
    };
    const auto found = [](const std::string& modules) {
        return checked("<modules>" + modules + "</modules>");
    };
    EXPECT_THAT(found(channels(1, network1, {five, otherFive})),
                ElementsAre(warning(1, "outputId=2,outputSid=8")));
    EXPECT_THAT(found(channels(1, network1, {five}) + channels(2, network1, {otherFive})),
                ElementsAre(warning(2, "outputId=2,outputSid=8")));
    EXPECT_THAT(found(channels(1, network1, {five}) + channels(2, network2, {otherFive})),
                IsEmpty());
    // Nothing tells that modules without a network share one.
    EXPECT_THAT(found(channels(1, "", {five, otherFive})),
                ElementsAre(warning(1, "outputId=2,outputSid=8")));
    EXPECT_THAT(found(channels(1, "", {five}) + channels(2, "", {otherFive})), IsEmpty());
}

TEST(BackupCheck, AChannelNumberMayBeThereTwiceWhereNoTvSetSeesIt) {
    const auto found = [](const std::string& content, const std::vector<Channel>& services) {
        return checked("<modules>" + channels(1, content, services) + "</modules>");
    };
    const std::string lcn = "<lcn>5</lcn>";
    const std::string outputs =
        "<outputs><output><outputId>1</outputId><active>0</active></output>"
        "<output><outputId>2</outputId><active>1</active></output>"
        "<output><outputId>2</outputId></output></outputs>";
    EXPECT_THAT(
        found("", {{1, 7, ""}, {1, 8, ""}, {1, 9, "<lcn>0</lcn>"}, {1, 10, "<lcn>0</lcn>"}}),
        IsEmpty());
    EXPECT_THAT(found(outputs, {{1, 7, lcn}, {2, 8, lcn}}),
                ElementsAre(HasSubstr("is there twice")));
    EXPECT_THAT(found(outputs, {{2, 7, lcn}, {2, 8, lcn}}),
                ElementsAre(HasSubstr("is there twice"), HasSubstr("/lcn: '5'")));
    const std::string radio = lcn + "<serviceTypeDVB>2</serviceTypeDVB>";
    const std::string newerRadio = lcn + "<serviceTypeDVB>10</serviceTypeDVB>";
    const std::string television = lcn + "<serviceTypeDVB>25</serviceTypeDVB>";
    EXPECT_THAT(found("", {{1, 7, television}, {1, 8, radio}}), IsEmpty());
    EXPECT_THAT(found("", {{1, 7, newerRadio}, {1, 8, radio}}),
                ElementsAre(HasSubstr("/lcn: '5'")));
    EXPECT_THAT(found("", {{1, 7, television}, {1, 8, lcn}}), ElementsAre(HasSubstr("/lcn: '5'")));
    EXPECT_THAT(found("", {{1, 7, lcn}, {1, 7, lcn}}), ElementsAre(HasSubstr("is there twice")));
}

TEST(BackupCheck, TheBytesAreTakenAsTheyAreWhateverEncodingIsDeclared) {
    const auto declared = [](const std::string& before) {
        return check(parsed(before + "<configuration/>"));
    };
    for (const char* text :
         {"", "<?xml version=\"1.0\"?>", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
          "<?xml version='1.0' encoding='utf-8'?>", "<?xml encoding=\"US-ASCII\"?>",
          "\xef\xbb\xbf<?xml encoding=\"utf-8\"?>", "<?xml-a encoding=\"x\"?>",
          "<?xml encoding?>"}) {
        EXPECT_THAT(declared(text), IsEmpty()) << text;
    }
    const auto findings = declared("\xef\xbb\xbf<?xml version='1.0' encoding='ISO-8859-1'?>");
    EXPECT_THAT(lines(findings), ElementsAre("warning: the encoding 'ISO-8859-1' is not looked at; "
                                             "the bytes are taken as they are"));
    EXPECT_EQ(findings.at(0).position, (Position{1, 34}));
}

TEST(BackupCheckVerb, PrintsFindingsAsCompilersDoAndEndsWithAnErrorsStatus) {
    const Ran faulty = ran({"check", "-"},
                           "<configuration>\n<diseqcs><diseqc/></diseqcs>\n"
                           "<network><ip>x</ip></network></configuration>");
    EXPECT_EQ(faulty.status, ExitStatus::usage);
    EXPECT_EQ(faulty.out,
              "-:2:11: error: diseqcs/diseqc[1]: has no 'id'\n"
              "-:3:11: warning: network/ip: 'x' is no address\n");
    const Ran warned = ran({"check", "-"},
                           "<configuration><network><ip>x</ip></network>"
                           "</configuration>");
    EXPECT_EQ(warned.status, ExitStatus::done);
}

TEST(BackupCheckVerb, TellsWhereATextIsNotWellFormed) {
    const Ran faulty = ran({"check", "-"}, "<configuration>\n<lnb");
    EXPECT_EQ(faulty.status, ExitStatus::usage);
    EXPECT_EQ(faulty.out, "-:2:5: error: not well-formed: expected >\n");
    EXPECT_EQ(faulty.err, "");
}

TEST(BackupCheckVerb, PrintsErrorsAsJson) {
    EXPECT_EQ(ran({"check", "--json", "-"}, "<lnb/>").out,
              "[\n  {\n    \"line\": 1,\n    \"column\": 1,\n    \"severity\": \"error\",\n"
              "    \"path\": \"\",\n    \"message\": \"no 'configuration' element\"\n  }\n]\n");
}

TEST(BackupCheckVerb, PrintsJson) {
    EXPECT_EQ(ran({"check", "--json", "-"}, "<configuration><lnbs/></configuration>").out,
              "[\n  {\n    \"line\": 1,\n    \"column\": 17,\n    \"severity\": \"warning\",\n"
              "    \"path\": \"lnbs\",\n"
              "    \"message\": \"unknown element; did you mean 'lnb'?\"\n  }\n]\n");
}

TEST(BackupCheck, ANameOfTheDocumentIsNotACommandToATerminal) {
    const Ran result = ran({"check", "-"}, "<configuration><a\x1b[2J></b\x1b[31m></configuration>");
    EXPECT_EQ(std::string::npos, result.out.find('\x1b')) << result.out;
    EXPECT_NE(std::string::npos, result.out.find("</b\\x1b[31m> closes <a\\x1b[2J>")) << result.out;
}

}  // namespace tarvo_backup
