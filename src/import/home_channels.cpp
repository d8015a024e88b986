// The home transponders used for maintenance.
#include "mapping/home_channels.h"

#include <vector>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/status_marks.h"
#include "document/xml.h"
#include "import/elements.h"
#include "import/keyed_rows.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::Record;
using tarvodb::StatusMark;
using HomeChannels = tarvodb::MantenimientoHomeChannelsGlobal;

namespace {

constexpr const mapping::Element& kId = mapping::rowNamed(mapping::kHomeChannel, "id");

Record<HomeChannels> newHomeChannel(const char* id) {
    Record<HomeChannels> channel;
    channel.set(HomeChannels::idMantenimiento, id);
    channel.set(HomeChannels::Frequency, 11856);
    channel.set(HomeChannels::Orbita, 192);
    channel.set(HomeChannels::Polaridad, 0);
    channel.set(HomeChannels::Banda, 1);
    channel.set(HomeChannels::SymbolRate, 27500);
    channel.set(HomeChannels::ONID, 1);
    channel.set(HomeChannels::TSID, 1072);
    channel.set(HomeChannels::Estado, StatusMark::changed);
    return channel;
}

}  // namespace

bool apply::homeChannels(CmdSetConfiguration& command, const XmlNode& section) {
    std::vector<Record<HomeChannels>> channels;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, mapping::kHomeChannels[0].name)) {
            return failLoggedFirst(command, {.code = ErrorCode::invalidCommand,
                                             .loggedMessage = "No homechannel element found"});
        }
        const char* id = document::lastText(element, kId.name);
        if (id == nullptr) {
            return failLoggedFirst(
                command, {.code = ErrorCode::invalidCommand, .message = kId.required.missing});
        }
        channels.push_back(
            storedOrNew(command, tarvodb::clause::kByHomeChannel, id, newHomeChannel));
        takeAndMark(channels.back(), mapping::kHomeChannel, element);
    }
    return replaceTable(command, channels, "Could not delete homeChannels",
                        "Could not insert homeChannel");
}

}  // namespace tarvo_remote_control
