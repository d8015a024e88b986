#include "backup/backup_folder.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string_view>

#include "backup/device_run.h"
#include "backup/diff.h"
#include "backup/fault.h"
#include "backup/output_file.h"
#include "backup/progress.h"
#include "backup/sqlite.h"
#include "command/result_document.h"
#include "db/database.h"
#include "device/device_identity.h"
#include "platform/files.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSuffix = ".xml";

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
    constexpr std::string_view kTime = "0000-00-00T0000Z";
    if (!name.starts_with(stem) || !name.ends_with(kSuffix)) {
        return false;
    }
    std::string rest = name.substr(stem.size());
    std::replace_if(
        rest.begin(), rest.end(), [](unsigned char c) { return std::isdigit(c) != 0; }, '0');
    if (!rest.starts_with(kTime)) {
        return false;
    }
    // A second one of a minute has a number.
    rest = rest.substr(kTime.size());
    return rest == kSuffix || (rest.starts_with("-0") && rest.find_first_not_of('0', 1) ==
                                                             rest.size() - std::strlen(kSuffix));
}

// The host's backups, oldest first.
std::vector<fs::path> backupsIn(const std::string& folder, const std::string& stem) {
    std::vector<fs::path> backups;
    for (const auto& entry : fs::directory_iterator(folder)) {
        // Somebody else may have put a pipe there, or a link.
        if (isBackupName(entry.path().filename().string(), stem) &&
            fs::is_regular_file(entry.symlink_status())) {
            backups.push_back(entry.path());
        }
    }
    // Without the suffix, so that a second one of a minute comes after the first.
    std::sort(backups.begin(), backups.end(), [](const fs::path& a, const fs::path& b) {
        return a.stem().string() < b.stem().string();
    });
    return backups;
}

bool hasSameSettings(const fs::path& older, const std::string& document) {
    const auto text = platform::files::read(older.string());
    if (!text) {
        return false;
    }
    try {
        const Document before(older.string(), *text);
        // Without a configuration it is no backup, and one that is redacted cannot be restored.
        return before.configuration() != nullptr && !before.isRedacted() &&
               diff(before, Document("new", document)).empty();
    } catch (const Fault&) {
        return false;  // it was damaged since
    }
}

std::string freePath(const std::string& folder, const std::string& stem) {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    char minute[32];
    std::strftime(minute, sizeof minute, "%Y-%m-%dT%H%MZ", &utc);
    const std::string start = folder + "/" + stem + minute;
    std::string path = start + kSuffix;
    for (int number = 2; fs::exists(path); ++number) {
        path = start + "-" + std::to_string(number) + kSuffix;
    }
    return path;
}

void makeFolder(const std::string& folder) {
    constexpr mode_t kOwner = 0700;
    if (mkdir(folder.c_str(), kOwner) != 0 && errno != EEXIST) {
        throw Fault(ExitStatus::cannotWrite, folder + ": " + std::strerror(errno));
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

Saved saveInto(const std::string& folder, const std::string& document,
               std::optional<std::size_t> keep) {
    makeFolder(folder);
    const std::string stem = stemOfHost();
    auto backups = backupsIn(folder, stem);
    Saved saved;
    if (!backups.empty() && hasSameSettings(backups.back(), document)) {
        saved.path = backups.back().string();
        saved.isUnchanged = true;
    } else {
        saved.path = freePath(folder, stem);
        writeForOwner(saved.path, document);
        // The newest, whatever the clock says.
        backups.emplace_back(saved.path);
    }
    for (std::size_t place = 0; keep && place + *keep < backups.size(); ++place) {
        std::error_code failed;
        if (fs::remove(backups[place], failed)) {
            saved.removed.push_back(backups[place].string());
        }
    }
    return saved;
}

}  // namespace tarvo_backup
