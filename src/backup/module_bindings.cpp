#include "backup/module_bindings.h"

#include "db/database.h"
#include "db/operations.h"
#include "import/module_binding.h"

namespace tarvo_backup {

using namespace tarvo_remote_control;

ModuleBindings bindModules(const Document& document) {
    ModuleBindings bindings;
    const XmlNode* section = document.configuration() == nullptr
                                 ? nullptr
                                 : document::childNamed(*document.configuration(), "modules");
    const tarvodb::Database db = tarvodb::openDatabase(tarvodb::kConfigDatabase);
    if (section == nullptr || !db) {
        return bindings;
    }
    FreeModules free = headendModules(tarvodb::doSelect<tarvodb::RedesModulos>(db.get()));
    std::vector<ModuleEntry> entries;
    for (const XmlNode& element : document::childrenOf(*section)) {
        ModuleEntry entry = readModuleEntry(element);
        bindings.modules.push_back(
            {.element = placeOf(document, element), .documentMac = entry.mac, .headendMac = ""});
        assignByMac(entry, free);
        bindings.modules.back().how =
            entry.assigned ? ModuleBinding::Kind::address : ModuleBinding::Kind::none;
        entries.push_back(std::move(entry));
    }
    for (std::size_t place = 0; place < entries.size(); ++place) {
        ModuleBinding& binding = bindings.modules[place];
        ModuleEntry& entry = entries[place];
        if (!entry.assigned) {
            assignByKind(entry, free);
            binding.how = entry.assigned ? ModuleBinding::Kind::kind : ModuleBinding::Kind::none;
        }
        binding.headendMac = entry.assigned ? entry.mac : "";
    }
    for (const auto& [mac, kind] : free) {
        bindings.leftOver.push_back(mac);
    }
    return bindings;
}

}  // namespace tarvo_backup
