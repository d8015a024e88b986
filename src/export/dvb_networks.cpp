// The DVB networks with the versions of their SI tables.
#include "mapping/dvb_networks.h"

#include <optional>
#include <string>

#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/si_tables.h"
#include "document/writer.h"
#include "export/elements.h"
#include "export/sections.h"
#include "mapping/element.h"
#include "platform/local_time.h"
#include "platform/platform.h"

namespace tarvo_remote_control {

using mapping::Element;
using tarvodb::Record;
using tarvodb::RedesCabecera;

namespace {

// Where the version_number field of the DVB section header stands in an SI table file: a received
// table's file starts with its section, a generated one's has 16 bytes ahead of it.
constexpr std::size_t kReceivedVersionByte = 5;
constexpr std::size_t kGeneratedVersionByte = 16 + kReceivedVersionByte;

// The path of a table's file. Nothing for a network whose identifier names none.
std::optional<std::string> pathOf(const mapping::SiTable& table, const std::string& nid) {
    if (!table.ofNetwork) {
        return std::string(tarvodb::kSiTableFolder) + table.file;
    }
    return tarvodb::namesSiTableFile(nid)
               ? std::optional(std::string(tarvodb::kSiTableFolder) + table.file + nid)
               : std::nullopt;
}

std::string tableVersion(const Element& element, const std::optional<std::string>& path) {
    const std::size_t versionByte =
        element.siTable->ofNetwork ? kGeneratedVersionByte : kReceivedVersionByte;
    const std::string content = path ? platform::readFile(*path).value_or("") : "";
    if (content.size() <= versionByte) {
        return element.unknown;
    }
    return std::to_string((static_cast<unsigned char>(content[versionByte]) >> 1) & 0x1F);
}

void writePidMask(document::Writer& out, const Element& element, int mask) {
    out.open(element.name);
    for (const Element& kind : element.children) {
        out.leaf(kind.name, (mask & kind.bit) != 0 ? "1" : "0");
    }
    out.close();
}

void writeDate(document::Writer& out, const Element& element,
               const std::optional<std::string>& path) {
    if (const auto time = path ? platform::modificationTime(*path) : std::nullopt) {
        out.leaf(element.name, platform::localTimeText(*time, "%d-%m-%y %H:%M:%S").c_str());
    }
}

void writeSiTable(document::Writer& out, const Element& element, const std::string& nid) {
    const auto path = pathOf(*element.siTable, nid);
    if (mapping::isNamed(element, "OutputNITDate")) {
        writeDate(out, element, path);
    } else {
        out.leaf(element.name, tableVersion(element, path).c_str());
    }
}

}  // namespace

void write::dvbNetworks(CmdGetConfiguration& command, const Element& section) {
    // Whether the NIT's file is there turns out when it is asked for its time.
    const auto conditions = Conditions().with(mapping::When::fileExists, true);
    document::Writer& out = command.out();
    out.open(section.name);
    for (const auto& network : tarvodb::doSelect<RedesCabecera>(command.configDb())) {
        out.open(section.children[0].name);
        writeChildren(out, mapping::kDvbNetwork, network, conditions, [&](const Element& element) {
            if (element.liveState) {
                writeSiTable(out, element, network[RedesCabecera::NID].asString());
            } else {
                writePidMask(out, element, network.value(element.column.index).asInt());
            }
        });
        out.close();
    }
    out.close();
}

}  // namespace tarvo_remote_control
