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
#include <sstream>
#include <utility>

#include "backup/backup_folder.h"
#include "backup/fault.h"
#include "platform/files.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

constexpr unsigned kOwnerOnly = 0600;
constexpr std::array kPhases{"importing", "unconfirmed", "undoing"};

std::string stateFile() { return stateFolder() + "/state"; }

void makePrivateFolder(const std::string& folder) {
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        throw Fault(ExitStatus::cannotWrite, folder + ": " + std::strerror(errno));
    }
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
        throw Fault(ExitStatus::cannotRead, stateFile() + ": '" + name + "' is not known");
    }
    return static_cast<RestorePhase>(found - kPhases.begin());
}

}  // namespace

std::string stateFolder() { return std::string(kBackupFolder) + "/.restore"; }

std::string copyOf(const std::string& devicePath) {
    std::string name = devicePath;
    std::replace(name.begin(), name.end(), '/', '_');
    return stateFolder() + "/before" + name;
}

RestoreLock::RestoreLock(const std::string& holder) {
    makePrivateFolder(kBackupFolder);
    makePrivateFolder(stateFolder());
    const std::string path = stateFolder() + "/lock";
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

void RestoreLock::leave() {
    if (handle_ >= 0) {
        close(std::exchange(handle_, -1));
    }
}

std::optional<RestoreState> readState() {
    const auto text = platform::files::read(stateFile());
    if (!text) {
        return std::nullopt;
    }
    RestoreState state;
    for (const auto& [word, rest] : linesOf(*text)) {
        if (word == "phase") {
            state.phase = phaseNamed(rest);
        } else if (word == "id") {
            state.id = rest;
        } else if (word == "document") {
            state.document = rest;
        } else if (word == "deadline") {
            state.deadline = std::stoll(rest);
        } else if (word == "boot") {
            state.boot = rest;
        } else if (word == "script") {
            state.scripts.push_back(rest);
        } else if (word == "file") {
            state.files.push_back(rest);
        }
    }
    return state;
}

void writeState(const RestoreState& state) {
    std::ostringstream text;
    text << "phase " << kPhases[static_cast<std::size_t>(state.phase)] << "\nid " << state.id
         << "\ndocument " << escaped(state.document) << "\ndeadline " << state.deadline << "\nboot "
         << state.boot << '\n';
    for (const std::string& script : state.scripts) {
        text << "script " << escaped(script) << '\n';
    }
    for (const std::string& file : state.files) {
        text << "file " << escaped(file) << '\n';
    }
    if (!platform::files::replace(stateFile(), text.str(), {.mode = kOwnerOnly})) {
        throw Fault(ExitStatus::cannotWrite, stateFile() + ": " + std::strerror(errno));
    }
}

void removeState() {
    unlink(stateFile().c_str());
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(stateFolder(), ignored)) {
        if (entry.path().filename().string().starts_with("before")) {
            fs::remove(entry.path(), ignored);
        }
    }
}

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
