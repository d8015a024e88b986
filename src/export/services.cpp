// A module's output services with their elementary streams and live state.
#include "db/clauses.h"
#include "export/leaves.h"
#include "export/module_kind.h"
#include "export/sections.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::PIDsSalidaGlobal;
using tarvodb::Record;
using tarvodb::ServiciosEntradaGlobal;
using tarvodb::ServiciosSalidaGlobal;

namespace {

using Service = ServiciosSalidaGlobal;

constexpr Leaf<Service> kServiceLeaves[] = {
    {"outputId", Service::fk_idSalidasLogicas}, {"outputSid", Service::SID},
    {"inputId", Service::fk_idEntrada},         {"inputSid", Service::OSID},
    {"inputName", Service::NombreEntrada},      {"forcedName", Service::NombreForzado},
    {"outputName", Service::NombreSalida},      {"lcn", Service::LCN},
};

constexpr Leaf<Service> kServiceLeavesExceptRnb[] = {
    {"olcn", Service::OLCN},
    {"simulcastLcn", Service::SimulcastLCN},
    {"forcedLcn", Service::LCNForzado},
    {"idEPG", Service::idEPG},
    {"serviceTypeDVB", Service::Tipo},
    {"serviceTypeCanal", Service::Service_Type},
    {"videoFormat", Service::VideoFormat},
};

constexpr Leaf<PIDsSalidaGlobal> kPidOrderLeaves[] = {
    {"languageCode", PIDsSalidaGlobal::AudioCode},
    {"streamId", PIDsSalidaGlobal::StreamId},
    {"type", PIDsSalidaGlobal::Tipo},
    {"order", PIDsSalidaGlobal::Orden},
};

// A live state, shown when the service's column `enabledBy` is 1 and `validBit` is set.
struct LiveState {
    Service::Column enabledBy;
    const char* element;
    int validBit;
    int errorBit;
};

constexpr LiveState kLiveStates[] = {
    {Service::Descifrar, "decrytStatus", 0x10, 0x20},  // spelled so
    {Service::Transcoding, "transcodingStatus", 0x40, 0x80},
};

XmlNode* serviceStatus(CmdGetConfiguration& command, const char* mac,
                       const Record<Service>& service) {
    XmlNode* node = command.createNode("serviceStatus");
    for (const auto& received : tarvodb::doSelect<ServiciosEntradaGlobal>(
             command.stateDb(), tarvodb::clause::kByInputService, mac,
             service[Service::OSID].textOrEmpty(), service[Service::fk_idEntrada].textOrEmpty())) {
        const int bits = received[ServiciosEntradaGlobal::statusBits].asInt();
        for (const LiveState& state : kLiveStates) {
            if (service[state.enabledBy].asInt() == 1 && (bits & state.validBit) != 0) {
                command.append(node, state.element, (bits & state.errorBit) != 0 ? "ERROR" : "OK");
            }
        }
    }
    return node;
}

XmlNode* serviceElement(CmdGetConfiguration& command, const char* mac,
                        const Record<Service>& service, bool onCamModule) {
    const bool rnb = CmdGetConfiguration::device().isRNB();
    const bool wvxb = CmdGetConfiguration::device().isWVXB();
    XmlNode* node = command.createNode("service");
    appendLeaves(command, node, service, kServiceLeaves);
    if (!rnb) {
        appendLeaves(command, node, service, kServiceLeavesExceptRnb);
    }
    if (!rnb && onCamModule) {
        appendLeaf(command, node, service, {"cloned", Service::DuplicadoClonado});
    }
    if (!wvxb && onCamModule) {
        appendLeaf(command, node, service, {"decrypt", Service::Descifrar});
    }
    if (!rnb) {
        appendLeaf(command, node, service, {"transcoding", Service::Transcoding});
    }
    if (!wvxb) {
        command.append(node, "encrypt", "0");  // no column holds it
    }
    if (!rnb) {
        appendLeaf(command, node, service, {"videoPeakBitrate", Service::Video_peak_bitrate});
    }
    node->append_node(sectionOf(command, "pidOrders", "pidOrder",
                                tarvodb::selectByFkIdSSG(command.configDb(), service.key()),
                                kPidOrderLeaves));
    if (!rnb && onCamModule) {
        node->append_node(serviceStatus(command, mac, service));
    }
    return node;
}

}  // namespace

XmlNode* servicesSection(CmdGetConfiguration& command, const char* mac, int family, int model) {
    const bool onCamModule = descramblesServices(family, model);
    XmlNode* section = command.createNode("services");
    for (const auto& service :
         tarvodb::doSelect<Service>(command.configDb(), tarvodb::clause::kByMac, mac)) {
        if (service[Service::SSU].asInt() == 0 && service[Service::EstadoBorrado].asInt() == 0) {
            section->append_node(serviceElement(command, mac, service, onCamModule));
        }
    }
    return section;
}

}  // namespace tarvo_remote_control
