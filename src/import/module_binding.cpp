#include "import/module_binding.h"

#include <algorithm>
#include <utility>

#include "db/record.h"
#include "device/device_identity.h"
#include "mapping/element.h"
#include "mapping/modules.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::RedesModulos;

namespace {

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

static_assert(mapping::nameExactly(kKindParts, mapping::kModule, [](const Element& element) {
    return element.take == mapping::Take::key && !element.identity;
}));

// Whether all is known that a module is found by.
bool isComplete(const ModuleEntry& entry, bool withKinds) {
    if (!withKinds) {
        return entry.macElements > 0;
    }
    return !entry.mac.empty() && !entry.kind.family.empty() && !entry.kind.model.empty() &&
           !entry.kind.master.empty();
}

}  // namespace

bool documentsGiveKinds() { return !DeviceIdentity::instance().isRNB(); }

FreeModules headendModules(const std::vector<tarvodb::Record<RedesModulos>>& rows) {
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

ModuleEntry readModuleEntry(const XmlNode& element, bool withKinds) {
    ModuleEntry entry{.element = &element};
    for (const XmlNode& child : document::childrenOf(element)) {
        if (document::hasName(child, kMac.name)) {
            entry.mac = document::textOf(child);
            ++entry.macElements;
        } else if (const KindPart* part = document::rowFor(kKindParts, child)) {
            entry.kind.*part->text = document::textOf(child);
        }
        if (isComplete(entry, withKinds)) {
            break;
        }
    }
    return entry;
}

bool assignByMac(ModuleEntry& entry, FreeModules& modules) {
    const auto found = modules.find(entry.mac);
    if (entry.mac.empty() || found == modules.end()) {
        return true;
    }
    const ModuleKind& kind = found->second;
    if (kind.family != entry.kind.family || kind.model != entry.kind.model) {
        return false;
    }
    entry.assigned = true;
    modules.erase(found);
    return true;
}

void assignByKind(ModuleEntry& entry, FreeModules& modules) {
    const auto found = std::find_if(modules.begin(), modules.end(), [&entry](const auto& module) {
        return module.second == entry.kind;
    });
    if (found != modules.end()) {
        entry.mac = found->first;
        entry.assigned = true;
        modules.erase(found);
    }
}

}  // namespace tarvo_remote_control
