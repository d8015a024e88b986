// The conditional-access modules that the headend knows. A full list, with everything of a module,
// is part of a backup.
#pragma once

#include "db/schema.h"
#include "mapping/element.h"

namespace mapping {

// A column that only a full list tells.
constexpr Element fullListText(const char* name, tarvodb::VSecure::Column column) {
    return {.name = name, .column = column, .form = Form::text, .when = When::fullList};
}

inline constexpr Column kPublicKey = tarvodb::VSecure::K_Publica;

inline constexpr Element kCam[] = {
    {.name = "serialNumber",
     .column = tarvodb::VSecure::idCliente,
     .take = Take::key,
     .form = Form::text,
     .required = {.missing = "No 'serialNumber' element found"},
     .identity = true},
    {.name = "hasPublicKey", .take = Take::ignored, .form = Form::onOff, .presenceOf = &kPublicKey},
    // Imported without its white space. A module with another key is processed again.
    {.name = "publicKey",
     .column = kPublicKey,
     .take = Take::special,
     .form = Form::text,
     .when = When::publicKeysAskedFor,
     .derived = tarvodb::VSecure::EK_Shared},
    fullListText("manufacturer", tarvodb::VSecure::Fabricante),
    fullListText("registerDate", tarvodb::VSecure::Alta),
    secret(fullListText("ekShared", tarvodb::VSecure::EK_Shared)),
    fullListText("description", tarvodb::VSecure::Descripcion),
};

inline constexpr Element kCams[] = {entry("cam", kCam)};

constexpr Element camList(const char* name) {
    Element element = list(name, kCams);
    element.skipsOthers = true;
    return element;
}

}  // namespace mapping
