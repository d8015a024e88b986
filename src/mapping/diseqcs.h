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
    {"name", tarvodb::DiSEqCGlobal::Nombre, Take::text, " name="},
    {"orbit", tarvodb::DiSEqCGlobal::Orbita, Take::text, " orbit="},
    {"polarity", tarvodb::DiSEqCGlobal::Polaridad, Take::code, " polarity=", document::kPolarity},
    {"band", tarvodb::DiSEqCGlobal::Banda, Take::code, " band=", document::kBand},
};

inline constexpr Element kDiseqcs[] = {entry("diseqc", kDiseqc)};

}  // namespace mapping
