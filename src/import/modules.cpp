// The modules of the headend: which element is which module, and the module's own settings.
#include "mapping/modules.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "document/xml.h"
#include "import/elements.h"
#include "import/module_binding.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::Record;
using tarvodb::RedesModulos;

namespace {

// A document must have as many `mac` elements as the headend has modules; not on RNB-K408.
bool checkAmount(CmdSetConfiguration& command, std::size_t headendModules,
                 const std::vector<ModuleEntry>& entries) {
    std::size_t macElements = 0;
    std::size_t notAssigned = 0;
    for (const ModuleEntry& entry : entries) {
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
constexpr const Element& kInputsList = mapping::rowNamed(mapping::kModule, "inputs");
constexpr const Element& kOutputsList = mapping::rowNamed(mapping::kModule, "outputs");

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
            return applySection(*element, child);
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

    bool applySection(const Element& element, const XmlNode& section) {
        if (&element == &kInputsList) {
            return apply::inputs(command_, mac_, section);
        }
        if (&element == &kOutputsList) {
            return apply::outputs(command_, mac_, rfOutputMode_, section);
        }
        command_.load(section);
        return apply::services(command_, mac_, section);
    }

    CmdSetConfiguration& command_;
    Change<RedesModulos> change_;
    const char* mac_;
    // Of a `modoSalidaRF` that came before the outputs; DVB-T otherwise.
    int rfOutputMode_ = 0;
    std::string log_;
};

bool applyModule(CmdSetConfiguration& command, const ModuleEntry& entry) {
    const char* mac = entry.mac.c_str();
    auto rows = tarvodb::doSelect<RedesModulos>(command.db(), tarvodb::clause::kByMac, mac);
    if (rows.empty()) {
        return fail(command, ErrorCode::database, "Could not locate module");
    }
    return ModuleImport(command, rows.front(), mac).apply(*entry.element);
}

// The elements of a section, with the modules that their MACs name taken from `modules`. Nothing
// when one is refused.
std::optional<std::vector<ModuleEntry>> readEntries(CmdSetConfiguration& command,
                                                    const XmlNode& section, FreeModules& modules) {
    std::vector<ModuleEntry> entries;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, mapping::kModules[0].name)) {
            failOnElement(command, "No module element found");
            return std::nullopt;
        }
        entries.push_back(readModuleEntry(element));
        if (!assignByMac(entries.back(), modules)) {
            fail(command, ErrorCode::moduleModel, entries.back().mac);
            return std::nullopt;
        }
    }
    return entries;
}

// Gives every entry that has no module one of its kind. False when one is left over.
bool assignRest(CmdSetConfiguration& command, std::vector<ModuleEntry>& entries,
                FreeModules& modules) {
    for (ModuleEntry& entry : entries) {
        if (!entry.assigned) {
            assignByKind(entry, modules);
        }
    }
    return std::all_of(entries.begin(), entries.end(),
                       [](const ModuleEntry& e) { return e.assigned; }) ||
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
                       [&](const ModuleEntry& entry) { return applyModule(command, entry); });
}

}  // namespace tarvo_remote_control
