#include "backup/restore_state.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <limits>
#include <sstream>
#include <utility>

#include "backup/backup_folder.h"
#include "backup/fault.h"
#include "backup/own_folder.h"
#include "platform/files.h"
#include "platform/platform.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

constexpr unsigned kOwnerOnly = 0600;
constexpr const char* kLock = "lock";
constexpr const char* kUndone = "undone";
constexpr std::array kPhases{"importing", "unconfirmed", "undoing"};

std::string stateFile() { return stateFolder() + "/state"; }
std::string undoneFile() { return stateFolder() + "/" + kUndone; }

void makeStateFolder() {
    makeOwnFolder(kBackupFolder);
    makeOwnFolder(stateFolder());
    // Its files are secret; somebody may have opened it since.
    if (chmod(stateFolder().c_str(), 0700) != 0) {
        throw Fault(ExitStatus::cannotWrite, stateFolder() + ": " + std::strerror(errno));
    }
}

[[noreturn]] void failUnderstanding(const std::string& what) {
    throw Fault(ExitStatus::cannotRead, stateFile() + ": " + what +
                                            " is not known; remove the file to keep the headend "
                                            "as it is");
}

// On one line, whatever is in it.
std::string escaped(const std::string& text) {
    std::string line;
    for (const char character : text) {
        if (character == '\n' || character == '\\') {
            line += '\\';
        }
        line += character == '\n' ? 'n' : character;
    }
    return line;
}

std::string unescaped(const std::string& line) {
    std::string text;
    for (std::size_t place = 0; place < line.size(); ++place) {
        const bool isEscaped = line[place] == '\\' && place + 1 < line.size();
        place += isEscaped ? 1U : 0U;
        text += isEscaped && line[place] == 'n' ? '\n' : line[place];
    }
    return text;
}

// A line of the state's file: a word, a blank, the rest.
struct Line {
    std::string word;
    std::string rest;
};

std::vector<Line> linesOf(const std::string& text) {
    std::vector<Line> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        const std::size_t blank = std::min(line.find(' '), line.size());
        lines.push_back({.word = line.substr(0, blank),
                         .rest = unescaped(line.substr(std::min(blank + 1, line.size())))});
    }
    return lines;
}

RestorePhase phaseNamed(const std::string& name) {
    const auto* found = std::find(kPhases.begin(), kPhases.end(), name);
    if (found == kPhases.end()) {
        failUnderstanding("the phase '" + name + "'");
    }
    return static_cast<RestorePhase>(found - kPhases.begin());
}

std::optional<long long> numberFrom(const std::string& text) {
    if (text.empty() || text.size() > std::numeric_limits<long long>::digits10 ||
        text.find_first_not_of("0123456789") != std::string::npos) {
        return std::nullopt;
    }
    return std::stoll(text);
}

long long deadlineFrom(const std::string& text) {
    const auto number = numberFrom(text);
    if (!number) {
        failUnderstanding("the deadline '" + text + "'");
    }
    return *number;
}

}  // namespace

std::string stateFolder() { return std::string(kBackupFolder) + "/.restore"; }

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
    const std::string text = holder + ", process " + std::to_string(getpid());
    if (ftruncate(handle_, 0) != 0 || pwrite(handle_, text.data(), text.size(), 0) < 0) {
        // The name alone is lost.
    }
}

RestoreLock::~RestoreLock() { leave(); }

void RestoreLock::leave() { close(std::exchange(handle_, -1)); }

std::optional<RestoreState> readState() {
    const auto text = platform::files::read(stateFile());
    if (!text) {
        return std::nullopt;
    }
    RestoreState state;
    bool hasPhase = false;
    for (const auto& [word, rest] : linesOf(*text)) {
        if (word == "phase") {
            state.phase = phaseNamed(rest);
            hasPhase = true;
        } else if (word == "id") {
            state.id = rest;
        } else if (word == "document") {
            state.document = rest;
        } else if (word == "deadline") {
            state.deadline = deadlineFrom(rest);
        } else if (word == "boot") {
            state.boot = rest;
        } else if (word == "script") {
            state.scripts.push_back(rest);
        } else if (word == "copied") {
            state.copied.push_back(rest);
        } else if (word == "absent") {
            state.absent.push_back(rest);
        } else if (word == "serial") {
            state.serialNumber = rest;
        }
    }
    if (!hasPhase) {
        failUnderstanding("the phase");
    }
    return state;
}

void writeState(const RestoreState& state) {
    std::ostringstream text;
    text << "phase " << kPhases[static_cast<std::size_t>(state.phase)] << "\nid " << state.id
         << "\ndocument " << escaped(state.document) << "\ndeadline " << state.deadline << "\nboot "
         << state.boot << "\nserial " << escaped(state.serialNumber) << '\n';
    const auto writeAll = [&text](const char* word, const std::vector<std::string>& list) {
        for (const std::string& each : list) {
            text << word << ' ' << escaped(each) << '\n';
        }
    };
    writeAll("script", state.scripts);
    writeAll("copied", state.copied);
    writeAll("absent", state.absent);
    if (!platform::files::replace(stateFile(), text.str(), {.mode = kOwnerOnly})) {
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
            fs::remove(entry.path(), ignored);
        }
    }
}

std::optional<Undone> lastUndone() {
    Undone undone;
    for (const auto& [word, rest] :
         linesOf(platform::files::read(undoneFile()).value_or(std::string()))) {
        if (word == "document") {
            undone.document = rest;
        } else if (word == "moment") {
            undone.moment = numberFrom(rest).value_or(0);
        }
    }
    return undone.document.empty() ? std::nullopt : std::optional(undone);
}

void rememberUndone(const Undone& undone) {
    const std::string text =
        "document " + escaped(undone.document) + "\nmoment " + std::to_string(undone.moment) + '\n';
    if (!platform::files::replace(undoneFile(), text, {.mode = kOwnerOnly})) {
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
