// A module's inputs with their tuners.
#pragma once

#include "db/schema.h"
#include "document/coded_texts.h"
#include "document/input_type.h"
#include "mapping/element.h"

namespace mapping {

inline constexpr Element kInputStatus[] = {
    {.name = "signalQuality",
     .take = Take::ignored,
     .texts = document::kSignalQuality,
     .unknown = document::kSignalUnlocked,
     .writtenSpecially = true,
     .perRow = true,
     .liveState = true},
};

// One tuner row may be there for every type of input; the ones of other types stand by. `rfLoop`
// is the satellite tuner's, whatever the input's type: second tuners are fed through it.
inline constexpr Element kRfLoop{.name = "rfLoop",
                                 .column = tarvodb::NimGlobal::RFIN_LOOP,
                                 .take = Take::special,
                                 .label = " rfLoop: ",
                                 .form = Form::onOff,
                                 .when = When::secondTuner,
                                 .writtenSpecially = true,
                                 .range = kBinary};

inline constexpr Element kInputStatusSection{.name = "inputStatus",
                                             .take = Take::ignored,
                                             .exportedBy = ExportedBy::exceptRnb,
                                             .writtenSpecially = true,
                                             .liveState = true,
                                             .kind = Kind::section,
                                             .children = kInputStatus};

inline constexpr Element kSatelliteTuner[] = {
    {"frequency", tarvodb::NimGlobal::fe, Take::text, " frequency: "},
    {"diseqc", tarvodb::NimGlobal::DiSEqC},
    {.name = "band",
     .column = tarvodb::NimGlobal::banda_FI,
     .take = Take::code,
     .label = " band: ",
     .texts = document::kBand,
     .when = When::noDiseqcPosition},
    {.name = "PLSmode",
     .column = tarvodb::NimGlobal::ModoPLS,
     .take = Take::codeExactly,
     .label = " PLSmode: ",
     .texts = document::kPlsModeExported,
     .otherwise = document::kPlsModeExportedOtherwise,
     .importedTexts = document::kPlsModeImported,
     .refusedAsOutput = true},
    {"scramblingID", tarvodb::NimGlobal::ScramblingID, Take::numberStoredText, " scramblingID: "},
    {.name = "streamID",
     .column = tarvodb::NimGlobal::StreamID,
     .take = Take::codeOrNumber,
     .label = " streamID: ",
     .texts = document::kAutomaticId},
    kRfLoop,
    kInputStatusSection,
};

inline constexpr Element kTerrestrialTuner[] = {
    {"frequency", tarvodb::NimCOFDMGlobal::Frequency, Take::text, " frequency: "},
    {.name = "bandwidth",
     .column = tarvodb::NimCOFDMGlobal::Bandwidth,
     .take = Take::codeExactly,
     .label = " bandwidth: ",
     .texts = document::kInputBandwidth,
     .refusedAsOutput = true},
    {.name = "hierarchy",
     .column = tarvodb::NimCOFDMGlobal::Hierarchy,
     .take = Take::codeExactly,
     .label = " hierarchy: ",
     .texts = document::kHierarchy},
    {.name = "PLPID",
     .column = tarvodb::NimCOFDMGlobal::PLP_ID,
     .take = Take::codeOrNumber,
     .label = " PLPID: ",
     .texts = document::kAutomaticId},
    {.name = "autoScan",
     .column = tarvodb::NimCOFDMGlobal::trackingStatusEn,
     .label = " autoScan: ",
     .form = Form::onOff},
    {"onidScan", tarvodb::NimCOFDMGlobal::ONID_Tracking, Take::text, " onidScan: "},
    {"tsidScan", tarvodb::NimCOFDMGlobal::TSID_Tracking, Take::text, " tsidScan: "},
    kInputStatusSection,
    kRfLoop,
};

inline constexpr Element kCableTuner[] = {
    {"frequency", tarvodb::NimQAMGlobal::Frequency, Take::text, " frequency: "},
    {"symbolRate", tarvodb::NimQAMGlobal::SymbolRate, Take::numberStoredText, " symbolRate: "},
    // Its code; the texts of constellations are those of outputs.
    {"constelacion", tarvodb::NimQAMGlobal::Constelacion, Take::numberStoredText,
     " constelacion: "},
    kInputStatusSection,
    kRfLoop,
};

inline constexpr ChildTable kTuners[] = {
    {kSatelliteTuner, &tarvodb::NimGlobal::info, document::InputType::satellite},
    {kTerrestrialTuner, &tarvodb::NimCOFDMGlobal::info, document::InputType::terrestrial},
    {kCableTuner, &tarvodb::NimQAMGlobal::info, document::InputType::cable},
};

inline constexpr Element kInput[] = {
    {.name = "inputId",
     .column = tarvodb::EntradasGlobal::fk_idEntrada,
     .take = Take::key,
     .required = {.missing = "Input has no inputId field",
                  .range = {1, 2},
                  .outOfRange = "Input inputId should be 1 or 2"},
     .identity = true},
    // Switched off, the tuners stand by.
    {.name = "active",
     .column = tarvodb::EntradasGlobal::Activo,
     .take = Take::special,
     .form = Form::onOff,
     .range = kBinary},
    // A document::InputType.
    {.name = "type",
     .column = tarvodb::EntradasGlobal::tipoEntrada,
     .take = Take::number,
     .label = " type: ",
     .exportedBy = ExportedBy::exceptRnb,
     .required = {.missing = "Input has no type field",
                  .range = {0, 2},
                  .outOfRange = "Input type should be 0, 1 or 2",
                  .outOfRangeDebugLine = "Error 401, Input Input type should be 0, 1 or 2"},
     .isInputType = true},
    {.name = "onid",
     .column = tarvodb::EntradasGlobal::ONID,
     .take = Take::number,
     .label = " onid: ",
     .exportedBy = ExportedBy::exceptRnb},
    {.name = "tsid",
     .column = tarvodb::EntradasGlobal::TSID,
     .take = Take::number,
     .label = " tsid: ",
     .exportedBy = ExportedBy::exceptRnb},
};

inline constexpr Element kInputs[] = {entry("input", kInput, kTuners)};

}  // namespace mapping
