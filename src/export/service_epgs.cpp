// The services of the programme guide.
#include "mapping/service_epgs.h"

#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "document/writer.h"
#include "export/elements.h"
#include "export/sections.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using mapping::Element;
using tarvodb::doSelect;
using tarvodb::Record;
using tarvodb::Service_EPG;
using tarvodb::Service_EPG_audios;
using tarvodb::Service_EPG_replacing;
using tarvodb::Service_EPG_Satellite;

namespace {

// The leaves of every matching transponder stand directly in the one element.
void satelliteEPG(CmdGetConfiguration& command, const Element& section,
                  const Record<Service_EPG>& service) {
    command.out().open(section.name);
    for (const auto& satellite : doSelect<Service_EPG_Satellite>(
             command.configDb(), tarvodb::clause::kByEpgSatellite,
             service[Service_EPG::fk_idService_EPG_Satellite].textOrEmpty())) {
        writeLeaves(command.out(), mapping::kSatelliteEpg, satellite);
    }
    command.out().close();
}

// The rows of a table that belong to the service.
template <class Table>
void childRows(CmdGetConfiguration& command, const Element& section,
               const Record<Service_EPG>& service) {
    writeList(command.out(), section,
              doSelect<Table>(command.configDb(), tarvodb::clause::kByServiceEpg,
                              service[Service_EPG::idService_EPG].text()));
}

struct PartWriter {
    const char* name;
    void (*write)(CmdGetConfiguration&, const Element&, const Record<Service_EPG>&);
};

constexpr PartWriter kPartWriters[] = {
    {"satelliteEPG", satelliteEPG},
    {"audiosEPGs", childRows<Service_EPG_audios>},
    {"replacingEPGs", childRows<Service_EPG_replacing>},
};

static_assert(mapping::nameExactly(kPartWriters, mapping::kServiceEpg, [](const Element& element) {
    return element.kind != mapping::Kind::leaf;
}));

}  // namespace

void write::serviceEPGs(CmdGetConfiguration& command, const Element& section) {
    document::Writer& out = command.out();
    out.open(section.name);
    for (const auto& service : doSelect<Service_EPG>(command.configDb())) {
        out.open(section.children[0].name);
        writeChildren(out, mapping::kServiceEpg, service, {}, [&](const Element& part) {
            mapping::rowNamed(kPartWriters, part.name).write(command, part, service);
        });
        out.close();
    }
    out.close();
}

}  // namespace tarvo_remote_control
