// The DVB networks that the headend's outputs belong to.
#include "mapping/dvb_networks.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/si_tables.h"
#include "db/status_marks.h"
#include "db/value.h"
#include "document/xml.h"
#include "import/elements.h"
#include "import/keyed_rows.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::Record;
using tarvodb::RedesCabecera;
using tarvodb::StatusMark;

namespace {

constexpr const Element& kId = mapping::rowNamed(mapping::kDvbNetwork, "id");

// Checks every child, not only the last of its name, which is stored.
bool validate(CmdSetConfiguration& command, const XmlNode& network) {
    mapping::NitPattern pattern;
    for (const XmlNode& child : document::childrenOf(network)) {
        const Element* element = mapping::elementOf(mapping::kDvbNetwork, child);
        if (element == nullptr) {
            continue;
        }
        const int number = document::numberOf(child);
        const Element* refused = !element->range.contains(number)    ? element
                                 : !pattern.allows(*element, number) ? &mapping::kNitPattern
                                                                     : nullptr;
        if (refused != nullptr) {
            return fail(command, ErrorCode::invalidValue,
                        std::string(refused->name) + " not allowed value detected");
        }
    }
    return true;
}

// Some bits of a mask: which ones are given, and their values.
struct PartialMask {
    int given = 0;
    int values = 0;
};

PartialMask maskOf(const Element& element, const XmlNode& node) {
    PartialMask mask;
    for (const Element& kind : element.children) {
        if (const char* text = document::lastText(node, kind.name)) {
            mask.given |= kind.bit;
            mask.values |= std::string_view(text) == "1" ? kind.bit : 0;
        }
    }
    return mask;
}

// Applies what an element gives to a row, collecting the log text. The last child of a name counts.
class NetworkChange {
  public:
    NetworkChange(Record<RedesCabecera>& network, std::string log)
        : network_(network), log_(std::move(log)) {}

    void apply(const XmlNode& parent) {
        for (const Element& element : mapping::kDvbNetwork) {
            const XmlNode* child = document::lastChildNamed(parent, element.name);
            if (child != nullptr && takeChild(element, *child)) {
                note(element);
            }
        }
    }

    [[nodiscard]] const std::string& log() const { return log_; }

  private:
    bool takeChild(const Element& element, const XmlNode& child) {
        return element.take == mapping::Take::bits ? takeMask(element, maskOf(element, child))
                                                   : take(network_, element, child);
    }

    bool takeMask(const Element& element, const PartialMask& mask) {
        const int stored = network_.value(element.column.index).asInt();
        if ((stored & mask.given) == mask.values) {
            return false;
        }
        const int merged = (stored & ~mask.given) | mask.values;
        network_.setValue(element.column.index, tarvodb::columnValue(merged));
        return true;
    }

    void note(const Element& element) {
        if (element.label != nullptr) {
            log_ += element.label + network_.value(element.column.index).asString() + ",";
        }
        network_.set(RedesCabecera::estado, StatusMark::changed);
    }

    Record<RedesCabecera>& network_;
    std::string log_;
};

// Behind the key all columns are filled with NULL, which an empty text of the document leaves
// there.
Record<RedesCabecera> newNetwork(const char* id) {
    const std::array cells{id};
    Record<RedesCabecera> network(cells);
    network.set(RedesCabecera::estado, StatusMark::changed);
    return network;
}

// The row for one element.
Record<RedesCabecera> changedNetwork(const CmdSetConfiguration& command, const XmlNode& element,
                                     const char* id) {
    auto network = storedOrNew(command, tarvodb::clause::kByNetwork, id, newNetwork);
    const bool isNew = network.isModified(RedesCabecera::estado);
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

bool apply::dvbNetworks(CmdSetConfiguration& command, const XmlNode& section) {
    std::vector<Record<RedesCabecera>> networks;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, mapping::kDvbNetworks[0].name)) {
            return failLoggedFirst(command, {.code = ErrorCode::invalidCommand,
                                             .loggedMessage = "No dvbNetwork element found"});
        }
        if (!validate(command, element)) {
            return false;
        }
        const char* id = document::lastText(element, kId.name);
        if (id == nullptr) {
            return failLoggedFirst(command, {.code = ErrorCode::invalidCommand,
                                             .message = kId.required.missing,
                                             .loggedCode = ErrorCode::invalidValue});
        }
        networks.push_back(changedNetwork(command, element, id));
    }
    return replaceTable(command, networks, "Could not delete dvbNetworks",
                        "Could not insert dvbNetwork");
}

}  // namespace tarvo_remote_control
