// The sections of a document whose elements are single settings: rows of the key/value table
// configuracionWebGlobal, found by their `nombre`. Export and import walk the same rows.
#pragma once

#include <span>

namespace document {

enum class ValueKind { text, number, dottedAddress, onOff };

// What must be done on the device when a setting has got another value.
enum class PostAction : int {
    none = 0,
    network = 1,
    remoteControl = 2,
    scramblingKeys = 3,
    regional = 4
};

// The controllers that export a setting. Import takes every setting on every model.
enum class ExportedBy { all, rnb, familyA, familyAOrLmv };

struct Setting {
    const char* element;
    const char* key;
    ValueKind kind;  // documents the value; it is stored as it stands
    PostAction postAction;
    ExportedBy exportedBy = ExportedBy::all;
};

struct SettingSection {
    const char* element;
    std::span<const Setting> settings;
};

inline constexpr Setting kIdentificationSettings[] = {
    {"headendName", "identificacion_cabecera", ValueKind::text, PostAction::none},
    {"location", "identificacion_localizacion", ValueKind::text, PostAction::none},
    {"installationDate", "identificacion_fecha", ValueKind::text, PostAction::none},
    {"zenContractId", "identificacion_contrato", ValueKind::text, PostAction::none,
     ExportedBy::rnb},
    {"installer", "identificacion_instalador", ValueKind::text, PostAction::none,
     ExportedBy::familyAOrLmv},
    {"clientID", "identificacion_codCanal", ValueKind::text, PostAction::none,
     ExportedBy::familyAOrLmv},
    {"hostType", "identificacion_hostType", ValueKind::text, PostAction::none, ExportedBy::familyA},
    {"TVModels", "identificacion_TVModels", ValueKind::text, PostAction::none, ExportedBy::familyA},
    {"installationMode", "identificacion_installationMode", ValueKind::text, PostAction::none,
     ExportedBy::familyA},
};

inline constexpr const char* kLanguageKey = "codtimezone";
inline constexpr const char* kCountryKey = "idtimezone";
inline constexpr const char* kTimeZoneKey = "subtimezone";

// The elements do not say what their keys say; the pairing is kept as it is.
inline constexpr Setting kRegionalSettings[] = {
    {"language", kLanguageKey, ValueKind::text, PostAction::regional},
    {"country", kCountryKey, ValueKind::text, PostAction::regional},
    {"timezone", kTimeZoneKey, ValueKind::text, PostAction::regional},
};

inline constexpr Setting kNetworkSettings[] = {
    {"internet", "network_ConfigureNET", ValueKind::onOff, PostAction::network},
    {"dhcp", "network_UseDHCPIP", ValueKind::onOff, PostAction::network},
    {"ip", "network_IP", ValueKind::dottedAddress, PostAction::network},
    {"netmask", "network_Netmask", ValueKind::dottedAddress, PostAction::network},
    {"gateway", "network_Gateway", ValueKind::dottedAddress, PostAction::network},
    {"dns1", "network_PrimaryDNS", ValueKind::dottedAddress, PostAction::network},
    {"dns2", "network_SecondaryDNS", ValueKind::dottedAddress, PostAction::network},
};

inline constexpr Setting kRemoteControlSettings[] = {
    {"active", "servidorZEN_activo", ValueKind::onOff, PostAction::remoteControl},
    {"interval", "servidorZEN_intervalo", ValueKind::number, PostAction::remoteControl},
    {"serverUrl", "servidorZEN_direccion", ValueKind::text, PostAction::remoteControl},
    {"username", "servidorZEN_usuario", ValueKind::text, PostAction::remoteControl},
    {"password", "servidorZEN_password", ValueKind::text, PostAction::remoteControl},
};

// The oscillators, in MHz, that turn a received into an intermediate frequency.
inline constexpr const char* kLowBandOscillatorKey = "LNB_fb";
inline constexpr const char* kHighBandOscillatorKey = "LNB_fa";

// Local oscillators of the LNB and its satellite band.
inline constexpr Setting kLnbSettings[] = {
    {"oscLowFreq", kLowBandOscillatorKey, ValueKind::number, PostAction::none},
    {"oscHighFreq", kHighBandOscillatorKey, ValueKind::number, PostAction::none},
    {"oscBandaCFreq", "LNB_fbandaC", ValueKind::number, PostAction::none},
    {"oscBandaSatelite", "LNB_BandaSatelite", ValueKind::number, PostAction::none},
};

// The leaves of the one `maintenance` element inside `maintenances`.
inline constexpr Setting kMaintenanceSettings[] = {
    {"hour", "mantenimiento_hora", ValueKind::number, PostAction::none},
    {"min", "mantenimiento_min", ValueKind::number, PostAction::none},
    {"active", "mantenimiento_activo", ValueKind::onOff, PostAction::none},
};

// A leaf directly under the document's root element.
inline constexpr Setting kMaturityRating{"maturityRating", "MaturityRating", ValueKind::number,
                                         PostAction::none};

inline constexpr SettingSection kIdentification{"identification", kIdentificationSettings};
inline constexpr SettingSection kRegional{"regional", kRegionalSettings};
inline constexpr SettingSection kNetwork{"network", kNetworkSettings};
inline constexpr SettingSection kRemoteControl{"remoteControl", kRemoteControlSettings};
inline constexpr SettingSection kMaintenance{"maintenance", kMaintenanceSettings};
inline constexpr SettingSection kLnb{"lnb", kLnbSettings};

}  // namespace document
