// The headend's one scrambling system: whether it is on, and its control words.
#include "mapping/scramblings.h"

#include <string>
#include <utility>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/status_marks.h"
#include "document/xml.h"
#include "import/elements.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::Record;
using tarvodb::ScramblingGlobal;
using tarvodb::ScramblingKeysGlobal;
using tarvodb::StatusMark;

namespace {

// The system that every `scrambling` element is written to, whatever its name.
constexpr const char* kSystem = "VSecure";

constexpr const Element& kName = mapping::rowNamed(mapping::kScrambling, "name");

// Checks the value of a child, whatever comes after it.
bool validate(CmdSetConfiguration& command, const XmlNode& child) {
    const Element* element = mapping::elementOf(mapping::kScrambling, child);
    if (element == nullptr) {
        return true;
    }
    if (!element->range.contains(document::numberOf(child))) {
        return fail(command, ErrorCode::invalidValue,
                    std::string("scrambling/") + element->name + " should be 0/1");
    }
    if (element->take == mapping::Take::code && !codeOf(*element, document::textOf(child))) {
        // A bad mode has this text and these two codes on purpose.
        return fail(command, Failure{.code = ErrorCode::invalidCommand,
                                     .message = kName.required.missing,
                                     .loggedCode = ErrorCode::invalidValue});
    }
    return true;
}

bool validateAll(CmdSetConfiguration& command, const XmlNode& scrambling) {
    for (const XmlNode& child : document::childrenOf(scrambling)) {
        if (!validate(command, child)) {
            return false;
        }
    }
    return document::childNamed(scrambling, kName.name) != nullptr ||
           fail(command, ErrorCode::invalidCommand, kName.required.missing);
}

Record<ScramblingGlobal> newSystem() {
    Record<ScramblingGlobal> system;
    system.set(ScramblingGlobal::ScramblingName, kSystem);
    system.set(ScramblingGlobal::Mode, 0);
    system.set(ScramblingGlobal::Estado, StatusMark::changed);
    return system;
}

Record<ScramblingKeysGlobal> newKeys() {
    using Keys = ScramblingKeysGlobal;
    Record<Keys> keys;
    keys.set(Keys::System, kSystem);
    keys.set(Keys::Mode, 0);
    keys.set(Keys::Frequency, 0);
    for (const auto text :
         {Keys::Odd, Keys::Even, Keys::K_Shared, Keys::EK_Odd, Keys::EK_Even, Keys::Date}) {
        keys.set(text, "");
    }
    keys.set(Keys::Estado, StatusMark::changed);
    return keys;
}

// The system's row of one table.
template <class Table>
struct SystemRow {
    tarvodb::Clause<1> clause;
    Record<Table> (*make)();
    const char* insertMessage;
    const char* updateMessage;
};

constexpr SystemRow<ScramblingGlobal> kSystemRow{tarvodb::clause::kByScramblingName, newSystem,
                                                 "Could not insert ScramblingG",
                                                 "Could not update ScramblingG"};
constexpr SystemRow<ScramblingKeysGlobal> kKeysRow{tarvodb::clause::kByScramblingSystem, newKeys,
                                                   "Could not insert ScramblingKG",
                                                   "Could not update ScramblingKG"};

// Writes the table's part of an element.
template <class Table>
bool write(CmdSetConfiguration& command, const SystemRow<Table>& row, const XmlNode& scrambling) {
    auto stored = tarvodb::doSelect<Table>(command.db(), row.clause, kSystem);
    Record<Table> record = stored.empty() ? row.make() : std::move(stored.front());
    takeAndMark(record, mapping::kScrambling, scrambling);
    return stored.empty() ? insertRecord(command, record, row.insertMessage)
                          : updateRecord(command, record, row.updateMessage);
}

}  // namespace

bool apply::scramblings(CmdSetConfiguration& command, const XmlNode& section) {
    bool written = true;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, mapping::kScramblings[0].name)) {
            return failOnElement(command, "No scrambling element found");
        }
        if (!validateAll(command, element)) {
            return false;
        }
        written &= write(command, kSystemRow, element);
        written &= write(command, kKeysRow, element);
    }
    if (written) {
        command.request(mapping::PostAction::scramblingKeys);
    }
    return written;
}

}  // namespace tarvo_remote_control
