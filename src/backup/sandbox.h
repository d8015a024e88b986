// A private copy of the device, in which the program's own code runs without touching the device.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "backup/interruption.h"
#include "backup/private_folder.h"
#include "command/error_codes.h"

namespace tarvo_backup {

// The indexes that lead from the root of a tree to one of its nodes.
using Place = std::vector<std::size_t>;

struct LogLine {
    int priority;
    std::string text;
};

// An error that a command recorded, with the element that it had read last.
struct RecordedError {
    tarvo_remote_control::ErrorCode code;
    std::string text;
    std::optional<Place> place;

    bool operator==(const RecordedError&) const = default;
};

struct Rename {
    std::string from;
    std::string to;

    bool operator==(const Rename&) const = default;
};

// What went through the door to the device, and stopped there.
struct Traffic {
    std::vector<std::string> scripts;
    std::vector<Rename> renames;
    // Files by their path on the device, as they would be now; without content: removed.
    std::map<std::string, std::optional<std::string>> files;
    std::vector<LogLine> log;
    std::vector<RecordedError> errors;
    std::size_t failedStatements = 0;
    // How often the document was read: an import reads it once in each of its tries.
    std::size_t tries = 0;
};

// While one lives, the door leads into it: databases are opened in the private copy, files are
// written in memory, scripts, renames and log lines are noted, nobody sleeps. Files that were not
// written are the device's. Signals end the work at the next use of the door (Interrupted). There
// is one at a time.
class Sandbox {
  public:
    // Copies the databases. Throws Fault.
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    // Null when the door is open to the device.
    static Sandbox* active();

    // Where the import finds its document.
    static constexpr const char* kDocument = "document";
    void setDocument(const std::string& text);

    // Where the copy is.
    [[nodiscard]] const std::string& folder() const { return folder_.path(); }
    // The path in the copy of a database's file.
    [[nodiscard]] std::string mapped(const std::string& path) const;

    // Forgets what was noted, but for the files.
    void startAfresh();

    [[nodiscard]] const Traffic& traffic() const { return traffic_; }
    [[nodiscard]] Traffic& traffic() { return traffic_; }

    // The databases that were asked for and that the device does not have.
    [[nodiscard]] const std::set<std::string>& missing() const { return missing_; }

    // For the door:
    void noteMissing(const std::string& path) { missing_.insert(path); }
    void noteLine(int priority, const std::string& text);
    void noteScript(const std::string& command);

  private:
    SignalsNoted signals_;
    PrivateFolder folder_;
    Traffic traffic_;
    std::set<std::string> missing_;
    unsigned earlierDebugMask_;
};

}  // namespace tarvo_backup
