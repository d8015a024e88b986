// Writes to tables whose failures are errors of the import.
#pragma once

#include <string>
#include <vector>

#include "command/error_codes.h"
#include "db/operations.h"
#include "db/record.h"
#include "import/cmd_set_configuration.h"
#include "import/reporting.h"

namespace tarvo_remote_control {

// Empties the table; error 102 with `message` when that fails.
template <class Table>
bool emptyTable(CmdSetConfiguration& command, const std::string& message) {
    return tarvodb::deleteAll<Table>(command.db()) || fail(command, ErrorCode::database, message);
}

// Inserts the record; error 102 with `message` when that fails.
template <class Table>
bool insertRecord(CmdSetConfiguration& command, tarvodb::Record<Table>& record,
                  const std::string& message) {
    return tarvodb::insert(record, command.db()) || fail(command, ErrorCode::database, message);
}

// Updates the record; error 102 with `message` when that fails.
template <class Table>
bool updateRecord(CmdSetConfiguration& command, tarvodb::Record<Table>& record,
                  const std::string& message) {
    return tarvodb::update(record, command.db()) || fail(command, ErrorCode::database, message);
}

// Replaces the table's rows by `records`, in their order. A failure does not stop the rest, so
// that all of them are reported.
template <class Table>
bool replaceTable(CmdSetConfiguration& command, std::vector<tarvodb::Record<Table>>& records,
                  const std::string& deleteMessage, const std::string& insertMessage) {
    bool replaced = emptyTable<Table>(command, deleteMessage);
    for (tarvodb::Record<Table>& record : records) {
        replaced &= insertRecord(command, record, insertMessage);
    }
    return replaced;
}

}  // namespace tarvo_remote_control
