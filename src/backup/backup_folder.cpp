#include "backup/backup_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <tuple>

#include "backup/device_run.h"
#include "backup/diff.h"
#include "backup/fault.h"
#include "backup/output_file.h"
#include "backup/progress.h"
#include "backup/sqlite.h"
#include "backup/utc_time.h"
#include "command/result_document.h"
#include "db/database.h"
#include "device/device_identity.h"
#include "platform/files.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSuffix = ".xml";
constexpr std::string_view kMinuteForm = "0000-00-00T0000Z";

[[noreturn]] void failReading(const std::string& reason) {
    throw Fault(ExitStatus::cannotRead, std::string(tarvodb::kConfigDatabase) +
                                            ": the configuration database is " + reason);
}

bool hasRows(sqlite3* db, const std::string& table) {
    const bool isThere =
        !query(db, "SELECT 1 FROM sqlite_master WHERE name = '" + table + "'").empty();
    return isThere && !query(db, "SELECT 1 FROM " + table + " LIMIT 1").empty();
}

// An export of a database that was lost succeeds too, and is empty.
void checkConfiguration(const Sandbox& sandbox) {
    const std::string copy = sandbox.mapped(tarvodb::kConfigDatabase);
    if (!fs::exists(copy)) {
        failReading("not there");
    }
    try {
        const Connection db = openConnection(copy, Access::readOnly);
        if (query(db.get(), "PRAGMA quick_check") != std::vector<Cells>{{"ok"}}) {
            failReading("damaged");
        }
        for (const char* table : {"configuracionWebGlobal", "RedesModulos"}) {
            if (!hasRows(db.get(), table)) {
                failReading(std::string("empty: nothing is in the table ") + table);
            }
        }
    } catch (const DatabaseFault& fault) {
        failReading(std::string("damaged: ") + fault.what());
    }
}

// Whether parsing the document and printing the tree gives it again.
bool readsBack(const std::string& text) {
    const Document document("backup", text);
    const XmlNode* root = document.tree().first_node();
    return root != nullptr &&
           std::string(tarvo_remote_control::kXmlDeclaration) + "\n" + document::printed(*root) ==
               text;
}

// The host's name in the names of its backups.
std::string stemOfHost() {
    std::string host = tarvo_remote_control::DeviceIdentity::instance().getHostName();
    std::replace_if(
        host.begin(), host.end(),
        [](unsigned char c) { return std::isalnum(c) == 0 && c != '-' && c != '_'; }, '_');
    return host + "-";
}

// Another host whose name goes on with a digit may keep its backups in the same folder.
bool isBackupName(const std::string& name, const std::string& stem) {
    if (!name.starts_with(stem) || !name.ends_with(kSuffix)) {
        return false;
    }
    std::string rest = name.substr(stem.size());
    std::replace_if(
        rest.begin(), rest.end(), [](unsigned char c) { return std::isdigit(c) != 0; }, '0');
    if (!rest.starts_with(kMinuteForm)) {
        return false;
    }
    // A second one of a minute has a number.
    rest = rest.substr(kMinuteForm.size());
    return rest == kSuffix || (rest.starts_with("-0") && rest.find_first_not_of('0', 1) ==
                                                             rest.size() - std::strlen(kSuffix));
}

struct Backup {
    std::string path;
    std::string minute;
    unsigned long long number = 1;  // within the minute; the first one's name has none
};

Backup backupNamed(const std::string& folder, const std::string& name, const std::string& stem) {
    const std::size_t end = stem.size() + kMinuteForm.size();
    Backup backup{.path = folder + "/" + name,
                  .minute = name.substr(stem.size(), end - stem.size())};
    if (name[end] == '-') {
        backup.number = std::strtoull(&name[end + 1], nullptr, 10);
    }
    return backup;
}

// The host's backups, oldest first.
std::vector<Backup> backupsIn(const std::string& folder, const std::string& stem) {
    std::vector<Backup> backups;
    try {
        for (const auto& entry : fs::directory_iterator(folder)) {
            const std::string name = entry.path().filename().string();
            // A pipe or a link of that name is none.
            if (isBackupName(name, stem) && fs::is_regular_file(entry.symlink_status())) {
                backups.push_back(backupNamed(folder, name, stem));
            }
        }
    } catch (const fs::filesystem_error& error) {
        throw Fault(ExitStatus::cannotWrite, folder + ": " + error.code().message());
    }
    std::sort(backups.begin(), backups.end(), [](const Backup& a, const Backup& b) {
        return std::tie(a.minute, a.number) < std::tie(b.minute, b.number);
    });
    return backups;
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
               diff(before, Document("new", document)).empty();
    } catch (const Fault&) {
        return false;  // it was damaged since
    }
}

// After all others of its minute, also where the first of them were removed.
Backup newBackup(const std::string& folder, const std::string& stem,
                 const std::vector<Backup>& backups) {
    Backup backup{.path = {}, .minute = utcText(std::time(nullptr), "%Y-%m-%dT%H%MZ")};
    for (const Backup& other : backups) {
        if (other.minute == backup.minute) {
            backup.number = other.number + 1;
        }
    }
    const std::string start = folder + "/" + stem + backup.minute;
    for (;; ++backup.number) {
        backup.path =
            start + (backup.number == 1 ? "" : "-" + std::to_string(backup.number)) + kSuffix;
        if (!fs::exists(fs::symlink_status(backup.path))) {
            return backup;
        }
    }
}

// A copy of the headend with a sound configuration.
void takeVerifiedCopy(std::optional<Sandbox>& sandbox) {
    beginStep("Copying the databases");
    sandbox.emplace();
    beginStep("Checking the databases");
    checkConfiguration(*sandbox);
}

}  // namespace

void verifyConfiguration() {
    std::optional<Sandbox> sandbox;
    takeVerifiedCopy(sandbox);
}

std::string verifiedExport() {
    std::optional<Sandbox> sandbox;
    takeVerifiedCopy(sandbox);
    loadIdentity();
    beginStep("Exporting the headend");
    std::string document = exportIn(*sandbox);
    if (!readsBack(document)) {
        throw Fault(ExitStatus::cannotRead, "the document cannot be read back as it is written");
    }
    return document;
}

void makeOwnFolder(const std::string& folder) {
    constexpr mode_t kOwner = 0700;
    constexpr mode_t kWrittenByOthers = 022;
    const auto fail = [&folder](const std::string& reason) {
        throw Fault(ExitStatus::cannotWrite, folder + ": " + reason);
    };
    if (mkdir(folder.c_str(), kOwner) != 0 && errno != EEXIST) {
        fail(std::strerror(errno));
    }
    const auto found = platform::files::status(folder);
    if (!found || !found->isFolder) {
        fail("is no folder");
    }
    if (found->owner != geteuid() || (found->mode & kWrittenByOthers) != 0) {
        fail("must be a folder that nobody else owns or may write to");
    }
}

Saved saveInto(const std::string& folder, const std::string& document,
               std::optional<std::size_t> keep) {
    // The caller may name a link.
    std::error_code failed;
    const fs::path target = fs::canonical(folder, failed);
    makeOwnFolder(failed ? folder : target.string());
    const std::string stem = stemOfHost();
    auto backups = backupsIn(folder, stem);
    Saved saved;
    saved.isUnchanged = !backups.empty() && hasSameSettings(backups.back().path, document);
    if (!saved.isUnchanged) {
        // The newest, whatever the clock says.
        backups.push_back(newBackup(folder, stem, backups));
        writeForOwner(backups.back().path, document);
    }
    saved.path = backups.back().path;
    for (std::size_t place = 0; keep && place + *keep < backups.size(); ++place) {
        if (fs::remove(backups[place].path, failed)) {
            saved.removed.push_back(backups[place].path);
        }
    }
    return saved;
}

}  // namespace tarvo_backup
