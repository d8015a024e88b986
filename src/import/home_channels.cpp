// The home transponders used for maintenance.
#include <string>

#include "db/clauses.h"
#include "document/coded_texts.h"
#include "import/sections.h"
#include "import/table_writes.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::Record;
using HomeChannels = tarvodb::MantenimientoHomeChannelsGlobal;

namespace {

struct TextField {
    const char* element;
    HomeChannels::Column column;
};

// `onid` and `tsid` are not imported.
constexpr TextField kTextFields[] = {
    {"frequency", HomeChannels::Frequency},
    {"symbolrate", HomeChannels::SymbolRate},
    {"orbit", HomeChannels::Orbita},
};

// A text that is not the table's first counts as its second.
struct CodedField {
    const char* element;
    HomeChannels::Column column;
    document::CodeTable texts;
};

constexpr CodedField kCodedFields[] = {
    {"polarity", HomeChannels::Polaridad, document::kPolarity},
    {"band", HomeChannels::Banda, document::kBand},
};

Record<HomeChannels> newHomeChannel(const char* id) {
    Record<HomeChannels> channel;
    channel.put(HomeChannels::idMantenimiento, id);
    channel.put(HomeChannels::Frequency, 11856);
    channel.put(HomeChannels::Orbita, 192);
    channel.put(HomeChannels::Polaridad, 0);
    channel.put(HomeChannels::Banda, 1);
    channel.put(HomeChannels::SymbolRate, 27500);
    channel.put(HomeChannels::ONID, 1);
    channel.put(HomeChannels::TSID, 1072);
    channel.put(HomeChannels::Estado, 1);
    return channel;
}

Record<HomeChannels> storedOrNew(const CmdSetConfiguration& command, const char* id) {
    auto stored =
        tarvodb::doSelect<HomeChannels>(command.db(), tarvodb::clause::kByHomeChannel, id);
    return stored.empty() ? newHomeChannel(id) : std::move(stored.front());
}

void setFields(Record<HomeChannels>& channel, const XmlNode& element) {
    bool changed = false;
    for (const TextField& field : kTextFields) {
        if (const char* text = document::lastText(element, field.element)) {
            changed |= channel.set(field.column, text);
        }
    }
    for (const CodedField& field : kCodedFields) {
        if (const char* text = document::lastText(element, field.element)) {
            const int code = document::sameText(text, field.texts[0].text) ? 0 : 1;
            changed |= channel.setIfOtherNumber(field.column, code);
        }
    }
    if (changed) {
        channel.set(HomeChannels::Estado, 1);
    }
}

}  // namespace

bool applyHomeChannels(CmdSetConfiguration& command, const XmlNode& section) {
    std::vector<Record<HomeChannels>> channels;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, "homechannel")) {
            const char* message = "No homechannel element found";
            return fail(command, Failure{.code = error::kInvalidCommand,
                                         .loggedMessage = message,
                                         .debugLine = message});
        }
        const char* id = document::lastText(element, "id");
        if (id == nullptr) {
            const char* message = "homechannel has no id field";
            return fail(
                command,
                Failure{.code = error::kInvalidCommand, .message = message, .debugLine = message});
        }
        channels.push_back(storedOrNew(command, id));
        setFields(channels.back(), element);
    }
    return replaceTable(command, channels, "Could not delete homeChannels",
                        "Could not insert homeChannel");
}

}  // namespace tarvo_remote_control
