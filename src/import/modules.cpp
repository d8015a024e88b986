// The modules of the headend: which element is which module, and the module's own settings.
#include <algorithm>
#include <compare>
#include <map>
#include <string>
#include <vector>

#include "db/clauses.h"
#include "device/device_identity.h"
#include "import/child_rules.h"
#include "import/sections.h"

namespace tarvo_remote_control {

using document::XmlNode;
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
    bool assigned = false;
};

// On RNB-K408 documents do not tell: the headend's modules count as of an empty kind, and an
// element is read up to its `mac`.
bool documentTellsKinds() { return !DeviceIdentity::instance().isRNB(); }

FreeModules headendModules(const std::vector<Record<RedesModulos>>& rows) {
    FreeModules modules;
    for (const auto& row : rows) {
        ModuleKind kind;
        if (documentTellsKinds()) {
            kind = {row[RedesModulos::Familia].asString(), row[RedesModulos::Modelo].asString(),
                    row[RedesModulos::Master].asString()};
        }
        modules.insert_or_assign(row[RedesModulos::MAC].asString(), std::move(kind));
    }
    return modules;
}

// Reads what tells one module from another, until all of it is there. Counts the `mac` elements.
Entry readEntry(const XmlNode& element, std::size_t& macElements) {
    Entry entry{.element = &element};
    for (const XmlNode& child : document::childrenOf(element)) {
        const char* text = document::textOf(child);
        if (document::hasName(child, "mac")) {
            entry.mac = text;
            ++macElements;
            if (!documentTellsKinds()) {
                break;
            }
        } else if (document::hasName(child, "family")) {
            entry.kind.family = text;
        } else if (document::hasName(child, "model")) {
            entry.kind.model = text;
        } else if (document::hasName(child, "isMaster")) {
            entry.kind.master = text;
        }
        if (!entry.mac.empty() && !entry.kind.family.empty() && !entry.kind.model.empty() &&
            !entry.kind.master.empty()) {
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
bool checkAmount(CmdSetConfiguration& command, std::size_t headendModules, std::size_t macElements,
                 const std::vector<Entry>& entries) {
    if (!documentTellsKinds() || macElements == headendModules) {
        return true;
    }
    const auto notAssigned =
        std::count_if(entries.begin(), entries.end(), [](const Entry& e) { return !e.assigned; });
    const std::string counts = "headendAssignedModules: " + std::to_string(headendModules) +
                               "\nxmlAssignedModules: " + std::to_string(macElements) +
                               "\nnotAssignedModules: " + std::to_string(notAssigned) + "\n";
    return fail(command,
                Failure{.code = ErrorCode::moduleAmount,
                        .debugLine = "Error " + std::to_string(number(ErrorCode::moduleAmount)) +
                                     ", " + errorMessage(ErrorCode::moduleAmount) + ", " + counts});
}

// Children that are numbers; the log tells the number.
struct NumberRule {
    const char* element;
    RedesModulos::Column column;
    const char* label;
};

constexpr NumberRule kNumberRules[] = {
    {"attenuation", RedesModulos::Atenuacion, "attenuation: "},
    {"dvbNetworkId", RedesModulos::RED, " dvbNetworkId: "},
};

constexpr NumberRule kRfOutputModeRule{"modoSalidaRF", RedesModulos::ModoSalidaRF,
                                       " modoSalidaRF: "};

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
        if (const auto* rule = document::rowFor(kNumberRules, child)) {
            applyNumber(*rule, child);
            return true;
        }
        if (document::hasName(child, kRfOutputModeRule.element)) {
            applyNumber(kRfOutputModeRule, child);
            rfOutputMode_ = document::numberOf(child);
            return true;
        }
        if (document::hasName(child, "name")) {
            change_.setText(RedesModulos::LabelName, document::textOf(child));
            appendToLog(log_, " name: ", child);
            return true;
        }
        if (document::hasName(child, "inputs")) {
            return applyInputs(command_, mac_, child);
        }
        if (document::hasName(child, "outputs")) {
            return applyOutputs(command_, mac_, rfOutputMode_, child);
        }
        if (document::hasName(child, "services")) {
            return applyServices(command_, mac_, child);
        }
        return true;
    }

    void applyNumber(const NumberRule& rule, const XmlNode& child) {
        const int number = document::numberOf(child);
        change_.setNumber(rule.column, number);
        log_ += rule.label + std::to_string(number);
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

}  // namespace

bool applyModules(CmdSetConfiguration& command, const XmlNode& section) {
    const auto rows = tarvodb::doSelect<RedesModulos>(command.db());
    if (rows.empty()) {
        return fail(command, ErrorCode::database, "No modules found");
    }
    FreeModules modules = headendModules(rows);
    std::vector<Entry> entries;
    std::size_t macElements = 0;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, "module")) {
            return failOnElement(command, "No module element found");
        }
        entries.push_back(readEntry(element, macElements));
        if (!assignByMac(command, entries.back(), modules)) {
            return false;
        }
    }
    if (!checkAmount(command, rows.size(), macElements, entries)) {
        return false;
    }
    for (Entry& entry : entries) {
        if (!entry.assigned) {
            assignByKind(entry, modules);
        }
    }
    if (!std::all_of(entries.begin(), entries.end(), [](const Entry& e) { return e.assigned; })) {
        return fail(command, ErrorCode::moduleNotFound);
    }
    return std::all_of(entries.begin(), entries.end(),
                       [&](const Entry& entry) { return applyModule(command, entry); });
}

}  // namespace tarvo_remote_control
