#include "mapping/settings.h"

#include <gtest/gtest.h>

#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "mapping/document_tree.h"

namespace mapping {

namespace {

struct Row {
    std::string element;
    std::string key;
    Form form;
    PostAction postAction;
    ExportedBy exportedBy = ExportedBy::all;

    bool operator==(const Row&) const = default;
};

// How a failed comparison shows a row.
std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.element << " " << row.key << " form " << static_cast<int>(row.form)
               << " action " << static_cast<int>(row.postAction) << " models "
               << static_cast<int>(row.exportedBy);
}

Row rowOf(const Element& setting) {
    return {setting.name, setting.key, setting.form, setting.postAction, setting.exportedBy};
}

void expectSection(const std::string& name, const std::vector<Row>& expected) {
    std::vector<Row> rows;
    for (const Element& setting : rowNamed(kSections, name).children) {
        rows.push_back(rowOf(setting));
        EXPECT_TRUE(setting.column.isOf(tarvodb::configuracionWebGlobal::info));
        EXPECT_EQ(setting.column.index, tarvodb::configuracionWebGlobal::valor);
        EXPECT_EQ(setting.take, Take::text);
    }
    EXPECT_EQ(rows, expected);
}

}  // namespace

TEST(SettingTables, IdentifyTheHeadend) {
    expectSection(
        "identification",
        {{"headendName", "identificacion_cabecera", Form::text, PostAction::none},
         {"location", "identificacion_localizacion", Form::text, PostAction::none},
         {"installationDate", "identificacion_fecha", Form::text, PostAction::none},
         {"zenContractId", "identificacion_contrato", Form::text, PostAction::none,
          ExportedBy::rnb},
         {"installer", "identificacion_instalador", Form::text, PostAction::none,
          ExportedBy::familyAOrLmv},
         {"clientID", "identificacion_codCanal", Form::text, PostAction::none,
          ExportedBy::familyAOrLmv},
         {"hostType", "identificacion_hostType", Form::text, PostAction::none, ExportedBy::familyA},
         {"TVModels", "identificacion_TVModels", Form::text, PostAction::none, ExportedBy::familyA},
         {"installationMode", "identificacion_installationMode", Form::text, PostAction::none,
          ExportedBy::familyA}});
}

TEST(SettingTables, PairTheRegionalElementsWithTheKeysInUse) {
    expectSection("regional", {{"language", "codtimezone", Form::text, PostAction::regional},
                               {"country", "idtimezone", Form::text, PostAction::regional},
                               {"timezone", "subtimezone", Form::text, PostAction::regional}});
    EXPECT_STREQ(tarvodb::setting::kLanguage, "codtimezone");
    EXPECT_STREQ(tarvodb::setting::kCountry, "idtimezone");
    EXPECT_STREQ(tarvodb::setting::kTimeZone, "subtimezone");
}

TEST(SettingTables, HoldTheNetwork) {
    expectSection("network",
                  {{"internet", "network_ConfigureNET", Form::onOff, PostAction::network},
                   {"dhcp", "network_UseDHCPIP", Form::onOff, PostAction::network},
                   {"ip", "network_IP", Form::address, PostAction::network},
                   {"netmask", "network_Netmask", Form::address, PostAction::network},
                   {"gateway", "network_Gateway", Form::address, PostAction::network},
                   {"dns1", "network_PrimaryDNS", Form::address, PostAction::network},
                   {"dns2", "network_SecondaryDNS", Form::address, PostAction::network}});
}

TEST(SettingTables, HoldTheRemoteControl) {
    expectSection("remoteControl",
                  {{"active", "servidorZEN_activo", Form::onOff, PostAction::remoteControl},
                   {"interval", "servidorZEN_intervalo", Form::number, PostAction::remoteControl},
                   {"serverUrl", "servidorZEN_direccion", Form::text, PostAction::remoteControl},
                   {"username", "servidorZEN_usuario", Form::text, PostAction::remoteControl},
                   {"password", "servidorZEN_password", Form::text, PostAction::remoteControl}});
}

TEST(SettingTables, HoldTheLnb) {
    expectSection("lnb",
                  {{"oscLowFreq", "LNB_fb", Form::number, PostAction::none},
                   {"oscHighFreq", "LNB_fa", Form::number, PostAction::none},
                   {"oscBandaCFreq", "LNB_fbandaC", Form::number, PostAction::none},
                   {"oscBandaSatelite", "LNB_BandaSatelite", Form::number, PostAction::none}});
    EXPECT_STREQ(tarvodb::setting::kLowBandOscillator, "LNB_fb");
    EXPECT_STREQ(tarvodb::setting::kHighBandOscillator, "LNB_fa");
}

TEST(SettingTables, HoldTheMaintenance) {
    std::vector<std::string> pairs;
    for (const Element& setting : kMaintenance) {
        pairs.push_back(std::string(setting.name) + " " + setting.key);
        EXPECT_EQ(setting.postAction, PostAction::none);
        EXPECT_EQ(setting.exportedBy, ExportedBy::all);
    }
    EXPECT_STREQ(kMaintenances[0].name, "maintenance");
    EXPECT_EQ(pairs, (std::vector<std::string>{"hour mantenimiento_hora", "min mantenimiento_min",
                                               "active mantenimiento_activo"}));
}

TEST(SettingTables, HoldTheMaturityRating) {
    EXPECT_STREQ(kMaturityRating.name, "maturityRating");
    EXPECT_STREQ(kMaturityRating.key, "MaturityRating");
    EXPECT_EQ(kMaturityRating.postAction, PostAction::none);
    EXPECT_EQ(kMaturityRating.exportedBy, ExportedBy::familyA);
}

TEST(SettingTables, NumberThePostActions) {
    EXPECT_EQ(static_cast<int>(PostAction::none), 0);
    EXPECT_EQ(static_cast<int>(PostAction::network), 1);
    EXPECT_EQ(static_cast<int>(PostAction::remoteControl), 2);
    EXPECT_EQ(static_cast<int>(PostAction::scramblingKeys), 3);
    EXPECT_EQ(static_cast<int>(PostAction::regional), 4);
}

TEST(SettingTables, UseNoKeyTwice) {
    std::set<std::string> keys;
    for (const Elements settings :
         {Elements(kIdentification), Elements(kRegional), Elements(kNetwork),
          Elements(kRemoteControl), Elements(kMaintenance), Elements(kLnb)}) {
        for (const Element& setting : settings) {
            EXPECT_TRUE(keys.insert(setting.key).second) << setting.key;
        }
    }
}

}  // namespace mapping
