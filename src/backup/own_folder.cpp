#include "backup/own_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "backup/console.h"
#include "backup/fault.h"
#include "platform/files.h"
#include "platform/platform.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

// With one a link's name is that of what it points to.
std::string withoutSlashAtEnd(const std::string& path) {
    return path.substr(0, std::max<std::size_t>(path.find_last_not_of('/') + 1, 1));
}

}  // namespace

void makeOwnFolder(const std::string& folder) {
    constexpr mode_t kOwner = 0700;
    constexpr mode_t kWrittenByOthers = 022;
    const auto fail = [&folder](const std::string& reason) {
        throw Fault(ExitStatus::cannotWrite, onOneLine(folder) + ": " + reason);
    };
    if (mkdir(folder.c_str(), kOwner) != 0 && errno != EEXIST) {
        fail(std::strerror(errno));
    }
    const std::string name = withoutSlashAtEnd(folder);
    std::error_code ignored;
    if (fs::is_symlink(fs::symlink_status(name, ignored))) {
        fail("is a link, not the folder itself");
    }
    const auto found = platform::files::status(name);
    if (!found.value_or(platform::FileStatus{}).isFolder) {
        fail("is no folder");
    }
    if (found->owner != geteuid() || (found->mode & kWrittenByOthers) != 0) {
        fail("must be a folder that nobody else owns or may write to");
    }
}

}  // namespace tarvo_backup
