// Fails every step of the program in turn: once, three times, for ever.
//
//     sim/run --model QRA-310 -- build/release/bin/fault_loops [--samples N] [--wal] [SCENARIO...]
//
// Each run is a process of its own in the simulated device, with one fault. Whatever fails: each
// database is as before or as after, the output file is the old or the new one, a status of 0 means
// that all is stored and its actions ran, nothing leaks, nothing hangs. With samples only some N
// occurrences of each step fail, spread evenly. With --wal the databases keep a write-ahead log.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/run_modes.h"
#include "command/command.h"
#include "db/database.h"
#include "device.h"
#include "device/device_identity.h"
#include "fault.h"

// main of the program, under another name here.
int programMain(int argc, char** argv);

namespace faults {

namespace {

constexpr const char* kDocument = "/tmp/document.xml";
constexpr const char* kOldBackup = "an earlier backup";
constexpr const char* kErrorFile = "/tmp/Errors_ConfigurationXML.xml";
constexpr unsigned kHangSeconds = 60;

constexpr const char* kDatabases[] = {tarvodb::kConfigDatabase, tarvodb::kVsecureDatabase,
                                      tarvodb::kStateDatabase, tarvodb::kCommandDatabase};

// --- What is done -------------------------------------------------------------------------------

int import() {
    std::string program = "tarvo-config";
    std::string document = kDocument;
    std::array<char*, 3> arguments{program.data(), document.data(), nullptr};
    return programMain(2, arguments.data());
}

int exportBackup() {
    std::string program = "tarvo-config";
    std::array<char*, 2> arguments{program.data(), nullptr};
    return programMain(1, arguments.data());
}

class StoredCommand : public tarvo_remote_control::Command {
  public:
    using Command::Command;
    void execute() override {}
};

int storeCommand() {
    StoredCommand command;
    command.setNextTime(1700000000);
    return command.save() ? 0 : 1;
}

struct Scenario {
    const char* name;
    int (*run)();
};

constexpr Scenario kExport = {"export", exportBackup};
constexpr Scenario kScenarios[] = {{"import", import}, kExport, {"store", storeCommand}};

// --- How it fails -------------------------------------------------------------------------------

struct FaultKind {
    const char* name;
    Step step;
    Way way;
    int code;
};

constexpr FaultKind kKinds[] = {
    {"statement refused", Step::statement, Way::refused, SQLITE_BUSY},
    {"statement on a full disk", Step::statement, Way::full, SQLITE_FULL},
    {"database open", Step::databaseOpen, Way::refused, SQLITE_CANTOPEN},
    {"database read", Step::databaseRead, Way::refused, SQLITE_IOERR_READ},
    {"database write", Step::databaseWrite, Way::refused, SQLITE_IOERR_WRITE},
    {"database full", Step::databaseWrite, Way::full, SQLITE_FULL},
    {"database sync", Step::databaseSync, Way::refused, SQLITE_IOERR_FSYNC},
    {"database truncate", Step::databaseTruncate, Way::refused, SQLITE_IOERR_TRUNCATE},
    {"database delete", Step::databaseDelete, Way::refused, SQLITE_IOERR_DELETE},
    {"database locked", Step::databaseLock, Way::refused, SQLITE_BUSY},
    {"database lock", Step::databaseLock, Way::refused, SQLITE_IOERR_LOCK},
    {"memory of C++", Step::newMemory, Way::refused, 0},
    {"memory of SQLite", Step::sqliteMemory, Way::refused, 0},
    {"file error", Step::file, Way::refused, EIO},
    {"file full", Step::file, Way::full, ENOSPC},
    {"standard output", Step::output, Way::refused, ENOSPC},
};

struct EndKind {
    const char* name;
    Step step;
    Way way;
    unsigned seeds;
};

constexpr EndKind kEnds[] = {
    {"killed at a change of a database", Step::databaseChange, Way::killed, 1},
    {"killed at a file", Step::file, Way::killed, 1},
    {"power lost at a change of a database", Step::databaseChange, Way::powerLost, 4},
};

// --- A run --------------------------------------------------------------------------------------

// Standard output or standard error of the runs.
class Capture {
  public:
    explicit Capture(const char* name) : file_(memfd_create(name, 0)) {}
    ~Capture() { close(file_); }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    void clear() const {
        if (ftruncate(file_, 0) != 0 || lseek(file_, 0, SEEK_SET) != 0) {
            throw std::runtime_error("memfd");
        }
    }
    void become(int file) const { dup2(file_, file); }
    [[nodiscard]] std::string text() const {
        return contentOf("/proc/self/fd/" + std::to_string(file_)).value_or("");
    }

  private:
    int file_;
};

struct Ended {
    int status = 0;  // 128 + N after signal N
    std::string out;
    std::string err;
    std::string actions;
};

struct Leaks {
    long objects = run().liveObjects;
    sqlite3_int64 sqliteBytes = sqlite3_memory_used();
    int nextFile = [] {
        const int file = dup(STDERR_FILENO);
        close(file);
        return file;
    }();

    bool operator==(const Leaks&) const = default;
};

constexpr int kLeaked = 99;

[[noreturn]] void runAndExit(const Scenario& scenario) {
    alarm(kHangSeconds);
    const Leaks before;
    run().armed = true;
    const int status = scenario.run();
    run().armed = false;
    tarvo_remote_control::DeviceIdentity::destroyInstance();
    const Leaks after;
    // A power loss is worked out with memory of the test's own.
    if (run().fault.way != Way::powerLost && !(before == after)) {
        std::cerr << "leaked: " << after.objects - before.objects << " objects, "
                  << after.sqliteBytes - before.sqliteBytes << " bytes of SQLite, "
                  << after.nextFile - before.nextFile << " files" << std::endl;
        _exit(kLeaked);
    }
    _exit(status);
}

Ended runWith(const Scenario& scenario, const Fault& fault) {
    static const Capture out("out");
    static const Capture err("err");
    out.clear();
    err.clear();
    run() = Run{.fault = fault, .liveObjects = run().liveObjects};
    const pid_t child = fork();
    if (child == 0) {
        out.become(STDOUT_FILENO);
        err.become(STDERR_FILENO);
        runAndExit(scenario);
    }
    int status = 0;
    waitpid(child, &status, 0);
    run().armed = false;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
            out.text(),
            err.text(),
            {run().actions.data(), run().actionsLength}};
}

// --- What must hold -----------------------------------------------------------------------------

constexpr int kAborted = 128 + 6;
constexpr int kKilled = 128 + 9;

struct State {
    std::map<std::string, std::string> rows;
    std::optional<std::string> backup;

    static State ofDevice() {
        State state;
        for (const char* database : kDatabases) {
            state.rows[database] = rowsOf(database);
        }
        state.backup = contentOf(app::kOutputFile);
        return state;
    }
};

class Loop {
  public:
    Loop(const Scenario& scenario, unsigned long samples) : scenario_(scenario), samples_(samples) {
        before_ = State::ofDevice();
        files_ = Files::ofDevice();
        expected_ = runWith(scenario_, {});
        after_ = State::ofDevice();
        allFiles_ = Files::ofDevice();
        if (expected_.status != 0 || !expected_.err.empty()) {
            throw std::runtime_error(std::string(scenario.name) + " ends with " +
                                     std::to_string(expected_.status) + ": " + expected_.err);
        }
    }

    // Returns the number of runs that broke a rule.
    int all() {
        for (const FaultKind& kind : kKinds) {
            for (const unsigned long first : occurrences(kind.step)) {
                for (const unsigned long times : {1UL, 3UL, kForEver}) {
                    failsAt(kind, first, times);
                }
            }
        }
        for (const EndKind& kind : kEnds) {
            for (const unsigned long first : occurrences(kind.step)) {
                for (unsigned seed = 0; seed < kind.seeds; ++seed) {
                    endsAt(kind, first, seed);
                }
            }
        }
        std::cout << scenario_.name << ": " << runs_ << " runs, " << broken_
                  << " broke a rule, at most " << longestSleep_ << " s of sleep" << std::endl;
        return broken_;
    }

  private:
    // The occurrences of a step in an undisturbed run that are to fail.
    std::vector<unsigned long> occurrences(Step step) {
        files_.restore();
        runWith(scenario_, {.step = step, .first = kForEver});
        const unsigned long all = run().count;
        std::vector<unsigned long> chosen;
        for (unsigned long number = 1; number <= all; number += std::max(1UL, all / samples_)) {
            chosen.push_back(number);
        }
        return chosen;
    }

    void failsAt(const FaultKind& kind, unsigned long first, unsigned long times) {
        files_.restore();
        const Fault fault{kind.step, kind.way, kind.code, first, times, 0};
        const Ended ended = runWith(scenario_, fault);
        const std::string what = std::string(kind.name) + " " + std::to_string(first) +
                                 (times == kForEver ? " for ever" : " x" + std::to_string(times));
        check(what, ended, kind);
    }

    void endsAt(const EndKind& kind, unsigned long first, unsigned seed) {
        files_.restore();
        const Ended ended = runWith(scenario_, {kind.step, kind.way, 0, first, 1, seed});
        const std::string what =
            std::string(kind.name) + " " + std::to_string(first) + " seed " + std::to_string(seed);
        std::vector<std::string> wrong;
        require(wrong, ended.status == kKilled, "was not killed");
        compare(wrong, State::ofDevice());
        const Ended second = runWith(scenario_, {});
        require(wrong, second.status == 0, "the next run ends with another status");
        if (scenario_.run != storeCommand) {  // which stores another command
            require(wrong, State::ofDevice().rows == after_.rows, "the next run does not complete");
        }
        report(what, ended, wrong);
    }

    void check(const std::string& what, const Ended& ended, const FaultKind& kind) {
        std::vector<std::string> wrong;
        const bool endsForMemory = kind.step == Step::newMemory || kind.step == Step::sqliteMemory;
        require(wrong, ended.status <= 10 || (ended.status == kAborted && endsForMemory),
                "ended with " + std::to_string(ended.status));
        require(wrong, !run().renamedUnsynced, "renamed a file that is not on the disk");
        require(wrong, run().struck > 0, "the fault did not strike");
        // Rows that could not be read in three tries count as absent, and the log says so.
        if (run().selectsGivenUp == 0) {
            compare(wrong, State::ofDevice());
            if (ended.status == 0) {
                complete(wrong, ended);
            }
        }
        if (ended.status != kAborted) {
            for (const std::string& path : allFiles_.strangersIn(Files::ofDevice())) {
                require(wrong, isExcused(path), "left " + path);
            }
        }
        longestSleep_ = std::max(longestSleep_, run().sleptSeconds);
        report(what, ended, wrong);
    }

    // Each database and the output file are as before or as after.
    void compare(std::vector<std::string>& wrong, const State& now) const {
        for (const auto& [database, rows] : now.rows) {
            require(wrong, rows == before_.rows.at(database) || rows == after_.rows.at(database),
                    database + " is neither as before nor as after");
        }
        require(wrong, now.backup == before_.backup || now.backup == after_.backup,
                "the output file is neither the old nor the new one");
    }

    // What a status of 0 promises.
    void complete(std::vector<std::string>& wrong, const Ended& ended) const {
        const State now = State::ofDevice();
        for (const auto& [database, rows] : now.rows) {
            require(wrong, rows == after_.rows.at(database), database + " is not complete");
        }
        require(wrong, now.backup == after_.backup, "the output file is not the new one");
        // The result of the regional action does not count.
        if (run().struckInActions == 0) {
            require(wrong, ended.actions == expected_.actions, "actions: " + ended.actions);
        }
        if (before_.backup != after_.backup) {
            require(wrong, ended.out == expected_.out, "standard output is not complete");
        }
    }

    // SQLite keeps its journals until it can undo what is in them; the time offsets are the
    // script's file.
    static bool isExcused(const std::string& path) {
        return path == kErrorFile || path == "/tmp/temp_tot_file_web" ||
               path.ends_with("-journal") || path.ends_with("-wal") || path.ends_with("-shm");
    }

    static void require(std::vector<std::string>& wrong, bool holds, const std::string& otherwise) {
        if (!holds) {
            wrong.push_back(otherwise);
        }
    }

    void report(const std::string& what, const Ended& ended,
                const std::vector<std::string>& wrong) {
        ++runs_;
        if (wrong.empty()) {
            return;
        }
        ++broken_;
        std::cout << scenario_.name << ", " << what << ": status " << ended.status;
        for (const std::string& line : wrong) {
            std::cout << "; " << line;
        }
        std::cout << "\n" << (broken_ < 5 ? ended.err : "") << std::flush;
    }

    const Scenario& scenario_;
    unsigned long samples_;
    State before_;
    State after_;
    Files files_;
    Files allFiles_;
    Ended expected_;
    int runs_ = 0;
    int broken_ = 0;
    unsigned long longestSleep_ = 0;
};

// --- The device of a scenario -------------------------------------------------------------------

// The first element of that name, where the model has one.
void replaceIn(std::string& text, const std::string& element, const std::string& value) {
    const std::size_t start = text.find("<" + element + ">");
    if (start == std::string::npos) {
        return;
    }
    const std::size_t end = text.find("</" + element + ">", start);
    const std::size_t content = start + element.size() + 2;
    text.replace(content, end - content, value);
}

// An import wants to know the type of every input, which not every model exports.
void addInputTypes(std::string& text) {
    constexpr std::string_view kAfter = "</inputId>";
    constexpr std::string_view kSatellite = "<type>0</type>";
    if (text.find("<type>", text.find(kAfter)) < text.find("</input>")) {
        return;
    }
    for (std::size_t at = 0; (at = text.find(kAfter, at)) != std::string::npos;) {
        at += kAfter.size();
        text.insert(at, kSatellite);
    }
}

// The device's own backup with something new in most sections.
std::string changedBackup() {
    std::string text = runWith(kExport, {}).out;
    for (const auto& [element, value] : std::initializer_list<std::pair<const char*, const char*>>{
             {"headendName", "Harbour Hotel"},
             {"timezone", "Europe/Paris"},
             {"gateway", "10.20.30.1"},
             {"cellID", "18"},
             {"position", "9"},
             {"language", "fra"},
             {"attenuation", "11"},
             {"inputName", "Loud Radio"},
             {"publicKey", "AABBCC"}}) {
        replaceIn(text, element, value);
    }
    addInputTypes(text);
    return text;
}

struct Options {
    unsigned long samples = kForEver;
    bool wal = false;
    std::set<std::string> scenarios;  // none: all

    explicit Options(std::span<char*> words) {
        for (auto word = words.begin(); word != words.end(); ++word) {
            const std::string_view text(*word);
            if (text == "--samples" && word + 1 != words.end()) {
                samples = std::stoul(*++word);
            } else if (text == "--wal") {
                wal = true;
            } else {
                scenarios.emplace(text);
            }
        }
    }
    [[nodiscard]] bool wants(const Scenario& scenario) const {
        return scenarios.empty() || scenarios.contains(scenario.name);
    }
};

// Returns the number of runs that broke a rule.
int runScenarios(const Options& options) {
    makeSmall();
    if (options.wal) {
        for (const char* database : kDatabases) {
            execute(database, "PRAGMA journal_mode = WAL");
        }
    }
    std::ofstream(kDocument) << changedBackup();
    std::ofstream(app::kOutputFile) << kOldBackup;
    const Files device = Files::ofDevice();
    int broken = 0;
    for (const Scenario& scenario : kScenarios) {
        if (options.wants(scenario)) {
            device.restore();
            broken += Loop(scenario, options.samples).all();
        }
    }
    return broken;
}

}  // namespace

}  // namespace faults

int main(int argc, char** argv) {
    try {
        const faults::Options options({argv + 1, static_cast<std::size_t>(argc - 1)});
        faults::interposeSqlite();
        sqlite3_initialize();
        return faults::runScenarios(options) == 0 ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "fault_loops: " << error.what() << std::endl;
        return 2;
    }
}
