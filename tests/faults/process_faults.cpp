// In place of the C library's functions and of operator new: faults of the program's own files, of
// its standard output and of its memory; and a device that answers at once.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "fault.h"

namespace {

using faults::NotTheProgram;
using faults::run;
using faults::Step;
using faults::strikes;
using faults::Way;

template <class Function>
Function* real(const char* name, Function*) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The library's function of that name.
#define REAL(function)                                          \
    ([]() {                                                     \
        static const auto found = real(#function, &::function); \
        return found;                                           \
    }())

// --- Files --------------------------------------------------------------------------------------

bool fileStrikes() {
    if (NotTheProgram::any() || !strikes(Step::file)) {
        return false;
    }
    if (run().fault.way == Way::killed) {
        _exit(128 + 9);
    }
    errno = run().fault.code;
    return true;
}

// Files with content that is not on the disk yet.
struct Unsynced {
    std::array<ino_t, 16> files{};

    static ino_t of(int file) {
        struct stat status {};
        return fstat(file, &status) == 0 ? status.st_ino : 0;
    }
    void written(int file) {
        if (!contains(of(file))) {
            *std::find(files.begin(), files.end() - 1, ino_t{0}) = of(file);
        }
    }
    void synced(int file) { std::replace(files.begin(), files.end(), of(file), ino_t{0}); }
    [[nodiscard]] bool contains(ino_t file) const {
        return std::find(files.begin(), files.end(), file) != files.end();
    }
};

Unsynced unsynced;

// What is only read may be missing at any time, and is no matter of this test.
template <class Open>
int opened(int flags, Open open) {
    return (flags & O_ACCMODE) != O_RDONLY && fileStrikes() ? -1 : open();
}

template <class Open>
FILE* opened(const char* mode, Open open) {
    return *mode != 'r' && fileStrikes() ? nullptr : open();
}

// Half of what was to be written, when the disk is full.
template <class Write>
ssize_t written(int file, std::size_t size, Write write) {
    if (file <= STDERR_FILENO || NotTheProgram::any() || !run().armed) {
        return write(size);
    }
    if (run().fault.step == Step::file && run().fault.way == Way::full) {
        // Half of it fits; the next write finds no space.
        if (run().count + 1 == run().fault.first && size > 1) {
            strikes(Step::file);
            unsynced.written(file);
            return write(size / 2);
        }
    }
    if (fileStrikes()) {
        return -1;
    }
    unsynced.written(file);
    return write(size);
}

mode_t modeOf(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? static_cast<mode_t>(va_arg(arguments, unsigned))
                                                : 0;
}

}  // namespace

#define OPEN_WITH_MODE(function, ...)             \
    va_list arguments;                            \
    va_start(arguments, flags);                   \
    const mode_t mode = modeOf(flags, arguments); \
    va_end(arguments);                            \
    return opened(flags, [&] { return REAL(function)(__VA_ARGS__, flags, mode); })

extern "C" {

int open(const char* path, int flags, ...) { OPEN_WITH_MODE(open, path); }
int open64(const char* path, int flags, ...) { OPEN_WITH_MODE(open64, path); }
int openat(int folder, const char* path, int flags, ...) { OPEN_WITH_MODE(openat, folder, path); }

FILE* fopen(const char* path, const char* mode) {
    return opened(mode, [&] { return REAL(fopen)(path, mode); });
}
FILE* fopen64(const char* path, const char* mode) {
    return opened(mode, [&] { return REAL(fopen64)(path, mode); });
}

int mkstemp(char* path) {
    return opened(O_RDWR, [&] { return REAL(mkstemp)(path); });
}
int mkostemp(char* path, int flags) {
    return opened(O_RDWR, [&] { return REAL(mkostemp)(path, flags); });
}

ssize_t write(int file, const void* data, size_t size) {
    return written(file, size, [&](size_t amount) { return REAL(write)(file, data, amount); });
}
ssize_t writev(int file, const iovec* pieces, int count) {
    return written(file, 1, [&](size_t) { return REAL(writev)(file, pieces, count); });
}

// A file that is closed has gone, also when that fails.
int close(int file) {
    const int flags = fcntl(file, F_GETFL);
    const bool fails = flags >= 0 && (flags & O_ACCMODE) != O_RDONLY && fileStrikes();
    const int result = REAL(close)(file);
    if (fails) {
        errno = run().fault.code;
    }
    return fails ? -1 : result;
}

int fsync(int file) {
    if (NotTheProgram::any()) {
        return 0;
    }
    if (fileStrikes()) {
        return -1;
    }
    unsynced.synced(file);
    return 0;
}
int fdatasync(int file) { return fsync(file); }
void sync() {}

int rename(const char* from, const char* to) noexcept {
    struct stat status {};
    run().renamedUnsynced |= stat(from, &status) == 0 && unsynced.contains(status.st_ino);
    return fileStrikes() ? -1 : REAL(rename)(from, to);
}
int fchmod(int file, mode_t mode) noexcept { return fileStrikes() ? -1 : REAL(fchmod)(file, mode); }
int fchown(int file, uid_t owner, gid_t group) noexcept {
    return fileStrikes() ? -1 : REAL(fchown)(file, owner, group);
}

// --- Standard output ----------------------------------------------------------------------------

size_t fwrite(const void* data, size_t size, size_t count, FILE* stream) {
    if (stream == stdout && !NotTheProgram::any() && strikes(Step::output)) {
        errno = run().fault.code;
        return 0;
    }
    return REAL(fwrite)(data, size, count, stream);
}
int fflush(FILE* stream) {
    if (stream == stdout && !NotTheProgram::any() && strikes(Step::output)) {
        errno = run().fault.code;
        return EOF;
    }
    return REAL(fflush)(stream);
}

// --- The device ---------------------------------------------------------------------------------

unsigned sleep(unsigned seconds) {
    run().sleptSeconds += seconds;
    return 0;
}

int system(const char* command) {
    const NotTheProgram guard;
    faults::Run& current = run();
    const std::size_t room = current.actions.size() - current.actionsLength;
    const int length = std::snprintf(current.actions.data() + current.actionsLength, room, "%.*s\n",
                                     static_cast<int>(std::strcspn(command, "\"")), command);
    current.actionsLength =
        std::min(current.actionsLength + static_cast<std::size_t>(length), current.actions.size());
    if (std::string_view(command).starts_with("/tarvo/script/get_time_offsets.sh")) {
        const int file = REAL(open)("/tmp/temp_tot_file_web", O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (REAL(write)(file, "+01:00\n", 7) != 7) {
            std::abort();
        }
        close(file);
    }
    return 0;
}

FILE* popen(const char* command, const char*) {
    const NotTheProgram guard;
    const std::string_view script(command);
    const std::size_t name = script.starts_with("/tarvo/script/") ? script.rfind('/') + 1 : 0;
    std::array<char, 64> path{};
    std::snprintf(path.data(), path.size(), "/tarvo/sim/values/%s",
                  name == 0 ? "HOSTNAME" : command + name);
    static std::array<char, 256> text;
    FILE* value = REAL(fopen)(path.data(), "r");
    const std::size_t length =
        value == nullptr ? 0 : std::fread(text.data(), 1, text.size() - 4, value);
    if (value != nullptr) {
        std::fclose(value);
    }
    std::memcpy(text.data() + length, "OK\n", 3);
    return fmemopen(text.data(), length + 3, "r");
}
int pclose(FILE* pipe) { return std::fclose(pipe); }

void syslog(int, const char* format, ...) {
    std::array<char, 512> line{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    const std::string_view text(line.data());
    if (text.starts_with("[ERROR_DB]doSelect: Error leyendo") && text.ends_with("intento: 2\n")) {
        ++run().selectsGivenUp;
    }
}

}  // extern "C"

// --- Memory -------------------------------------------------------------------------------------

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    void* memory = !NotTheProgram::any() && strikes(Step::newMemory) ? nullptr : std::malloc(size);
    run().liveObjects += memory == nullptr ? 0 : 1;
    return memory;
}

void* operator new(std::size_t size) {
    void* memory = operator new(size, std::nothrow);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    run().liveObjects -= memory == nullptr ? 0 : 1;
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
