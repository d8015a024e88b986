#include "app/run_modes.h"

#include "db/database.h"
#include "device/device_identity.h"
#include "export/cmd_get_configuration.h"
#include "export/cmd_get_vsecure_cam_list.h"
#include "export/cmd_set_vsecure_cam_list.h"
#include "import/cmd_set_configuration.h"
#include "platform/platform.h"

namespace app {

using document::XmlDocument;
using document::XmlNode;
using tarvo_remote_control::CmdGetConfiguration;
using tarvo_remote_control::CmdGetVsecureCAMList;
using tarvo_remote_control::CmdSetConfiguration;
using tarvo_remote_control::CmdSetVsecureCAMList;
using tarvo_remote_control::DeviceIdentity;

namespace {

// Moves `node` out of the tree that it stands in and appends it to `parent`. The document that
// made it keeps owning it.
void moveInto(XmlNode& parent, XmlNode* node) {
    if (XmlNode* tree = node->parent()) {
        tree->remove_node(node);
    }
    parent.append_node(node);
}

// A backup holds passwords and keys: nobody reads in it what he could not read in the database.
platform::FileAccess backupAccess() {
    constexpr unsigned kOwnerOnly = 0600;
    constexpr unsigned kNoExecution = 0666;
    const auto database = platform::fileStatus(tarvodb::kConfigDatabase);
    return database ? platform::FileAccess{.mode = database->mode & kNoExecution,
                                           .group = database->group}
                    : platform::FileAccess{.mode = kOwnerOnly};
}

ExitStatus writeDocument(const XmlNode& root, const std::string& outputPath) {
    const std::string text =
        document::printed(root, 0, std::string(tarvo_remote_control::kXmlDeclaration) + "\n");
    const bool isPrinted = platform::print(text + "\n");
    const bool isWritten = platform::replaceFile(outputPath, text, backupAccess());
    if (!isWritten) {
        platform::printError("Unable to create ConfigurationXML file\n");
    }
    if (!isPrinted) {
        platform::printError("Unable to write to standard output\n");
    }
    return isPrinted && isWritten ? ExitStatus::success : ExitStatus::failure;
}

ExitStatus exportBackup(XmlNode* configuration, const std::string& outputPath) {
    CmdGetVsecureCAMList command;
    XmlNode* list = command.buildCAMList(true, true, "vsecureCAMList");
    const ExitStatus status = errorsToExitStatus(command.errors());
    if (status != ExitStatus::success) {
        return status;
    }
    XmlDocument pool;
    XmlNode* backup = pool.allocate_node(rapidxml::node_element, pool.allocate_string("backup"));
    moveInto(*backup, configuration);
    moveInto(*backup, list);
    return writeDocument(*backup, outputPath);
}

// The export of what `command` has read.
ExitStatus exportResult(const CmdGetConfiguration& command, const std::string& outputPath) {
    if (const ExitStatus status = errorsToExitStatus(command.errors());
        status != ExitStatus::success) {
        return status;
    }
    // There is one: without its databases the command has recorded an error.
    XmlNode* configuration = command.getConfigurationNode();
    return DeviceIdentity::instance().isRNB() ? exportBackup(configuration, outputPath)
                                              : writeDocument(*configuration, outputPath);
}

}  // namespace

ExitStatus exportConfiguration(const std::string& outputPath) {
    constexpr int kTries = 3;
    for (int tries = 1;; ++tries) {
        CmdGetConfiguration command;
        command.run();
        if (!command.isOfOneState() && tries < kTries) {
            continue;
        }
        if (!command.isOfOneState()) {
            platform::printError(
                "The databases change while they are read: the document may mix two states\n");
        }
        return exportResult(command, outputPath);
    }
}

ExitStatus importConfiguration(const std::string& path) {
    // A file that cannot be read counts as an empty document.
    std::string text = platform::readFile(path).value_or("");
    XmlDocument parsed;
    try {
        document::parse(parsed, text);
    } catch (const document::ParseError& error) {
        throw document::ParseError(path + ":" + error.what());
    }
    XmlNode* top = parsed.first_node();
    const XmlNode* backup = document::findSibling(top, "backup");
    XmlNode* first = backup == nullptr ? top : backup->first_node();
    const XmlNode* configuration = document::findSibling(first, "configuration");
    if (configuration == nullptr) {
        platform::printError("No 'configuration' element found\n");
        return ExitStatus::failure;
    }
    const ExitStatus status = applyConfiguration(*configuration);
    if (status != ExitStatus::success || backup == nullptr) {
        return status;
    }
    const XmlNode* list = document::findSibling(first, "vsecureCAMList");
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

ExitStatus applyConfiguration(const XmlNode& configuration) {
    CmdSetConfiguration command;
    command.apply(&configuration);
    return errorsToExitStatus(command.errors());
}

ExitStatus applyVsecureCAMList(const XmlNode& list) {
    CmdSetVsecureCAMList command;
    command.apply(&list, false);
    return errorsToExitStatus(command.errors());
}

}  // namespace app
