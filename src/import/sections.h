// The section handlers, each called like its section: it writes one section of a document into the
// configuration database, inside the import's transaction. False when the section failed and the
// caller must roll back; what went wrong is recorded and logged then, but for failed writes of
// maturityRating and maintenances (neither) and a refused LCN (only recorded).
#pragma once

#include "document/xml.h"
#include "import/cmd_set_configuration.h"

namespace tarvo_remote_control::apply {

// Settings (configuracionWebGlobal).
bool maturityRating(CmdSetConfiguration& command, const document::XmlNode& element);
bool maintenances(CmdSetConfiguration& command, const document::XmlNode& section);

// Whole tables that the section replaces.
// MantenimientoHomeChannelsGlobal
bool homeChannels(CmdSetConfiguration& command, const document::XmlNode& section);
// RedesCabecera; a network that gets another identifier takes its SI table files along.
bool dvbNetworks(CmdSetConfiguration& command, const document::XmlNode& section);
// DiSEqCGlobal
bool diseqcs(CmdSetConfiguration& command, const document::XmlNode& section);
// AudioLanguageListGlobal
bool preferredLanguages(CmdSetConfiguration& command, const document::XmlNode& section);
// The four Service_EPG tables
bool serviceEPGs(CmdSetConfiguration& command, const document::XmlNode& section);

// The rows of the one scrambling system (ScramblingGlobal, ScramblingKeysGlobal).
bool scramblings(CmdSetConfiguration& command, const document::XmlNode& section);

// Modules (RedesModulos), each element assigned to one of the headend's.
bool modules(CmdSetConfiguration& command, const document::XmlNode& section);

// The parts of a module. `mac` is the MAC address text of the headend's module.
// EntradasGlobal and the three tuner tables
bool inputs(CmdSetConfiguration& command, const char* mac, const document::XmlNode& section);
// SalidasLogicasGlobal and RFOutGlobal. `rfOutputMode` 0 is DVB-T, any other DVB-C.
bool outputs(CmdSetConfiguration& command, const char* mac, int rfOutputMode,
             const document::XmlNode& section);
// ServiciosSalidaGlobal
bool services(CmdSetConfiguration& command, const char* mac, const document::XmlNode& section);
// PIDsSalidaGlobal, the streams of the service row `idSSG`
bool pidOrders(CmdSetConfiguration& command, int idSSG, const document::XmlNode& section);

}  // namespace tarvo_remote_control::apply
