// The DVB networks with the versions of their SI tables.
#include "mapping/dvb_networks.h"

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

struct ReceivedTable {
    const char* name;
    const char* file;
};

constexpr ReceivedTable kReceivedTables[] = {
    {"InputVersionNIT", "NIT_table_CPLUS"},
    {"InputVersionBAT", "BAT_table_CPLUS"},
};

std::string siTableFile(const std::string& name) { return tarvodb::kSiTableFolder + name; }

std::string tableVersion(const Element& element, const std::string& path, std::size_t versionByte) {
    const std::string content = platform::readFile(path).value_or("");
    if (content.size() <= versionByte) {
        return element.unknown;
    }
    return std::to_string((static_cast<unsigned char>(content[versionByte]) >> 1) & 0x1F);
}

std::string outputFile(const std::string& nid) { return siTableFile(tarvodb::kNitTable + nid); }

// An identifier that names no file has a table that is not found.
std::string outputVersion(const Element& element, const std::string& nid) {
    return tarvodb::namesSiTableFile(nid)
               ? tableVersion(element, outputFile(nid), kGeneratedVersionByte)
               : element.unknown;
}

void writePidMask(document::Writer& out, const Element& element, int mask) {
    out.open(element.name);
    for (const Element& kind : element.children) {
        out.leaf(kind.name, (mask & kind.bit) != 0 ? "1" : "0");
    }
    out.close();
}

void writeSiTable(document::Writer& out, const Element& element, const std::string& nid) {
    if (mapping::isNamed(element, "OutputNITDate")) {
        const auto time = platform::modificationTime(outputFile(nid));
        if (time && tarvodb::namesSiTableFile(nid)) {
            out.leaf(element.name, platform::localTimeText(*time, "%d-%m-%y %H:%M:%S").c_str());
        }
        return;
    }
    const std::string version =
        mapping::isNamed(element, "OutputVersionNIT")
            ? outputVersion(element, nid)
            : tableVersion(element,
                           siTableFile(mapping::rowNamed(kReceivedTables, element.name).file),
                           kReceivedVersionByte);
    out.leaf(element.name, version.c_str());
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
