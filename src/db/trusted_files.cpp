#include "db/trusted_files.h"

#include "db/database.h"
#include "platform/platform.h"

namespace tarvodb {

namespace {

constexpr const char* kCompanions[] = {"-journal", "-wal", "-shm"};

bool isTrusted(unsigned owner) {
    if (owner == 0 || owner == platform::effectiveUser()) {
        return true;
    }
    const auto config = platform::fileStatus(kConfigDatabase);
    return config && config->isRegular && config->owner == owner;
}

std::string reasonAgainstFile(const std::string& path, const platform::FileStatus& file) {
    if (!file.isRegular) {
        return path + " is not a regular file";
    }
    if (!isTrusted(file.owner)) {
        return path + " belongs to another user (" + std::to_string(file.owner) + ")";
    }
    return "";
}

}  // namespace

std::string reasonAgainst(const std::string& path) {
    if (const auto file = platform::fileStatus(path); file && !file->isFolder) {
        if (std::string reason = reasonAgainstFile(path, *file); !reason.empty()) {
            return reason;
        }
    }
    for (const char* companion : kCompanions) {
        const std::string beside = path + companion;
        if (const auto file = platform::fileStatus(beside)) {
            if (std::string reason = reasonAgainstFile(beside, *file); !reason.empty()) {
                return reason;
            }
        }
    }
    return "";
}

}  // namespace tarvodb
