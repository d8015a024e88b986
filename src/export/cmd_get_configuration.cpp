#include "export/cmd_get_configuration.h"

#include <utility>

#include "command/error_codes.h"
#include "db/operations.h"
#include "export/sections.h"

namespace tarvo_remote_control {

using document::ExportedBy;
using document::XmlNode;

namespace {

bool isExported(ExportedBy models, const DeviceIdentity& device) {
    switch (models) {
        case ExportedBy::all:
            return true;
        case ExportedBy::rnb:
            return device.isRNB();
        case ExportedBy::familyA:
            return device.isFamilyA();
        case ExportedBy::familyAOrLmv:
            return device.isFamilyA() || device.isLMV();
    }
    return false;
}

}  // namespace

void CmdGetConfiguration::execute() {
    XmlNode* resultNode = createNode("getConfigurationResult");
    configurationNode_ = append(resultNode, "configuration");

    if (!openDatabases()) {
        configurationNode_ = nullptr;
        addError(ErrorCode::database);
        return;
    }
    loadGlobalSettings();
    appendSections();
    result().appendToData(resultNode);
    configDb_.reset();
    stateDb_.reset();
    result().setResult(0);
}

bool CmdGetConfiguration::openDatabases() {
    configDb_ = tarvodb::openDatabase(tarvodb::kConfigDatabase);
    if (!configDb_) {
        return false;
    }
    stateDb_ = tarvodb::openDatabase(tarvodb::kStateDatabase);
    return stateDb_ != nullptr;
}

void CmdGetConfiguration::loadGlobalSettings() {
    using tarvodb::configuracionWebGlobal;
    globalSettings_.clear();
    for (auto& setting : tarvodb::doSelect<configuracionWebGlobal>(configDb())) {
        std::string name = setting[configuracionWebGlobal::nombre].asString();
        globalSettings_.insert_or_assign(std::move(name), std::move(setting));
    }
}

// The sections in the order that a document has them.
void CmdGetConfiguration::appendSections() {
    const bool familyA = device().isFamilyA();
    const bool hasSatelliteSettings = !device().isWVXB();
    const auto add = [this](XmlNode* section) { configurationNode_->append_node(section); };

    add(settingSection(document::kIdentification));
    add(settingSection(document::kRegional));
    if (familyA) {
        add(settingElement(document::kMaturityRating.element, document::kMaturityRating.key));
        add(maintenances());
        add(homeChannelsSection(*this));
        add(serviceEpgsSection(*this));
    }
    add(settingSection(document::kNetwork));
    if (device().isRNB()) {
        add(settingSection(document::kRemoteControl));
    }
    add(dvbNetworksSection(*this));
    if (hasSatelliteSettings) {
        add(settingSection(document::kLnb));
        add(diseqcsSection(*this));
        add(scramblingsSection(*this));
    }
    add(preferredLanguagesSection(*this));
    add(modulesSection(*this));
}

XmlNode* CmdGetConfiguration::append(XmlNode* parent, const char* name, const char* value) {
    XmlNode* node = createNode(name, value);
    parent->append_node(node);
    return node;
}

XmlNode* CmdGetConfiguration::settingElement(const char* element, const char* key) {
    const auto found = globalSettings_.find(key);
    return found == globalSettings_.end()
               ? createNode(element)
               : createNode(element,
                            found->second[tarvodb::configuracionWebGlobal::valor].textOrEmpty());
}

XmlNode* CmdGetConfiguration::settingSection(const document::SettingSection& section) {
    XmlNode* node = createNode(section.element);
    for (const document::Setting& setting : section.settings) {
        if (isExported(setting.exportedBy, device())) {
            node->append_node(settingElement(setting.element, setting.key));
        }
    }
    return node;
}

XmlNode* CmdGetConfiguration::maintenances() {
    XmlNode* node = createNode("maintenances");
    node->append_node(settingSection(document::kMaintenance));
    return node;
}

}  // namespace tarvo_remote_control
