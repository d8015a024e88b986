// A module's output services with their elementary streams and live state.
#include "mapping/services.h"

#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/status_marks.h"
#include "document/coded_texts.h"
#include "document/writer.h"
#include "export/elements.h"
#include "export/sections.h"
#include "mapping/element.h"
#include "mapping/module_family.h"

namespace tarvo_remote_control {

using mapping::Element;
using tarvodb::Record;
using tarvodb::RedesModulos;
using tarvodb::ServiciosEntradaGlobal;
using Service = tarvodb::ServiciosSalidaGlobal;

namespace {

void writeStates(document::Writer& out, const Record<Service>& service, int bits) {
    for (const Element& element : mapping::kServiceStatus) {
        const mapping::StateBits& state = *element.stateBits;
        if (service.value(state.enabledBy.index).asInt() == 1 && (bits & state.valid) != 0) {
            const int error = (bits & state.error) != 0 ? 1 : 0;
            out.leaf(element.name, document::codeText(element.texts, error));
        }
    }
}

void writeServiceStatus(CmdGetConfiguration& command, const Element& section, const char* mac,
                        const Record<Service>& service) {
    command.out().open(section.name);
    for (const auto& received : tarvodb::doSelect<ServiciosEntradaGlobal>(
             command.stateDb(), tarvodb::clause::kByInputService, mac,
             service[Service::OSID].textOrEmpty(), service[Service::fk_idEntrada].textOrEmpty())) {
        writeStates(command.out(), service, received[ServiciosEntradaGlobal::statusBits].asInt());
    }
    command.out().close();
}

void writePidOrders(CmdGetConfiguration& command, const Element& section,
                    const Record<Service>& service) {
    writeList(command.out(), section, tarvodb::selectByFkIdSSG(command.configDb(), service.key()));
}

bool isListed(const Record<Service>& service) {
    return service[Service::SSU].asInt() == 0 &&
           holds(service[Service::EstadoBorrado], tarvodb::RemovalMark::listed);
}

}  // namespace

void write::services(CmdGetConfiguration& command, const Element& section, const Module& module) {
    const char* mac = module[RedesModulos::MAC].textOrEmpty();
    const auto conditions =
        Conditions().with(mapping::When::moduleDescrambles, mapping::descramblesServices(module));
    document::Writer& out = command.out();
    out.open(section.name);
    for (const auto& service :
         tarvodb::doSelect<Service>(command.configDb(), tarvodb::clause::kByMac, mac)) {
        if (!isListed(service)) {
            continue;
        }
        out.open(section.children[0].name);
        writeChildren(out, mapping::kService, service, conditions, [&](const Element& part) {
            if (part.liveState) {
                writeServiceStatus(command, part, mac, service);
            } else {
                writePidOrders(command, part, service);
            }
        });
        out.close();
    }
    out.close();
}

}  // namespace tarvo_remote_control
