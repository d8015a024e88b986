#include "backup/restore.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <thread>
#include <utility>

#include "app/run_modes.h"
#include "backup/backup_folder.h"
#include "backup/console.h"
#include "backup/database_copies.h"
#include "backup/device_files.h"
#include "backup/device_run.h"
#include "backup/fault.h"
#include "backup/interruption.h"
#include "backup/output_file.h"
#include "backup/own_folder.h"
#include "backup/progress.h"
#include "backup/row_changes.h"
#include "backup/utc_time.h"
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

// One of the device's files, which keeps the time that it was changed: that is what tells when it
// was made.
void copyWithTime(const std::string& from, const std::string& to) {
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

void copyDatabases(const PlannedRestore& planned, RestoreState& state) {
    for (const char* database : kChangedDatabases) {
        const std::string before = planned.databaseBefore(database);
        if (fs::exists(before)) {
            copyOwn({.from = before, .to = copyOf(database)});
            state.copied.emplace_back(database);
        } else {
            state.absent.emplace_back(database);
        }
    }
}

// The files that the restore renames, and those that they would replace.
void copyFiles(const std::vector<Rename>& renames, RestoreState& state) {
    for (const auto& [from, to] : renames) {
        noteFile(from, state);
        noteFile(to, state);
    }
    for (const std::string& path : state.copied) {
        if (!isDatabase(path)) {
            copyWithTime(path, copyOf(path));
        }
    }
}

// A state that cannot be gone by is better left than half undone.
void checkCopies(const RestoreState& state) {
    for (const std::string& path : state.copied) {
        if (!fs::exists(copyOf(path))) {
            throw Fault(ExitStatus::failure, "the copy of " + path + " is lost; remove " +
                                                 stateFolder() + " to keep the headend as it is");
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

std::vector<PutBack> watchedDatabases(const RestoreState& state) {
    std::vector<PutBack> databases;
    for (const std::string& path : state.copied) {
        if (isDatabase(path)) {
            databases.emplace_back(CopyJob{.from = copyOf(path), .to = path});
        }
    }
    return databases;
}

void putFilesBack(const RestoreState& state) {
    for (const std::string& path : state.copied) {
        if (!isDatabase(path)) {
            copyWithTime(copyOf(path), path);
        }
    }
    for (const std::string& path : state.absent) {
        if (!isDatabase(path)) {
            removeFile(path);
        }
    }
    platform::syncFiles();
}

// Where a folder has the copy of a database.
std::string inFolder(const std::string& folder, const std::string& database) {
    return folder + database.substr(database.rfind('/'));
}

bool isSameDatabase(const std::string& one, const std::string& other) {
    const auto content = platform::files::read(one);
    if (content && content == platform::files::read(other)) {
        return true;
    }
    try {
        return rowChanges(one, other).empty();
    } catch (const Fault&) {
        return false;  // one of them is no database
    }
}

// Whether it is put back anyway, or was saved when the undo was tried before.
bool isKept(const std::string& database, const std::string& now, const RestoreState& state) {
    return isSameDatabase(now, copyOf(database)) ||
           std::any_of(state.kept.begin(), state.kept.end(), [&](const std::string& folder) {
               return isSameDatabase(now, inFolder(folder, database));
           });
}

std::string newFolder() {
    const std::string start =
        std::string(kBackupFolder) + "/undone-" + utcText(std::time(nullptr), "%Y-%m-%dT%H%MZ");
    std::string folder = start;
    for (int number = 2; fs::exists(fs::symlink_status(folder)); ++number) {
        folder = start + "-" + std::to_string(number);
    }
    return folder;
}

// Copies the databases as they are into the folder. Gives whether one holds anything that would be
// lost.
bool copyWhatIsNew(const std::string& folder, const RestoreState& state) {
    fs::remove_all(folder);
    makeOwnFolder(folder);
    std::vector<CopyJob> jobs;
    for (const char* database : kChangedDatabases) {
        jobs.push_back({.from = database, .to = inFolder(folder, database)});
    }
    copyFromDevice(jobs);
    return std::any_of(jobs.begin(), jobs.end(), [&](const CopyJob& job) {
        return fs::exists(job.to) && !isKept(job.from, job.to, state);
    });
}

// As a document among the backups, or else as these copies of the databases: early in a start of
// the headend, its state database is not there, without which there is no export. Gives the path.
std::string keep(const std::string& copies) {
    try {
        return saveInto(kBackupFolder, verifiedExport(), std::nullopt).path;
    } catch (const std::exception&) {
        if (!fs::exists(copies)) {
            throw;
        }
    }
    forgetSignals();
    platform::syncFiles();
    std::string folder = newFolder();
    fs::rename(copies, folder);
    return folder;
}

// What is undone may be what somebody wanted, or have been worked on since, also while nobody knew
// that a restore was killed. Gives why it could not be saved; empty when it was.
std::string saveWhatIsUndone(RestoreState& state) {
    const std::string copies = stateFolder() + "/kept";
    std::string withoutCopies;
    try {
        if (!copyWhatIsNew(copies, state)) {
            fs::remove_all(copies);
            return "";
        }
    } catch (const std::exception& fault) {
        withoutCopies = fault.what();
        std::error_code ignored;
        fs::remove_all(copies, ignored);
        forgetSignals();
    }
    try {
        const std::string path = keep(copies);
        if (std::find(state.kept.begin(), state.kept.end(), path) == state.kept.end()) {
            state.kept.push_back(path);
        }
    } catch (const std::exception& fault) {
        forgetSignals();
        return onOneLine(fault.what() + (withoutCopies.empty() ? "" : "; " + withoutCopies));
    }
    std::error_code ignored;
    fs::remove_all(copies, ignored);
    return "";
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
    const std::string path = documentFile();
    if (!platform::files::replace(path, document.text(), {.mode = kOwnerOnly})) {
        throw Fault(ExitStatus::cannotWrite, path + ": cannot be written");
    }
    const OutputMuted muted;
    const app::ExitStatus status = app::importWithRetries(path);
    platform::removeFile(path);
    return status;
}

Undone concluded(Undone undone) {
    undone.moment = std::time(nullptr);
    rememberUndone(undone);
    removeState();
    return undone;
}

std::vector<Difference> differencesFrom(const Document& document) {
    Sandbox sandbox;
    return diff(document, Document("the headend", exportIn(sandbox)));
}

}  // namespace

RestoreState keepForUndo(const Document& document, const PlannedRestore& planned) {
    beginStep("Copying the databases");
    RestoreState state{.phase = RestorePhase::importing,
                       .id = std::to_string(getpid()) + "." + std::to_string(secondsUp()),
                       .document = document.name(),
                       .boot = thisBoot(),
                       .scripts = planned.plan().scripts,
                       .copied = {},
                       .absent = {},
                       .serialNumber = DeviceIdentity::instance().getSerialNumber(),
                       .kept = {}};
    removeCopies();
    try {
        copyDatabases(planned, state);
        copyFiles(planned.plan().renames, state);
        endIfInterrupted();
    } catch (...) {
        removeCopies();
        throw;
    }
    return state;
}

Restored restore(const Document& document, RestoreState state,
                 std::optional<std::chrono::seconds> toConfirm, RestoreLock& lock) {
    // The network may go, and with it the session.
    const SignalsNoted signals;
    try {
        platform::syncFiles();
        writeState(state);
        forgetUndone();
    } catch (...) {
        removeCopies();
        throw;
    }
    Restored restored;
    try {
        if (toConfirm) {
            startWatching(state.id, lock);
        }
        beginStep("Importing the document");
        deviceIsChanged = false;
        restored.status = import(document);
    } catch (const Fault&) {
        removeState();  // the import was not begun, and nobody is to undo what comes later
        throw;
    }
    if (restored.status != app::ExitStatus::success) {
        if (deviceIsChanged) {
            restored.undone = undo(std::move(state));
        } else {
            // Nothing to undo: what others have stored meanwhile stays.
            Undone nothing;
            nothing.document = state.document;
            restored.undone = concluded(std::move(nothing));
        }
        return restored;
    }
    if (toConfirm) {
        state.phase = RestorePhase::unconfirmed;
        state.deadline = secondsUp() + toConfirm->count();
        writeState(state);
    } else {
        removeState();
    }
    forgetSignals();  // it is done, which must be told
    beginStep("Comparing the headend with the document");
    try {
        restored.notTaken = differencesFrom(document);
    } catch (const std::exception& fault) {
        forgetSignals();
        restored.notCompared = fault.what();
    }
    return restored;
}

Undone undo(RestoreState state) {
    const SignalsNoted signals;
    Undone undone;
    undone.document = state.document;
    try {
        checkCopies(state);
        // What others write after it was saved is saved, too; but it cannot go on for ever.
        constexpr int kMostTries = 5;
        bool isBack = false;
        for (int tryNumber = 1; !isBack; ++tryNumber) {
            auto databases = watchedDatabases(state);
            const std::size_t keptBefore = state.kept.size();
            if (std::string why = saveWhatIsUndone(state); !why.empty()) {
                undone.notKept = std::move(why);
            }
            if (state.phase == RestorePhase::unconfirmed || state.kept.size() > keptBefore) {
                state.phase = RestorePhase::undoing;
                writeState(state);
            }
            beginStep("Putting the databases back");
            isBack = std::all_of(databases.begin(), databases.end(), [&](PutBack& database) {
                return database.run(tryNumber == kMostTries);
            });
        }
        putFilesBack(state);
    } catch (const Fault& fault) {
        throw Fault(fault.status(),
                    "the restore of " + state.document +
                        " is not undone yet; tarvo-backup undo tries again: " + fault.what());
    }
    beginStep("Running the scripts again");
    const OutputMuted muted;
    runAgain(state.scripts);
    undone.kept = std::move(state.kept);
    return concluded(std::move(undone));
}

std::optional<Undone> undoAbandoned() {
    const auto state = readState();
    return state && isAbandoned(*state) ? std::optional(undo(*state)) : std::nullopt;
}

}  // namespace tarvo_backup
