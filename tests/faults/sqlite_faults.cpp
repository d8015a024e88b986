// Faults below SQLite: its files, through a VFS over the real one, and its memory; and faults of
// its statements.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "db/database.h"
#include "fault.h"

namespace faults {

namespace {

constexpr int kSector = 512;

// --- What is on the disk ------------------------------------------------------------------------

using Content = std::string;

// A change of a file that has not been brought to the disk.
struct Change {
    enum class Kind { write, truncate, remove } kind;
    sqlite3_int64 at;  // the place of a write, the new size of a truncation
    Content data;
};

struct Disk {
    struct File {
        std::optional<Content> onDisk;  // nothing: the file's name is not on the disk
        std::vector<Change> pending;
    };
    std::map<std::string, File> files;
};

Disk& disk() {
    static Disk* const instance = new Disk;  // never destroyed: the process ends without goodbye
    return *instance;
}

bool recordsChanges() { return run().armed && run().fault.way == Way::powerLost; }

std::optional<Content> contentOf(const std::string& path) {
    const NotTheProgram guard;
    const int file = open(path.c_str(), O_RDONLY);
    if (file < 0) {
        return std::nullopt;
    }
    Content content;
    std::array<char, 65536> buffer{};
    for (ssize_t got = 0; (got = read(file, buffer.data(), buffer.size())) > 0;) {
        content.append(buffer.data(), static_cast<std::size_t>(got));
    }
    close(file);
    return content;
}

void replaceContent(const std::string& path, const std::optional<Content>& content) {
    unlink(path.c_str());
    if (!content) {
        return;
    }
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (write(file, content->data(), content->size()) != static_cast<ssize_t>(content->size())) {
        _exit(2);
    }
    close(file);
}

void apply(std::optional<Content>& content, const Change& change) {
    switch (change.kind) {
        case Change::Kind::remove:
            content.reset();
            return;
        case Change::Kind::truncate:
            content.emplace(content.value_or("")).resize(static_cast<std::size_t>(change.at));
            return;
        case Change::Kind::write:
            break;
    }
    const auto at = static_cast<std::size_t>(change.at);
    Content& bytes = content.emplace(content.value_or(""));
    bytes.resize(std::max(bytes.size(), at + change.data.size()));
    bytes.replace(at, change.data.size(), change.data);
}

// The file as it is known on the disk, noted before its first change.
Disk::File& noted(const std::string& path) {
    const auto [found, isNew] = disk().files.try_emplace(path);
    if (isNew) {
        found->second.onDisk = contentOf(path);
    }
    return found->second;
}

void note(const std::string& path, Change change) {
    if (recordsChanges()) {
        noted(path).pending.push_back(std::move(change));
    }
}

void noteSync(const std::string& path) {
    if (!recordsChanges()) {
        return;
    }
    Disk::File& file = noted(path);
    for (const Change& change : file.pending) {
        apply(file.onDisk, change);
    }
    file.pending.clear();
    if (!file.onDisk) {
        file.onDisk.emplace();  // empty, but its name is there
    }
}

// Each unsynced change is kept, lost, or, if it is a write, kept in some of its sectors. Seed 0
// loses all, seed 1 keeps all.
void losePower() {
    const NotTheProgram guard;
    run().armed = false;
    std::mt19937 random(run().fault.seed);
    const auto chance = [&random, seed = run().fault.seed] {
        return seed > 1 ? random() % 2 == 0 : seed == 1;
    };
    for (auto& [path, file] : disk().files) {
        for (const Change& change : file.pending) {
            if (change.kind != Change::Kind::write) {
                if (chance()) {
                    apply(file.onDisk, change);
                }
                continue;
            }
            for (std::size_t start = 0; start < change.data.size(); start += kSector) {
                if (chance()) {
                    apply(file.onDisk,
                          {Change::Kind::write, change.at + static_cast<sqlite3_int64>(start),
                           change.data.substr(start, kSector)});
                }
            }
        }
        replaceContent(path, file.onDisk);
    }
    _exit(128 + 9);
}

// --- The VFS ------------------------------------------------------------------------------------

sqlite3_vfs* realVfs = nullptr;

// SQLite's file, with the real one behind it in the same memory.
struct File {
    sqlite3_file base;
    const char* path;  // SQLite keeps the name as long as the file is open; null for a passing file
};

sqlite3_file* realOf(sqlite3_file* file) {
    return reinterpret_cast<sqlite3_file*>(reinterpret_cast<File*>(file) + 1);
}
std::string pathOf(sqlite3_file* file) {
    const char* path = reinterpret_cast<File*>(file)->path;
    return path == nullptr ? "" : path;
}

// A step that fails with a code. Nothing to do when it does not fail.
std::optional<int> refusal(Step step) {
    if (strikes(step)) {
        return run().fault.code;
    }
    return std::nullopt;
}

// The ends of the process at a change of the disk.
void mayEnd() {
    if (!strikes(Step::databaseChange)) {
        return;
    }
    if (run().fault.way == Way::powerLost) {
        losePower();
    }
    _exit(128 + 9);
}

int closeFile(sqlite3_file* file) { return realOf(file)->pMethods->xClose(realOf(file)); }

int readFile(sqlite3_file* file, void* data, int size, sqlite3_int64 at) {
    if (const auto code = refusal(Step::databaseRead)) {
        return *code;
    }
    return realOf(file)->pMethods->xRead(realOf(file), data, size, at);
}

int writeFile(sqlite3_file* file, const void* data, int size, sqlite3_int64 at) {
    const auto writeReally = [=](int amount) {
        return realOf(file)->pMethods->xWrite(realOf(file), data, amount, at);
    };
    if (strikes(Step::databaseWrite)) {
        if (run().fault.way == Way::full) {
            writeReally(size / 2);
        }
        return run().fault.code;
    }
    if (run().fault.step == Step::databaseChange) {
        if (run().fault.way == Way::killed && run().armed && run().count + 1 == run().fault.first) {
            writeReally(size / 2);
        }
        mayEnd();
        note(pathOf(file),
             {Change::Kind::write, at,
              Content(static_cast<const char*>(data), static_cast<std::size_t>(size))});
    }
    return writeReally(size);
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
    if (const auto code = refusal(Step::databaseTruncate)) {
        return *code;
    }
    mayEnd();
    note(pathOf(file), {Change::Kind::truncate, size, {}});
    return realOf(file)->pMethods->xTruncate(realOf(file), size);
}

int syncFile(sqlite3_file* file, int) {
    if (const auto code = refusal(Step::databaseSync)) {
        return *code;
    }
    mayEnd();
    noteSync(pathOf(file));
    return SQLITE_OK;
}

int sizeOfFile(sqlite3_file* file, sqlite3_int64* size) {
    return realOf(file)->pMethods->xFileSize(realOf(file), size);
}

int lockFile(sqlite3_file* file, int level) {
    if (const auto code = refusal(Step::databaseLock)) {
        return *code;
    }
    return realOf(file)->pMethods->xLock(realOf(file), level);
}

int unlockFile(sqlite3_file* file, int level) {
    return realOf(file)->pMethods->xUnlock(realOf(file), level);
}

int checkReservedLock(sqlite3_file* file, int* result) {
    return realOf(file)->pMethods->xCheckReservedLock(realOf(file), result);
}

int fileControl(sqlite3_file* file, int operation, void* argument) {
    return realOf(file)->pMethods->xFileControl(realOf(file), operation, argument);
}

int sectorSize(sqlite3_file*) { return kSector; }

int deviceCharacteristics(sqlite3_file* file) {
    return realOf(file)->pMethods->xDeviceCharacteristics(realOf(file));
}

int shmMap(sqlite3_file* file, int region, int size, int extend, void volatile** memory) {
    return realOf(file)->pMethods->xShmMap(realOf(file), region, size, extend, memory);
}

int shmLock(sqlite3_file* file, int offset, int count, int flags) {
    if ((flags & SQLITE_SHM_LOCK) != 0) {
        if (const auto code = refusal(Step::databaseLock)) {
            return *code;
        }
    }
    return realOf(file)->pMethods->xShmLock(realOf(file), offset, count, flags);
}

void shmBarrier(sqlite3_file* file) { realOf(file)->pMethods->xShmBarrier(realOf(file)); }

int shmUnmap(sqlite3_file* file, int remove) {
    return realOf(file)->pMethods->xShmUnmap(realOf(file), remove);
}

constexpr sqlite3_io_methods kMethods = {
    .iVersion = 2,
    .xClose = closeFile,
    .xRead = readFile,
    .xWrite = writeFile,
    .xTruncate = truncateFile,
    .xSync = syncFile,
    .xFileSize = sizeOfFile,
    .xLock = lockFile,
    .xUnlock = unlockFile,
    .xCheckReservedLock = checkReservedLock,
    .xFileControl = fileControl,
    .xSectorSize = sectorSize,
    .xDeviceCharacteristics = deviceCharacteristics,
    .xShmMap = shmMap,
    .xShmLock = shmLock,
    .xShmBarrier = shmBarrier,
    .xShmUnmap = shmUnmap,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

int openFile(sqlite3_vfs*, sqlite3_filename path, sqlite3_file* file, int flags, int* given) {
    const NotTheProgram guard;
    file->pMethods = nullptr;
    if (const auto code = refusal(Step::databaseOpen)) {
        return *code;
    }
    if (recordsChanges() && path != nullptr) {
        noted(path);  // before it is created
    }
    sqlite3_file* real = realOf(file);
    const int result = realVfs->xOpen(realVfs, path, real, flags, given);
    if (real->pMethods != nullptr) {
        reinterpret_cast<File*>(file)->path = path;
        file->pMethods = &kMethods;
    }
    return result;
}

int deleteFile(sqlite3_vfs*, const char* path, int) {
    const NotTheProgram guard;
    if (const auto code = refusal(Step::databaseDelete)) {
        return *code;
    }
    mayEnd();
    note(path, {Change::Kind::remove, 0, {}});
    // The folder is not brought to the disk, whatever SQLite asks for: the harder case.
    return realVfs->xDelete(realVfs, path, 0);
}

int accessFile(sqlite3_vfs*, const char* path, int flags, int* result) {
    const NotTheProgram guard;
    return realVfs->xAccess(realVfs, path, flags, result);
}

int fullPathname(sqlite3_vfs*, const char* path, int size, char* full) {
    const NotTheProgram guard;
    return realVfs->xFullPathname(realVfs, path, size, full);
}

int randomness(sqlite3_vfs*, int size, char* data) {
    const NotTheProgram guard;
    return realVfs->xRandomness(realVfs, size, data);
}

int sleepNot(sqlite3_vfs*, int microseconds) { return microseconds; }

// --- Memory -------------------------------------------------------------------------------------

sqlite3_mem_methods realMemory;

void* allocate(int size) {
    return strikes(Step::sqliteMemory) ? nullptr : realMemory.xMalloc(size);
}

void* reallocate(void* memory, int size) {
    return strikes(Step::sqliteMemory) ? nullptr : realMemory.xRealloc(memory, size);
}

// --- Statements ---------------------------------------------------------------------------------

template <class Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

int executeReally(sqlite3* db, const char* sql, sqlite3_callback callback, void* argument,
                  char** message) {
    static const auto function = real<decltype(&sqlite3_exec)>("sqlite3_exec");
    return function(db, sql, callback, argument, message);
}

bool inStatement = false;  // a statement of SQLite's own making is none of the program's

// The result of a statement that is to fail.
std::optional<int> statementFailure(sqlite3* db, char** message) {
    if (inStatement || NotTheProgram::any() || !strikes(Step::statement)) {
        return std::nullopt;
    }
    if (run().fault.way == Way::full && sqlite3_get_autocommit(db) == 0) {
        executeReally(db, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    if (message != nullptr) {
        *message = sqlite3_mprintf("%s", sqlite3_errstr(run().fault.code));
    }
    return run().fault.code;
}

}  // namespace

void interposeSqlite() {
    // As in the program, but with the statistics that tell a leak.
    tarvodb::prepareSqlite();
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 1);
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &realMemory);
    sqlite3_mem_methods memory = realMemory;
    memory.xMalloc = allocate;
    memory.xRealloc = reallocate;
    sqlite3_config(SQLITE_CONFIG_MALLOC, &memory);
    // A small piece of memory is then an allocation like any other.
    sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0);

    realVfs = sqlite3_vfs_find("unix");
    static sqlite3_vfs vfs = *realVfs;
    vfs.szOsFile = realVfs->szOsFile + static_cast<int>(sizeof(File));
    vfs.zName = "faults";
    vfs.xOpen = openFile;
    vfs.xDelete = deleteFile;
    vfs.xAccess = accessFile;
    vfs.xFullPathname = fullPathname;
    vfs.xRandomness = randomness;
    vfs.xSleep = sleepNot;
    sqlite3_vfs_register(&vfs, 1);
}

}  // namespace faults

// In place of the library's: the program's calls come here.

extern "C" int sqlite3_exec(sqlite3* db, const char* sql, sqlite3_callback callback, void* argument,
                            char** message) {
    if (const auto failure = faults::statementFailure(db, message)) {
        return *failure;
    }
    return faults::executeReally(db, sql, callback, argument, message);
}

extern "C" int sqlite3_get_table(sqlite3* db, const char* sql, char*** cells, int* rows,
                                 int* columns, char** message) {
    if (const auto failure = faults::statementFailure(db, message)) {
        *cells = nullptr;
        *rows = 0;
        *columns = 0;
        return *failure;
    }
    static const auto function = faults::real<decltype(&sqlite3_get_table)>("sqlite3_get_table");
    faults::inStatement = true;
    const int result = function(db, sql, cells, rows, columns, message);
    faults::inStatement = false;
    return result;
}
