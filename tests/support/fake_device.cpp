#include "support/fake_device.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iostream>

#include "db/database.h"
#include "device/device_identity.h"
#include "platform/debug_log.h"

namespace test {

namespace fs = std::filesystem;

namespace {

FakeDevice* currentDevice = nullptr;

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

// The empty databases are made once and copied for every test.
const fs::path& emptyDatabases() {
    struct Folder {
        fs::path path;
        Folder() {
            std::string name = (fs::temp_directory_path() / "tarvo-empty-XXXXXX").string();
            path = mkdtemp(name.data());
            for (const char* schema :
                 {"config_global", "temp_global", "vsec_global", "remote_control"}) {
                sqlite3* db = nullptr;
                sqlite3_open((path / schema).c_str(), &db);
                const std::string sql = contentOf(fs::path(TARVO_SIM_FOLDER) / "schema" /
                                                  (schema + std::string(".sql")));
                if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
                    throw std::runtime_error(sqlite3_errmsg(db));
                }
                sqlite3_close(db);
            }
        }
        ~Folder() { fs::remove_all(path); }
    };
    static const Folder folder;
    return folder.path;
}

}  // namespace

FakeDevice::FakeDevice() {
    std::string name = (fs::temp_directory_path() / "tarvo-test-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    for (const char* folder :
         {"tarvo/DB", "tarvo/conf/timezone", "tarvo/datosWeb/tablasSI", "tmp"}) {
        fs::create_directories(folder_ / folder);
    }
    const std::pair<const char*, const char*> databases[] = {
        {"config_global", tarvodb::kConfigDatabase},
        {"temp_global", tarvodb::kStateDatabase},
        {"vsec_global", tarvodb::kVsecureDatabase},
        {"remote_control", tarvodb::kCommandDatabase},
    };
    for (const auto& [schema, database] : databases) {
        fs::copy_file(emptyDatabases() / schema, path(database));
    }
    currentDevice = this;
}

FakeDevice::~FakeDevice() {
    currentDevice = nullptr;
    fs::remove_all(folder_);
}

FakeDevice& FakeDevice::current() { return *currentDevice; }

fs::path FakeDevice::path(const std::string& devicePath) const {
    return folder_ / fs::path(devicePath).relative_path();
}

void FakeDevice::execute(const std::string& database, const std::string& sql) {
    sqlite3* db = nullptr;
    sqlite3_open(path(database).c_str(), &db);
    sqlite3_exec(db, "PRAGMA synchronous = OFF", nullptr, nullptr, nullptr);
    char* message = nullptr;
    const int result = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message);
    EXPECT_EQ(result, SQLITE_OK) << (message == nullptr ? "" : message) << " in " << sql;
    sqlite3_free(message);
    sqlite3_close(db);
}

std::vector<Row> FakeDevice::query(const std::string& database, const std::string& sql) const {
    sqlite3* db = nullptr;
    sqlite3_open(path(database).c_str(), &db);
    std::vector<Row> rows;
    char* message = nullptr;
    const int result = sqlite3_exec(
        db, sql.c_str(),
        [](void* context, int columns, char** cells, char**) {
            Row row;
            for (char** cell = cells; cell != cells + columns; ++cell) {
                row.push_back(*cell == nullptr ? std::nullopt : std::optional<std::string>(*cell));
            }
            static_cast<std::vector<Row>*>(context)->push_back(std::move(row));
            return 0;
        },
        &rows, &message);
    EXPECT_EQ(result, SQLITE_OK) << (message == nullptr ? "" : message) << " in " << sql;
    sqlite3_free(message);
    sqlite3_close(db);
    return rows;
}

void FakeDevice::writeFile(const std::string& devicePath, const std::string& content) const {
    fs::create_directories(path(devicePath).parent_path());
    std::ofstream(path(devicePath), std::ios::binary) << content;
}

std::optional<std::string> FakeDevice::readFile(const std::string& devicePath) const {
    return exists(devicePath) ? std::optional(contentOf(path(devicePath))) : std::nullopt;
}

bool FakeDevice::exists(const std::string& devicePath) const {
    return fs::exists(path(devicePath));
}

void FakeDevice::removeFile(const std::string& devicePath) const {
    fs::remove_all(path(devicePath));
}

void FakeDevice::failStatements(const std::string& start, int times, int code,
                                const std::string& message) {
    failures_.push_back({start, times, code, message});
}

void FakeDevice::failStatementsUndoingAll(const std::string& start, int times, int code) {
    failures_.push_back({start, times, code, sqlite3_errstr(code), true});
}

void FakeDevice::runEffectOf(const std::string& sql) {
    const auto found = std::find_if(statementEffects_.begin(), statementEffects_.end(),
                                    [&](const auto& row) { return sql.starts_with(row.first); });
    if (found == statementEffects_.end()) {
        return;
    }
    const auto effect = std::move(found->second);
    statementEffects_.erase(found);
    effect();
}

FakeDevice::Failure* FakeDevice::failureFor(const std::string& sql) {
    for (Failure& failure : failures_) {
        if (failure.times > 0 && sql.starts_with(failure.start)) {
            --failure.times;
            return &failure;
        }
    }
    return nullptr;
}

bool FakeDevice::opensFail(const std::string& database) const {
    return std::find(failingOpens_.begin(), failingOpens_.end(), database) != failingOpens_.end();
}

std::vector<std::string> FakeDevice::eventsOf(const std::string& kind) const {
    std::vector<std::string> found;
    for (const std::string& event : events_) {
        if (event.starts_with(kind)) {
            found.push_back(event.substr(kind.size()));
        }
    }
    return found;
}

DeviceTest::DeviceTest()
    : realOut_(std::cout.rdbuf(out_.rdbuf())), realErr_(std::cerr.rdbuf(err_.rdbuf())) {
    platform::debugMask = 0;
    tarvo_remote_control::DeviceIdentity::destroyInstance();
}

DeviceTest::~DeviceTest() {
    std::cout.rdbuf(realOut_);
    std::cerr.rdbuf(realErr_);
    platform::debugMask = 0;
    tarvo_remote_control::DeviceIdentity::destroyInstance();
}

void DeviceTest::becomeModel(const std::string& model) {
    device.commandLines["/tarvo/script/SERIAL"] = {"A123\n", "OK\n"};
    device.commandLines["/tarvo/script/MAC"] = {"02:00:00:00:00:01\n", "OK\n"};
    device.commandLines["/tarvo/script/MODELO"] = {model + "\n", "OK\n"};
    device.commandLines["hostname"] = {"headend\n"};
    tarvo_remote_control::DeviceIdentity::destroyInstance();
    tarvo_remote_control::DeviceIdentity::instance().load();
    device.forgetEvents();
}

}  // namespace test
