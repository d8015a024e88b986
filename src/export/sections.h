// The section writers: each reads the rows that its section stands for and returns the section's
// new, unattached element, which the command's result document owns. A failed select gives a
// section without rows.
#pragma once

#include "export/cmd_get_configuration.h"

namespace tarvo_remote_control {

// Home transponders, from MantenimientoHomeChannelsGlobal.
document::XmlNode* homeChannelsSection(CmdGetConfiguration& command);
// Services of the programme guide, from the four Service_EPG tables.
document::XmlNode* serviceEpgsSection(CmdGetConfiguration& command);
// DVB networks, from RedesCabecera and the SI table files.
document::XmlNode* dvbNetworksSection(CmdGetConfiguration& command);
// Dish switch positions, from DiSEqCGlobal.
document::XmlNode* diseqcsSection(CmdGetConfiguration& command);
// Control words, from ScramblingKeysGlobal and ScramblingGlobal.
document::XmlNode* scramblingsSection(CmdGetConfiguration& command);
// From AudioLanguageListGlobal.
document::XmlNode* preferredLanguagesSection(CmdGetConfiguration& command);
// All modules of the headend with their inputs, outputs and services, from RedesModulos.
document::XmlNode* modulesSection(CmdGetConfiguration& command);

// The sections inside one `module` element. `mac` is the module's MAC address text.

// From EntradasGlobal, the tuner tables and their live state.
document::XmlNode* inputsSection(CmdGetConfiguration& command, const char* mac);
// From SalidasLogicasGlobal and RFOutGlobal. `rfOutputMode` is the module's ModoSalidaRF.
document::XmlNode* outputsSection(CmdGetConfiguration& command, const char* mac, int rfOutputMode);
// From ServiciosSalidaGlobal, PIDsSalidaGlobal and the live state of received services. `family`
// and `model` are the module's Familia and Modelo.
document::XmlNode* servicesSection(CmdGetConfiguration& command, const char* mac, int family,
                                   int model);

}  // namespace tarvo_remote_control
