// A library to be preloaded into the program: it writes all that the program does to its
// surroundings into one ordered trace, makes the faults that a plan asks for, and lets no time
// pass.
//
// TRACE_FOLDER names a folder, which gets the files "trace", "stdout" and "stderr". An event is a
// line of fields between tabs; backslash, tab and line end are escaped. "out N" and "err N" stand
// before the first event by which the program had written N bytes in all there.
//
// TRACE_PLAN holds faults, one a line, fields between tabs. Numbers count from 1, and a fault with
// an N and a K is made at the Nth call and the K - 1 calls after it:
//   statement N K CODE MESSAGE   a statement fails and does nothing
//   text N K CODE MESSAGE TEXT   the same, counting only the statements that hold TEXT
//   open N K CODE                sqlite3_open fails; with SQLITE_NOMEM it hands out no handle
//   openDb N K                   openDb gives null
//   system N K STATUS            system() runs nothing and gives this
//   popen N K STATUS TEXT        popen() gives this text and pclose() this status; NULL: it fails
//   lock N K HOW PATH            another connection holds a lock: EXCLUSIVE, IMMEDIATE or SHARED
//   kill N                       the program dies by SIGKILL instead of the Nth statement
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <sqlite3.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

// What a function of this name does without this library.
#define REAL(name) ((__typeof__(&name))realFunction(#name))

static void* realFunction(const char* name) {
    void* function = dlsym(RTLD_NEXT, name);
    if (function == NULL) {
        fprintf(stderr, "trace: there is no %s\n", name);
        _exit(99);
    }
    return function;
}

// Not 0 while a traced function runs: what is called on its behalf is not the program's doing.
static int inside = 1;

// --- The trace -------------------------------------------------------------------------------

static int traceFile = -1;
static off_t told[3];

static void tellOutput(int standard, const char* name) {
    struct stat status;
    if (fstat(standard, &status) == 0 && status.st_size != told[standard]) {
        told[standard] = status.st_size;
        dprintf(traceFile, "%s\t%lld\n", name, (long long)status.st_size);
    }
}

// An event and its fields; NULL ends them.
static void event(const char* kind, ...) {
    const int error = errno;
    tellOutput(STDOUT_FILENO, "out");
    tellOutput(STDERR_FILENO, "err");
    char* text = NULL;
    size_t length = 0;
    FILE* line = open_memstream(&text, &length);
    fputs(kind, line);
    va_list fields;
    va_start(fields, kind);
    for (const char* field; (field = va_arg(fields, const char*)) != NULL;) {
        fputc('\t', line);
        for (; *field != '\0'; ++field) {
            switch (*field) {
                case '\\':
                    fputs("\\\\", line);
                    break;
                case '\t':
                    fputs("\\t", line);
                    break;
                case '\n':
                    fputs("\\n", line);
                    break;
                default:
                    fputc(*field, line);
            }
        }
    }
    va_end(fields);
    fputc('\n', line);
    fclose(line);
    if (write(traceFile, text, length) != (ssize_t)length) {
        _exit(99);
    }
    free(text);
    errno = error;
}

// The text of a number, to be used before the next dozen of them.
static const char* number(long long value) {
    static char texts[12][24];
    static unsigned next;
    char* text = texts[next++ % 12];
    snprintf(text, sizeof texts[0], "%lld", value);
    return text;
}

static const char* shown(const char* text) { return text == NULL ? "NULL" : text; }

// --- The plan --------------------------------------------------------------------------------

struct Fault {
    char* fields[6];  // the kind first; "" where there is none
    long first, count, seen;
};

static struct Fault faults[16];
static int faultCount;

static void readPlan(const char* plan) {
    char* rest = strdup(plan);
    for (char* line; (line = strsep(&rest, "\n")) != NULL && faultCount < 16;) {
        struct Fault* fault = &faults[faultCount++];
        // The last field may hold tabs.
        for (int i = 0; i < 6; ++i) {
            fault->fields[i] = line == NULL ? "" : i == 5 ? line : strsep(&line, "\t");
        }
        fault->first = atol(fault->fields[1]);
        fault->count = strcmp(fault->fields[0], "kill") == 0 ? 1 : atol(fault->fields[2]);
    }
}

static bool isKind(const struct Fault* fault, const char* kind) {
    return strcmp(fault->fields[0], kind) == 0;
}

// Counts a call for a fault. Whether the fault is due now.
static bool isDue(struct Fault* fault) {
    ++fault->seen;
    return fault->seen >= fault->first && fault->seen < fault->first + fault->count;
}

static struct Fault* dueFault(const char* kind) {
    struct Fault* due = NULL;
    for (int i = 0; i < faultCount; ++i) {
        if (isKind(&faults[i], kind) && isDue(&faults[i])) {
            due = &faults[i];
        }
    }
    return due;
}

static sqlite3* lockHolder;

static void takeLock(const char* how, const char* path) {
    if (REAL(sqlite3_open_v2)(path, &lockHolder, SQLITE_OPEN_READWRITE, NULL) != SQLITE_OK) {
        return;
    }
    char begin[64];
    const bool shared = strcmp(how, "SHARED") == 0;
    snprintf(begin, sizeof begin, "BEGIN %s", shared ? "" : how);
    REAL(sqlite3_exec)(lockHolder, begin, NULL, NULL, NULL);
    if (shared) {
        REAL(sqlite3_exec)(lockHolder, "SELECT count(*) FROM sqlite_master", NULL, NULL, NULL);
    }
}

static void dropLock(void) {
    if (lockHolder != NULL) {
        REAL(sqlite3_close)(lockHolder);
        lockHolder = NULL;
    }
}

// What stands before a statement. The fault that it fails with, if any.
static struct Fault* beforeStatement(const char* sql) {
    struct Fault* due = dueFault("statement");
    struct Fault* lock = dueFault("lock");
    if (lock == NULL) {
        dropLock();
    } else if (lockHolder == NULL) {
        event("fault", "lock", NULL);
        takeLock(lock->fields[3], lock->fields[4]);
    }
    if (dueFault("kill") != NULL) {
        event("fault", "kill", sql, NULL);
        raise(SIGKILL);
    }
    for (int i = 0; i < faultCount; ++i) {
        if (isKind(&faults[i], "text") && strstr(sql, faults[i].fields[5]) != NULL &&
            isDue(&faults[i])) {
            due = &faults[i];
        }
    }
    return due;
}

// --- Databases -------------------------------------------------------------------------------

// Connections go by a number, in the order in which they were opened.
static sqlite3* connections[256];
static int connectionCount;

static const char* connectionName(sqlite3* db) {
    for (int i = connectionCount - 1; db != NULL && i >= 0; --i) {
        if (connections[i] == db) {
            return number(i + 1);
        }
    }
    return db == NULL ? "NULL" : "unknown";
}

static void noteConnection(sqlite3* db) {
    if (db != NULL && connectionCount < 256) {
        connections[connectionCount++] = db;
    }
}

static int fail(const struct Fault* fault, char** message) {
    if (message != NULL) {
        const char* text = fault->fields[4];
        *message = *text == '\0' ? NULL : sqlite3_mprintf("%s", text);
    }
    return atoi(fault->fields[3]);
}

int sqlite3_exec(sqlite3* db, const char* sql, int (*callback)(void*, int, char**, char**),
                 void* context, char** message) {
    if (inside > 0) {
        return REAL(sqlite3_exec)(db, sql, callback, context, message);
    }
    ++inside;
    const struct Fault* fault = beforeStatement(shown(sql));
    const int code = fault != NULL ? fail(fault, message)
                                   : REAL(sqlite3_exec)(db, sql, callback, context, message);
    event("exec", connectionName(db), shown(sql), number(code),
          message == NULL ? "unasked" : shown(*message), fault == NULL ? NULL : "fault", NULL);
    --inside;
    return code;
}

int sqlite3_get_table(sqlite3* db, const char* sql, char*** cells, int* rows, int* columns,
                      char** message) {
    if (inside > 0) {
        return REAL(sqlite3_get_table)(db, sql, cells, rows, columns, message);
    }
    ++inside;
    const struct Fault* fault = beforeStatement(shown(sql));
    int code = 0;
    if (fault != NULL) {
        code = fail(fault, message);
        *cells = NULL;
    } else {
        code = REAL(sqlite3_get_table)(db, sql, cells, rows, columns, message);
    }
    event("get_table", connectionName(db), shown(sql), number(code),
          message == NULL ? "unasked" : shown(*message), fault == NULL ? NULL : "fault", NULL);
    --inside;
    return code;
}

static int openFailing(const struct Fault* fault, sqlite3** db) {
    const int code = atoi(fault->fields[3]);
    *db = NULL;
    if (code != SQLITE_NOMEM) {
        REAL(sqlite3_open)("/no such folder/file", db);
    }
    return code;
}

int sqlite3_open(const char* path, sqlite3** db) {
    if (inside > 0) {
        return REAL(sqlite3_open)(path, db);
    }
    ++inside;
    const struct Fault* fault = dueFault("open");
    const int code = fault != NULL ? openFailing(fault, db) : REAL(sqlite3_open)(path, db);
    noteConnection(*db);
    event("open", path, number(code), connectionName(*db), fault == NULL ? NULL : "fault", NULL);
    --inside;
    return code;
}

int sqlite3_open_v2(const char* path, sqlite3** db, int flags, const char* vfs) {
    if (inside > 0) {
        return REAL(sqlite3_open_v2)(path, db, flags, vfs);
    }
    ++inside;
    const int code = REAL(sqlite3_open_v2)(path, db, flags, vfs);
    noteConnection(*db);
    event("open_v2", path, number(flags), number(code), connectionName(*db), NULL);
    --inside;
    return code;
}

static int closeConnection(int (*close)(sqlite3*), const char* kind, sqlite3* db) {
    if (inside > 0) {
        return close(db);
    }
    ++inside;
    const char* name = connectionName(db);
    const int code = close(db);
    event(kind, name, number(code), NULL);
    --inside;
    return code;
}

int sqlite3_close(sqlite3* db) { return closeConnection(REAL(sqlite3_close), "close", db); }

int sqlite3_close_v2(sqlite3* db) {
    return closeConnection(REAL(sqlite3_close_v2), "close_v2", db);
}

int sqlite3_prepare_v2(sqlite3* db, const char* sql, int length, sqlite3_stmt** statement,
                       const char** rest) {
    if (inside == 0) {
        event("prepare", connectionName(db), sql, NULL);
    }
    return REAL(sqlite3_prepare_v2)(db, sql, length, statement, rest);
}

int sqlite3_busy_timeout(sqlite3* db, int milliseconds) {
    if (inside == 0) {
        event("busy_timeout", connectionName(db), number(milliseconds), NULL);
    }
    return REAL(sqlite3_busy_timeout)(db, milliseconds);
}

// The device's library: sqlite3* openDb(std::string). The text is handed over by its address, and
// its first member points to the characters.
#define OPEN_DB "_Z6openDbNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"

__attribute__((visibility("default"))) sqlite3* openDb(const char** path) __asm__(OPEN_DB);

sqlite3* openDb(const char** path) {
    const struct Fault* fault = dueFault("openDb");
    event("openDb", *path, fault == NULL ? NULL : "fault", NULL);
    return fault != NULL ? NULL : ((sqlite3 * (*)(const char**)) realFunction(OPEN_DB))(path);
}

// --- Processes -------------------------------------------------------------------------------

int system(const char* command) {
    ++inside;
    event("system", shown(command), NULL);
    const struct Fault* fault = dueFault("system");
    const int status = fault != NULL ? atoi(fault->fields[3]) : REAL(system)(command);
    event("system ends", number(status), fault == NULL ? NULL : "fault", NULL);
    --inside;
    return status;
}

static FILE* givenPipe;
static int givenStatus;

static FILE* givenText(const struct Fault* fault) {
    const char* text = fault->fields[4];
    if (strcmp(text, "NULL") == 0) {
        errno = ENOMEM;
        return NULL;
    }
    FILE* pipe = tmpfile();
    // "|" stands for a line end, which would end the fault.
    for (; *text != '\0'; ++text) {
        fputc(*text == '|' ? '\n' : *text, pipe);
    }
    rewind(pipe);
    givenPipe = pipe;
    givenStatus = atoi(fault->fields[3]);
    return pipe;
}

FILE* popen(const char* command, const char* mode) {
    ++inside;
    event("popen", command, mode, NULL);
    const struct Fault* fault = dueFault("popen");
    if (fault != NULL) {
        event("fault", "popen", NULL);
    }
    FILE* pipe = fault != NULL ? givenText(fault) : REAL(popen)(command, mode);
    --inside;
    return pipe;
}

int pclose(FILE* pipe) {
    ++inside;
    int status = givenStatus;
    if (pipe == givenPipe) {
        givenPipe = NULL;
        fclose(pipe);
    } else {
        status = REAL(pclose)(pipe);
    }
    // Without the status: that of a script which is not read to its end is a matter of chance.
    event("pclose", NULL);
    --inside;
    return status;
}

// --- The system log --------------------------------------------------------------------------

void openlog(const char* name, int options, int facility) {
    event("openlog", shown(name), number(options), number(facility), NULL);
}

void vsyslog(int priority, const char* format, va_list arguments) {
    char* text = NULL;
    if (vasprintf(&text, format, arguments) >= 0) {
        event("syslog", number(priority), text, NULL);
        free(text);
    }
}

void syslog(int priority, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vsyslog(priority, format, arguments);
    va_end(arguments);
}

void __syslog_chk(int priority, int flag, const char* format, ...) {
    (void)flag;
    va_list arguments;
    va_start(arguments, format);
    vsyslog(priority, format, arguments);
    va_end(arguments);
}

// --- Time ------------------------------------------------------------------------------------

#define NOW 1700000000

static void noteSleep(const char* unit, long long amount) {
    if (inside == 0) {
        event("sleep", number(amount), unit, NULL);
    }
}

unsigned sleep(unsigned seconds) {
    noteSleep("s", seconds);
    return 0;
}

int usleep(useconds_t microseconds) {
    noteSleep("us", microseconds);
    return 0;
}

int nanosleep(const struct timespec* wanted, struct timespec* left) {
    (void)left;
    noteSleep("ns", wanted->tv_sec * 1000000000LL + wanted->tv_nsec);
    return 0;
}

int clock_nanosleep(clockid_t clock, int flags, const struct timespec* wanted,
                    struct timespec* left) {
    (void)clock;
    (void)flags;
    return nanosleep(wanted, left);
}

time_t time(time_t* result) {
    if (result != NULL) {
        *result = NOW;
    }
    return NOW;
}

int clock_gettime(clockid_t clock, struct timespec* result) {
    if (clock != CLOCK_REALTIME) {
        return REAL(clock_gettime)(clock, result);
    }
    *result = (struct timespec){.tv_sec = NOW};
    return 0;
}

// --- Files -----------------------------------------------------------------------------------

// Reading is not traced: when and how often a file is read changes nothing.
// The last letters of a temporary file's name are drawn by lot.
static const char* settledName(const char* path, char* settled, size_t size) {
    static const char kMark[] = ".new-";
    snprintf(settled, size, "%s", path);
    char* mark = strstr(settled, kMark);
    if (mark != NULL) {
        memset(mark + strlen(kMark), 'X', strlen(mark + strlen(kMark)));
    }
    return settled;
}

static void noteFile(const char* what, const char* path, const char* detail) {
    char settled[4096];
    if (inside == 0) {
        event("file", what, settledName(path, settled, sizeof settled), detail, NULL);
    }
}

static void noteHandle(const char* what, int file) {
    char link[64];
    char path[4096];
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t length = readlink(link, path, sizeof path - 1);
    path[length < 0 ? 0 : length] = '\0';
    noteFile(what, path, NULL);
}

static void noteOpen(const char* path, int flags) {
    if ((flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0) {
        noteFile("write", path, NULL);
    }
}

static FILE* openStream(const char* function, const char* path, const char* mode) {
    if (mode[0] != 'r' || strchr(mode, '+') != NULL) {
        noteFile("write", path, NULL);
    }
    return ((__typeof__(&fopen))realFunction(function))(path, mode);
}

FILE* fopen(const char* path, const char* mode) { return openStream("fopen", path, mode); }

FILE* fopen64(const char* path, const char* mode) { return openStream("fopen64", path, mode); }

#define OPEN(name)                                     \
    int name(const char* path, int flags, ...) {       \
        va_list arguments;                             \
        va_start(arguments, flags);                    \
        const mode_t mode = va_arg(arguments, mode_t); \
        va_end(arguments);                             \
        noteOpen(path, flags);                         \
        return REAL(name)(path, flags, mode);          \
    }

OPEN(open)
OPEN(open64)

#define OPEN_AT(name)                                        \
    int name(int folder, const char* path, int flags, ...) { \
        va_list arguments;                                   \
        va_start(arguments, flags);                          \
        const mode_t mode = va_arg(arguments, mode_t);       \
        va_end(arguments);                                   \
        noteOpen(path, flags);                               \
        return REAL(name)(folder, path, flags, mode);        \
    }

OPEN_AT(openat)
OPEN_AT(openat64)

#define TEMPORARY(name, parameters, arguments) \
    int name parameters {                      \
        noteFile("write", path, NULL);         \
        return REAL(name) arguments;           \
    }

TEMPORARY(mkstemp, (char* path), (path))
TEMPORARY(mkstemp64, (char* path), (path))
TEMPORARY(mkostemp, (char* path, int flags), (path, flags))
TEMPORARY(mkostemp64, (char* path, int flags), (path, flags))

// Before the call: it tells what the program wanted, whatever comes of it.
int rename(const char* from, const char* to) {
    noteFile("rename", from, to);
    return REAL(rename)(from, to);
}

int unlink(const char* path) {
    noteFile("remove", path, NULL);
    return REAL(unlink)(path);
}

int remove(const char* path) {
    noteFile("remove", path, NULL);
    ++inside;
    const int result = REAL(remove)(path);
    --inside;
    return result;
}

// What is left out here would wait for the disks of the host.
int fsync(int file) {
    noteHandle("sync", file);
    return 0;
}

int fdatasync(int file) { return fsync(file); }

void sync(void) { noteFile("sync", "everything", NULL); }

int chmod(const char* path, mode_t mode) {
    noteFile("mode", path, number(mode));
    return REAL(chmod)(path, mode);
}

int fchmod(int file, mode_t mode) {
    noteHandle("mode", file);
    return REAL(fchmod)(file, mode);
}

// --- The start -------------------------------------------------------------------------------

static int traceFolderFile(const char* name, int above) {
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", getenv("TRACE_FOLDER"), name);
    const int opened = open(path, O_WRONLY | O_CREAT | O_APPEND, 0666);
    const int moved = opened < 0 ? -1 : fcntl(opened, F_DUPFD_CLOEXEC, above);
    if (moved < 0) {
        perror("trace");
        _exit(99);
    }
    close(opened);
    return moved;
}

static void redirect(int standard, const char* name) {
    const int file = traceFolderFile(name, 200);
    dup2(file, standard);
    close(file);
}

__attribute__((constructor)) static void start(void) {
    traceFile = traceFolderFile("trace", 200);
    redirect(STDOUT_FILENO, "stdout");
    redirect(STDERR_FILENO, "stderr");
    const char* plan = getenv("TRACE_PLAN");
    if (plan != NULL && *plan != '\0') {
        readPlan(plan);
    }
    // Scripts are not traced, nor told of the trace. A crash leaves no core file.
    for (const char* const* name =
             (const char* const[]){"LD_PRELOAD", "TRACE_FOLDER", "TRACE_PLAN", NULL};
         *name != NULL; ++name) {
        unsetenv(*name);
    }
    setrlimit(RLIMIT_CORE, &(struct rlimit){0, 0});
    inside = 0;
}
