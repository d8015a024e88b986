// The services of the programme guide.
#include "db/clauses.h"
#include "export/leaves.h"
#include "export/sections.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::doSelect;
using tarvodb::Service_EPG;
using tarvodb::Service_EPG_audios;
using tarvodb::Service_EPG_replacing;
using tarvodb::Service_EPG_Satellite;

namespace {

constexpr Leaf<Service_EPG> kServiceLeaves[] = {
    {"onid", Service_EPG::ONID},
    {"tsid", Service_EPG::TSID},
    {"sid", Service_EPG::SID},
    {"epg", Service_EPG::EPG},
    {"lcn", Service_EPG::LCN},
    {"videoType", Service_EPG::Video_Type},
    {"videoPeakBitrate", Service_EPG::Video_peak_bitrate},
    {"serviceType", Service_EPG::Service_type},
    {"name", Service_EPG::Nombre},
    {"provider", Service_EPG::Proveedor},
};

constexpr Leaf<Service_EPG_Satellite> kSatelliteLeaves[] = {
    {"onid", Service_EPG_Satellite::ONID},
    {"tsid", Service_EPG_Satellite::TSID},
    {"frequency", Service_EPG_Satellite::Frequency},
    {"symbolrate", Service_EPG_Satellite::SymbolRate},
    {"polarity", Service_EPG_Satellite::Polaridad, document::kPolarity},
    {"orbit", Service_EPG_Satellite::Orbita},
    {"westEastFlag", Service_EPG_Satellite::West_East_Flag},
};

constexpr Leaf<Service_EPG_audios> kAudioLeaves[] = {
    {"languageCode", Service_EPG_audios::Language_code},
    {"audioType", Service_EPG_audios::Audio_Type},
};

constexpr Leaf<Service_EPG_replacing> kReplacingLeaves[] = {
    {"replacingEpgChannelId", Service_EPG_replacing::replacing_epg_channel_id},
};

// The leaves of every matching transponder stand directly in the one element.
XmlNode* satelliteSection(CmdGetConfiguration& command, const char* satelliteId) {
    XmlNode* node = command.createNode("satelliteEPG");
    for (const auto& satellite : doSelect<Service_EPG_Satellite>(
             command.configDb(), tarvodb::clause::kByEpgSatellite, satelliteId)) {
        appendLeaves(command, node, satellite, kSatelliteLeaves);
    }
    return node;
}

}  // namespace

XmlNode* serviceEpgsSection(CmdGetConfiguration& command) {
    XmlNode* section = command.createNode("serviceEPGs");
    for (const auto& service : doSelect<Service_EPG>(command.configDb())) {
        XmlNode* node = command.append(section, "serviceEPG");
        appendLeaves(command, node, service, kServiceLeaves);
        node->append_node(satelliteSection(
            command, service[Service_EPG::fk_idService_EPG_Satellite].textOrEmpty()));
        const char* id = service[Service_EPG::idService_EPG].text();
        node->append_node(sectionOf(
            command, "audiosEPGs", "audiosEPG",
            doSelect<Service_EPG_audios>(command.configDb(), tarvodb::clause::kByServiceEpg, id),
            kAudioLeaves));
        node->append_node(sectionOf(
            command, "replacingEPGs", "replacingEPG",
            doSelect<Service_EPG_replacing>(command.configDb(), tarvodb::clause::kByServiceEpg, id),
            kReplacingLeaves));
    }
    return section;
}

}  // namespace tarvo_remote_control
