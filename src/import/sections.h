// The section handlers: each writes one section of a document into the configuration database,
// inside the import's transaction. False when the section failed and the caller must roll back;
// what went wrong is recorded and logged then, but for failed writes of maturityRating and
// maintenances (neither) and a refused LCN (only recorded).
#pragma once

#include "import/cmd_set_configuration.h"

namespace tarvo_remote_control {

// Settings (configuracionWebGlobal).
bool applyMaturityRating(CmdSetConfiguration& command, const document::XmlNode& element);
bool applyMaintenances(CmdSetConfiguration& command, const document::XmlNode& section);

// Whole tables that the section replaces.
// MantenimientoHomeChannelsGlobal
bool applyHomeChannels(CmdSetConfiguration& command, const document::XmlNode& section);
// RedesCabecera; a network that gets another identifier takes its SI table files along.
bool applyDvbNetworks(CmdSetConfiguration& command, const document::XmlNode& section);
// DiSEqCGlobal
bool applyDiseqcs(CmdSetConfiguration& command, const document::XmlNode& section);
// AudioLanguageListGlobal
bool applyPreferredLanguages(CmdSetConfiguration& command, const document::XmlNode& section);
// The four Service_EPG tables
bool applyServiceEpgs(CmdSetConfiguration& command, const document::XmlNode& section);

// The rows of the one scrambling system (ScramblingGlobal, ScramblingKeysGlobal).
bool applyScramblings(CmdSetConfiguration& command, const document::XmlNode& section);

// Modules (RedesModulos), each element assigned to one of the headend's.
bool applyModules(CmdSetConfiguration& command, const document::XmlNode& section);

// The parts of a module. `mac` is the MAC address text of the headend's module.
// EntradasGlobal and the three tuner tables
bool applyInputs(CmdSetConfiguration& command, const char* mac, const document::XmlNode& inputs);
// SalidasLogicasGlobal and RFOutGlobal. `rfOutputMode` 0 is DVB-T, any other DVB-C.
bool applyOutputs(CmdSetConfiguration& command, const char* mac, int rfOutputMode,
                  const document::XmlNode& outputs);
// ServiciosSalidaGlobal
bool applyServices(CmdSetConfiguration& command, const char* mac,
                   const document::XmlNode& services);
// PIDsSalidaGlobal, the streams of the service row `idSSG`
bool applyPidOrders(CmdSetConfiguration& command, int idSSG, const document::XmlNode& pidOrders);

}  // namespace tarvo_remote_control
