#include "device/device_identity.h"

#include <sqlite3.h>
#include <syslog.h>

#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

#include "db/clauses.h"
#include "db/database.h"
#include "db/operations.h"
#include "db/schema.h"
#include "db/setting_keys.h"
#include "db/value.h"
#include "device/models.h"
#include "platform/debug_log.h"
#include "platform/platform.h"

namespace tarvo_remote_control {

namespace {

std::unique_ptr<DeviceIdentity>& instancePointer() {
    static std::unique_ptr<DeviceIdentity> pointer;
    return pointer;
}

std::string rightTrimmed(std::string text) {
    text.erase(text.find_last_not_of(" \n\r\t") + 1);
    return text;
}

// The scripts print their value and, in a second line, whether it is good.
std::string readScript(const char* path) {
    const std::vector<std::string> lines = platform::readCommandLines(path, 2);
    return lines.size() == 2 && rightTrimmed(lines[1]) == "OK" ? rightTrimmed(lines[0]) : "";
}

std::string readHostName() {
    const std::vector<std::string> lines = platform::readCommandLines("hostname", 1);
    return lines.empty() ? "" : rightTrimmed(lines[0]);
}

// Fills `field` with what `read` gives when it is empty. Returns whether it did.
template <class Read>
bool fill(std::string& field, Read read, const char* error) {
    if (!field.empty()) {
        return false;
    }
    field = read();
    if (field.empty()) {
        platform::debugLog(LOG_ERR, error);
        throw ReadConfigError(error);
    }
    return true;
}

template <class Value>
bool assign(Value& field, Value value) {
    if (field == value) {
        return false;
    }
    field = std::move(value);
    return true;
}

std::string withTrailingSlash(std::string address) {
    if (!address.empty() && address.back() != '/') {
        address += '/';
    }
    return address;
}

}  // namespace

DeviceIdentity& DeviceIdentity::instance() {
    auto& pointer = instancePointer();
    if (!pointer) {
        pointer.reset(new DeviceIdentity);
    }
    return *pointer;
}

void DeviceIdentity::destroyInstance() { instancePointer().reset(); }

DeviceIdentity::DeviceIdentity() { std::atexit(destroyInstance); }

bool DeviceIdentity::load() {
    bool changed = !loaded_;
    const auto script = [](const char* path) { return [path] { return readScript(path); }; };
    changed |= fill(serialNumber_, script("/tarvo/script/SERIAL"), "Could not read Serial Number");
    changed |= fill(mac_, script("/tarvo/script/MAC"), "Could not read MAC");
    changed |= fill(model_, script("/tarvo/script/MODELO"), "Could not read model");
    changed |= fill(hostName_, readHostName, "Could not read hostname");

    tarvodb::Database db;
    // A failed open is read all the same: the reads fail, are logged, and leave the values.
    tarvodb::openDatabaseFile(tarvodb::kConfigDatabase, db);
    changed |= loadServerSettings(db.get());
    changed |= loadContractId(db.get());
    loaded_ = true;
    return changed;
}

bool DeviceIdentity::loadServerSettings(sqlite3* db) {
    using tarvodb::configuracionWebGlobal;
    bool changed = false;
    for (const auto& setting :
         tarvodb::selectByNombre(db, tarvodb::tSqlite3parent(tarvodb::setting::kServerKeys))) {
        const std::string name = setting[configuracionWebGlobal::nombre].asString();
        const tarvodb::tSqlite3parent& value = setting[configuracionWebGlobal::valor];
        if (name == tarvodb::setting::kServerActive) {
            changed |= assign(remoteControlActive_, value.asString() == "1");
        } else if (name == tarvodb::setting::kServerInterval) {
            changed |= assign(remoteControlInterval_, value.asInt());
        } else if (name == tarvodb::setting::kServerAddress) {
            changed |= assign(remoteControlAddress_, withTrailingSlash(value.asString()));
        } else if (name == tarvodb::setting::kServerUser) {
            changed |= assign(remoteControlUser_, value.asString());
        } else if (name == tarvodb::setting::kServerPassword) {
            changed |= assign(remoteControlPassword_, value.asString());
        }
    }
    return changed;
}

bool DeviceIdentity::loadContractId(sqlite3* db) {
    const auto settings =
        tarvodb::selectByNombre(db, tarvodb::tSqlite3parent(tarvodb::setting::kContract));
    if (settings.empty()) {
        return false;
    }
    return assign(contractId_, settings.front()[tarvodb::configuracionWebGlobal::valor].asString());
}

bool DeviceIdentity::isFamilyA() const { return model::isFamilyA(model_); }
bool DeviceIdentity::isRNB() const { return model::isRNB(model_); }
bool DeviceIdentity::isWVXA() const { return model::isWVXA(model_); }
bool DeviceIdentity::isLMV() const { return model::isLMV(model_); }
bool DeviceIdentity::isPKD() const { return model::isPKD(model_); }
bool DeviceIdentity::isWVXB() const { return model::isWVXB(model_); }

}  // namespace tarvo_remote_control
