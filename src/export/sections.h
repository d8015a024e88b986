// The section writers. Each carries the name of its section, reads the rows that the section stands
// for and writes the section's element to the command's output. A failed select gives a section
// without rows.
#pragma once

#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "export/cmd_get_configuration.h"
#include "export/elements.h"
#include "mapping/element.h"

namespace tarvo_remote_control::write {

// A list of all rows of one table.
template <class Table>
void wholeTable(CmdGetConfiguration& command, const mapping::Element& list) {
    writeList(command.out(), list, tarvodb::doSelect<Table>(command.configDb()));
}

// Services of the programme guide, from the four Service_EPG tables.
void serviceEPGs(CmdGetConfiguration& command, const mapping::Element& section);
// DVB networks, from RedesCabecera and the SI table files.
void dvbNetworks(CmdGetConfiguration& command, const mapping::Element& section);
// Control words, from ScramblingKeysGlobal and ScramblingGlobal.
void scramblings(CmdGetConfiguration& command, const mapping::Element& section);
// All modules of the headend with their inputs, outputs and services, from RedesModulos.
void modules(CmdGetConfiguration& command, const mapping::Element& section);

// The sections inside one `module` element, a row of RedesModulos.
using Module = tarvodb::Record<tarvodb::RedesModulos>;

// From EntradasGlobal, the tuner tables and their live state.
void inputs(CmdGetConfiguration& command, const mapping::Element& section, const Module& module);
// From SalidasLogicasGlobal and RFOutGlobal.
void outputs(CmdGetConfiguration& command, const mapping::Element& section, const Module& module);
// From ServiciosSalidaGlobal, PIDsSalidaGlobal and the live state of received services.
void services(CmdGetConfiguration& command, const mapping::Element& section, const Module& module);

}  // namespace tarvo_remote_control::write
