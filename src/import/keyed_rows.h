// Elements that stand for one row each, found by the row's key.
#pragma once

#include <utility>

#include "db/operations.h"
#include "document/coded_texts.h"
#include "import/cmd_set_configuration.h"
#include "import/status_marks.h"

namespace tarvo_remote_control {

// An element whose text goes into a column.
template <class Table>
struct TextField {
    const char* element;
    typename Table::Column column;
};

// An element whose text stands for 0 or 1. A text that is not in the table counts as 1, unless the
// handler refuses it before.
template <class Table>
struct CodedField {
    const char* element;
    typename Table::Column column;
    document::CodeTable texts;
};

// The first row that `clause` finds for `id`, otherwise what `newRow` makes of `id`; the latter
// also when the select fails.
template <class Table>
tarvodb::Record<Table> storedOrNew(const CmdSetConfiguration& command, const char* clause,
                                   const char* id,
                                   tarvodb::Record<Table> (*newRow)(const char* id)) {
    auto stored = tarvodb::doSelect<Table>(command.db(), clause, id);
    return stored.empty() ? newRow(id) : std::move(stored.front());
}

// Sets what `element` gives and the row has otherwise; the last child of a name counts. A row that
// is changed is marked in Estado.
template <class Table, std::size_t TextSize, std::size_t CodedSize>
void setFields(tarvodb::Record<Table>& row, const document::XmlNode& element,
               const TextField<Table> (&textFields)[TextSize],
               const CodedField<Table> (&codedFields)[CodedSize]) {
    bool changed = false;
    for (const TextField<Table>& field : textFields) {
        if (const char* text = document::lastText(element, field.element)) {
            changed |= row.set(field.column, text);
        }
    }
    for (const CodedField<Table>& field : codedFields) {
        if (const char* text = document::lastText(element, field.element)) {
            changed |= row.setIfOtherNumber(field.column,
                                            document::codeOfAnyCase(field.texts, text).value_or(1));
        }
    }
    if (changed) {
        row.set(Table::Estado, StatusMark::changed);
    }
}

}  // namespace tarvo_remote_control
