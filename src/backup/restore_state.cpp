#include "backup/restore_state.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <utility>

#include "backup/backup_folder.h"
#include "backup/fault.h"
#include "backup/output_file.h"
#include "backup/own_folder.h"
#include "platform/files.h"
#include "platform/platform.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLock = "lock";
constexpr const char* kState = "state";
constexpr const char* kUndone = "undone";
constexpr const char* kDocument = "document.xml";

std::string stateFile() { return stateFolder() + "/" + kState; }
std::string undoneFile() { return stateFolder() + "/" + kUndone; }

void makeStateFolder() {
    makeOwnFolder(kBackupFolder);
    makeOwnFolder(stateFolder());
    // Its files are secret; somebody may have opened it since.
    if (chmod(stateFolder().c_str(), 0700) != 0) {
        throw Fault(ExitStatus::cannotWrite, stateFolder() + ": " + std::strerror(errno));
    }
}

// What whoever held the lock, and was killed, has left of a file that was being written.
void removeUnfinished() {
    constexpr std::size_t kRandomCharacters = 6;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(stateFolder(), ignored)) {
        const std::string name = entry.path().filename();
        for (const char* written : {kState, kUndone, kDocument}) {
            const std::string start = std::string(written) + ".new-";
            if (name.starts_with(start) && name.size() == start.size() + kRandomCharacters &&
                fs::is_regular_file(entry.symlink_status(ignored))) {
                fs::remove(entry.path(), ignored);
            }
        }
    }
}

}  // namespace

std::string stateFolder() { return std::string(kBackupFolder) + "/.restore"; }

std::string documentFile() { return stateFolder() + "/" + kDocument; }

std::string copyOf(const std::string& devicePath) {
    std::string name = devicePath;
    std::replace(name.begin(), name.end(), '/', '_');
    return stateFolder() + "/before" + name;
}

RestoreLock::RestoreLock(const std::string& holder) {
    makeStateFolder();
    const std::string path = stateFolder() + "/" + kLock;
    handle_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kOwnerOnly);
    if (handle_ < 0) {
        throw Fault(ExitStatus::cannotWrite, path + ": " + std::strerror(errno));
    }
    if (flock(handle_, LOCK_EX | LOCK_NB) != 0) {
        close(handle_);
        throw Fault(ExitStatus::busy,
                    "busy: " + platform::files::read(path).value_or("another tarvo-backup"));
    }
    removeUnfinished();
    const std::string text = holder + ", process " + std::to_string(getpid());
    if (ftruncate(handle_, 0) != 0 || pwrite(handle_, text.data(), text.size(), 0) < 0) {
        // The name alone is lost.
    }
}

RestoreLock::~RestoreLock() { leave(); }

void RestoreLock::leave() { close(std::exchange(handle_, -1)); }

std::optional<RestoreState> readState() {
    const auto text = platform::files::read(stateFile());
    if (!text && errno == ENOENT) {
        return std::nullopt;
    }
    if (!text) {
        // To go on as if there were none would lose what undoes a restore.
        throw Fault(ExitStatus::cannotRead, stateFile() + ": " + std::strerror(errno));
    }
    try {
        return restoreStateFrom(*text);
    } catch (const Fault& fault) {
        throw Fault(fault.status(), stateFile() + ": " + fault.what() +
                                        "; remove the file to keep the headend as it is");
    }
}

void writeState(const RestoreState& state) {
    if (!platform::files::replace(stateFile(), textOf(state), {.mode = kOwnerOnly})) {
        throw Fault(ExitStatus::cannotWrite, stateFile() + ": " + std::strerror(errno));
    }
}

void removeState() {
    if (unlink(stateFile().c_str()) != 0 && errno != ENOENT) {
        throw Fault(ExitStatus::cannotWrite, stateFile() + ": " + std::strerror(errno));
    }
    // After a power cut the state must not be there again, least of all without its copies.
    platform::syncFiles();
    removeCopies();
}

void removeCopies() {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(stateFolder(), ignored)) {
        if (entry.path().filename() != kLock && entry.path().filename() != kUndone) {
            fs::remove_all(entry.path(), ignored);
        }
    }
}

std::optional<Undone> lastUndone() {
    return undoneFrom(platform::files::read(undoneFile()).value_or(std::string()));
}

void rememberUndone(const Undone& undone) {
    if (!platform::files::replace(undoneFile(), textOf(undone), {.mode = kOwnerOnly})) {
        forgetUndone();  // an earlier restore's
    }
}

void forgetUndone() { unlink(undoneFile().c_str()); }

long long secondsUp() {
    std::timespec time{};
    clock_gettime(CLOCK_BOOTTIME, &time);
    return time.tv_sec;
}

std::string thisBoot() {
    std::string boot = platform::files::read("/proc/sys/kernel/random/boot_id").value_or("unknown");
    return boot.substr(0, boot.find('\n'));
}

bool isAbandoned(const RestoreState& state) {
    return state.phase != RestorePhase::unconfirmed || state.boot != thisBoot() ||
           secondsUp() >= state.deadline;
}

}  // namespace tarvo_backup
