#include "app/run_modes.h"

#include <algorithm>
#include <iterator>

#include "db/database.h"
#include "document/deferred_document.h"
#include "document/writer.h"
#include "export/cmd_get_configuration.h"
#include "export/cmd_get_vsecure_cam_list.h"
#include "export/cmd_set_vsecure_cam_list.h"
#include "export/elements.h"
#include "import/cmd_set_configuration.h"
#include "mapping/document_tree.h"
#include "mapping/element.h"
#include "mapping/modules.h"
#include "platform/platform.h"

namespace app {

using document::DeferredDocument;
using document::TextWriter;
using document::XmlNode;
using tarvo_remote_control::CmdGetConfiguration;
using tarvo_remote_control::CmdGetVsecureCAMList;
using tarvo_remote_control::CmdSetConfiguration;
using tarvo_remote_control::CmdSetVsecureCAMList;

namespace {

// A backup holds passwords and keys: nobody reads in it what he could not read in the database.
platform::FileAccess backupAccess() {
    constexpr unsigned kOwnerOnly = 0600;
    constexpr unsigned kNoExecution = 0666;
    const auto database = platform::fileStatus(tarvodb::kConfigDatabase);
    return database ? platform::FileAccess{.mode = database->mode & kNoExecution,
                                           .group = database->group}
                    : platform::FileAccess{.mode = kOwnerOnly};
}

ExitStatus writeDocument(const TextWriter& document, const std::string& outputPath) {
    const bool isPrinted =
        std::all_of(document.blocks().begin(), document.blocks().end(), platform::print) &&
        platform::print("\n");
    const bool isWritten = platform::replaceFile(outputPath, document.blocks(), backupAccess());
    if (!isWritten) {
        platform::printError("Unable to create ConfigurationXML file\n");
    }
    if (!isPrinted) {
        platform::printError("Unable to write to standard output\n");
    }
    return isPrinted && isWritten ? ExitStatus::success : ExitStatus::failure;
}

// Most of a document is in its services, which their module's handler loads (import/modules.cpp).
constexpr const char* kReadLate[] = {mapping::rowNamed(mapping::kSections, "modules").name,
                                     mapping::kModules[0].name,
                                     mapping::rowNamed(mapping::kModule, "services").name};

// A file that cannot be read counts as an empty document.
DeferredDocument parsedFile(const std::string& path) {
    try {
        return {platform::readFile(path).value_or(""),
                {std::begin(kReadLate), std::end(kReadLate)}};
    } catch (const document::ParseError& error) {
        throw document::ParseError(path + ":" + error.what());
    }
}

ExitStatus exportCamList(TextWriter& backup) {
    CmdGetVsecureCAMList command;
    command.buildCAMList(backup, true, true, mapping::kBackupCamList.name);
    return errorsToExitStatus(command.errors());
}

}  // namespace

ExitStatus exportConfiguration(const std::string& outputPath) {
    constexpr int kTries = 3;
    for (int tries = 1;; ++tries) {
        TextWriter document(std::string(tarvo_remote_control::kXmlDeclaration) + "\n");
        const bool isBackup = tarvo_remote_control::isExported(mapping::kBackup);
        if (isBackup) {
            document.open(mapping::kBackup.name);
        }
        CmdGetConfiguration command(document);
        command.run();
        if (!command.isOfOneState() && tries < kTries) {
            continue;
        }
        if (!command.isOfOneState()) {
            platform::printError(
                "The databases change while they are read: the document may mix two states\n");
        }
        ExitStatus status = errorsToExitStatus(command.errors());
        if (isBackup && status == ExitStatus::success) {
            status = exportCamList(document);
            document.close();
        }
        return status == ExitStatus::success ? writeDocument(document, outputPath) : status;
    }
}

ExitStatus importConfiguration(const std::string& path) {
    DeferredDocument document = parsedFile(path);
    XmlNode* top = document.firstNode();
    const XmlNode* backup = document::findSibling(top, mapping::kBackup.name);
    XmlNode* first = backup == nullptr ? top : backup->first_node();
    const XmlNode* configuration = document::findSibling(first, mapping::kConfiguration.name);
    if (configuration == nullptr) {
        platform::printError("No 'configuration' element found\n");
        return ExitStatus::failure;
    }
    const ExitStatus status = applyConfiguration(*configuration, &document);
    if (status != ExitStatus::success || backup == nullptr) {
        return status;
    }
    const XmlNode* list = document::findSibling(first, mapping::kBackupCamList.name);
    return list == nullptr ? status : applyVsecureCAMList(*list);
}

ExitStatus importWithRetries(const std::string& path) {
    constexpr int kTries = 3;
    ExitStatus status = ExitStatus::failure;
    for (int tries = 0; tries < kTries && status != ExitStatus::success; ++tries) {
        status = importConfiguration(path);
        if (status != ExitStatus::success) {
            platform::sleepSeconds(1);
        }
    }
    return status;
}

ExitStatus applyConfiguration(const XmlNode& configuration, DeferredDocument* document) {
    CmdSetConfiguration command;
    command.apply(&configuration, document);
    return errorsToExitStatus(command.errors());
}

ExitStatus applyVsecureCAMList(const XmlNode& list) {
    CmdSetVsecureCAMList command;
    command.apply(&list, false);
    return errorsToExitStatus(command.errors());
}

}  // namespace app
