// The services of the programme guide. The import rebuilds all of it, so that nothing identifies a
// service.
#pragma once

#include "db/schema.h"
#include "document/coded_texts.h"
#include "mapping/element.h"

namespace mapping {

// A number that identifies something; the import insists on 1 to 65535 where it is given.
constexpr Element identifier(const char* name, Column column) {
    return {.name = name, .column = column, .range = kIdentifier};
}

// The transponder that the service is received from.
inline constexpr Element kSatelliteEpg[] = {
    identifier("onid", tarvodb::Service_EPG_Satellite::ONID),
    identifier("tsid", tarvodb::Service_EPG_Satellite::TSID),
    {"frequency", tarvodb::Service_EPG_Satellite::Frequency},
    {"symbolrate", tarvodb::Service_EPG_Satellite::SymbolRate},
    {.name = "polarity",
     .column = tarvodb::Service_EPG_Satellite::Polaridad,
     .take = Take::code,
     .texts = document::kPolarity,
     .otherTextsAreOne = true},
    {"orbit", tarvodb::Service_EPG_Satellite::Orbita},
    {"westEastFlag", tarvodb::Service_EPG_Satellite::West_East_Flag},
};

inline constexpr ChildTable kSatelliteEpgTables[] = {
    {kSatelliteEpg, &tarvodb::Service_EPG_Satellite::info},
};

inline constexpr Element kAudiosEpg[] = {
    {.name = "languageCode",
     .column = tarvodb::Service_EPG_audios::Language_code,
     .form = Form::text},
    {"audioType", tarvodb::Service_EPG_audios::Audio_Type},
};
inline constexpr Element kAudiosEpgs[] = {entry("audiosEPG", kAudiosEpg)};

inline constexpr Element kReplacingEpg[] = {
    {"replacingEpgChannelId", tarvodb::Service_EPG_replacing::replacing_epg_channel_id},
};
inline constexpr Element kReplacingEpgs[] = {entry("replacingEPG", kReplacingEpg)};

inline constexpr Element kServiceEpg[] = {
    identifier("onid", tarvodb::Service_EPG::ONID),
    identifier("tsid", tarvodb::Service_EPG::TSID),
    identifier("sid", tarvodb::Service_EPG::SID),
    {"epg", tarvodb::Service_EPG::EPG},
    identifier("lcn", tarvodb::Service_EPG::LCN),
    {"videoType", tarvodb::Service_EPG::Video_Type},
    {"videoPeakBitrate", tarvodb::Service_EPG::Video_peak_bitrate},
    {"serviceType", tarvodb::Service_EPG::Service_type},
    {.name = "name", .column = tarvodb::Service_EPG::Nombre, .form = Form::text},
    {.name = "provider", .column = tarvodb::Service_EPG::Proveedor, .form = Form::text},
    {.name = "satelliteEPG",
     .take = Take::children,
     .kind = Kind::section,
     .childTables = kSatelliteEpgTables},
    list("audiosEPGs", kAudiosEpgs),
    list("replacingEPGs", kReplacingEpgs),
};

inline constexpr Element kServiceEpgs[] = {entry("serviceEPG", kServiceEpg)};

}  // namespace mapping
