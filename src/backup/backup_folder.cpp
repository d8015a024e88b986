#include "backup/backup_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <tuple>

#include "backup/backup_name.h"
#include "backup/console.h"
#include "backup/diff.h"
#include "backup/document.h"
#include "backup/fault.h"
#include "backup/output_file.h"
#include "backup/own_folder.h"
#include "backup/patience.h"
#include "backup/utc_time.h"
#include "device/device_identity.h"
#include "platform/files.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

// Keeps other saves out of the folder. Whoever may read the folder can hold the lock, and not every
// file system has one: after a while the work goes on without.
class FolderLock {
  public:
    explicit FolderLock(const std::string& folder)
        : handle_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        tryPatiently("Waiting for another save into the folder", [this] {
            return flock(handle_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
        });
    }
    ~FolderLock() { close(handle_); }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

  private:
    int handle_;
};

// Calls visit(name, entry) for the regular files of the folder; a pipe or a link is none.
template <class Visit>
void forEachFile(const std::string& folder, Visit visit) {
    try {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (fs::is_regular_file(entry.symlink_status())) {
                visit(entry.path().filename().string(), entry);
            }
        }
    } catch (const fs::filesystem_error& error) {
        throw Fault(ExitStatus::cannotWrite, onOneLine(folder) + ": " + error.code().message());
    }
}

struct Backup {
    std::string path;
    BackupName name;
};

// The host's backups, oldest first.
std::vector<Backup> backupsIn(const std::string& folder, const std::string& stem) {
    std::vector<Backup> backups;
    forEachFile(folder, [&](const std::string& file, const fs::directory_entry&) {
        if (const auto name = backupNameFrom(file, stem)) {
            backups.push_back({.path = folder + "/" + file, .name = *name});
        }
    });
    std::sort(backups.begin(), backups.end(), [](const Backup& a, const Backup& b) {
        return std::tie(a.name.minute, a.name.number) < std::tie(b.name.minute, b.name.number);
    });
    return backups;
}

// What has the name of a backup that is being written, since yesterday or longer.
void removeLeftOvers(const std::string& folder, const std::string& stem) {
    constexpr auto kLongestWriting = std::chrono::hours(24);
    constexpr std::string_view kBeside = ".new-XXXXXX";
    const auto latest = fs::file_time_type::clock::now() - kLongestWriting;
    std::error_code ignored;
    forEachFile(folder, [&](const std::string& file, const fs::directory_entry& entry) {
        const std::size_t end = file.rfind(kBeside.substr(0, kBeside.find('X')));
        const bool isBeside = end != std::string::npos && file.size() - end == kBeside.size() &&
                              backupNameFrom(std::string_view(file).substr(0, end), stem);
        const auto found = platform::files::status(entry.path());
        if (isBeside && found && found->owner == geteuid() &&
            fs::last_write_time(entry.path(), ignored) < latest) {
            fs::remove(entry.path(), ignored);
        }
    });
}

bool hasSameSettings(const std::string& older, const std::string& document) {
    const auto text = platform::files::read(older);
    if (!text) {
        return false;
    }
    try {
        const Document before(older, *text);
        // Without a configuration it is no backup, and one that is redacted cannot be restored.
        return before.configuration() != nullptr && !before.isRedacted() &&
               diff(before, Document("new", document), {.order = true}).empty();
    } catch (const Fault&) {
        return false;  // it was damaged since
    }
}

// Its name comes after all others, also where the first of its minute were removed. So the last one
// written is the newest by its name, whatever the clock said in between: the next one is compared
// with it, and --keep removes what was written first.
Backup writtenInto(const std::string& folder, const std::string& stem, const std::string& document,
                   const std::vector<Backup>& others) {
    Backup backup{.path = {}, .name = {.minute = utcText(std::time(nullptr), "%Y-%m-%dT%H%MZ")}};
    if (!others.empty() && others.back().name.minute >= backup.name.minute) {
        backup.name = others.back().name;
        ++backup.name.number;
    }
    for (;; ++backup.name.number) {
        backup.path = folder + "/" + fileName(stem, backup.name);
        if (createForOwner(backup.path, document)) {
            return backup;
        }
    }
}

}  // namespace

Saved saveInto(const std::string& folder, const std::string& document,
               std::optional<std::size_t> keep) {
    makeOwnFolder(folder);
    const FolderLock lock(folder);
    const std::string stem = stemOf(tarvo_remote_control::DeviceIdentity::instance().getHostName());
    removeLeftOvers(folder, stem);
    auto backups = backupsIn(folder, stem);
    Saved saved;
    saved.isUnchanged = !backups.empty() && hasSameSettings(backups.back().path, document);
    if (!saved.isUnchanged) {
        backups.push_back(writtenInto(folder, stem, document, backups));
    }
    saved.path = backups.back().path;
    std::error_code failed;
    for (std::size_t place = 0; keep && place + *keep < backups.size(); ++place) {
        if (fs::remove(backups[place].path, failed)) {
            saved.removed.push_back(backups[place].path);
        }
    }
    return saved;
}

}  // namespace tarvo_backup
