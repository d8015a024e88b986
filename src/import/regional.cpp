#include "import/regional.h"

#include <syslog.h>

#include <optional>
#include <string>
#include <string_view>

#include "db/clauses.h"
#include "db/database.h"
#include "db/operations.h"
#include "db/schema.h"
#include "db/setting_keys.h"
#include "db/value.h"
#include "import/reporting.h"
#include "import/time_zones.h"
#include "platform/debug_log.h"
#include "platform/platform.h"
#include "text/upper_cased.h"

namespace tarvo_remote_control {

namespace {

constexpr const char* kTimeZoneFile = "/tarvo/conf/timezone/localtime";
// The language and the time offsets, from which the Time Offset Table is built.
constexpr const char* kTotFile = "/tarvo/conf/tot_file";

struct RegionalSettings {
    std::string language;
    std::string country;
    std::string timeZone;
};

bool failLogged(const std::string& line) {
    logFault(line);
    return false;
}

std::optional<std::string> storedSetting(sqlite3* db, const char* key) {
    const auto rows = tarvodb::selectByNombre(db, tarvodb::tSqlite3parent(key));
    if (rows.empty()) {
        return std::nullopt;
    }
    return rows.front()[tarvodb::configuracionWebGlobal::valor].asString();
}

std::optional<RegionalSettings> readSettings() {
    const tarvodb::Database db = tarvodb::openDatabase(tarvodb::kConfigDatabase);
    if (!db) {
        return std::nullopt;
    }
    const auto language = storedSetting(db.get(), tarvodb::setting::kLanguage);
    const auto country = storedSetting(db.get(), tarvodb::setting::kCountry);
    const auto timeZone = storedSetting(db.get(), tarvodb::setting::kTimeZone);
    if (!language || !country || !timeZone) {
        return std::nullopt;
    }
    return RegionalSettings{text::upperCased(*language), text::upperCased(*country), *timeZone};
}

std::string offsetsCommand(const std::string& country) {
    std::string command = std::string(kTimeOffsetsScript) + " 0";
    const auto zones = timeZonesOf(country);
    for (const std::string_view zone : zones) {
        command.append(" \"").append(zone).append("\"");
    }
    return zones.empty() ? command + " No" : command;
}

}  // namespace

bool applyCountryChanged() {
    platform::debugLog(LOG_DEBUG, "applyCountryChanged()");
    const auto settings = readSettings();
    if (!settings) {
        return false;
    }
    if (!platform::writeFile(kTimeZoneFile, settings->timeZone + "\n")) {
        platform::debugLog(LOG_ERR, std::string("Could not write to ") + kTimeZoneFile);
        return false;
    }
    const std::string command = offsetsCommand(settings->country);
    // Its folder is open to all: what somebody else has put there is neither written to nor read.
    platform::removeFile(kTimeOffsetsFile);
    if (const int result = platform::runShell(command); result != 0) {
        return failLogged("Error (" + std::to_string(result) +
                          ") executing get_time_offsets.sh: " + command);
    }
    const auto offsets = platform::readRegularFile(kTimeOffsetsFile);
    if (!offsets) {
        return failLogged(std::string("Could not read from ") + kTimeOffsetsFile);
    }
    platform::removeFile(kTimeOffsetsFile);
    if (!platform::writeFile(kTotFile, settings->language + "\n" + *offsets)) {
        return failLogged(std::string("Could not write to ") + kTotFile);
    }
    if (const int result = platform::runShell("/etc/init.d/S60crond restart"); result != 0) {
        return failLogged("Error (" + std::to_string(result) + ") restarting cron");
    }
    return true;
}

}  // namespace tarvo_remote_control
