#include "backup/output_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "backup/fault.h"
#include "platform/files.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

void writeForOwner(const std::string& path, const std::string& text) {
    constexpr unsigned kOwnerOnly = 0600;
    const auto fail = [&path](const std::string& reason) {
        throw Fault(ExitStatus::cannotWrite, path + ": " + reason);
    };
    std::error_code ignored;
    const fs::file_status found = fs::symlink_status(path, ignored);
    if (fs::is_directory(found)) {
        fail(std::strerror(EISDIR));
    }
    if (fs::exists(found) && !fs::is_regular_file(found)) {
        fail("is no regular file; - is standard output");
    }
    if (!platform::files::replace(path, text, {.mode = kOwnerOnly})) {
        fail(std::strerror(errno));
    }
    if (platform::files::read(path) != text) {
        fail("does not hold what was written");
    }
}

}  // namespace tarvo_backup
