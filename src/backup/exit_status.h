// What tarvo-backup tells its caller.
#pragma once

namespace tarvo_backup {

enum class ExitStatus : int {
    done = 0,         // also: nothing to tell
    differences = 1,  // diff and plan found some
    usage = 2,        // of the command line, or a document that is faulty
    cannotRead = 3,
    cannotWrite = 4,
    failure = 5,  // whatever has no status of its own
    // The import takes the document with errors, or not at all; or what it did was undone before it
    // was confirmed.
    refused = 6,
    busy = 7,    // another restore is under way
    untold = 8,  // done, but the report could not be given
};

}  // namespace tarvo_backup
