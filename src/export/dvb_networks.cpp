// The DVB networks with the versions of their SI tables.
#include <string>

#include "db/operations.h"
#include "db/si_tables.h"
#include "export/leaves.h"
#include "export/sections.h"
#include "platform/local_time.h"
#include "platform/platform.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::RedesCabecera;

namespace {

constexpr Leaf<RedesCabecera> kNetworkLeaves[] = {
    {"id", RedesCabecera::idRed},
    {"nid", RedesCabecera::NID},
    {"onidOut", RedesCabecera::ONID_Out},
    {"name", RedesCabecera::NombreRed},
    {"ciplusTVs", RedesCabecera::CI_TV_Type},
};

constexpr Leaf<RedesCabecera> kNetworkLeavesExceptRnb[] = {
    {"tvType", RedesCabecera::TV_Type},
    {"cellID", RedesCabecera::CellID},
    {"forceServiceName", RedesCabecera::Force_ServiceName},
    {"autoServiceList", RedesCabecera::Auto_Service_List},
    {"lcnOffset", RedesCabecera::LCN_Offset},
    {"lcnMode", RedesCabecera::LCN_Mode},
    {"tipoNITPatron", RedesCabecera::Tipo_NIT_Patron},
    {"nitPatron", RedesCabecera::NIT_Patron},
    {"versionNITPatron", RedesCabecera::Version_NIT_Patron},
};

// Where the version_number field of the DVB section header stands in an SI table file: a received
// table's file starts with its section, a generated one's has 16 bytes ahead of it.
constexpr std::size_t kReceivedVersionByte = 5;
constexpr std::size_t kGeneratedVersionByte = 16 + kReceivedVersionByte;

std::string siTableFile(const std::string& name) { return tarvodb::kSiTableFolder + name; }

std::string tableVersion(const std::string& path, std::size_t versionByte) {
    const std::string content = platform::readFile(path).value_or("");
    if (content.size() <= versionByte) {
        return "Not Found";
    }
    return std::to_string((static_cast<unsigned char>(content[versionByte]) >> 1) & 0x1F);
}

void appendPidMask(CmdGetConfiguration& command, XmlNode* parent, const char* name, int mask) {
    XmlNode* node = command.append(parent, name);
    for (const auto& [bit, element] : document::kPidMaskBits) {
        command.append(node, element, (mask & bit) != 0 ? "1" : "0");
    }
}

void appendTableVersions(CmdGetConfiguration& command, XmlNode* node, const std::string& nid) {
    const auto appendVersion = [&](const char* element, const std::string& path,
                                   std::size_t versionByte) {
        command.append(node, element, tableVersion(path, versionByte).c_str());
    };
    if (CmdGetConfiguration::device().isFamilyA()) {
        appendVersion("InputVersionNIT", siTableFile("NIT_table_CPLUS"), kReceivedVersionByte);
        appendVersion("InputVersionBAT", siTableFile("BAT_table_CPLUS"), kReceivedVersionByte);
    }
    const std::string outputNit = siTableFile(tarvodb::kNitTable + nid);
    appendVersion("OutputVersionNIT", outputNit, kGeneratedVersionByte);
    if (const auto time = platform::modificationTime(outputNit)) {
        command.append(node, "OutputNITDate",
                       platform::localTimeText(*time, "%d-%m-%y %H:%M:%S").c_str());
    }
}

}  // namespace

XmlNode* dvbNetworksSection(CmdGetConfiguration& command) {
    const DeviceIdentity& device = CmdGetConfiguration::device();
    XmlNode* section = command.createNode("dvbNetworks");
    for (const auto& network : tarvodb::doSelect<RedesCabecera>(command.configDb())) {
        XmlNode* node = command.append(section, "dvbNetwork");
        appendLeaves(command, node, network, kNetworkLeaves);
        if (!device.isRNB()) {
            appendLeaves(command, node, network, kNetworkLeavesExceptRnb);
        }
        appendPidMask(command, node, "autoBlockPIDs", network[RedesCabecera::Block_PIDs].asInt());
        if (!device.isWVXB()) {
            appendPidMask(command, node, "autoDecryptPIDs",
                          network[RedesCabecera::Decrypt_PIDs].asInt());
        }
        if (!device.isRNB()) {
            appendTableVersions(command, node, network[RedesCabecera::NID].asString());
        }
    }
    return section;
}

}  // namespace tarvo_remote_control
