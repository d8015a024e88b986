// The modules of the headend with their hardware, their conditional access and what they receive
// and send.
#pragma once

#include "db/schema.h"
#include "document/coded_texts.h"
#include "mapping/element.h"
#include "mapping/inputs.h"
#include "mapping/outputs.h"
#include "mapping/services.h"

namespace mapping {

// A text that says which module it is; the import leaves it to the device.
constexpr Element moduleText(const char* name, tarvodb::RedesModulos::Column column) {
    return {.name = name, .column = column, .take = Take::ignored, .form = Form::text};
}

// A text that a module reports of its conditional-access module and the smart card in it.
constexpr Element camText(const char* name, tarvodb::CAMInfoGlobal::Column column) {
    return {.name = name,
            .column = column,
            .take = Take::ignored,
            .form = Form::text,
            .when = When::moduleReportsCam,
            .liveState = true};
}

constexpr Element withRnbPrefix(const char* prefix, Element element) {
    element.rnbPrefix = prefix;
    return element;
}

inline constexpr Element kModule[] = {
    moduleText("id", tarvodb::RedesModulos::HostName),
    // The import binds an element to one of the headend's modules by its MAC or, for a module that
    // replaces another, by isMaster, family and model; on RNB-K408 by its MAC, or to any.
    {.name = "mac",
     .column = tarvodb::RedesModulos::MAC,
     .take = Take::key,
     .form = Form::text,
     .identity = true},
    {.name = "isMaster",
     .column = tarvodb::RedesModulos::Master,
     .take = Take::key,
     .form = Form::onOff},
    {.name = "name",
     .column = tarvodb::RedesModulos::LabelName,
     .label = " name: ",
     .form = Form::text,
     .exportedBy = ExportedBy::exceptRnb},
    {.name = "family",
     .column = tarvodb::RedesModulos::Familia,
     .take = Take::key,
     .exportedBy = ExportedBy::exceptRnb},
    {.name = "model",
     .column = tarvodb::RedesModulos::Modelo,
     .take = Take::key,
     .exportedBy = ExportedBy::exceptRnb},
    // 0 is DVB-T, any other DVB-C. On import it counts for the outputs that come after it.
    {.name = "modoSalidaRF",
     .column = tarvodb::RedesModulos::ModoSalidaRF,
     .take = Take::number,
     .label = " modoSalidaRF: ",
     .exportedBy = ExportedBy::exceptRnb},
    moduleText("serialNumber", tarvodb::RedesModulos::NumeroSerie),
    camText("CAMSerialNumber", tarvodb::CAMInfoGlobal::camSerialNumber),
    camText("CAMVersion", tarvodb::CAMInfoGlobal::camVersion),
    withRnbPrefix("000", camText("CardSerialNumber", tarvodb::CAMInfoGlobal::cardSerialNumber)),
    // By the hours that they still last.
    {.name = "CardRights",
     .column = tarvodb::CAMInfoGlobal::rightsHours,
     .take = Take::ignored,
     .texts = document::kCardRights,
     .exportedBy = ExportedBy::familyAOrWvxa,
     .when = When::moduleReportsCam,
     .writtenSpecially = true,
     .liveState = true},
    {.name = "CardStatus",
     .column = tarvodb::CAMInfoGlobal::cardStatus,
     .take = Take::ignored,
     .texts = document::kCardStatus,
     .otherwise = document::kCardStatusOtherwise,
     .exportedBy = ExportedBy::familyAOrWvxa,
     .when = When::moduleReportsCam,
     .liveState = true},
    moduleText("hwVersion", tarvodb::RedesModulos::HWVersion),
    {.name = "swVersion",
     .column = tarvodb::ModulosCabecera::softwareVersion,
     .take = Take::ignored,
     .form = Form::text,
     .writtenSpecially = true,
     .perRow = true,
     .liveState = true},
    {"attenuation", tarvodb::RedesModulos::Atenuacion, Take::number, "attenuation: "},
    {"dvbNetworkId", tarvodb::RedesModulos::RED, Take::number, " dvbNetworkId: "},
    list("inputs", kInputs),
    list("outputs", kOutputs),
    list("services", kServices),
};

inline constexpr Element kModules[] = {entry("module", kModule)};

}  // namespace mapping
