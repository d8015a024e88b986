// A module's output services with their elementary streams and live state.
#include "mapping/services.h"

#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "document/coded_texts.h"
#include "document/xml.h"
#include "export/sections.h"
#include "mapping/element.h"
#include "mapping/module_family.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::Record;
using tarvodb::RedesModulos;
using tarvodb::ServiciosEntradaGlobal;
using Service = tarvodb::ServiciosSalidaGlobal;

namespace {

// A live state, shown when the service's column `enabledBy` is 1 and `validBit` is set.
struct LiveState {
    const char* name;
    Service::Column enabledBy;
    int validBit;
    int errorBit;
};

constexpr LiveState kLiveStates[] = {
    {"decrytStatus", Service::Descifrar, 0x10, 0x20},
    {"transcodingStatus", Service::Transcoding, 0x40, 0x80},
};

void appendStates(CmdGetConfiguration& command, XmlNode* node, const Record<Service>& service,
                  int bits) {
    for (const Element& element : mapping::kServiceStatus) {
        const LiveState& state = mapping::rowNamed(kLiveStates, element.name);
        if (service[state.enabledBy].asInt() == 1 && (bits & state.validBit) != 0) {
            const int error = (bits & state.errorBit) != 0 ? 1 : 0;
            append(command, node, element.name, document::codeText(element.texts, error));
        }
    }
}

XmlNode* serviceStatus(CmdGetConfiguration& command, const Element& section, const char* mac,
                       const Record<Service>& service) {
    XmlNode* node = command.createNode(section.name);
    for (const auto& received : tarvodb::doSelect<ServiciosEntradaGlobal>(
             command.stateDb(), tarvodb::clause::kByInputService, mac,
             service[Service::OSID].textOrEmpty(), service[Service::fk_idEntrada].textOrEmpty())) {
        appendStates(command, node, service, received[ServiciosEntradaGlobal::statusBits].asInt());
    }
    return node;
}

XmlNode* pidOrders(CmdGetConfiguration& command, const Element& section,
                   const Record<Service>& service) {
    return listOf(command, section, tarvodb::selectByFkIdSSG(command.configDb(), service.key()));
}

bool isListed(const Record<Service>& service) {
    return service[Service::SSU].asInt() == 0 && service[Service::EstadoBorrado].asInt() == 0;
}

}  // namespace

XmlNode* write::services(CmdGetConfiguration& command, const Element& section,
                         const Module& module) {
    const char* mac = module[RedesModulos::MAC].textOrEmpty();
    const auto conditions =
        Conditions().with(mapping::When::moduleDescrambles, mapping::descramblesServices(module));
    XmlNode* list = command.createNode(section.name);
    for (const auto& service :
         tarvodb::doSelect<Service>(command.configDb(), tarvodb::clause::kByMac, mac)) {
        if (!isListed(service)) {
            continue;
        }
        XmlNode* node = append(command, list, section.children[0].name);
        appendChildren(
            command, node, mapping::kService, service, conditions, [&](const Element& part) {
                node->append_node(part.liveState ? serviceStatus(command, part, mac, service)
                                                 : pidOrders(command, part, service));
            });
    }
    return list;
}

}  // namespace tarvo_remote_control
