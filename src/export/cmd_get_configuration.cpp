#include "export/cmd_get_configuration.h"

#include <utility>

#include "command/error_codes.h"
#include "db/operations.h"
#include "document/xml.h"
#include "export/elements.h"
#include "export/sections.h"
#include "mapping/document_tree.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;

namespace {

struct SectionWriter {
    const char* name;
    XmlNode* (*write)(CmdGetConfiguration&, const Element& section);
};

constexpr SectionWriter kSectionWriters[] = {
    {"homeChannels", write::wholeTable<tarvodb::MantenimientoHomeChannelsGlobal>},
    {"serviceEPGs", write::serviceEPGs},
    {"dvbNetworks", write::dvbNetworks},
    {"diseqcs", write::wholeTable<tarvodb::DiSEqCGlobal>},
    {"scramblings", write::scramblings},
    {"preferredLanguages", write::wholeTable<tarvodb::AudioLanguageListGlobal>},
    {"modules", write::modules},
};

}  // namespace

void CmdGetConfiguration::execute() {
    XmlNode* resultNode = createNode("getConfigurationResult");
    configurationNode_ = append(*this, resultNode, mapping::kConfiguration.name);

    if (!openDatabases()) {
        configurationNode_ = nullptr;
        addError(ErrorCode::database);
        return;
    }
    loadGlobalSettings();
    appendSections();
    result().appendToData(resultNode);
    isOfOneState_ = !configDb_.hasChanged() && !stateDb_.hasChanged();
    configDb_ = {};
    stateDb_ = {};
    result().setResult(0);
}

bool CmdGetConfiguration::openDatabases() {
    configDb_ = tarvodb::WatchedDatabase(tarvodb::openDatabase(tarvodb::kConfigDatabase));
    if (!configDb_.isOpen()) {
        return false;
    }
    stateDb_ = tarvodb::WatchedDatabase(tarvodb::openDatabase(tarvodb::kStateDatabase));
    return stateDb_.isOpen();
}

void CmdGetConfiguration::loadGlobalSettings() {
    using tarvodb::configuracionWebGlobal;
    globalSettings_.clear();
    for (auto& setting : tarvodb::doSelect<configuracionWebGlobal>(configDb())) {
        std::string name = setting[configuracionWebGlobal::nombre].asString();
        globalSettings_.insert_or_assign(std::move(name), std::move(setting));
    }
}

void CmdGetConfiguration::appendSections() {
    for (const Element& section : mapping::kConfiguration.children) {
        if (isExported(section)) {
            configurationNode_->append_node(sectionElement(section));
        }
    }
}

XmlNode* CmdGetConfiguration::sectionElement(const Element& section) {
    return mapping::isOfSettings(section)
               ? settings(section)
               : mapping::rowNamed(kSectionWriters, section.name).write(*this, section);
}

// The element of a setting, or one with the settings that it holds.
XmlNode* CmdGetConfiguration::settings(const Element& element) {
    if (element.key != nullptr) {
        return settingElement(element.name, element.key);
    }
    XmlNode* node = createNode(element.name);
    for (const Element& child : element.children) {
        if (isExported(child)) {
            node->append_node(settings(child));
        }
    }
    return node;
}

XmlNode* CmdGetConfiguration::settingElement(const char* name, const char* key) {
    const auto found = globalSettings_.find(key);
    return found == globalSettings_.end()
               ? createNode(name)
               : createNode(name,
                            found->second[tarvodb::configuracionWebGlobal::valor].textOrEmpty());
}

}  // namespace tarvo_remote_control
