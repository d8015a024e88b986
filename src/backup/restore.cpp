#include "backup/restore.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "app/run_modes.h"
#include "backup/device_files.h"
#include "backup/device_run.h"
#include "backup/fault.h"
#include "backup/interruption.h"
#include "backup/sqlite.h"
#include "command/system_actions.h"
#include "import/regional.h"
#include "platform/files.h"
#include "platform/platform.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

constexpr unsigned kOwnerOnly = 0600;

// The files that the restore renames, and those that they would replace.
std::vector<std::string> filesOf(const std::vector<Rename>& renames) {
    std::vector<std::string> files;
    for (const auto& [from, to] : renames) {
        files.push_back(from);
        files.push_back(to);
    }
    return files;
}

void copyDevice(const RestoreState& state) {
    std::vector<CopyJob> jobs;
    for (const char* database : kChangedDatabases) {
        jobs.push_back({database, copyOf(database)});
    }
    takeCopies(jobs);
    for (const std::string& file : state.files) {
        if (fs::exists(file)) {
            fs::copy_file(file, copyOf(file), fs::copy_options::overwrite_existing);
            fs::last_write_time(copyOf(file), fs::last_write_time(file));
        }
    }
    platform::syncFiles();
}

void putFileBack(const std::string& file) {
    std::error_code failed;
    if (!fs::exists(copyOf(file))) {
        fs::remove(file, failed);
        return;
    }
    fs::copy_file(copyOf(file), file, fs::copy_options::overwrite_existing, failed);
    if (failed) {
        throw Fault(ExitStatus::cannotWrite, file + ": " + failed.message());
    }
    fs::last_write_time(file, fs::last_write_time(copyOf(file)), failed);
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
    for (;;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        try {
            const auto state = readState();
            if (!state || state->id != id) {
                _exit(0);
            }
            if (isAbandoned(*state)) {
                const RestoreLock own("undo of a restore that was not confirmed");
                undoAbandoned();
            }
        } catch (const std::exception&) {
            // The restore is still at work, or the disk is full: later.
        }
    }
}

void startWatching(const std::string& id, RestoreLock& lock) {
    const pid_t child = fork();
    if (child < 0) {
        throw Fault(ExitStatus::failure, "cannot start the process that would undo the restore");
    }
    if (child == 0) {
        watch(id, lock);
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
                       .files = filesOf(plan.renames)};
    copyDevice(state);
    writeState(state);
    if (toConfirm) {
        startWatching(state.id, lock);
    }
    Restored restored{.status = import(document), .notTaken = {}};
    if (restored.status != app::ExitStatus::success) {
        undo(state);
        return restored;
    }
    if (toConfirm) {
        state.phase = RestorePhase::unconfirmed;
        state.deadline = secondsUp() + toConfirm->count();
        writeState(state);
        restored.isUnconfirmed = true;
    } else {
        removeState();
    }
    restored.notTaken = differencesFrom(document);
    return restored;
}

void undo(RestoreState state) {
    const SignalsNoted signals;
    state.phase = RestorePhase::undoing;
    writeState(state);
    for (const char* database : kChangedDatabases) {
        if (fs::exists(copyOf(database))) {
            putBack({copyOf(database), database});
        }
    }
    for (const std::string& file : state.files) {
        putFileBack(file);
    }
    platform::syncFiles();
    const OutputMuted muted;
    runAgain(state.scripts);
    removeState();
}

bool undoAbandoned() {
    const auto state = readState();
    if (!state || !isAbandoned(*state)) {
        return false;
    }
    undo(*state);
    return true;
}

}  // namespace tarvo_backup
