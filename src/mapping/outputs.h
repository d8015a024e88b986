// A module's logical outputs with their RF modulators.
#pragma once

#include "db/schema.h"
#include "document/coded_texts.h"
#include "mapping/element.h"

namespace mapping {

inline constexpr Element kRfOutput[] = {
    // Imported as 3 or 0.
    {.name = "active",
     .column = tarvodb::RFOutGlobal::Modo_Salida_Modulacion,
     .take = Take::special,
     .label = " active: ",
     .form = Form::onOff,
     .exportedAsOnOff = true,
     .range = kBinary},
    {"frequency", tarvodb::RFOutGlobal::Frecuencia, Take::text, " frequency: "},
    {.name = "symbolRate",
     .column = tarvodb::RFOutGlobal::Symbol_Rate,
     .label = " symbolRate: ",
     .exportedBy = ExportedBy::exceptRnb},
    {.name = "modeOFDM",
     .column = tarvodb::RFOutGlobal::Modo_OFDM,
     .take = Take::code,
     .label = " modeOFDM: ",
     .texts = document::kModeOFDM,
     .exportedBy = ExportedBy::exceptRnb},
    {.name = "bandwidth",
     .column = tarvodb::RFOutGlobal::Ancho_Banda,
     .take = Take::code,
     .label = " bandwidth: ",
     .texts = document::kOutputBandwidth},
    {.name = "guardInterval",
     .column = tarvodb::RFOutGlobal::Intervalo_Guarda,
     .take = Take::code,
     .label = " guardInterval: ",
     .texts = document::kGuardInterval},
    {.name = "constellation",
     .column = tarvodb::RFOutGlobal::Constelacion,
     .take = Take::code,
     .label = " constellation: ",
     .texts = document::kConstellationDvbT,
     .dvbCTexts = document::kConstellationDvbC,
     .writtenSpecially = true},
    {.name = "codeRate",
     .column = tarvodb::RFOutGlobal::Code_Rate,
     .take = Take::code,
     .label = " codeRate: ",
     .texts = document::kCodeRate},
    {.name = "formatIQ",
     .column = tarvodb::RFOutGlobal::Espectro_Salida,
     .take = Take::code,
     .label = "formatIQ: ",
     .texts = document::kSpectrum},
};

inline constexpr ChildTable kRfOutputs[] = {{kRfOutput, &tarvodb::RFOutGlobal::info}};

inline constexpr Element kOutput[] = {
    {.name = "outputId",
     .column = tarvodb::SalidasLogicasGlobal::fk_idSalidasLogicas,
     .take = Take::key,
     .required = {.missing = "Output has no outputId field",
                  .range = {1, 2},
                  .outOfRange = "Output outputId should be 1 or 2"},
     .identity = true},
    {.name = "type",
     .column = tarvodb::SalidasLogicasGlobal::tipoSalida,
     .take = Take::ignored,
     .exportedBy = ExportedBy::exceptRnb},
    {"onid", tarvodb::SalidasLogicasGlobal::ONID_Out, Take::text, " onid: "},
    {"tsid", tarvodb::SalidasLogicasGlobal::TSID_Out, Take::text, " tsid: "},
};

inline constexpr Element kOutputs[] = {entry("output", kOutput, kRfOutputs)};

}  // namespace mapping
