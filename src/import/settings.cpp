#include "import/settings.h"

#include <string>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "import/reporting.h"
#include "import/sections.h"

namespace tarvo_remote_control {

using document::Setting;
using document::XmlNode;
using tarvodb::configuracionWebGlobal;

namespace {

// Each assignment is followed by a line that looks like an address and has no meaning.
constexpr const char* kAddressLine = "0x0";

// Writes one row of configuracionWebGlobal, whose post-action is requested when the value is
// another one. A key without a row gets one.
bool setConfig(CmdSetConfiguration& command, const Setting& setting, const char* value) {
    const std::string assignment = std::string(setting.key) + " = " + value;
    reportProgress("setConfig: " + assignment);
    reportProgress(kAddressLine);
    logChange("setConfig " + assignment);

    auto rows = tarvodb::selectByNombre(command.db(), tarvodb::tSqlite3parent(setting.key));
    if (rows.empty()) {
        tarvodb::Record<configuracionWebGlobal> row;
        row.put(configuracionWebGlobal::nombre, setting.key);
        row.put(configuracionWebGlobal::valor, value);
        command.request(setting.postAction);
        return tarvodb::insert(row, command.db());
    }
    auto& row = rows.front();
    if (!row.set(configuracionWebGlobal::valor, value)) {
        return true;
    }
    command.request(setting.postAction);
    return tarvodb::update(row, command.db());
}

}  // namespace

bool applySettings(CmdSetConfiguration& command, const XmlNode& section,
                   std::span<const Setting> settings) {
    for (const XmlNode& child : document::childrenOf(section)) {
        const Setting* setting = document::rowFor(settings, child);
        if (setting != nullptr && !setConfig(command, *setting, document::textOf(child))) {
            reportProgress(kAddressLine);
            return fail(command, Failure{.code = ErrorCode::database,
                                         .message = "Could not set value",
                                         .loggedMessage = std::string("Could not set ") +
                                                          section.name() + "/" + child.name()});
        }
    }
    return true;
}

bool applyMaturityRating(CmdSetConfiguration& command, const XmlNode& element) {
    return setConfig(command, document::kMaturityRating, document::textOf(element));
}

bool applyMaintenances(CmdSetConfiguration& command, const XmlNode& section) {
    bool written = true;
    for (const XmlNode& maintenance : document::childrenOf(section)) {
        if (!document::hasName(maintenance, document::kMaintenance.element)) {
            return failPlainly(command, {.code = ErrorCode::invalidCommand,
                                         .loggedMessage = "No maintenance element found"});
        }
        // Nothing is written of an element that is not complete.
        for (const Setting& setting : document::kMaintenance.settings) {
            if (document::lastText(maintenance, setting.element) == nullptr) {
                return fail(command, ErrorCode::invalidValue);
            }
        }
        for (const Setting& setting : document::kMaintenance.settings) {
            const char* value = document::lastText(maintenance, setting.element);
            written &= setConfig(command, setting, value);
        }
    }
    return written;
}

}  // namespace tarvo_remote_control
