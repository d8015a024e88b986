// How the import takes elements, by the rows of the mapping: compare with a column, store, mark
// the row as changed, append to the log.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command/error_codes.h"
#include "db/record.h"
#include "db/status_marks.h"
#include "db/value.h"
#include "document/xml.h"
#include "import/cmd_set_configuration.h"
#include "import/table_writes.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

// The code of an element's text, as its row takes codes. Nothing when the text has none.
// `rfOutputMode` is the module's, for an element of an output.
std::optional<int> codeOf(const mapping::Element& element, const char* text, int rfOutputMode = 0);

// Takes a child's text over into the column of its row. `record` is a row of that column's table.
// Returns whether the column got another value. Only what the row says without its section's
// handler is taken: not keys, bits, what is special or ignored, nor codes whose text has none.
bool take(tarvodb::Row& record, const mapping::Element& element, const document::XmlNode& child);

// Takes, in the order of their rows, the last child of each name whose column is of the record's
// table, and empties the columns derived from a changed one. Returns whether a column got another
// value.
bool takeLast(tarvodb::Row& record, mapping::Elements elements, const document::XmlNode& parent);

// As takeLast; a record that is changed is marked in its Estado.
template <class Table>
void takeAndMark(tarvodb::Record<Table>& record, mapping::Elements elements,
                 const document::XmlNode& parent) {
    if (takeLast(record, elements, parent)) {
        record.set(Table::Estado, tarvodb::StatusMark::changed);
    }
}

// A row and whether an element changed it. A changed row gets its status mark; which columns an
// update writes is the row's own business: an output that is switched on over a stored "on" is
// changed without any other column.
template <class Table>
struct Change {
    tarvodb::Record<Table>& row;
    bool changed = false;

    explicit Change(tarvodb::Record<Table>& record) : row(record) {}

    void take(const mapping::Element& element, const document::XmlNode& child) {
        changed |= tarvo_remote_control::take(row, element, child);
    }
    void setNumber(typename Table::Column column, int number) {
        changed |= row.setIfOtherNumber(column, number);
    }
    void setNumber(const mapping::Element& element, int number) {
        setNumber(static_cast<typename Table::Column>(element.column.index), number);
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
    change.row.set(status, tarvodb::StatusMark::changed);
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

// The number in the first child that an element must have. Nothing when it is missing or out of
// the range that its row demands; an error of this code is recorded and logged then.
std::optional<int> requiredNumber(CmdSetConfiguration& command, const document::XmlNode& parent,
                                  const mapping::Element& element, ErrorCode code);

// Error "Invalid value for module/<path>".
bool failOnValue(CmdSetConfiguration& command, const std::string& path, ErrorCode recordedCode,
                 ErrorCode loggedCode);

// Appends a label and a child's text as the document gives it. No label, no text.
void appendToLog(std::string& log, const char* label, const document::XmlNode& child);

}  // namespace tarvo_remote_control
