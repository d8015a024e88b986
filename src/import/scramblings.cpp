// The headend's one scrambling system: whether it is on, and its control words.
#include "mapping/scramblings.h"

#include <string>

#include "db/clauses.h"
#include "import/elements.h"
#include "import/sections.h"
#include "import/table_writes.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::Record;
using tarvodb::ScramblingGlobal;
using tarvodb::ScramblingKeysGlobal;

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

// Inserts a new record, or updates a stored one that is marked to be applied.
template <class Table>
bool write(CmdSetConfiguration& command, Record<Table>& record, bool isNew,
           const char* insertMessage, const char* updateMessage) {
    if (isNew) {
        return insertRecord(command, record, insertMessage);
    }
    return !holds(record[Table::Estado], StatusMark::changed) ||
           updateRecord(command, record, updateMessage);
}

Record<ScramblingGlobal> newSystem() {
    Record<ScramblingGlobal> system;
    system.put(ScramblingGlobal::ScramblingName, kSystem);
    system.put(ScramblingGlobal::Mode, 0);
    system.put(ScramblingGlobal::Estado, StatusMark::changed);
    return system;
}

// Takes the row's part of the element; a changed row is marked.
template <class Table>
void takePart(Record<Table>& record, const XmlNode& scrambling) {
    if (takeLast(record, mapping::kScrambling, scrambling)) {
        record.set(Table::Estado, StatusMark::changed);
    }
}

bool writeSystem(CmdSetConfiguration& command, const XmlNode& scrambling) {
    auto stored = tarvodb::doSelect<ScramblingGlobal>(command.db(),
                                                      tarvodb::clause::kByScramblingName, kSystem);
    const bool isNew = stored.empty();
    Record<ScramblingGlobal> system = isNew ? newSystem() : std::move(stored.front());
    takePart(system, scrambling);
    return write(command, system, isNew, "Could not insert ScramblingG",
                 "Could not update ScramblingG");
}

Record<ScramblingKeysGlobal> newKeys() {
    using Keys = ScramblingKeysGlobal;
    Record<Keys> keys;
    keys.put(Keys::System, kSystem);
    keys.put(Keys::Mode, 0);
    keys.put(Keys::Frequency, 0);
    for (const auto text :
         {Keys::Odd, Keys::Even, Keys::K_Shared, Keys::EK_Odd, Keys::EK_Even, Keys::Date}) {
        keys.put(text, "");
    }
    keys.put(Keys::Estado, StatusMark::changed);
    return keys;
}

bool writeKeys(CmdSetConfiguration& command, const XmlNode& scrambling) {
    auto stored = tarvodb::doSelect<ScramblingKeysGlobal>(
        command.db(), tarvodb::clause::kByScramblingSystem, kSystem);
    const bool isNew = stored.empty();
    Record<ScramblingKeysGlobal> keys = isNew ? newKeys() : std::move(stored.front());
    takePart(keys, scrambling);
    return write(command, keys, isNew, "Could not insert ScramblingKG",
                 "Could not update ScramblingKG");
}

}  // namespace

bool apply::scramblings(CmdSetConfiguration& command, const XmlNode& section) {
    bool written = true;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, "scrambling")) {
            return failOnElement(command, "No scrambling element found");
        }
        if (!validateAll(command, element)) {
            return false;
        }
        written &= writeSystem(command, element);
        written &= writeKeys(command, element);
    }
    if (written) {
        command.request(mapping::PostAction::scramblingKeys);
    }
    return written;
}

}  // namespace tarvo_remote_control
