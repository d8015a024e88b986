// A device for unit tests: the fake side of the platform door.
//
// Paths of the device lie in a temporary folder, time does not pass, and everything that goes
// through the door is noted in the order in which it happens.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

struct sqlite3;

namespace test {

// The last item of a list. Throws when there is none: that fails a test, and does not end them all.
template <class List>
auto last(const List& list) {
    return list.at(list.size() - 1);
}

// A row as texts; nothing is SQL NULL.
using Row = std::vector<std::optional<std::string>>;

class FakeDevice {
  public:
    // A device with the four empty databases of the schema and without any other file. One exists
    // at a time.
    FakeDevice();
    ~FakeDevice();
    FakeDevice(const FakeDevice&) = delete;
    FakeDevice& operator=(const FakeDevice&) = delete;

    // The one that exists.
    static FakeDevice& current();

    // --- Content of the device ---------------------------------------------------------------

    // Where a path of the device really is.
    [[nodiscard]] std::filesystem::path path(const std::string& devicePath) const;

    // Runs statements, unnoticed, on a database file (tarvodb::kConfigDatabase...).
    void execute(const std::string& database, const std::string& sql);

    // The rows of a select, unnoticed.
    [[nodiscard]] std::vector<Row> query(const std::string& database, const std::string& sql) const;

    void writeFile(const std::string& devicePath, const std::string& content) const;
    // Nothing when there is no such file.
    [[nodiscard]] std::optional<std::string> readFile(const std::string& devicePath) const;
    [[nodiscard]] bool exists(const std::string& devicePath) const;
    void removeFile(const std::string& devicePath) const;

    // --- What the device answers -------------------------------------------------------------

    // The output lines of a command that is read, line ends included.
    std::map<std::string, std::vector<std::string>> commandLines;

    // The results of shell commands; 0 for the others.
    std::map<std::string, int> shellResults;
    // What a shell command does to the device.
    std::map<std::string, std::function<void()>> shellEffects;

    // Lets the next `times` statements that begin with `start` fail with SQLite's `code`. With an
    // empty message SQLite gives none.
    void failStatements(const std::string& start, int times, int code,
                        const std::string& message = "it fails");

    // The same, and SQLite undoes the whole transaction by itself, as a full disk makes it do.
    void failStatementsUndoingAll(const std::string& start, int times, int code);

    // What happens on the device, once, right before the next statement that begins with `start`.
    void beforeStatement(const std::string& start, std::function<void()> effect) {
        statementEffects_.emplace_back(start, std::move(effect));
    }

    // The results of closing a database, which is closed all the same; by its path.
    std::map<std::string, int> closeResults;

    // What happens on the device while a database is opened, by its path.
    std::map<std::string, std::function<void()>> whenOpened;

    // Lets the next opens of this database give no handle.
    void failOpens(const std::string& database) { failingOpens_.push_back(database); }

    // The owners of files, by their paths; the others belong to whoever runs the test.
    std::map<std::string, unsigned> owners;
    // The program's effective user.
    unsigned user = geteuid();

    std::time_t time = 1700000000;  // 2023-11-14 22:13:20 UTC

    // --- What has happened -------------------------------------------------------------------

    // Everything in order, a line each: "sql: <statement>", "sleep: <seconds>",
    // "log <priority>: <line>", "shell: <command>", "read: <command>", "open: <path>",
    // "close: <path>", "write: <path>", "rename: <from> <to>", "remove: <path>", "sync", "perror:
    // <message>".
    [[nodiscard]] const std::vector<std::string>& events() const { return events_; }
    void forgetEvents() { events_.clear(); }
    // The events of one kind, without its name.
    [[nodiscard]] std::vector<std::string> eventsOf(const std::string& kind) const;
    [[nodiscard]] std::vector<std::string> statements() const { return eventsOf("sql: "); }
    [[nodiscard]] std::vector<std::string> sleeps() const { return eventsOf("sleep: "); }
    [[nodiscard]] std::vector<std::string> shellCommands() const { return eventsOf("shell: "); }
    // "<priority>: <line>"
    [[nodiscard]] std::vector<std::string> logLines() const { return eventsOf("log "); }

    // The databases that are open, by their handles.
    std::map<const sqlite3*, std::string> openHandles;

    // For the fake door only.
    void note(const std::string& event) { events_.push_back(event); }
    struct Failure {
        std::string start;
        int times;
        int code;
        std::string message;
        bool undoesTransaction = false;
    };
    void runEffectOf(const std::string& sql);
    [[nodiscard]] Failure* failureFor(const std::string& sql);
    [[nodiscard]] bool opensFail(const std::string& database) const;

  private:
    std::filesystem::path folder_;
    std::vector<std::string> events_;
    std::vector<Failure> failures_;
    std::vector<std::pair<std::string, std::function<void()>>> statementEffects_;
    std::vector<std::string> failingOpens_;
};

// A test on a fake device, with standard output and standard error collected. The device identity
// is unloaded at first, and the debug log off.
class DeviceTest : public testing::Test {
  protected:
    DeviceTest();
    ~DeviceTest() override;

    // Makes the controller one of this model, with serial number, MAC and host name, and loads the
    // device identity; what that did to the device is forgotten.
    void becomeModel(const std::string& model);

    [[nodiscard]] std::string out() const { return out_.str(); }
    [[nodiscard]] std::string err() const { return err_.str(); }

    FakeDevice device;

  private:
    std::ostringstream out_;
    std::ostringstream err_;
    std::streambuf* realOut_;
    std::streambuf* realErr_;
};

}  // namespace test
