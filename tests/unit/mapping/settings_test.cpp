#include "mapping/settings.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "mapping/document_tree.h"

namespace mapping {

namespace {

// The sections that hold settings alone. Their elements, keys and models are those of the export's
// and the import's tests.
const std::map<std::string, Elements> kSettings = {
    {"identification", kIdentification}, {"regional", kRegional},       {"network", kNetwork},
    {"remoteControl", kRemoteControl},   {"maintenance", kMaintenance}, {"lnb", kLnb}};

}  // namespace

TEST(SettingTables, HaveTheFormsOfTheirValues) {
    std::map<std::string, Form> forms;
    for (const auto& [section, settings] : kSettings) {
        for (const Element& setting : settings) {
            if (setting.form != Form::text) {
                forms[section + "/" + setting.name] = setting.form;
            }
        }
    }
    EXPECT_EQ(forms, (std::map<std::string, Form>{{"network/internet", Form::onOff},
                                                  {"network/dhcp", Form::onOff},
                                                  {"network/ip", Form::address},
                                                  {"network/netmask", Form::address},
                                                  {"network/gateway", Form::address},
                                                  {"network/dns1", Form::address},
                                                  {"network/dns2", Form::address},
                                                  {"remoteControl/active", Form::onOff},
                                                  {"remoteControl/interval", Form::number},
                                                  {"maintenance/hour", Form::number},
                                                  {"maintenance/min", Form::number},
                                                  {"maintenance/active", Form::onOff},
                                                  {"lnb/oscLowFreq", Form::number},
                                                  {"lnb/oscHighFreq", Form::number},
                                                  {"lnb/oscBandaCFreq", Form::number},
                                                  {"lnb/oscBandaSatelite", Form::number}}));
    EXPECT_EQ(kMaturityRating.form, Form::number);
}

}  // namespace mapping
