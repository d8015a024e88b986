// The services of the programme guide.
#include "mapping/service_epgs.h"

#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "document/xml.h"
#include "export/sections.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::doSelect;
using tarvodb::Record;
using tarvodb::Service_EPG;
using tarvodb::Service_EPG_audios;
using tarvodb::Service_EPG_replacing;
using tarvodb::Service_EPG_Satellite;

namespace {

// The leaves of every matching transponder stand directly in the one element.
XmlNode* satelliteEPG(CmdGetConfiguration& command, const Element& section,
                      const Record<Service_EPG>& service) {
    XmlNode* node = command.createNode(section.name);
    for (const auto& satellite : doSelect<Service_EPG_Satellite>(
             command.configDb(), tarvodb::clause::kByEpgSatellite,
             service[Service_EPG::fk_idService_EPG_Satellite].textOrEmpty())) {
        appendLeaves(command, node, mapping::kSatelliteEpg, satellite);
    }
    return node;
}

// The rows of a table that belong to the service.
template <class Table>
XmlNode* childRows(CmdGetConfiguration& command, const Element& section,
                   const Record<Service_EPG>& service) {
    return listOf(command, section,
                  doSelect<Table>(command.configDb(), tarvodb::clause::kByServiceEpg,
                                  service[Service_EPG::idService_EPG].text()));
}

struct PartWriter {
    const char* name;
    XmlNode* (*write)(CmdGetConfiguration&, const Element&, const Record<Service_EPG>&);
};

constexpr PartWriter kPartWriters[] = {
    {"satelliteEPG", satelliteEPG},
    {"audiosEPGs", childRows<Service_EPG_audios>},
    {"replacingEPGs", childRows<Service_EPG_replacing>},
};

}  // namespace

XmlNode* write::serviceEPGs(CmdGetConfiguration& command, const Element& section) {
    XmlNode* list = command.createNode(section.name);
    for (const auto& service : doSelect<Service_EPG>(command.configDb())) {
        XmlNode* node = append(command, list, section.children[0].name);
        appendChildren(command, node, mapping::kServiceEpg, service, {}, [&](const Element& part) {
            node->append_node(
                mapping::rowNamed(kPartWriters, part.name).write(command, part, service));
        });
    }
    return list;
}

}  // namespace tarvo_remote_control
