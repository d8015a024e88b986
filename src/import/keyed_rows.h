// Elements that stand for one row each, found by the row's key.
#pragma once

#include <utility>

#include "db/operations.h"
#include "db/record.h"
#include "import/cmd_set_configuration.h"

namespace tarvo_remote_control {

// The first row that `clause` finds for `id`, otherwise what `newRow` makes of `id`; the latter
// also when the select fails.
template <class Table>
tarvodb::Record<Table> storedOrNew(const CmdSetConfiguration& command,
                                   const tarvodb::Clause<1>& clause, const char* id,
                                   tarvodb::Record<Table> (*newRow)(const char* id)) {
    auto stored = tarvodb::doSelect<Table>(command.db(), clause, id);
    return stored.empty() ? newRow(id) : std::move(stored.front());
}

}  // namespace tarvo_remote_control
