// The home transponders used for maintenance.
#pragma once

#include "db/schema.h"
#include "document/coded_texts.h"
#include "mapping/element.h"

namespace mapping {

using HomeChannels = tarvodb::MantenimientoHomeChannelsGlobal;

inline constexpr Element kHomeChannel[] = {
    {.name = "id",
     .column = HomeChannels::idMantenimiento,
     .take = Take::key,
     .required = {.missing = "homechannel has no id field"},
     .identity = true},
    {"frequency", HomeChannels::Frequency},
    {"orbit", HomeChannels::Orbita},
    {.name = "polarity",
     .column = HomeChannels::Polaridad,
     .take = Take::code,
     .texts = document::kPolarity,
     .otherTextsAreOne = true},
    {.name = "band",
     .column = HomeChannels::Banda,
     .take = Take::code,
     .texts = document::kBand,
     .otherTextsAreOne = true},
    {"symbolrate", HomeChannels::SymbolRate},
    {"onid", HomeChannels::ONID, Take::ignored},
    {"tsid", HomeChannels::TSID, Take::ignored},
};

inline constexpr Element kHomeChannels[] = {entry("homechannel", kHomeChannel)};

}  // namespace mapping
