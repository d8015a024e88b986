#include "backup/restore.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <thread>

#include "app/run_modes.h"
#include "backup/backup_folder.h"
#include "backup/device_files.h"
#include "backup/device_run.h"
#include "backup/fault.h"
#include "backup/interruption.h"
#include "backup/progress.h"
#include "backup/sqlite.h"
#include "backup/verified_export.h"
#include "command/system_actions.h"
#include "device/device_identity.h"
#include "import/regional.h"
#include "platform/files.h"
#include "platform/platform.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

using tarvo_remote_control::DeviceIdentity;

namespace {

constexpr unsigned kOwnerOnly = 0600;

bool isDatabase(const std::string& path) {
    return std::find(std::begin(kChangedDatabases), std::end(kChangedDatabases), path) !=
           std::end(kChangedDatabases);
}

void noteFile(const std::string& path, RestoreState& state) {
    auto& list = fs::exists(path) ? state.copied : state.absent;
    if (std::find(list.begin(), list.end(), path) == list.end()) {
        list.push_back(path);
    }
}

// The databases, the files that the restore renames, and those that they would replace.
void noteFiles(const Plan& plan, RestoreState& state) {
    for (const char* database : kChangedDatabases) {
        noteFile(database, state);
    }
    for (const auto& [from, to] : plan.renames) {
        noteFile(from, state);
        noteFile(to, state);
    }
}

void copyFile(const std::string& from, const std::string& to) {
    std::error_code failed;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, failed);
    if (!failed) {
        fs::last_write_time(to, fs::last_write_time(from, failed), failed);
    }
    if (failed) {
        throw Fault(ExitStatus::cannotWrite, to + ": " + failed.message());
    }
}

void removeFile(const std::string& path) {
    std::error_code failed;
    fs::remove(path, failed);
    if (failed) {
        throw Fault(ExitStatus::cannotWrite, path + ": " + failed.message());
    }
}

void copyDevice(const RestoreState& state) {
    beginStep("Copying the databases");
    removeCopies();
    std::vector<CopyJob> jobs;
    for (const std::string& path : state.copied) {
        if (isDatabase(path)) {
            jobs.push_back({path, copyOf(path)});
        }
    }
    takeCopies(jobs);
    for (const std::string& path : state.copied) {
        if (!isDatabase(path)) {
            copyFile(path, copyOf(path));
        }
    }
    platform::syncFiles();
}

// A state that cannot be gone by is better left than half undone.
void checkCopies(const RestoreState& state) {
    for (const std::string& path : state.copied) {
        if (!fs::exists(copyOf(path))) {
            throw Fault(ExitStatus::failure, "the copy of " + path + " is lost");
        }
    }
    try {
        loadIdentity();
    } catch (const Fault&) {
        return;  // early in a start of the headend
    }
    const std::string here = DeviceIdentity::instance().getSerialNumber();
    if (!state.serialNumber.empty() && state.serialNumber != here) {
        throw Fault(ExitStatus::failure, "the copies are of another headend, " +
                                             state.serialNumber + "; remove " + stateFolder() +
                                             " to keep this one as it is");
    }
}

void putAllBack(const RestoreState& state) {
    beginStep("Putting the databases back");
    for (const std::string& path : state.copied) {
        if (isDatabase(path)) {
            putBack({copyOf(path), path});
        } else {
            copyFile(copyOf(path), path);
        }
    }
    for (const std::string& path : state.absent) {
        if (!isDatabase(path)) {
            removeFile(path);
        }
    }
    platform::syncFiles();
}

// What was restored may be what somebody wanted, or have been worked on since.
void saveWhatIsUndone() {
    try {
        saveInto(kBackupFolder, verifiedExport(), std::nullopt);
    } catch (const std::exception&) {
        // A headend that is not sound, or has no room, is put back nevertheless.
    }
}

// A script that fails is no reason to give the undo up: what was stored before is stored again.
void runAgain(const std::vector<std::string>& scripts) {
    for (const std::string& script : scripts) {
        if (script.starts_with(tarvo_remote_control::kTimeOffsetsScript)) {
            // With its files and with what follows it, as the settings are now.
            tarvo_remote_control::applyCountryChanged();
        } else if (script == tarvo_remote_control::kNetworkScript ||
                   script == tarvo_remote_control::kRegenerateScramblingKeys) {
            platform::runShell(script);
        }
    }
}

void closeStreams() {
    const int nowhere = open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nowhere, stream);
    }
    close(nowhere);
}

// Waits in a session of its own, which outlives the caller's.
[[noreturn]] void watch(const std::string& id, RestoreLock& lock) {
    setsid();
    closeStreams();
    lock.leave();
    // So as not to keep a disk from being unmounted.
    if (chdir("/") != 0) {
        // Then it is kept.
    }
    for (;;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        try {
            const auto state = readState();
            if (!state || state->id != id) {
                _exit(0);
            }
            if (isAbandoned(*state)) {
                forgetSignals();  // the end of the session
                const RestoreLock own("undo of a restore that was not confirmed");
                undoAbandoned();
            }
        } catch (const std::exception&) {
            // The restore is still at work, a database is locked, or the disk is full.
            constexpr auto kUntilNextTry = std::chrono::seconds(5);
            std::this_thread::sleep_for(kUntilNextTry);
        }
    }
}

void startWatching(const std::string& id, RestoreLock& lock) {
    switch (fork()) {
        case -1:
            throw Fault(ExitStatus::failure,
                        "cannot start the process that would undo the restore");
        case 0:
            watch(id, lock);
        default:
            break;
    }
}

app::ExitStatus import(const Document& document) {
    // The document as it was planned, whatever becomes of its file.
    const std::string path = stateFolder() + "/document.xml";
    if (!platform::files::replace(path, document.text(), {.mode = kOwnerOnly})) {
        throw Fault(ExitStatus::cannotWrite, path + ": cannot be written");
    }
    const OutputMuted muted;
    const app::ExitStatus status = app::importWithRetries(path);
    platform::removeFile(path);
    return status;
}

std::vector<Difference> differencesFrom(const Document& document) {
    Sandbox sandbox;
    return diff(document, Document("the headend", exportIn(sandbox)));
}

}  // namespace

Restored restore(const Document& document, const Plan& plan,
                 std::optional<std::chrono::seconds> toConfirm, RestoreLock& lock) {
    // The network may go, and with it the session.
    const SignalsNoted signals;
    RestoreState state{.phase = RestorePhase::importing,
                       .id = std::to_string(getpid()) + "." + std::to_string(secondsUp()),
                       .document = document.name(),
                       .boot = thisBoot(),
                       .scripts = plan.scripts,
                       .copied = {},
                       .absent = {},
                       .serialNumber = DeviceIdentity::instance().getSerialNumber()};
    noteFiles(plan, state);
    try {
        copyDevice(state);
        writeState(state);
        forgetUndone();
    } catch (...) {
        removeCopies();
        throw;
    }
    if (toConfirm) {
        startWatching(state.id, lock);
    }
    beginStep("Importing the document");
    Restored restored{.status = import(document), .notTaken = {}};
    if (restored.status != app::ExitStatus::success) {
        undo(state);
        return restored;
    }
    if (toConfirm) {
        state.phase = RestorePhase::unconfirmed;
        state.deadline = secondsUp() + toConfirm->count();
        writeState(state);
    } else {
        removeState();
    }
    beginStep("Comparing the headend with the document");
    restored.notTaken = differencesFrom(document);
    return restored;
}

Undone undo(RestoreState state) {
    const SignalsNoted signals;
    try {
        checkCopies(state);
        if (state.phase == RestorePhase::unconfirmed) {
            saveWhatIsUndone();
            state.phase = RestorePhase::undoing;
            writeState(state);
        }
        putAllBack(state);
    } catch (const Fault& fault) {
        throw Fault(fault.status(),
                    "the restore of " + state.document +
                        " is not undone yet; tarvo-backup undo tries again: " + fault.what());
    }
    beginStep("Running the scripts again");
    const OutputMuted muted;
    runAgain(state.scripts);
    Undone undone{.document = state.document, .moment = std::time(nullptr)};
    rememberUndone(undone);
    removeState();
    return undone;
}

std::optional<Undone> undoAbandoned() {
    const auto state = readState();
    return state && isAbandoned(*state) ? std::optional(undo(*state)) : std::nullopt;
}

}  // namespace tarvo_backup
