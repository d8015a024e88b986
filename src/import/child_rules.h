// What most children of an element do to a row, as data: compare with a column, store, mark the
// row as changed, tell the log.
#pragma once

#include <string>

#include "db/record.h"
#include "document/coded_texts.h"
#include "document/xml.h"

namespace tarvo_remote_control {

// A row and whether an element changed it.
template <class Table>
struct Change {
    tarvodb::Record<Table>& row;
    bool changed = false;

    explicit Change(tarvodb::Record<Table>& record) : row(record) {}

    void setText(typename Table::Column column, const char* text) {
        changed |= row.set(column, text);
    }
    void setNumber(typename Table::Column column, int number) {
        changed |= row.setIfOtherNumber(column, number);
    }
    // Takes a column over from another row.
    void copy(typename Table::Column column, const tarvodb::tSqlite3parent& value) {
        changed |= row.set(column, value);
    }
};

enum class Compare {
    text,
    number,            // "05" is 5; the decimal number is stored
    numberStoredText,  // as numbers; the text is stored as it stands
};

// A child whose text goes into a column. Without a label it is not told in the log.
template <class Table>
struct ValueRule {
    const char* element;
    typename Table::Column column;
    Compare compare;
    const char* label;
};

template <class Table>
void setValue(Change<Table>& change, typename Table::Column column, Compare compare,
              const char* text) {
    const int number = tarvodb::toInt(text);
    switch (compare) {
        case Compare::text:
            change.setText(column, text);
            break;
        case Compare::number:
            change.setNumber(column, number);
            break;
        case Compare::numberStoredText:
            if (change.row[column].asInt() != number) {
                change.setText(column, text);
            }
            break;
    }
}

// The rule of a child, null when it has none.
template <class Rule, std::size_t Size>
const Rule* ruleOf(const Rule (&rules)[Size], const document::XmlNode& child) {
    for (const Rule& rule : rules) {
        if (document::hasName(child, rule.element)) {
            return &rule;
        }
    }
    return nullptr;
}

// Appends a label and a child's text as the document gives it.
inline void tell(std::string& log, const char* label, const document::XmlNode& child) {
    if (label != nullptr) {
        log += label;
        log += document::textOf(child);
    }
}

}  // namespace tarvo_remote_control
