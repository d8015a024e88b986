#include "import/cmd_set_configuration.h"

#include <string>

#include "command/error_codes.h"
#include "command/system_actions.h"
#include "device/device_identity.h"
#include "document/xml.h"
#include "import/regional.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "import/settings.h"
#include "mapping/document_tree.h"
#include "platform/platform.h"
#include "platform/signals.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::PostAction;

namespace {

struct SectionHandler {
    const char* name;
    bool (*apply)(CmdSetConfiguration&, const XmlNode&);
};

// Of the sections that are more than settings.
constexpr SectionHandler kSectionHandlers[] = {
    {"maturityRating", apply::maturityRating},
    {"maintenances", apply::maintenances},
    {"homeChannels", apply::homeChannels},
    {"serviceEPGs", apply::serviceEPGs},
    {"dvbNetworks", apply::dvbNetworks},
    {"diseqcs", apply::diseqcs},
    {"preferredLanguages", apply::preferredLanguages},
    {"scramblings", apply::scramblings},
    {"modules", apply::modules},
};

static_assert(mapping::nameExactly(kSectionHandlers, mapping::kConfiguration.children,
                                   [](const mapping::Element& section) {
                                       return section.kind != mapping::Kind::section;
                                   }));

bool applySection(CmdSetConfiguration& command, const XmlNode& node) {
    if (const auto* handler = document::rowFor(kSectionHandlers, node)) {
        return handler->apply(command, node);
    }
    if (const auto* section = mapping::elementOf(mapping::kConfiguration.children, node)) {
        return applySettings(command, node, section->children);
    }
    logFault(std::string("Unknown configuration setting: ") + node.name());
    return true;
}

}  // namespace

void CmdSetConfiguration::execute() {
    result().appendToData(createNode("setConfigurationResult"));
    apply(commandNode() == nullptr
              ? nullptr
              : document::childNamed(*commandNode(), mapping::kConfiguration.name));
}

void CmdSetConfiguration::apply(const XmlNode* configuration,
                                document::DeferredDocument* document) {
    document_ = document;
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
    // A second import would find nothing to change, and run no post-action.
    const platform::HeldSignals held;
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

void CmdSetConfiguration::load(const XmlNode& element) {
    if (document_ != nullptr) {
        document_->load(element);
    }
}

void CmdSetConfiguration::request(PostAction action) {
    if (action != PostAction::none) {
        postActions_.insert(action);
    }
}

// A request for the remote-control server is recorded like the others, but has no action.
bool CmdSetConfiguration::runPostActions() {
    if (isRequested(PostAction::network) && platform::runShell(kNetworkScript) != 0) {
        return fail(*this, ErrorCode::network);
    }
    if (isRequested(PostAction::regional)) {
        applyCountryChanged();  // its failure is not an error of the import
    }
    if (isRequested(PostAction::scramblingKeys) && DeviceIdentity::instance().isRNB() &&
        platform::runShell(kRegenerateScramblingKeys) != 0) {
        return fail(*this, ErrorCode::scramblingKey);
    }
    return true;
}

}  // namespace tarvo_remote_control
