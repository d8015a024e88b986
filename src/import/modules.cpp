// The modules of the headend: which element is which module, and the module's own settings.
#include "mapping/modules.h"

#include <algorithm>
#include <compare>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "device/device_identity.h"
#include "document/xml.h"
#include "import/elements.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::Record;
using tarvodb::RedesModulos;

namespace {

// What a module is; texts as they stand in the table or the document.
struct ModuleKind {
    std::string family;
    std::string model;
    std::string master;

    auto operator<=>(const ModuleKind&) const = default;
};

// The headend's modules that no element has taken yet, by MAC.
using FreeModules = std::map<std::string, ModuleKind>;

// One `module` element.
struct Entry {
    const XmlNode* element = nullptr;
    std::string mac = {};
    ModuleKind kind = {};
    std::size_t macElements = 0;  // that were read
    bool assigned = false;
};

constexpr const Element& kMac = mapping::rowNamed(mapping::kModule, "mac");

// The elements that say of which kind a module is.
struct KindPart {
    const char* name;
    std::string ModuleKind::*text;
};

constexpr KindPart kKindParts[] = {
    {"family", &ModuleKind::family},
    {"model", &ModuleKind::model},
    {"isMaster", &ModuleKind::master},
};

// Documents of RNB-K408 do not give the kinds of modules: the headend's modules count as of an
// empty kind then, and an element is read up to its `mac`.
bool documentsGiveKinds() { return !DeviceIdentity::instance().isRNB(); }

FreeModules headendModules(const std::vector<Record<RedesModulos>>& rows) {
    FreeModules modules;
    for (const auto& row : rows) {
        ModuleKind kind;
        if (documentsGiveKinds()) {
            for (const KindPart& part : kKindParts) {
                const auto& column = mapping::rowNamed(mapping::kModule, part.name).column;
                kind.*part.text = row.value(column.index).asString();
            }
        }
        modules.insert_or_assign(row[RedesModulos::MAC].asString(), std::move(kind));
    }
    return modules;
}

// Whether all is known that a module is found by.
bool isComplete(const Entry& entry) {
    if (!documentsGiveKinds()) {
        return entry.macElements > 0;
    }
    return !entry.mac.empty() && !entry.kind.family.empty() && !entry.kind.model.empty() &&
           !entry.kind.master.empty();
}

// Reads what a module is found by, until all of it is there.
Entry readEntry(const XmlNode& element) {
    Entry entry{.element = &element};
    for (const XmlNode& child : document::childrenOf(element)) {
        if (document::hasName(child, kMac.name)) {
            entry.mac = document::textOf(child);
            ++entry.macElements;
        } else if (const KindPart* part = document::rowFor(kKindParts, child)) {
            entry.kind.*part->text = document::textOf(child);
        }
        if (isComplete(entry)) {
            break;
        }
    }
    return entry;
}

// Takes the module with the entry's MAC. False when that module is of another kind.
bool assignByMac(CmdSetConfiguration& command, Entry& entry, FreeModules& modules) {
    const auto found = modules.find(entry.mac);
    if (entry.mac.empty() || found == modules.end()) {
        return true;
    }
    const ModuleKind& kind = found->second;
    if (kind.family != entry.kind.family || kind.model != entry.kind.model) {
        return fail(command, ErrorCode::moduleModel, entry.mac);
    }
    entry.assigned = true;
    modules.erase(found);
    return true;
}

// Takes the first free module of the entry's kind.
void assignByKind(Entry& entry, FreeModules& modules) {
    const auto found = std::find_if(modules.begin(), modules.end(), [&entry](const auto& module) {
        return module.second == entry.kind;
    });
    if (found != modules.end()) {
        entry.mac = found->first;
        entry.assigned = true;
        modules.erase(found);
    }
}

// A document must have as many `mac` elements as the headend has modules; not on RNB-K408.
bool checkAmount(CmdSetConfiguration& command, std::size_t headendModules,
                 const std::vector<Entry>& entries) {
    std::size_t macElements = 0;
    std::size_t notAssigned = 0;
    for (const Entry& entry : entries) {
        macElements += entry.macElements;
        notAssigned += entry.assigned ? 0 : 1;
    }
    if (!documentsGiveKinds() || macElements == headendModules) {
        return true;
    }
    const std::string counts = "headendAssignedModules: " + std::to_string(headendModules) +
                               "\nxmlAssignedModules: " + std::to_string(macElements) +
                               "\nnotAssignedModules: " + std::to_string(notAssigned) + "\n";
    return fail(command,
                Failure{.code = ErrorCode::moduleAmount,
                        .debugLine = "Error " + std::to_string(number(ErrorCode::moduleAmount)) +
                                     ", " + errorMessage(ErrorCode::moduleAmount) + ", " + counts});
}

constexpr const Element& kRfOutputMode = mapping::rowNamed(mapping::kModule, "modoSalidaRF");

// Writes one module's settings and the sections inside it.
class ModuleImport {
  public:
    ModuleImport(CmdSetConfiguration& command, Record<RedesModulos>& row, const char* mac)
        : command_(command), change_(row), mac_(mac) {}

    bool apply(const XmlNode& element) {
        const bool applied = applyChildren(element);
        logChange("New Module parameters: " + log_);
        return applied &&
               saveIfChanged(command_, change_, RedesModulos::estado, "Could not save 'module'");
    }

  private:
    bool applyChildren(const XmlNode& element) {
        for (const XmlNode& child : document::childrenOf(element)) {
            if (!applyChild(child)) {
                return false;
            }
        }
        return true;
    }

    bool applyChild(const XmlNode& child) {
        const Element* element = mapping::elementOf(mapping::kModule, child);
        if (element == nullptr) {
            return true;
        }
        if (element->take == mapping::Take::children) {
            return applySection(child);
        }
        change_.take(*element, child);
        if (element->label != nullptr) {
            log_ += element->label + loggedText(*element, child);
        }
        if (element == &kRfOutputMode) {
            rfOutputMode_ = document::numberOf(child);
        }
        return true;
    }

    // Numbers are logged as they are read.
    static std::string loggedText(const Element& element, const XmlNode& child) {
        return element.take == mapping::Take::number ? std::to_string(document::numberOf(child))
                                                     : document::textOf(child);
    }

    bool applySection(const XmlNode& section) {
        if (document::hasName(section, "inputs")) {
            return apply::inputs(command_, mac_, section);
        }
        if (document::hasName(section, "outputs")) {
            return apply::outputs(command_, mac_, rfOutputMode_, section);
        }
        return apply::services(command_, mac_, section);
    }

    CmdSetConfiguration& command_;
    Change<RedesModulos> change_;
    const char* mac_;
    // Of a `modoSalidaRF` that came before the outputs; DVB-T otherwise.
    int rfOutputMode_ = 0;
    std::string log_;
};

bool applyModule(CmdSetConfiguration& command, const Entry& entry) {
    const char* mac = entry.mac.c_str();
    auto rows = tarvodb::doSelect<RedesModulos>(command.db(), tarvodb::clause::kByMac, mac);
    if (rows.empty()) {
        return fail(command, ErrorCode::database, "Could not locate module");
    }
    return ModuleImport(command, rows.front(), mac).apply(*entry.element);
}

// The elements of a section, with the modules that their MACs name taken from `modules`. Nothing
// when one is refused.
std::optional<std::vector<Entry>> readEntries(CmdSetConfiguration& command, const XmlNode& section,
                                              FreeModules& modules) {
    std::vector<Entry> entries;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, mapping::kModules[0].name)) {
            failOnElement(command, "No module element found");
            return std::nullopt;
        }
        entries.push_back(readEntry(element));
        if (!assignByMac(command, entries.back(), modules)) {
            return std::nullopt;
        }
    }
    return entries;
}

// Gives every entry that has no module one of its kind. False when one is left over.
bool assignRest(CmdSetConfiguration& command, std::vector<Entry>& entries, FreeModules& modules) {
    for (Entry& entry : entries) {
        if (!entry.assigned) {
            assignByKind(entry, modules);
        }
    }
    return std::all_of(entries.begin(), entries.end(), [](const Entry& e) { return e.assigned; }) ||
           fail(command, ErrorCode::moduleNotFound);
}

}  // namespace

bool apply::modules(CmdSetConfiguration& command, const XmlNode& section) {
    const auto rows = tarvodb::doSelect<RedesModulos>(command.db());
    if (rows.empty()) {
        return fail(command, ErrorCode::database, "No modules found");
    }
    FreeModules freeModules = headendModules(rows);
    auto entries = readEntries(command, section, freeModules);
    return entries && checkAmount(command, rows.size(), *entries) &&
           assignRest(command, *entries, freeModules) &&
           std::all_of(entries->begin(), entries->end(),
                       [&](const Entry& entry) { return applyModule(command, entry); });
}

}  // namespace tarvo_remote_control
