// The DVB networks that the headend's outputs belong to, with the versions of their SI tables.
#pragma once

#include "db/schema.h"
#include "db/si_tables.h"
#include "document/coded_texts.h"
#include "mapping/element.h"

namespace mapping {

// A kind of elementary stream that a network blocks or decrypts, as a bit of a mask.
inline constexpr Element kPidMask[] = {
    {.name = "text", .take = Take::bits, .bit = 1},
    {.name = "subtitles", .take = Take::bits, .bit = 2},
    {.name = "data", .take = Take::bits, .bit = 4},
};

constexpr Element pidMask(const char* name, tarvodb::RedesCabecera::Column column,
                          const char* label, ExportedBy exportedBy = ExportedBy::all) {
    return {.name = name,
            .column = column,
            .take = Take::bits,
            .label = label,
            .exportedBy = exportedBy,
            .writtenSpecially = true,
            .kind = Kind::section,
            .children = kPidMask};
}

// A number of networks other than RNB-K408's.
constexpr Element networkNumber(const char* name, tarvodb::RedesCabecera::Column column,
                                const char* label, Range range = {}) {
    return {.name = name,
            .column = column,
            .take = Take::numberUnlessZero,
            .label = label,
            .exportedBy = ExportedBy::exceptRnb,
            .range = range};
}

// The version of an SI table, which its file tells.
constexpr Element siTableVersion(const char* name, const SiTable& table, ExportedBy exportedBy) {
    return {.name = name,
            .take = Take::ignored,
            .unknown = document::kNoSiTable,
            .exportedBy = exportedBy,
            .writtenSpecially = true,
            .liveState = true,
            .siTable = &table};
}

inline constexpr SiTable kInputNit{.file = "NIT_table_CPLUS"};
inline constexpr SiTable kInputBat{.file = "BAT_table_CPLUS"};
inline constexpr SiTable kOutputNit{.file = tarvodb::kNitTable, .ofNetwork = true};

inline constexpr Element kDvbNetwork[] = {
    {.name = "id",
     .column = tarvodb::RedesCabecera::idRed,
     .take = Take::key,
     .required = {.missing = "dvbNetwork has no id field"},
     .identity = true},
    {"nid", tarvodb::RedesCabecera::NID, Take::text, "nid="},
    {"onidOut", tarvodb::RedesCabecera::ONID_Out},
    {.name = "name",
     .column = tarvodb::RedesCabecera::NombreRed,
     .label = "name=",
     .form = Form::text},
    {"ciplusTVs", tarvodb::RedesCabecera::CI_TV_Type, Take::text, "ciplusTVs="},
    networkNumber("tvType", tarvodb::RedesCabecera::TV_Type, "tvType="),
    networkNumber("cellID", tarvodb::RedesCabecera::CellID, "cellID="),
    networkNumber("forceServiceName", tarvodb::RedesCabecera::Force_ServiceName,
                  "forcedServiceName="),
    networkNumber("autoServiceList", tarvodb::RedesCabecera::Auto_Service_List, "autoServiceList="),
    networkNumber("lcnOffset", tarvodb::RedesCabecera::LCN_Offset, "lcnOffset="),
    networkNumber("lcnMode", tarvodb::RedesCabecera::LCN_Mode, "lcnMode="),
    // See NitPattern.
    networkNumber("tipoNITPatron", tarvodb::RedesCabecera::Tipo_NIT_Patron,
                  "tipoNITPatron=", kBinary),
    networkNumber("nitPatron", tarvodb::RedesCabecera::NIT_Patron, "nitPatron="),
    networkNumber("versionNITPatron", tarvodb::RedesCabecera::Version_NIT_Patron,
                  "versionNITPatron="),
    pidMask("autoBlockPIDs", tarvodb::RedesCabecera::Block_PIDs, "autoBlockPIDsMask="),
    pidMask("autoDecryptPIDs", tarvodb::RedesCabecera::Decrypt_PIDs,
            "autoDecryptPIDsMask=", ExportedBy::exceptWvxb),
    siTableVersion("InputVersionNIT", kInputNit, ExportedBy::familyA),
    siTableVersion("InputVersionBAT", kInputBat, ExportedBy::familyA),
    siTableVersion("OutputVersionNIT", kOutputNit, ExportedBy::exceptRnb),
    // When the file was written, in local time.
    {.name = "OutputNITDate",
     .take = Take::ignored,
     .form = Form::text,
     .exportedBy = ExportedBy::exceptRnb,
     .when = When::fileExists,
     .writtenSpecially = true,
     .liveState = true,
     .siTable = &kOutputNit},
};

inline constexpr const Element& kNitPatternType = rowNamed(kDvbNetwork, "tipoNITPatron");
inline constexpr const Element& kNitPattern = rowNamed(kDvbNetwork, "nitPatron");
inline constexpr const Element& kNitPatternVersion = rowNamed(kDvbNetwork, "versionNITPatron");

// What a network's element gave of its NIT pattern so far, against which the import checks what
// comes after it: a pattern other than 0 and 1 needs a type other than 0, a version other than 0
// needs a pattern other than 0.
class NitPattern {
  public:
    // Whether the next child may have this number.
    constexpr bool allows(const Element& child, int number) {
        if (&child == &kNitPatternType) {
            type_ = number;
        } else if (&child == &kNitPattern) {
            pattern_ = number;
            return kBinary.contains(number) || type_ != 0;
        }
        return &child != &kNitPatternVersion || number == 0 || pattern_ != 0;
    }

  private:
    int type_ = 0;
    int pattern_ = 0;
};

inline constexpr Element kDvbNetworks[] = {entry("dvbNetwork", kDvbNetwork)};

}  // namespace mapping
