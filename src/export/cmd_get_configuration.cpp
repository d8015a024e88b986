#include "export/cmd_get_configuration.h"

#include <utility>

#include "command/error_codes.h"
#include "db/database.h"
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
    void (*write)(CmdGetConfiguration&, const Element& section);
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

static_assert(mapping::nameExactly(kSectionWriters, mapping::kConfiguration.children,
                                   [](const Element& section) { return !isOfSettings(section); }));

}  // namespace

void CmdGetConfiguration::execute() {
    configurationNode_ = nullptr;
    if (!openDatabases()) {
        addError(ErrorCode::database);
        return;
    }
    loadGlobalSettings();
    if (writer_ != nullptr) {
        writeConfiguration(*writer_);
    } else {
        XmlNode* resultNode = createNode("getConfigurationResult");
        document::TreeWriter tree = result().writerInto(*resultNode);
        writeConfiguration(tree);
        configurationNode_ = resultNode->first_node();
        result().appendToData(resultNode);
    }
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

void CmdGetConfiguration::writeConfiguration(document::Writer& out) {
    out_ = &out;
    out.open(mapping::kConfiguration.name);
    for (const Element& section : mapping::kConfiguration.children) {
        if (!isExported(section)) {
            continue;
        }
        if (mapping::isOfSettings(section)) {
            writeSettings(section);
        } else {
            mapping::rowNamed(kSectionWriters, section.name).write(*this, section);
        }
    }
    out.close();
}

// The element of a setting, or one with the settings that it holds.
void CmdGetConfiguration::writeSettings(const Element& element) {
    if (element.key != nullptr) {
        settingElement(element.name, element.key);
        return;
    }
    out().open(element.name);
    for (const Element& child : element.children) {
        if (isExported(child)) {
            writeSettings(child);
        }
    }
    out().close();
}

// Has no text when the setting is missing.
void CmdGetConfiguration::settingElement(const char* name, const char* key) {
    const auto found = globalSettings_.find(key);
    const bool isStored = found != globalSettings_.end();
    out().leaf(name, isStored ? found->second[tarvodb::configuracionWebGlobal::valor].textOrEmpty()
                              : nullptr);
}

}  // namespace tarvo_remote_control
