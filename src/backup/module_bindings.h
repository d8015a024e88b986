// Which modules of the headend a document's are.
#pragma once

#include <string>
#include <vector>

#include "backup/element_place.h"

namespace tarvo_backup {

struct ModuleBinding {
    enum class Kind { address, kind, none };

    ElementPlace element;
    std::string documentMac;
    std::string headendMac;  // empty for none
    Kind how = Kind::none;

    bool operator==(const ModuleBinding&) const = default;
};

struct ModuleBindings {
    std::vector<ModuleBinding> modules;
    std::vector<std::string> leftOver;  // by MAC
};

// Of the document's modules as the import would assign them. Goes through the door to the
// configuration database; none when that has no modules.
ModuleBindings bindModules(const Document& document);

}  // namespace tarvo_backup
