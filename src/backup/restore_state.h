// How far a restore has come, on the disk, so that whatever ends it leaves the headend as it was
// before or as it is after.
//
//   nothing --> importing --> unconfirmed --confirm--> nothing
//                   |            |
//                   |            +--> undoing --> nothing
//                   +--undone, or done without --confirm--> nothing
//
// Each arrow is one rename of the state's file (or its removal), after what it relies on is on the
// disk: the copies of the databases before "importing". The copies go last, when the removal is on
// the disk. An undo leaves word of itself before the removal, in a file of its own that counts
// where there is no state; the next restore takes it away once it has one. Whoever finds a state
// whose owner is gone undoes it, which can be done any number of times:
//   importing    the restore was killed, or failed and could not be undone
//   undoing      an undo was killed
//   unconfirmed  the time is over, or the headend was started anew
#pragma once

#include <optional>
#include <string>

#include "backup/restore_record.h"

namespace tarvo_backup {

// One restore, undo or confirmation at a time holds it; given up when the process ends, however.
class RestoreLock {
  public:
    // Throws Fault (busy), which says who holds it.
    explicit RestoreLock(const std::string& holder);
    ~RestoreLock();
    RestoreLock(const RestoreLock&) = delete;
    RestoreLock& operator=(const RestoreLock&) = delete;

    // Gives it up here; a process that this one was forked from keeps it.
    void leave();

  private:
    int handle_ = -1;
};

// Where state and copies are, on a file system that outlives a restart. The folder is private.
std::string stateFolder();
// The document while it is imported.
std::string documentFile();
// The copies of the databases and files from before.
std::string copyOf(const std::string& devicePath);

// Nothing when no restore is under way. Throws Fault (cannotRead) when it cannot be understood. The
// caller holds the lock, but for the one that watches.
std::optional<RestoreState> readState();
// Throws Fault (cannotWrite).
void writeState(const RestoreState& state);
// Removes it, and the copies. Throws Fault (cannotWrite) when it cannot, and a start of the headend
// would still find it.
void removeState();
// Removes what a restore that was killed before it had a state has left of copies.
void removeCopies();

// The last restore, when it was undone. Nothing also when there was no room on the disk to keep it.
std::optional<Undone> lastUndone();
// Before the state is removed.
void rememberUndone(const Undone& undone);
// Once the next restore has a state.
void forgetUndone();

// Seconds since the headend was started, and what tells this start from others.
long long secondsUp();
std::string thisBoot();

// Whether nobody can confirm it any more, or finish it.
bool isAbandoned(const RestoreState& state);

}  // namespace tarvo_backup
