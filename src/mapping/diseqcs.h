// The positions of the satellite dish switch.
#pragma once

#include "db/schema.h"
#include "document/coded_texts.h"
#include "mapping/element.h"

namespace mapping {

inline constexpr Element kDiseqc[] = {
    {.name = "id",
     .column = tarvodb::DiSEqCGlobal::idDiSEqCGlobal,
     .take = Take::key,
     .required = {.missing = "diseqc has no id field"},
     .identity = true},
    {"position", tarvodb::DiSEqCGlobal::Posicion, Take::text, "position="},
    {.name = "name",
     .column = tarvodb::DiSEqCGlobal::Nombre,
     .label = " name=",
     .form = Form::text},
    {"orbit", tarvodb::DiSEqCGlobal::Orbita, Take::text, " orbit="},
    {.name = "polarity",
     .column = tarvodb::DiSEqCGlobal::Polaridad,
     .take = Take::code,
     .label = " polarity=",
     .texts = document::kPolarity},
    {.name = "band",
     .column = tarvodb::DiSEqCGlobal::Banda,
     .take = Take::code,
     .label = " band=",
     .texts = document::kBand},
};

inline constexpr Element kDiseqcs[] = {entry("diseqc", kDiseqc)};

}  // namespace mapping
