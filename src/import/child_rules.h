// What most children of an element do to a row, as data: compare with a column, store, mark the
// row as changed, append to the log.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "db/record.h"
#include "document/coded_texts.h"
#include "document/xml.h"
#include "import/table_writes.h"

namespace tarvo_remote_control {

// A row and whether an element changed it. A changed row gets its status mark; which columns an
// update writes is the row's own business: an output that is switched on over a stored "on" is
// changed without any other column.
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
    // Takes a column over from another row, compared as text.
    void copy(typename Table::Column column, const tarvodb::tSqlite3parent& value) {
        changed |= row.set(column, value);
    }
};

// Marks a changed row in its status column and updates it; error 102 with `message` when that
// fails. A row that is not changed is left alone.
template <class Table>
bool saveIfChanged(CmdSetConfiguration& command, Change<Table>& change,
                   typename Table::Column status, const char* message) {
    if (!change.changed) {
        return true;
    }
    change.row.set(status, StatusMark::changed);
    return updateRecord(command, change.row, message);
}

// The first row with this number in a column, null when there is none.
template <class Table>
tarvodb::Record<Table>* rowWithNumber(std::vector<tarvodb::Record<Table>>& rows,
                                      typename Table::Column column, int number) {
    for (auto& row : rows) {
        if (row[column].asInt() == number) {
            return &row;
        }
    }
    return nullptr;
}

enum class Compare {
    text,
    number,            // "05" is 5; the decimal number is stored
    numberStoredText,  // as numbers; the text is stored as it stands
};

// The label of a child that does not appear in the log.
inline constexpr const char* kNotLogged = nullptr;

// A child whose text goes into a column.
template <class Table>
struct ValueRule {
    const char* element;
    typename Table::Column column;
    Compare compare;
    const char* label;
};

template <class Table>
void setValue(Change<Table>& change, const ValueRule<Table>& rule, const document::XmlNode& child) {
    const char* text = document::textOf(child);
    const int number = document::numberOf(child);
    switch (rule.compare) {
        case Compare::text:
            change.setText(rule.column, text);
            break;
        case Compare::number:
            change.setNumber(rule.column, number);
            break;
        case Compare::numberStoredText:
            if (change.row[rule.column].asInt() != number) {
                change.setText(rule.column, text);
            }
            break;
    }
}

using ReadCode = std::optional<int> (*)(document::CodeTable, const char*);

// A child whose text stands for a code, and the errors of a text that does not.
template <class Table>
struct CodedRule {
    const char* element;
    typename Table::Column column;
    document::CodeTable texts;
    ReadCode read;
    const char* label;
    ErrorCode recordedCode;
    ErrorCode loggedCode;
};

// Error "Invalid value for module/<path>".
inline bool failOnValue(CmdSetConfiguration& command, const std::string& path,
                        ErrorCode recordedCode, ErrorCode loggedCode) {
    return fail(command, Failure{.code = recordedCode,
                                 .message = "Invalid value for module/" + path,
                                 .loggedCode = loggedCode});
}

// The code of a child's text. Nothing when it has none; the error is recorded and logged, with
// `path` as the element's name.
template <class Table>
std::optional<int> readCode(CmdSetConfiguration& command, const CodedRule<Table>& rule,
                            const document::XmlNode& child, const std::string& path) {
    const auto code = rule.read(rule.texts, document::textOf(child));
    if (!code) {
        failOnValue(command, path, rule.recordedCode, rule.loggedCode);
    }
    return code;
}

// Appends a label and a child's text as the document gives it.
inline void appendToLog(std::string& log, const char* label, const document::XmlNode& child) {
    if (label != kNotLogged) {
        log += label;
        log += document::textOf(child);
    }
}

}  // namespace tarvo_remote_control
