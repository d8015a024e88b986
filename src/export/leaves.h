// How columns of a row become leaf elements.
#pragma once

#include <vector>

#include "db/record.h"
#include "document/coded_texts.h"
#include "export/cmd_get_configuration.h"

namespace tarvo_remote_control {

// An element with a column's stored text or, with a code table, the text of its code.
template <class Table>
struct Leaf {
    const char* element;
    typename Table::Column column;
    document::CodeTable texts = {};
    const char* otherwise = "";  // for a code that the table does not have
};

template <class Table>
void appendLeaf(CmdGetConfiguration& command, document::XmlNode* parent,
                const tarvodb::Record<Table>& record, const Leaf<Table>& leaf) {
    const tarvodb::tSqlite3parent& value = record[leaf.column];
    command.append(parent, leaf.element,
                   leaf.texts.empty()
                       ? value.textOrEmpty()
                       : document::codeText(leaf.texts, value.asInt(), leaf.otherwise));
}

// One leaf per row of `leaves`, in their order.
template <class Table, std::size_t Size>
void appendLeaves(CmdGetConfiguration& command, document::XmlNode* parent,
                  const tarvodb::Record<Table>& record, const Leaf<Table> (&leaves)[Size]) {
    for (const Leaf<Table>& leaf : leaves) {
        appendLeaf(command, parent, record, leaf);
    }
}

// A section with one `element` per record, which holds the leaves.
template <class Table, std::size_t Size>
document::XmlNode* sectionOf(CmdGetConfiguration& command, const char* section, const char* element,
                             const std::vector<tarvodb::Record<Table>>& records,
                             const Leaf<Table> (&leaves)[Size]) {
    document::XmlNode* node = command.createNode(section);
    for (const tarvodb::Record<Table>& record : records) {
        appendLeaves(command, command.append(node, element), record, leaves);
    }
    return node;
}

}  // namespace tarvo_remote_control
