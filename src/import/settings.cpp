#include "import/settings.h"

#include <string>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/value.h"
#include "document/xml.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "mapping/settings.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::configuracionWebGlobal;

namespace {

// Each assignment is followed by a line that looks like an address and has no meaning.
constexpr const char* kAddressLine = "0x0";

// Writes one row of configuracionWebGlobal, whose post-action is requested when the value is
// another one. A key without a row gets one.
bool setConfig(CmdSetConfiguration& command, const Element& setting, const char* value) {
    const std::string assignment = std::string(setting.key) + " = " + value;
    reportProgress("setConfig: " + assignment);
    reportProgress(kAddressLine);
    logChange("setConfig " + assignment);

    auto rows = tarvodb::selectByNombre(command.db(), tarvodb::tSqlite3parent(setting.key));
    if (rows.empty()) {
        tarvodb::Record<configuracionWebGlobal> row;
        row.set(configuracionWebGlobal::nombre, setting.key);
        row.set(configuracionWebGlobal::valor, value);
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
                   mapping::Elements settings) {
    for (const XmlNode& child : document::childrenOf(section)) {
        const Element* setting = mapping::elementOf(settings, child);
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

bool apply::maturityRating(CmdSetConfiguration& command, const XmlNode& element) {
    return setConfig(command, mapping::kMaturityRating, document::textOf(element));
}

bool apply::maintenances(CmdSetConfiguration& command, const XmlNode& section) {
    bool written = true;
    for (const XmlNode& maintenance : document::childrenOf(section)) {
        if (!document::hasName(maintenance, mapping::kMaintenances[0].name)) {
            return failLoggedFirst(command, {.code = ErrorCode::invalidCommand,
                                             .loggedMessage = "No maintenance element found"});
        }
        // Nothing is written of an element that is not complete.
        for (const Element& setting : mapping::kMaintenance) {
            if (document::lastText(maintenance, setting.name) == nullptr) {
                return fail(command, ErrorCode::invalidValue, setting.required.missing);
            }
        }
        for (const Element& setting : mapping::kMaintenance) {
            written &= setConfig(command, setting, document::lastText(maintenance, setting.name));
        }
    }
    return written;
}

}  // namespace tarvo_remote_control
