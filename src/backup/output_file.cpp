#include "backup/output_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "backup/console.h"
#include "backup/fault.h"
#include "platform/files.h"

namespace tarvo_backup {

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw Fault(ExitStatus::cannotWrite, onOneLine(path) + ": " + reason);
}

void checkContent(const std::string& path, const std::string& text) {
    if (platform::files::read(path) != text) {
        fail(path, "does not hold what was written");
    }
}

// The file's status; nothing when there is none.
std::optional<platform::FileStatus> replaceable(const std::string& path) {
    const auto found = platform::files::status(path);
    if (found && found->isFolder) {
        fail(path, std::strerror(EISDIR));
    }
    if (found && !found->isRegular) {
        fail(path, "is no regular file; - is standard output");
    }
    return found;
}

void write(const std::string& path, const std::string& text, const platform::FileAccess& access) {
    if (!platform::files::replace(path, text, access)) {
        fail(path, std::strerror(errno));
    }
    checkContent(path, text);
}

constexpr mode_t kAnybody = 0666;

unsigned modeOfNewFiles() {
    const mode_t mask = umask(0);
    umask(mask);
    return kAnybody & ~mask;
}

}  // namespace

void writeForOwner(const std::string& path, const std::string& text) {
    replaceable(path);
    write(path, text, {.mode = kOwnerOnly});
}

void writeForAll(const std::string& path, const std::string& text) {
    const auto older = replaceable(path);
    if (older) {
        write(path, text, {.mode = older->mode & kAnybody, .group = older->group});
    } else {
        write(path, text, {.mode = modeOfNewFiles()});
    }
}

bool createForOwner(const std::string& path, const std::string& text) {
    if (!platform::files::create(path, text, {.mode = kOwnerOnly})) {
        if (errno == EEXIST) {
            return false;
        }
        fail(path, std::strerror(errno));
    }
    checkContent(path, text);
    return true;
}

}  // namespace tarvo_backup
