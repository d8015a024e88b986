#include "document/settings.h"

#include <gtest/gtest.h>

#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace document {

namespace {

struct Row {
    std::string element;
    std::string key;
    ValueKind kind;
    PostAction postAction;
    ExportedBy exportedBy = ExportedBy::all;

    bool operator==(const Row&) const = default;
};

// How a failed comparison shows a row.
std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.element << " " << row.key << " kind " << static_cast<int>(row.kind)
               << " action " << static_cast<int>(row.postAction) << " models "
               << static_cast<int>(row.exportedBy);
}

Row rowOf(const Setting& setting) {
    return {setting.element, setting.key, setting.kind, setting.postAction, setting.exportedBy};
}

void expectSection(const SettingSection& section, const std::string& element,
                   const std::vector<Row>& expected) {
    std::vector<Row> rows;
    for (const Setting& setting : section.settings) {
        rows.push_back(rowOf(setting));
    }
    EXPECT_EQ(section.element, element);
    EXPECT_EQ(rows, expected);
}

}  // namespace

TEST(SettingTables, IdentifyTheHeadend) {
    expectSection(kIdentification, "identification",
                  {{"headendName", "identificacion_cabecera", ValueKind::text, PostAction::none},
                   {"location", "identificacion_localizacion", ValueKind::text, PostAction::none},
                   {"installationDate", "identificacion_fecha", ValueKind::text, PostAction::none},
                   {"zenContractId", "identificacion_contrato", ValueKind::text, PostAction::none,
                    ExportedBy::rnb},
                   {"installer", "identificacion_instalador", ValueKind::text, PostAction::none,
                    ExportedBy::familyAOrLmv},
                   {"clientID", "identificacion_codCanal", ValueKind::text, PostAction::none,
                    ExportedBy::familyAOrLmv},
                   {"hostType", "identificacion_hostType", ValueKind::text, PostAction::none,
                    ExportedBy::familyA},
                   {"TVModels", "identificacion_TVModels", ValueKind::text, PostAction::none,
                    ExportedBy::familyA},
                   {"installationMode", "identificacion_installationMode", ValueKind::text,
                    PostAction::none, ExportedBy::familyA}});
}

TEST(SettingTables, PairTheRegionalElementsWithTheKeysInUse) {
    expectSection(kRegional, "regional",
                  {{"language", "codtimezone", ValueKind::text, PostAction::regional},
                   {"country", "idtimezone", ValueKind::text, PostAction::regional},
                   {"timezone", "subtimezone", ValueKind::text, PostAction::regional}});
    EXPECT_STREQ(kLanguageKey, "codtimezone");
    EXPECT_STREQ(kCountryKey, "idtimezone");
    EXPECT_STREQ(kTimeZoneKey, "subtimezone");
}

TEST(SettingTables, HoldTheNetwork) {
    expectSection(
        kNetwork, "network",
        {{"internet", "network_ConfigureNET", ValueKind::onOff, PostAction::network},
         {"dhcp", "network_UseDHCPIP", ValueKind::onOff, PostAction::network},
         {"ip", "network_IP", ValueKind::dottedAddress, PostAction::network},
         {"netmask", "network_Netmask", ValueKind::dottedAddress, PostAction::network},
         {"gateway", "network_Gateway", ValueKind::dottedAddress, PostAction::network},
         {"dns1", "network_PrimaryDNS", ValueKind::dottedAddress, PostAction::network},
         {"dns2", "network_SecondaryDNS", ValueKind::dottedAddress, PostAction::network}});
}

TEST(SettingTables, HoldTheRemoteControl) {
    expectSection(
        kRemoteControl, "remoteControl",
        {{"active", "servidorZEN_activo", ValueKind::onOff, PostAction::remoteControl},
         {"interval", "servidorZEN_intervalo", ValueKind::number, PostAction::remoteControl},
         {"serverUrl", "servidorZEN_direccion", ValueKind::text, PostAction::remoteControl},
         {"username", "servidorZEN_usuario", ValueKind::text, PostAction::remoteControl},
         {"password", "servidorZEN_password", ValueKind::text, PostAction::remoteControl}});
}

TEST(SettingTables, HoldTheLnb) {
    expectSection(kLnb, "lnb",
                  {{"oscLowFreq", "LNB_fb", ValueKind::number, PostAction::none},
                   {"oscHighFreq", "LNB_fa", ValueKind::number, PostAction::none},
                   {"oscBandaCFreq", "LNB_fbandaC", ValueKind::number, PostAction::none},
                   {"oscBandaSatelite", "LNB_BandaSatelite", ValueKind::number, PostAction::none}});
    EXPECT_STREQ(kLowBandOscillatorKey, "LNB_fb");
    EXPECT_STREQ(kHighBandOscillatorKey, "LNB_fa");
}

TEST(SettingTables, HoldTheMaintenance) {
    std::vector<std::string> pairs;
    for (const Setting& setting : kMaintenance.settings) {
        pairs.push_back(std::string(setting.element) + " " + setting.key);
        EXPECT_EQ(setting.postAction, PostAction::none);
        EXPECT_EQ(setting.exportedBy, ExportedBy::all);
    }
    EXPECT_STREQ(kMaintenance.element, "maintenance");
    EXPECT_EQ(pairs, (std::vector<std::string>{"hour mantenimiento_hora", "min mantenimiento_min",
                                               "active mantenimiento_activo"}));
}

TEST(SettingTables, HoldTheMaturityRating) {
    EXPECT_STREQ(kMaturityRating.element, "maturityRating");
    EXPECT_STREQ(kMaturityRating.key, "MaturityRating");
    EXPECT_EQ(kMaturityRating.postAction, PostAction::none);
}

TEST(SettingTables, NumberThePostActions) {
    EXPECT_EQ(static_cast<int>(PostAction::none), 0);
    EXPECT_EQ(static_cast<int>(PostAction::network), 1);
    EXPECT_EQ(static_cast<int>(PostAction::remoteControl), 2);
    EXPECT_EQ(static_cast<int>(PostAction::scramblingKeys), 3);
    EXPECT_EQ(static_cast<int>(PostAction::regional), 4);
}

TEST(SettingTables, UseNoKeyAndNoElementOfASectionTwice) {
    std::set<std::string> keys;
    for (const SettingSection& section :
         {kIdentification, kRegional, kNetwork, kRemoteControl, kMaintenance, kLnb}) {
        std::set<std::string> elements;
        for (const Setting& setting : section.settings) {
            EXPECT_TRUE(keys.insert(setting.key).second) << setting.key;
            EXPECT_TRUE(elements.insert(setting.element).second) << setting.element;
        }
    }
}

}  // namespace document
