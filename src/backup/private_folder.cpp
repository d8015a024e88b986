#include "backup/private_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "backup/fault.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

constexpr const char* kPlace = "/tmp";
constexpr const char* kStem = "tarvo-backup.";

// A handle of the folder with its lock; -1 when it is in use, not ours, or gone.
int locked(const std::string& folder) {
    const int handle = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (handle < 0) {
        return -1;
    }
    // Another run may have removed it before it was locked here.
    struct stat status {};
    const bool isOurs = flock(handle, LOCK_EX | LOCK_NB) == 0 && fstat(handle, &status) == 0 &&
                        status.st_uid == geteuid() && status.st_nlink > 0;
    if (!isOurs) {
        close(handle);
        return -1;
    }
    return handle;
}

void removeLeftOvers() {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(kPlace, ignored)) {
        if (!entry.path().filename().string().starts_with(kStem)) {
            continue;
        }
        if (const int handle = locked(entry.path()); handle >= 0) {
            fs::remove_all(entry.path(), ignored);
            close(handle);
        }
    }
}

}  // namespace

PrivateFolder::PrivateFolder() {
    removeLeftOvers();
    // Another run may take a folder that is not locked yet for one that was left.
    while (handle_ < 0) {
        path_ = std::string(kPlace) + "/" + kStem + "XXXXXX";
        if (mkdtemp(path_.data()) == nullptr) {
            throw Fault(ExitStatus::cannotWrite,
                        std::string(kPlace) + ": cannot make a folder: " + std::strerror(errno));
        }
        handle_ = locked(path_);
    }
}

PrivateFolder::~PrivateFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
    close(handle_);
}

}  // namespace tarvo_backup
