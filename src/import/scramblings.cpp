// The headend's one scrambling system: whether it is on, and its control words.
#include <optional>

#include "db/clauses.h"
#include "document/coded_texts.h"
#include "import/sections.h"
#include "import/table_writes.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::Record;
using tarvodb::ScramblingGlobal;
using tarvodb::ScramblingKeysGlobal;

namespace {

// The system that every `scrambling` element is written to, whatever its name.
constexpr const char* kSystem = "VSecure";

// What one element gives; null or nothing where it does not.
struct GivenScrambling {
    const char* name = nullptr;
    std::optional<int> active;
    std::optional<int> mode;
    const char* frequency = nullptr;
    const char* oddKey = nullptr;
    const char* evenKey = nullptr;
    const char* date = nullptr;
};

struct TextField {
    const char* element;
    const char* GivenScrambling::*text;
};

constexpr TextField kTextFields[] = {
    {"name", &GivenScrambling::name},     {"frequency", &GivenScrambling::frequency},
    {"oddKey", &GivenScrambling::oddKey}, {"evenKey", &GivenScrambling::evenKey},
    {"date", &GivenScrambling::date},
};

// Nothing when the element has an invalid value or no name.
std::optional<GivenScrambling> read(CmdSetConfiguration& command, const XmlNode& element) {
    constexpr const char* kNoName = "scrambling has no name field";
    GivenScrambling given;
    for (const XmlNode& child : document::childrenOf(element)) {
        if (const TextField* field = document::rowFor(kTextFields, child)) {
            given.*field->text = document::textOf(child);
        }
        if (document::hasName(child, "active")) {
            given.active = document::numberOf(child);
            if (given.active != 0 && given.active != 1) {
                fail(command, ErrorCode::invalidValue, "scrambling/active should be 0/1");
                return std::nullopt;
            }
        }
        if (document::hasName(child, "mode")) {
            given.mode =
                document::codeOfAnyCase(document::kScramblingMode, document::textOf(child));
            if (!given.mode) {
                // A bad mode has this text and these two codes on purpose.
                fail(command, Failure{.code = ErrorCode::invalidCommand,
                                      .message = kNoName,
                                      .loggedCode = ErrorCode::invalidValue});
                return std::nullopt;
            }
        }
    }
    if (given.name == nullptr) {
        fail(command, ErrorCode::invalidCommand, kNoName);
        return std::nullopt;
    }
    return given;
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

bool writeSystem(CmdSetConfiguration& command, const GivenScrambling& given) {
    auto stored = tarvodb::doSelect<ScramblingGlobal>(command.db(),
                                                      tarvodb::clause::kByScramblingName, kSystem);
    const bool isNew = stored.empty();
    Record<ScramblingGlobal> system = isNew ? newSystem() : std::move(stored.front());
    if (given.active && system.setIfOtherNumber(ScramblingGlobal::Mode, *given.active)) {
        system.set(ScramblingGlobal::Estado, StatusMark::changed);
    }
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

void setKeys(Record<ScramblingKeysGlobal>& keys, const GivenScrambling& given) {
    using Keys = ScramblingKeysGlobal;
    const auto setText = [&keys](Keys::Column column, const char* text) {
        return text != nullptr && keys.set(column, text);
    };
    // The form derived from a changed control word is cleared; the key tool makes it again.
    const auto setControlWord = [&](Keys::Column column, Keys::Column derived, const char* text) {
        const bool changed = setText(column, text);
        if (changed) {
            keys.set(derived, "");
        }
        return changed;
    };
    bool changed = given.mode && keys.setIfOtherNumber(Keys::Mode, *given.mode);
    changed |= setText(Keys::Frequency, given.frequency);
    changed |= setControlWord(Keys::Odd, Keys::EK_Odd, given.oddKey);
    changed |= setControlWord(Keys::Even, Keys::EK_Even, given.evenKey);
    changed |= setText(Keys::Date, given.date);
    if (changed) {
        keys.set(Keys::Estado, StatusMark::changed);
    }
}

bool writeKeys(CmdSetConfiguration& command, const GivenScrambling& given) {
    auto stored = tarvodb::doSelect<ScramblingKeysGlobal>(
        command.db(), tarvodb::clause::kByScramblingSystem, kSystem);
    const bool isNew = stored.empty();
    Record<ScramblingKeysGlobal> keys = isNew ? newKeys() : std::move(stored.front());
    setKeys(keys, given);
    return write(command, keys, isNew, "Could not insert ScramblingKG",
                 "Could not update ScramblingKG");
}

}  // namespace

bool applyScramblings(CmdSetConfiguration& command, const XmlNode& section) {
    bool written = true;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, "scrambling")) {
            return failOnElement(command, "No scrambling element found");
        }
        const auto given = read(command, element);
        if (!given) {
            return false;
        }
        written &= writeSystem(command, *given);
        written &= writeKeys(command, *given);
    }
    if (written) {
        command.request(document::PostAction::scramblingKeys);
    }
    return written;
}

}  // namespace tarvo_remote_control
