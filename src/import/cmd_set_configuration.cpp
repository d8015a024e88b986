#include "import/cmd_set_configuration.h"

#include <string>

#include "command/error_codes.h"
#include "command/system_actions.h"
#include "device/device_identity.h"
#include "import/regional.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "import/settings.h"
#include "platform/platform.h"

namespace tarvo_remote_control {

using document::PostAction;
using document::XmlNode;

namespace {

using SectionHandler = bool (*)(CmdSetConfiguration&, const XmlNode&);

struct Section {
    const char* element;
    SectionHandler handler;
};

template <const document::SettingSection& section>
bool settingSection(CmdSetConfiguration& command, const XmlNode& node) {
    return applySettings(command, node, section.settings);
}

constexpr Section kSections[] = {
    {document::kIdentification.element, settingSection<document::kIdentification>},
    {document::kRegional.element, settingSection<document::kRegional>},
    {document::kMaturityRating.element, applyMaturityRating},
    {"maintenances", applyMaintenances},
    {"homeChannels", applyHomeChannels},
    {"serviceEPGs", applyServiceEpgs},
    {document::kRemoteControl.element, settingSection<document::kRemoteControl>},
    {document::kNetwork.element, settingSection<document::kNetwork>},
    {"dvbNetworks", applyDvbNetworks},
    {document::kLnb.element, settingSection<document::kLnb>},
    {"diseqcs", applyDiseqcs},
    {"preferredLanguages", applyPreferredLanguages},
    {"scramblings", applyScramblings},
    {"modules", applyModules},
};

bool applySection(CmdSetConfiguration& command, const XmlNode& node) {
    if (const Section* section = document::rowFor(kSections, node)) {
        return section->handler(command, node);
    }
    logFault(std::string("Unknown configuration setting: ") + node.name());
    return true;
}

}  // namespace

void CmdSetConfiguration::execute() {
    result().appendToData(createNode("setConfigurationResult"));
    apply(commandNode() == nullptr ? nullptr
                                   : document::childNamed(*commandNode(), "configuration"));
}

void CmdSetConfiguration::apply(const XmlNode* configuration) {
    if (configuration == nullptr) {
        fail(*this, ErrorCode::invalidCommand);
        return;
    }
    postActions_.clear();
    db_ = tarvodb::openDatabase(tarvodb::kConfigDatabase);
    if (!db_) {
        fail(*this, ErrorCode::database, "Could not open DB");
        return;
    }
    if (!transaction().begin()) {
        fail(*this, ErrorCode::database, "Could not start transaction");
        return;
    }
    if (!applySections(*configuration)) {
        rollbackAndClose();
        fail(*this, ErrorCode::setConfiguration);
        result().setResult(1);
        return;
    }
    if (!transaction().commit()) {
        fail(*this, ErrorCode::database, "Could not commit transaction");
        rollbackAndClose();
        return;
    }
    db_.reset();
    result().setResult(runPostActions() ? 0 : 1);
}

bool CmdSetConfiguration::applySections(const XmlNode& configuration) {
    for (const XmlNode& section : document::childrenOf(configuration)) {
        reportProgress(std::string("Processing: ") + section.name());
        if (!applySection(*this, section)) {
            return false;
        }
    }
    return true;
}

int CmdSetConfiguration::rollbackAndClose() {
    if (!transaction().rollback()) {
        fail(*this, ErrorCode::database, "Could not rollback transaction");
    }
    return tarvodb::close(db_);
}

void CmdSetConfiguration::request(PostAction action) {
    if (action != PostAction::none) {
        postActions_.insert(action);
    }
}

// A request for the remote-control server is recorded like the others, but has no action.
bool CmdSetConfiguration::runPostActions() {
    if (isRequested(PostAction::network) &&
        platform::runShell("/tarvo/script/WAN_from_DB.sh") != 0) {
        return fail(*this, ErrorCode::network);
    }
    if (isRequested(PostAction::regional)) {
        applyCountryChanged();  // its failure is no error of the import
    }
    if (isRequested(PostAction::scramblingKeys) && DeviceIdentity::instance().isRNB() &&
        platform::runShell(kRegenerateScramblingKeys) != 0) {
        return fail(*this, ErrorCode::scramblingKey);
    }
    return true;
}

}  // namespace tarvo_remote_control
