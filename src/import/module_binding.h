// Which `module` element of a document is which of the headend's modules.
#pragma once

#include <compare>
#include <map>
#include <string>
#include <vector>

#include "db/record.h"
#include "db/schema.h"
#include "document/xml.h"

namespace tarvo_remote_control {

// What a module is; texts as they stand in the table or the document.
struct ModuleKind {
    std::string family;
    std::string model;
    std::string master;

    auto operator<=>(const ModuleKind&) const = default;
};

// The headend's modules that no element has taken yet, by MAC.
using FreeModules = std::map<std::string, ModuleKind>;

// Documents of RNB-K408 do not give the kinds of modules: the headend's modules count as of an
// empty kind then, and an element is read up to its `mac`.
bool documentsGiveKinds();

FreeModules headendModules(const std::vector<tarvodb::Record<tarvodb::RedesModulos>>& rows);

// One `module` element.
struct ModuleEntry {
    const document::XmlNode* element = nullptr;
    std::string mac = {};  // the document's; once it is assigned the module's
    ModuleKind kind = {};
    std::size_t macElements = 0;  // that were read
    bool assigned = false;
};

// Reads what a module is found by, until all of it is there. `withKinds` says whether documents
// give the kinds of modules.
ModuleEntry readModuleEntry(const document::XmlNode& element,
                            bool withKinds = documentsGiveKinds());

// Takes the module with the entry's MAC, if it is free. False when that module is of another kind.
bool assignByMac(ModuleEntry& entry, FreeModules& modules);

// Takes the first free module of the entry's kind, if there is one.
void assignByKind(ModuleEntry& entry, FreeModules& modules);

}  // namespace tarvo_remote_control
