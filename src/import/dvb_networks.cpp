// The DVB networks that the headend's outputs belong to.
#include <array>
#include <iterator>
#include <optional>
#include <string>

#include "db/clauses.h"
#include "db/si_tables.h"
#include "document/coded_texts.h"
#include "import/sections.h"
#include "import/table_writes.h"

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

// 0 counts as not given: it never replaces a stored number.
constexpr Field kNumberFields[] = {
    {"tvType", RedesCabecera::TV_Type, "tvType="},
    {"cellID", RedesCabecera::CellID, "cellID="},
    {"forceServiceName", RedesCabecera::Force_ServiceName, "forcedServiceName="},
    {"autoServiceList", RedesCabecera::Auto_Service_List, "autoServiceList="},
    {"lcnOffset", RedesCabecera::LCN_Offset, "lcnOffset="},
    {"lcnMode", RedesCabecera::LCN_Mode, "lcnMode="},
    {"tipoNITPatron", RedesCabecera::Tipo_NIT_Patron, "tipoNITPatron="},
    {"nitPatron", RedesCabecera::NIT_Patron, "nitPatron="},
    {"versionNITPatron", RedesCabecera::Version_NIT_Patron, "versionNITPatron="},
};

constexpr Field kMaskFields[] = {
    {"autoBlockPIDs", RedesCabecera::Block_PIDs, "autoBlockPIDsMask="},
    {"autoDecryptPIDs", RedesCabecera::Decrypt_PIDs, "autoDecryptPIDsMask="},
};

// Some bits of a mask: which ones are given, and their values.
struct PartialMask {
    int given = 0;
    int values = 0;
};

// What one element gives. The three arrays follow the rows of the tables above.
struct GivenNetwork {
    const char* id = nullptr;
    std::array<const char*, std::size(kTextFields)> texts{};
    std::array<int, std::size(kNumberFields)> numbers{};
    std::array<PartialMask, std::size(kMaskFields)> masks{};

    [[nodiscard]] int number(RedesCabecera::Column column) const {
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            if (kNumberFields[i].column == column) {
                return numbers[i];
            }
        }
        return 0;
    }
};

// The row of `fields` that an element is named in.
template <std::size_t Size>
std::optional<std::size_t> indexOf(const Field (&fields)[Size], const XmlNode& element) {
    for (std::size_t i = 0; i < Size; ++i) {
        if (document::hasName(element, fields[i].element)) {
            return i;
        }
    }
    return std::nullopt;
}

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

// A NIT pattern is one of the device's own (0, 1) unless its type says that it is a custom one,
// and only a pattern has versions. What came earlier in the element decides.
bool isAllowed(RedesCabecera::Column column, int number, const GivenNetwork& soFar) {
    const bool isBinary = number == 0 || number == 1;
    switch (column) {
        case RedesCabecera::Tipo_NIT_Patron:
            return isBinary;
        case RedesCabecera::NIT_Patron:
            return isBinary || soFar.number(RedesCabecera::Tipo_NIT_Patron) != 0;
        case RedesCabecera::Version_NIT_Patron:
            return number == 0 || soFar.number(RedesCabecera::NIT_Patron) != 0;
        default:
            return true;
    }
}

const char* notAllowedMessage(RedesCabecera::Column column) {
    return column == RedesCabecera::Tipo_NIT_Patron ? "tipoNITPatron not allowed value detected"
                                                    : "nitPatron not allowed value detected";
}

// Nothing when the element has a value that is not allowed.
std::optional<GivenNetwork> read(CmdSetConfiguration& command, const XmlNode& element) {
    GivenNetwork given;
    for (const XmlNode& child : document::childrenOf(element)) {
        if (document::hasName(child, "id")) {
            given.id = document::textOf(child);
        } else if (const auto text = indexOf(kTextFields, child)) {
            given.texts[*text] = document::textOf(child);
        } else if (const auto mask = indexOf(kMaskFields, child)) {
            given.masks[*mask] = maskOf(child);
        } else if (const auto number = indexOf(kNumberFields, child)) {
            const RedesCabecera::Column column = kNumberFields[*number].column;
            const int value = document::numberOf(child);
            if (!isAllowed(column, value, given)) {
                fail(command, error::kInvalidValue, notAllowedMessage(column));
                return std::nullopt;
            }
            given.numbers[*number] = value;
        }
    }
    return given;
}

// Applies what is given to a row, collecting the log text.
class NetworkChange {
  public:
    NetworkChange(Record<RedesCabecera>& network, std::string log)
        : network_(network), log_(std::move(log)) {}

    void setText(const Field& field, const char* text) {
        if (text != nullptr && network_.set(field.column, text)) {
            note(field);
        }
    }

    void setNumber(const Field& field, int number) {
        if (number != 0 && network_.setIfOtherNumber(field.column, number)) {
            note(field);
        }
    }

    void setMask(const Field& field, const PartialMask& mask) {
        const int stored = network_[field.column].asInt();
        if ((stored & mask.given) != mask.values) {
            network_.set(field.column, (stored & ~mask.given) | mask.values);
            note(field);
        }
    }

    [[nodiscard]] const std::string& log() const { return log_; }

  private:
    void note(const Field& field) {
        if (field.label != nullptr) {
            log_ += field.label + network_[field.column].asString() + ",";
        }
        network_.set(RedesCabecera::estado, 1);
    }

    Record<RedesCabecera>& network_;
    std::string log_;
};

Record<RedesCabecera> newNetwork(const char* id) {
    Record<RedesCabecera> network;
    network.put(RedesCabecera::idRed, id);
    network.put(RedesCabecera::estado, 1);
    return network;
}

// The row for one element.
Record<RedesCabecera> changedNetwork(const CmdSetConfiguration& command,
                                     const GivenNetwork& given) {
    auto stored =
        tarvodb::doSelect<RedesCabecera>(command.db(), tarvodb::clause::kByNetwork, given.id);
    const bool isNew = stored.empty();
    Record<RedesCabecera> network = isNew ? newNetwork(given.id) : std::move(stored.front());
    const std::string oldNid = network[RedesCabecera::NID].asString();

    NetworkChange change(network, isNew ? std::string("idRed=") + given.id + "," : "");
    for (std::size_t i = 0; i < given.texts.size(); ++i) {
        change.setText(kTextFields[i], given.texts[i]);
    }
    for (std::size_t i = 0; i < given.numbers.size(); ++i) {
        change.setNumber(kNumberFields[i], given.numbers[i]);
    }
    for (std::size_t i = 0; i < given.masks.size(); ++i) {
        change.setMask(kMaskFields[i], given.masks[i]);
    }
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
            const char* message = "No dvbNetwork element found";
            return fail(command, Failure{.code = error::kInvalidCommand,
                                         .loggedMessage = message,
                                         .debugLine = message});
        }
        const auto given = read(command, element);
        if (!given) {
            return false;
        }
        if (given->id == nullptr) {
            const char* message = "dvbNetwork has no id field";
            return fail(command, Failure{.code = error::kInvalidCommand,
                                         .message = message,
                                         .loggedCode = error::kInvalidValue,
                                         .debugLine = message});
        }
        networks.push_back(changedNetwork(command, *given));
    }
    return replaceTable(command, networks, "Could not delete dvbNetworks",
                        "Could not insert dvbNetwork");
}

}  // namespace tarvo_remote_control
