// The services of the programme guide, rebuilt from the document.
#include "mapping/service_epgs.h"

#include <string>

#include "command/error_codes.h"
#include "db/record.h"
#include "db/value.h"
#include "document/xml.h"
#include "import/elements.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "mapping/element.h"
#include "text/upper_cased.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::Record;
using tarvodb::Service_EPG;
using tarvodb::Service_EPG_audios;
using tarvodb::Service_EPG_replacing;
using tarvodb::Service_EPG_Satellite;

namespace {

// What is not vertical counts as horizontal.
bool putCode(tarvodb::Row& record, const Element& element, const char* text) {
    record.setValue(element.column.index, tarvodb::columnValue(codeOf(element, text).value_or(1)));
    return true;
}

// Stores a child that the record has a column for; others are skipped. False when its number is
// out of range, which is an error.
bool putChild(CmdSetConfiguration& command, tarvodb::Row& record, mapping::Elements elements,
              const XmlNode& child) {
    const Element* element = mapping::elementOf(elements, child, record.table());
    if (element == nullptr) {
        return true;
    }
    const char* text = document::textOf(child);
    if (element->otherTextsAreOne) {
        return putCode(record, *element, text);
    }
    if (!element->range.contains(document::numberOf(child))) {
        return fail(command, ErrorCode::invalidValue,
                    text::upperCased(element->name) + " value must be a value between [1-65535]");
    }
    record.setValue(element->column.index, tarvodb::columnValue(text));
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
        if (!putChild(command, satellite, mapping::kSatelliteEpg, child)) {
            return 0;
        }
    }
    return insertRecord(command, satellite, "Could not insert svcEPG") ? satellite.key().asInt()
                                                                       : 0;
}

// What the import says of a list of rows that belong to one service.
struct ListTexts {
    const char* progress;
    const char* wrongElement;
    const char* insertMessage;
};

constexpr ListTexts kAudioTexts{"Processing: Service EPGs Audios", "No audiosEPGs element found",
                                "Could not insert svcAudio"};
constexpr ListTexts kReplacingTexts{"Processing: Service EPGs Replacing",
                                    "No replacingEPGs element found", "Could not insert svcEPGRep"};

// No list, nothing to insert. `entry` is the row of the list's elements.
template <class Table>
bool insertList(CmdSetConfiguration& command, const ListTexts& texts, const Element& entry,
                int serviceId, const XmlNode* list) {
    if (list == nullptr) {
        return true;
    }
    reportProgress(texts.progress);
    bool inserted = true;
    for (const XmlNode& element : document::childrenOf(*list)) {
        if (!document::hasName(element, entry.name)) {
            return fail(command, ErrorCode::invalidCommand, texts.wrongElement);
        }
        Record<Table> record;
        record.set(Table::fk_idService_EPG, serviceId);
        for (const XmlNode& child : document::childrenOf(element)) {
            putChild(command, record, entry.children, child);
        }
        inserted &= insertRecord(command, record, texts.insertMessage);
    }
    return inserted;
}

enum class GuideServiceOutcome {
    stored,
    invalid,  // the section goes on with the next service, but fails
    failed,   // the section ends
};

// Writes one `serviceEPG` element.
class GuideServiceImport {
  public:
    explicit GuideServiceImport(CmdSetConfiguration& command) : command_(command) {
        service_.set(Service_EPG::fk_idService_EPG_Satellite, 0);
    }

    // Of an element that is refused, what was read so far is stored all the same: the caller rolls
    // everything back.
    GuideServiceOutcome apply(const XmlNode& element) {
        bool stored = readChildren(element);
        stored &= insertRecord(command_, service_, "Could not insert ServiceEPG");
        if (!insertLists(service_.key().asInt())) {
            return GuideServiceOutcome::failed;
        }
        return stored ? GuideServiceOutcome::stored : GuideServiceOutcome::invalid;
    }

  private:
    bool readChildren(const XmlNode& element) {
        for (const XmlNode& child : document::childrenOf(element)) {
            if (!putChild(command_, service_, mapping::kServiceEpg, child)) {
                return false;
            }
            readPart(child);
        }
        return true;
    }

    void readPart(const XmlNode& child) {
        if (document::hasName(child, kSatelliteSection.name)) {
            service_.set(Service_EPG::fk_idService_EPG_Satellite, insertSatellite(command_, child));
        } else if (document::hasName(child, kAudiosList.name)) {
            audios_ = &child;
        } else if (document::hasName(child, kReplacingsList.name)) {
            replacings_ = &child;
        }
    }

    bool insertLists(int serviceId) {
        return insertList<Service_EPG_audios>(command_, kAudioTexts, mapping::kAudiosEpgs[0],
                                              serviceId, audios_) &&
               insertList<Service_EPG_replacing>(
                   command_, kReplacingTexts, mapping::kReplacingEpgs[0], serviceId, replacings_);
    }

    static constexpr const Element& kSatelliteSection =
        mapping::rowNamed(mapping::kServiceEpg, "satelliteEPG");
    static constexpr const Element& kAudiosList =
        mapping::rowNamed(mapping::kServiceEpg, "audiosEPGs");
    static constexpr const Element& kReplacingsList =
        mapping::rowNamed(mapping::kServiceEpg, "replacingEPGs");

    CmdSetConfiguration& command_;
    Record<Service_EPG> service_;
    const XmlNode* audios_ = nullptr;
    const XmlNode* replacings_ = nullptr;
};

bool emptyTables(CmdSetConfiguration& command) {
    bool emptied = emptyTable<Service_EPG>(command, "Could not delete ServiceEPGs");
    emptied &= emptyTable<Service_EPG_Satellite>(command, "Could not delete ServiceEPG_Satellites");
    emptied &= emptyTable<Service_EPG_audios>(command, "Could not delete ServiceEPG_audios");
    emptied &= emptyTable<Service_EPG_replacing>(command, "Could not delete ServiceEPG_replacings");
    return emptied;
}

}  // namespace

bool apply::serviceEPGs(CmdSetConfiguration& command, const XmlNode& section) {
    reportProgress("Processing: Service EPGs");
    bool stored = emptyTables(command);
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, mapping::kServiceEpgs[0].name)) {
            return fail(command, ErrorCode::invalidCommand, "No serviceEPG element found");
        }
        const GuideServiceOutcome outcome = GuideServiceImport(command).apply(element);
        if (outcome == GuideServiceOutcome::failed) {
            return false;
        }
        stored &= outcome == GuideServiceOutcome::stored;
    }
    return stored;
}

}  // namespace tarvo_remote_control
