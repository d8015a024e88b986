// Where export and import differ (docs/known-asymmetries.md), and which of it a restore meets.
#pragma once

#include <span>
#include <vector>

#include "backup/document.h"

namespace tarvo_backup {

struct Plan;

struct Asymmetry {
    // The words that the document's entry starts with.
    const char* what;
    const char* remedy;
    // What restoring the document meets. Null: nothing of it can be seen beforehand.
    bool (*isMetBy)(const Document& document, const Plan& plan);
};

// All of them, in the document's order.
std::span<const Asymmetry> knownAsymmetries();

std::vector<const Asymmetry*> asymmetriesMetBy(const Document& document, const Plan& plan);

}  // namespace tarvo_backup
