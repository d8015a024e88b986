#include "fuzz_device.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>

#include "db/database.h"

namespace fuzz {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSample = "QRA-310";

struct DatabaseFile {
    const char* name;  // in the sample's scripts
    const char* path;
};

constexpr DatabaseFile kDatabases[] = {{"config_global", tarvodb::kConfigDatabase},
                                       {"temp_global", tarvodb::kStateDatabase},
                                       {"vsec_global", tarvodb::kVsecureDatabase},
                                       {"remote_control", tarvodb::kCommandDatabase}};

// The sample's scripts, in the order of their names.
std::vector<fs::path> sampleScripts() {
    std::vector<fs::path> scripts;
    for (const char* folder : {"common", kSample}) {
        for (const auto& entry :
             fs::directory_iterator(fs::path(TARVO_SIM_FOLDER) / "samples" / folder)) {
            if (entry.path().extension() == ".sql") {
                scripts.push_back(entry.path());
            }
        }
    }
    std::sort(scripts.begin(), scripts.end(),
              [](const fs::path& a, const fs::path& b) { return a.filename() < b.filename(); });
    return scripts;
}

std::string contentOf(const fs::path& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return std::move(content).str();
}

class Memory {
  public:
    Memory() { sqlite3_open(":memory:", &db_); }
    ~Memory() { sqlite3_close(db_); }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    void execute(const std::string& sql) {
        char* message = nullptr;
        if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
            throw std::runtime_error(message);
        }
    }
    // A database file's content.
    [[nodiscard]] std::string content(const char* schema) const {
        sqlite3_int64 size = 0;
        unsigned char* bytes = sqlite3_serialize(db_, schema, &size, 0);
        std::string content(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
        sqlite3_free(bytes);
        return content;
    }
    void attach(const std::string& schema, const std::string& content) {
        execute("ATTACH ':memory:' AS " + schema);
        const auto size = static_cast<sqlite3_int64>(content.size());
        auto* bytes = static_cast<unsigned char*>(sqlite3_malloc64(content.size()));
        std::copy(content.begin(), content.end(), bytes);
        sqlite3_deserialize(db_, schema.c_str(), bytes, size, size,
                            SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_RESIZEABLE);
    }

  private:
    sqlite3* db_ = nullptr;
};

// The contents of the sample's databases. Its scripts want all of them at once.
std::vector<std::string> sampleDatabases() {
    Memory all;
    for (const DatabaseFile& file : kDatabases) {
        Memory empty;
        empty.execute(
            contentOf(fs::path(TARVO_SIM_FOLDER) / "schema" / (file.name + std::string(".sql"))));
        all.attach(file.name, empty.content("main"));
    }
    for (const fs::path& script : sampleScripts()) {
        all.execute(contentOf(script));
    }
    std::vector<std::string> contents;
    for (const DatabaseFile& file : kDatabases) {
        contents.push_back(all.content(file.name));
    }
    return contents;
}

}  // namespace

Device::Device(const std::string& model) {
    static const std::vector<std::string> contents = sampleDatabases();
    for (std::size_t i = 0; i < std::size(kDatabases); ++i) {
        device.writeFile(kDatabases[i].path, contents[i]);
    }
    becomeModel(model);
}

void require(bool holds, const char* what) {
    if (!holds) {
        std::fputs(what, stderr);
        std::abort();
    }
}

std::uint8_t Bytes::byte() {
    if (size_ == 0) {
        return 0;
    }
    --size_;
    return *data_++;
}

std::string Bytes::text() {
    const std::size_t length = std::min<std::size_t>(byte(), size_);
    const std::string text(reinterpret_cast<const char*>(data_), length);
    data_ += length;
    size_ -= length;
    return text;
}

std::int64_t Bytes::number() {
    std::uint64_t number = 0;
    for (std::uint8_t left = byte() % 9; left > 0; --left) {
        number = number << 8U | byte();
    }
    return static_cast<std::int64_t>(number);
}

}  // namespace fuzz
