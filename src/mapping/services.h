// A module's output services with their elementary streams.
#pragma once

#include "db/schema.h"
#include "document/coded_texts.h"
#include "mapping/element.h"

namespace mapping {

using Service = tarvodb::ServiciosSalidaGlobal;
using Stream = tarvodb::PIDsSalidaGlobal;

// The import knows a stream by all but its order.
inline constexpr Element kPidOrder[] = {
    {.name = "languageCode",
     .column = Stream::AudioCode,
     .take = Take::key,
     .form = Form::text,
     .identity = true},
    {.name = "streamId", .column = Stream::StreamId, .take = Take::key, .identity = true},
    {.name = "type", .column = Stream::Tipo, .take = Take::key, .identity = true},
    {"order", Stream::Orden},
};
inline constexpr Element kPidOrders[] = {entry("pidOrder", kPidOrder)};

// From the bits of the service as it is received.
constexpr Element serviceState(const char* name, const StateBits& bits) {
    return {.name = name,
            .take = Take::ignored,
            .texts = document::kServiceState,
            .writtenSpecially = true,
            .perRow = true,
            .liveState = true,
            .stateBits = &bits};
}

inline constexpr StateBits kDescramblingBits{
    .enabledBy = Service::Descifrar, .valid = 0x10, .error = 0x20};
inline constexpr StateBits kTranscodingBits{
    .enabledBy = Service::Transcoding, .valid = 0x40, .error = 0x80};

inline constexpr Element kServiceStatus[] = {
    serviceState("decrytStatus", kDescramblingBits),  // spelled so
    serviceState("transcodingStatus", kTranscodingBits),
};

constexpr Element serviceNumber(const char* name, Service::Column column, const char* label,
                                ExportedBy exportedBy = ExportedBy::exceptRnb,
                                When when = When::always) {
    return {.name = name,
            .column = column,
            .take = Take::number,
            .label = label,
            .exportedBy = exportedBy,
            .when = when};
}

inline constexpr Element kService[] = {
    {.name = "outputId",
     .column = Service::fk_idSalidasLogicas,
     .take = Take::key,
     .required = {.missing = "Service has no outputId field",
                  .range = {1, 2},
                  .outOfRange = "Service outputId should be 1 or 2"},
     .identity = true},
    {.name = "outputSid",
     .column = Service::SID,
     .take = Take::number,
     .label = " outputSid: ",
     .range = {.highest = 65535},
     .required = {.missing = "Service has no outputSid field",
                  .range = {.lowest = 1},
                  .outOfRange = "Service outputSid should be greater than 0"},
     .identity = true},
    serviceNumber("inputId", Service::fk_idEntrada, "inputId: ", ExportedBy::all),
    {.name = "inputSid",
     .column = Service::OSID,
     .take = Take::number,
     .label = " inputSid: ",
     .range = {.highest = 65535}},
    // The label is kept as it is.
    {.name = "inputName",
     .column = Service::NombreEntrada,
     .label = "outputSid: ",
     .form = Form::text},
    serviceNumber("forcedName", Service::NombreForzado, " forcedName: ", ExportedBy::all),
    {.name = "outputName",
     .column = Service::NombreSalida,
     .label = " outputName: ",
     .form = Form::text},
    {.name = "lcn",
     .column = Service::LCN,
     .take = Take::special,
     .label = " lcn: ",
     .lowestOfOther = 1},
    serviceNumber("olcn", Service::OLCN, " olcn: "),
    serviceNumber("simulcastLcn", Service::SimulcastLCN, " simulcastLcn: "),
    serviceNumber("forcedLcn", Service::LCNForzado, " forcedLcn: "),
    serviceNumber("idEPG", Service::idEPG, " idEPG: "),
    serviceNumber("serviceTypeDVB", Service::Tipo, " serviceTypeDVB: "),
    serviceNumber("serviceTypeCanal", Service::Service_Type, " serviceTypeCanal: "),
    serviceNumber("videoFormat", Service::VideoFormat, " videoFormat: "),
    serviceNumber("cloned", Service::DuplicadoClonado, " cloned: ", ExportedBy::exceptRnb,
                  When::moduleDescrambles),
    // Sets the order in which services are descrambled too.
    {.name = "decrypt",
     .column = Service::Descifrar,
     .take = Take::special,
     .label = "decrypt: ",
     .exportedBy = ExportedBy::exceptWvxb,
     .when = When::moduleDescrambles},
    serviceNumber("transcoding", Service::Transcoding, "transcoding: "),
    // No column holds it.
    {.name = "encrypt",
     .take = Take::ignored,
     .form = Form::onOff,
     .exportedBy = ExportedBy::exceptWvxb,
     .constant = "0"},
    serviceNumber("videoPeakBitrate", Service::Video_peak_bitrate, "videoPeakBitrate: "),
    list("pidOrders", kPidOrders),
    {.name = "serviceStatus",
     .take = Take::ignored,
     .exportedBy = ExportedBy::exceptRnb,
     .when = When::moduleDescrambles,
     .writtenSpecially = true,
     .liveState = true,
     .kind = Kind::section,
     .children = kServiceStatus},
};

inline constexpr Element kServices[] = {entry("service", kService)};

}  // namespace mapping
