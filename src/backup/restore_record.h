// What a restore keeps of itself on the disk, as text: how far it has come, and how it ended.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace tarvo_backup {

enum class RestorePhase { importing, unconfirmed, undoing };

struct RestoreState {
    RestorePhase phase = RestorePhase::importing;
    std::string id;  // tells one restore from the next
    std::string document;
    // Until when it is to be confirmed, in seconds since the headend was started, and which start.
    long long deadline = 0;
    std::string boot;
    // The commands that the restore had run, which an undo runs again.
    std::vector<std::string> scripts;
    // The databases and files of which there are copies, and files that were not there.
    std::vector<std::string> copied;
    std::vector<std::string> absent;
    // Whose databases they are: a folder of backups may be carried to another headend.
    std::string serialNumber;
    // Where an undo that did not come to its end has saved what it was to take back.
    std::vector<std::string> kept;

    bool operator==(const RestoreState&) const = default;
};

// A restore that was undone.
struct Undone {
    std::string document;
    std::time_t moment = 0;
    // Where what was taken back is: documents, folders of databases. Empty where nothing had
    // changed.
    std::vector<std::string> kept;
    // Why it could not be saved; empty when it was.
    std::string notKept;

    bool operator==(const Undone&) const = default;
};

std::string textOf(const RestoreState& state);
// Throws Fault (cannotRead), which says what of the text is not known.
RestoreState restoreStateFrom(const std::string& text);

std::string textOf(const Undone& undone);
// Nothing when the text tells of none.
std::optional<Undone> undoneFrom(const std::string& text);

}  // namespace tarvo_backup
