// What is in a document, for people: fields and tables, whatever they are shown as.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "backup/document.h"

namespace tarvo_backup {

using Field = std::pair<std::string, std::string>;  // label and text

struct Table {
    std::string title;
    std::vector<std::string> columns;
    std::vector<std::vector<std::string>> rows;  // a text per column
};

struct Section {
    std::string title;
    std::string anchor;  // letters, digits and "-", of no other section
    std::vector<Field> fields;
    std::vector<Table> tables;
};

struct Overview {
    std::string title;
    std::vector<Section> sections;
};

// The headend, its lists, its channels by LCN and its modules, as far as the document has them.
// Secrets are masked unless asked for.
Overview overviewOf(const Document& document, bool withSecrets);

}  // namespace tarvo_backup
