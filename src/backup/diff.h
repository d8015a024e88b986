// What is different between two documents, compared as trees.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "backup/document.h"

namespace tarvo_backup {

// An element that the two documents do not have alike.
struct Difference {
    // Below `configuration` or `backup`, the entries of lists with what identifies them:
    // "modules/module[mac=02:1E:A4:00:10:01]/services/service[outputId=1,outputSid=501]/lcn". An
    // entry that nothing identifies has its place in its list instead, from 1: "serviceEPG[3]".
    // What is very long is without its middle.
    std::string path;
    // The element's text, or its XML where it holds elements; nothing where it is missing.
    std::optional<std::string> oldText;
    std::optional<std::string> newText;
    // An element that holds others, and is only in one of the documents.
    bool holdsElements = false;

    bool operator==(const Difference&) const = default;
};

struct DiffScope {
    // Also what the device reports of itself, not only what it is set to.
    bool liveState = false;
    // Also the order of the lists in which it counts.
    bool order = false;
};

// Compares what the import would take of the two documents, in the order of the old one, followed
// at every level by what only the new one has. Entries of a list are matched by what identifies
// them, whatever their order; entries that nothing identifies by their content, what is left by
// order. Texts are the same where the import takes them for the same number or code.
std::vector<Difference> diff(const Document& older, const Document& newer, DiffScope scope = {});

}  // namespace tarvo_backup
