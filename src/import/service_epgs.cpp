// The services of the programme guide, rebuilt from the document.
#include <string>

#include "document/coded_texts.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "text/to_int.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::Record;
using tarvodb::Service_EPG;
using tarvodb::Service_EPG_audios;
using tarvodb::Service_EPG_replacing;
using tarvodb::Service_EPG_Satellite;

namespace {

enum class Check { none, present, identifier };

// An element that is stored as it stands. An identifier (of the DVB kind, or a channel number) is
// 1 to 65535; `name` is how the error message calls the element.
template <class Table>
struct Field {
    const char* element;
    typename Table::Column column;
    Check check = Check::none;
    const char* name = nullptr;
};

constexpr Field<Service_EPG> kServiceFields[] = {
    {"onid", Service_EPG::ONID, Check::identifier, "ONID"},
    {"tsid", Service_EPG::TSID, Check::identifier, "TSID"},
    {"sid", Service_EPG::SID, Check::identifier, "SID"},
    {"epg", Service_EPG::EPG, Check::present, "EPG"},
    {"lcn", Service_EPG::LCN, Check::identifier, "LCN"},
    {"videoType", Service_EPG::Video_Type},
    {"videoPeakBitrate", Service_EPG::Video_peak_bitrate},
    {"serviceType", Service_EPG::Service_type},
    {"name", Service_EPG::Nombre},
    {"provider", Service_EPG::Proveedor},
};

constexpr Field<Service_EPG_Satellite> kSatelliteFields[] = {
    {"onid", Service_EPG_Satellite::ONID, Check::identifier, "ONID"},
    {"tsid", Service_EPG_Satellite::TSID, Check::identifier, "TSID"},
    {"frequency", Service_EPG_Satellite::Frequency},
    {"symbolrate", Service_EPG_Satellite::SymbolRate},
    {"orbit", Service_EPG_Satellite::Orbita},
    {"westEastFlag", Service_EPG_Satellite::West_East_Flag},
};

constexpr Field<Service_EPG_audios> kAudioFields[] = {
    {"languageCode", Service_EPG_audios::Language_code},
    {"audioType", Service_EPG_audios::Audio_Type},
};

constexpr Field<Service_EPG_replacing> kReplacingFields[] = {
    {"replacingEpgChannelId", Service_EPG_replacing::replacing_epg_channel_id},
};

// Records the error of an element that does not pass its check.
template <class Table>
bool passes(CmdSetConfiguration& command, const Field<Table>& field, const char* text) {
    const std::string name = field.name == nullptr ? "" : field.name;
    switch (field.check) {
        case Check::none:
            return true;
        case Check::present:
            // An element without text reads as the empty text, which is a value.
            return text != nullptr ||
                   fail(command, ErrorCode::invalidValue, name + " value can't be NULL");
        case Check::identifier:
            const int number = text::toInt(text);
            return (number >= 1 && number <= 65535) ||
                   fail(command, ErrorCode::invalidValue,
                        name + " value must be a value between [1-65535]");
    }
    return true;
}

// Stores an element that `fields` names; others are skipped. False when it does not pass.
template <class Table, std::size_t Size>
bool setField(CmdSetConfiguration& command, Record<Table>& record,
              const Field<Table> (&fields)[Size], const XmlNode& element) {
    const Field<Table>* field = document::rowFor(fields, element);
    if (field == nullptr) {
        return true;
    }
    const char* text = document::textOf(element);
    if (!passes(command, *field, text)) {
        return false;
    }
    record.put(field->column, text);
    return true;
}

// The id of the new transponder row, 0 when there is none. An error here is recorded, but does not
// fail the section: the service is then stored without a transponder.
int insertSatellite(CmdSetConfiguration& command, const XmlNode& element) {
    reportProgress("Processing: Service EPGs Satellite");
    if (element.first_node() == nullptr) {
        return 0;
    }
    Record<Service_EPG_Satellite> satellite;
    for (const XmlNode& child : document::childrenOf(element)) {
        if (!setField(command, satellite, kSatelliteFields, child)) {
            return 0;
        }
        if (document::hasName(child, "polarity")) {
            // What is not vertical counts as horizontal.
            satellite.put(
                Service_EPG_Satellite::Polaridad,
                document::codeOfAnyCase(document::kPolarity, document::textOf(child)).value_or(1));
        }
    }
    return insertRecord(command, satellite, "Could not insert svcEPG") ? satellite.key().asInt()
                                                                       : 0;
}

// A list of rows that belong to one service.
template <class Table, std::size_t Size>
struct ChildList {
    const char* progress;
    const char* element;
    const char* wrongElement;
    const char* insertMessage;
    const Field<Table> (&fields)[Size];
};

constexpr ChildList<Service_EPG_audios, std::size(kAudioFields)> kAudios{
    "Processing: Service EPGs Audios", "audiosEPG", "No audiosEPGs element found",
    "Could not insert svcAudio", kAudioFields};
constexpr ChildList<Service_EPG_replacing, std::size(kReplacingFields)> kReplacings{
    "Processing: Service EPGs Replacing", "replacingEPG", "No replacingEPGs element found",
    "Could not insert svcEPGRep", kReplacingFields};

template <class Table, std::size_t Size>
bool insertChildren(CmdSetConfiguration& command, const ChildList<Table, Size>& list, int serviceId,
                    const XmlNode& section) {
    reportProgress(list.progress);
    bool inserted = true;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, list.element)) {
            return fail(command, ErrorCode::invalidCommand, list.wrongElement);
        }
        Record<Table> record;
        record.put(Table::fk_idService_EPG, serviceId);
        for (const XmlNode& child : document::childrenOf(element)) {
            setField(command, record, list.fields, child);
        }
        inserted &= insertRecord(command, record, list.insertMessage);
    }
    return inserted;
}

enum class Outcome {
    stored,
    invalid,  // the section goes on with the next service, but fails
    failed,   // the section ends
};

Outcome insertService(CmdSetConfiguration& command, const XmlNode& element) {
    Record<Service_EPG> service;
    service.put(Service_EPG::fk_idService_EPG_Satellite, 0);
    const XmlNode* audios = nullptr;
    const XmlNode* replacings = nullptr;
    bool stored = true;
    for (const XmlNode& child : document::childrenOf(element)) {
        if (!setField(command, service, kServiceFields, child)) {
            // What was read so far is stored all the same: the caller rolls everything back.
            stored = false;
            break;
        }
        if (document::hasName(child, "satelliteEPG")) {
            service.put(Service_EPG::fk_idService_EPG_Satellite, insertSatellite(command, child));
        } else if (document::hasName(child, "audiosEPGs")) {
            audios = &child;
        } else if (document::hasName(child, "replacingEPGs")) {
            replacings = &child;
        }
    }
    stored &= insertRecord(command, service, "Could not insert ServiceEPG");
    const int serviceId = service.key().asInt();
    if (audios != nullptr && !insertChildren(command, kAudios, serviceId, *audios)) {
        return Outcome::failed;
    }
    if (replacings != nullptr && !insertChildren(command, kReplacings, serviceId, *replacings)) {
        return Outcome::failed;
    }
    return stored ? Outcome::stored : Outcome::invalid;
}

bool emptyTables(CmdSetConfiguration& command) {
    bool emptied = emptyTable<Service_EPG>(command, "Could not delete ServiceEPGs");
    emptied &= emptyTable<Service_EPG_Satellite>(command, "Could not delete ServiceEPG_Satellites");
    emptied &= emptyTable<Service_EPG_audios>(command, "Could not delete ServiceEPG_audios");
    emptied &= emptyTable<Service_EPG_replacing>(command, "Could not delete ServiceEPG_replacings");
    return emptied;
}

}  // namespace

bool applyServiceEpgs(CmdSetConfiguration& command, const XmlNode& section) {
    reportProgress("Processing: Service EPGs");
    bool stored = emptyTables(command);
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, "serviceEPG")) {
            return fail(command, ErrorCode::invalidCommand, "No serviceEPG element found");
        }
        const Outcome outcome = insertService(command, element);
        if (outcome == Outcome::failed) {
            return false;
        }
        stored &= outcome == Outcome::stored;
    }
    return stored;
}

}  // namespace tarvo_remote_control
