// The DVB networks that the headend's outputs belong to.
#include <string>
#include <string_view>
#include <vector>

#include "db/clauses.h"
#include "db/si_tables.h"
#include "import/keyed_rows.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "text/to_int.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::Record;
using tarvodb::RedesCabecera;

namespace {

// A column that an element sets. Without a label a change is not told in the log.
struct Field {
    const char* element;
    RedesCabecera::Column column;
    const char* label;
};

constexpr Field kTextFields[] = {
    {"nid", RedesCabecera::NID, "nid="},
    {"onidOut", RedesCabecera::ONID_Out, nullptr},
    {"name", RedesCabecera::NombreRed, "name="},
    {"ciplusTVs", RedesCabecera::CI_TV_Type, "ciplusTVs="},
};

constexpr const char* kPatternType = "tipoNITPatron";
constexpr const char* kPattern = "nitPatron";
constexpr const char* kPatternVersion = "versionNITPatron";

// 0 counts as not given: it never replaces a stored number.
constexpr Field kNumberFields[] = {
    {"tvType", RedesCabecera::TV_Type, "tvType="},
    {"cellID", RedesCabecera::CellID, "cellID="},
    {"forceServiceName", RedesCabecera::Force_ServiceName, "forcedServiceName="},
    {"autoServiceList", RedesCabecera::Auto_Service_List, "autoServiceList="},
    {"lcnOffset", RedesCabecera::LCN_Offset, "lcnOffset="},
    {"lcnMode", RedesCabecera::LCN_Mode, "lcnMode="},
    {kPatternType, RedesCabecera::Tipo_NIT_Patron, "tipoNITPatron="},
    {kPattern, RedesCabecera::NIT_Patron, "nitPatron="},
    {kPatternVersion, RedesCabecera::Version_NIT_Patron, "versionNITPatron="},
};

constexpr Field kMaskFields[] = {
    {"autoBlockPIDs", RedesCabecera::Block_PIDs, "autoBlockPIDsMask="},
    {"autoDecryptPIDs", RedesCabecera::Decrypt_PIDs, "autoDecryptPIDsMask="},
};

// Checks the three numbers of the NIT pattern against each other, each against what came earlier
// in the element: a pattern other than 0 or 1 needs a type other than 0, a version other than 0
// needs a pattern other than 0.
bool validate(CmdSetConfiguration& command, const XmlNode& element) {
    constexpr const char* kBadType = "tipoNITPatron not allowed value detected";
    constexpr const char* kBadPattern = "nitPatron not allowed value detected";
    int type = 0;
    int pattern = 0;
    for (const XmlNode& child : document::childrenOf(element)) {
        const int number = document::numberOf(child);
        const bool isBinary = number == 0 || number == 1;
        if (document::hasName(child, kPatternType)) {
            if (!isBinary) {
                return fail(command, ErrorCode::invalidValue, kBadType);
            }
            type = number;
        } else if (document::hasName(child, kPattern)) {
            if (!isBinary && type == 0) {
                return fail(command, ErrorCode::invalidValue, kBadPattern);
            }
            pattern = number;
        } else if (document::hasName(child, kPatternVersion)) {
            if (number != 0 && pattern == 0) {
                return fail(command, ErrorCode::invalidValue, kBadPattern);
            }
        }
    }
    return true;
}

// Some bits of a mask: which ones are given, and their values.
struct PartialMask {
    int given = 0;
    int values = 0;
};

PartialMask maskOf(const XmlNode& element) {
    PartialMask mask;
    for (const auto& [bit, name] : document::kPidMaskBits) {
        if (const char* text = document::lastText(element, name)) {
            mask.given |= bit;
            mask.values |= std::string_view(text) == "1" ? bit : 0;
        }
    }
    return mask;
}

// Applies what an element gives to a row, collecting the log text. The last child of a name counts.
class NetworkChange {
  public:
    NetworkChange(Record<RedesCabecera>& network, std::string log)
        : network_(network), log_(std::move(log)) {}

    void apply(const XmlNode& element) {
        for (const Field& field : kTextFields) {
            const char* text = document::lastText(element, field.element);
            if (text != nullptr && network_.set(field.column, text)) {
                note(field);
            }
        }
        for (const Field& field : kNumberFields) {
            const int number = text::toInt(document::lastText(element, field.element));
            if (number != 0 && network_.setIfOtherNumber(field.column, number)) {
                note(field);
            }
        }
        for (const Field& field : kMaskFields) {
            if (const XmlNode* child = document::lastChildNamed(element, field.element)) {
                setMask(field, maskOf(*child));
            }
        }
    }

    [[nodiscard]] const std::string& log() const { return log_; }

  private:
    void setMask(const Field& field, const PartialMask& mask) {
        const int stored = network_[field.column].asInt();
        if ((stored & mask.given) != mask.values) {
            network_.set(field.column, (stored & ~mask.given) | mask.values);
            note(field);
        }
    }

    void note(const Field& field) {
        if (field.label != nullptr) {
            log_ += field.label + network_[field.column].asString() + ",";
        }
        network_.set(RedesCabecera::estado, StatusMark::changed);
    }

    Record<RedesCabecera>& network_;
    std::string log_;
};

Record<RedesCabecera> newNetwork(const char* id) {
    Record<RedesCabecera> network;
    network.put(RedesCabecera::idRed, id);
    network.put(RedesCabecera::estado, StatusMark::changed);
    return network;
}

// The row for one element.
Record<RedesCabecera> changedNetwork(const CmdSetConfiguration& command, const XmlNode& element,
                                     const char* id) {
    auto network = storedOrNew(command, tarvodb::clause::kByNetwork, id, newNetwork);
    const bool isNew = network.isModified(RedesCabecera::idRed);
    const std::string oldNid = network[RedesCabecera::NID].asString();

    NetworkChange change(network, isNew ? std::string("idRed=") + id + "," : "");
    change.apply(element);
    if (network.isModified(RedesCabecera::NID)) {
        // At once, and not undone when the import is rolled back.
        tarvodb::renameSiTableFiles(oldNid, network[RedesCabecera::NID].asString());
    }
    logChange("New network parameters: " + change.log());
    return network;
}

}  // namespace

bool applyDvbNetworks(CmdSetConfiguration& command, const XmlNode& section) {
    std::vector<Record<RedesCabecera>> networks;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, "dvbNetwork")) {
            return failPlainly(command, {.code = ErrorCode::invalidCommand,
                                         .loggedMessage = "No dvbNetwork element found"});
        }
        if (!validate(command, element)) {
            return false;
        }
        const char* id = document::lastText(element, "id");
        if (id == nullptr) {
            return failPlainly(command, {.code = ErrorCode::invalidCommand,
                                         .message = "dvbNetwork has no id field",
                                         .loggedCode = ErrorCode::invalidValue});
        }
        networks.push_back(changedNetwork(command, element, id));
    }
    return replaceTable(command, networks, "Could not delete dvbNetworks",
                        "Could not insert dvbNetwork");
}

}  // namespace tarvo_remote_control
