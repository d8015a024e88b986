// The sections whose elements are single settings: rows of the key/value table
// configuracionWebGlobal, stored as they stand.
#pragma once

#include "db/schema.h"
#include "db/setting_keys.h"
#include "mapping/element.h"

namespace mapping {

constexpr Element setting(const char* name, const char* key, Form form,
                          PostAction postAction = PostAction::none,
                          ExportedBy exportedBy = ExportedBy::all) {
    return {.name = name,
            .column = tarvodb::configuracionWebGlobal::valor,
            .form = form,
            .exportedBy = exportedBy,
            .key = key,
            .postAction = postAction};
}

inline constexpr Element kIdentification[] = {
    setting("headendName", "identificacion_cabecera", Form::text),
    setting("location", "identificacion_localizacion", Form::text),
    setting("installationDate", "identificacion_fecha", Form::text),
    setting("zenContractId", tarvodb::setting::kContract, Form::text, PostAction::none,
            ExportedBy::rnb),
    setting("installer", "identificacion_instalador", Form::text, PostAction::none,
            ExportedBy::familyAOrLmv),
    setting("clientID", "identificacion_codCanal", Form::text, PostAction::none,
            ExportedBy::familyAOrLmv),
    setting("hostType", "identificacion_hostType", Form::text, PostAction::none,
            ExportedBy::familyA),
    setting("TVModels", "identificacion_TVModels", Form::text, PostAction::none,
            ExportedBy::familyA),
    setting("installationMode", "identificacion_installationMode", Form::text, PostAction::none,
            ExportedBy::familyA),
};

inline constexpr Element kRegional[] = {
    setting("language", tarvodb::setting::kLanguage, Form::text, PostAction::regional),
    setting("country", tarvodb::setting::kCountry, Form::text, PostAction::regional),
    setting("timezone", tarvodb::setting::kTimeZone, Form::text, PostAction::regional),
};

inline constexpr Element kNetwork[] = {
    setting("internet", "network_ConfigureNET", Form::onOff, PostAction::network),
    setting("dhcp", "network_UseDHCPIP", Form::onOff, PostAction::network),
    setting("ip", "network_IP", Form::address, PostAction::network),
    setting("netmask", "network_Netmask", Form::address, PostAction::network),
    setting("gateway", "network_Gateway", Form::address, PostAction::network),
    setting("dns1", "network_PrimaryDNS", Form::address, PostAction::network),
    setting("dns2", "network_SecondaryDNS", Form::address, PostAction::network),
};

inline constexpr Element kRemoteControl[] = {
    setting("active", tarvodb::setting::kServerActive, Form::onOff, PostAction::remoteControl),
    setting("interval", tarvodb::setting::kServerInterval, Form::number, PostAction::remoteControl),
    setting("serverUrl", tarvodb::setting::kServerAddress, Form::text, PostAction::remoteControl),
    setting("username", tarvodb::setting::kServerUser, Form::text, PostAction::remoteControl),
    secret(setting("password", tarvodb::setting::kServerPassword, Form::text,
                   PostAction::remoteControl)),
};

// Local oscillators of the LNB and its satellite band.
inline constexpr Element kLnb[] = {
    setting("oscLowFreq", tarvodb::setting::kLowBandOscillator, Form::number),
    setting("oscHighFreq", tarvodb::setting::kHighBandOscillator, Form::number),
    setting("oscBandaCFreq", "LNB_fbandaC", Form::number),
    setting("oscBandaSatelite", "LNB_BandaSatelite", Form::number),
};

// The import insists on all three, without a message.
constexpr Element maintenanceSetting(const char* name, const char* key, Form form) {
    Element element = setting(name, key, form);
    element.required.missing = "";
    return element;
}

inline constexpr Element kMaintenance[] = {
    maintenanceSetting("hour", "mantenimiento_hora", Form::number),
    maintenanceSetting("min", "mantenimiento_min", Form::number),
    maintenanceSetting("active", "mantenimiento_activo", Form::onOff),
};

// Directly under the document's root.
inline constexpr Element kMaturityRating = setting("maturityRating", "MaturityRating", Form::number,
                                                   PostAction::none, ExportedBy::familyA);

// Exported once. The import takes several, the last one wins.
inline constexpr Element kMaintenances[] = {entry("maintenance", kMaintenance)};

}  // namespace mapping
