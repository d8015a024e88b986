// A library to be preloaded into a program: it counts the program's steps, which are the statements
// that it gives to SQLite and what it and SQLite do to files, and makes a fault at one of them.
//
//   STEP_AT     the number of the step, from 1
//   STEP_FAULT  kill: the program dies by SIGKILL instead
//               fail: the step fails, once
//               full: the step fails, and every later one that needs room on the disk
//               lose: a write is said to be done, and is not
//   STEP_NAME   only functions are steps whose name begins like this
//   STEP_PATH   only what has this in its path is a step
//   STEP_COUNT  a file for the number of steps that there were
//   STEP_FORKED if it is set, the steps are those of the process that the program forks, and what
//               that one sleeps takes a hundredth of the time
//
// Reading files, and standard output and error, are no steps. Programs that this one starts are left
// alone, and so are processes that it forks, unless they are asked for: there a disk that stays full
// for ten sleeps is the end.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sqlite3.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

// What a function of this name does without this library.
#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

static bool isCounting, isForked;
static long steps, faultAt;
static char fault;
static const char *onlyName, *onlyPath;

static void stopCounting(void) { isCounting = false; }
static void startCounting(void) { isCounting = isForked = true; }

__attribute__((constructor)) static void begin(void) {
    const char* at = getenv("STEP_AT");
    const char* how = getenv("STEP_FAULT");
    faultAt = at == NULL ? 0 : atol(at);
    fault = how == NULL ? '\0' : how[0] == 'f' ? how[1] : how[0];  // 'k', 'a', 'u' or 'l'
    onlyName = getenv("STEP_NAME");
    onlyPath = getenv("STEP_PATH");
    unsetenv("LD_PRELOAD");
    isCounting = getenv("STEP_FORKED") == NULL;
    pthread_atfork(NULL, NULL, isCounting ? stopCounting : startCounting);
}

__attribute__((destructor)) static void end(void) {
    const char* path = getenv("STEP_COUNT");
    if (!isCounting || path == NULL) {
        return;
    }
    isCounting = false;
    FILE* file = fopen(path, "w");
    fprintf(file, "%ld\n", steps);
    fclose(file);
}

void _exit(int status) {
    end();
    REAL(_exit)(status);
    __builtin_unreachable();
}

// Whether the step that begins now must fail. `path` is NULL for one that has none.
static bool fails(const char* name, const char* path, bool needsRoom) {
    if (!isCounting || (onlyName != NULL && strncmp(name, onlyName, strlen(onlyName)) != 0) ||
        (onlyPath != NULL && (path == NULL || strstr(path, onlyPath) == NULL))) {
        return false;
    }
    ++steps;
    if (steps == faultAt && fault == 'k') {
        kill(getpid(), SIGKILL);
    }
    const bool isDue = steps == faultAt || (fault == 'u' && needsRoom && steps > faultAt);
    if (isDue && faultAt > 0) {
        errno = ENOSPC;
        return true;
    }
    return false;
}

int nanosleep(const struct timespec* time, struct timespec* rest) {
    static int sleeps;
    if (!isForked) {
        return REAL(nanosleep)(time, rest);
    }
    if (fault == 'u' && faultAt > 0 && steps >= faultAt && ++sleeps > 10) {
        kill(getpid(), SIGKILL);
    }
    const long long nanoseconds = (time->tv_sec * 1000000000LL + time->tv_nsec) / 100;
    const struct timespec shorter = {nanoseconds / 1000000000, nanoseconds % 1000000000};
    return REAL(nanosleep)(&shorter, rest);
}

// --- Files -----------------------------------------------------------------------------------

static bool makesFile(int flags) { return (flags & O_CREAT) != 0; }

#define OPEN(name)                                            \
    int name(const char* path, int flags, ...) {              \
        va_list rest;                                         \
        va_start(rest, flags);                                \
        const mode_t mode = va_arg(rest, mode_t);             \
        va_end(rest);                                         \
        if (makesFile(flags) && fails(#name, path, true)) {                \
            return -1;                                        \
        }                                                     \
        return REAL(name)(path, flags, mode);                 \
    }
OPEN(open)
OPEN(open64)

#define STEP(type, name, parameters, arguments, path, needsRoom)                              \
    type name parameters {                                                                    \
        return fails(#name, path, needsRoom) ? (type)-1 : REAL(name) arguments;               \
    }
#define WRITE(type, name, parameters, arguments)                                              \
    type name parameters {                                                                    \
        if (file > STDERR_FILENO && fails(#name, NULL, true)) {                               \
            return fault == 'l' ? (type)size : (type)-1;                                      \
        }                                                                                     \
        return REAL(name) arguments;                                                          \
    }

WRITE(ssize_t, write, (int file, const void* from, size_t size), (file, from, size))
WRITE(ssize_t, pwrite, (int file, const void* from, size_t size, off_t at), (file, from, size, at))
WRITE(ssize_t, pwrite64, (int file, const void* from, size_t size, off64_t at),
      (file, from, size, at))
WRITE(ssize_t, sendfile, (int file, int from, off_t* at, size_t size), (file, from, at, size))
WRITE(ssize_t, sendfile64, (int file, int from, off64_t* at, size_t size), (file, from, at, size))
STEP(int, mkdir, (const char* path, mode_t mode), (path, mode), path, true)
STEP(int, mkostemp, (char* path, int flags), (path, flags), path, true)
STEP(int, mkostemp64, (char* path, int flags), (path, flags), path, true)
STEP(int, ftruncate, (int file, off_t size), (file, size), NULL, false)
STEP(int, ftruncate64, (int file, off64_t size), (file, size), NULL, false)
STEP(int, fsync, (int file), (file), NULL, false)
STEP(int, fdatasync, (int file), (file), NULL, false)
STEP(int, rename, (const char* from, const char* to), (from, to), to, false)
STEP(int, link, (const char* from, const char* to), (from, to), to, true)
STEP(int, unlink, (const char* path), (path), path, false)
STEP(int, chmod, (const char* path, mode_t mode), (path, mode), path, false)
STEP(int, fchmod, (int file, mode_t mode), (file, mode), NULL, false)
STEP(int, chdir, (const char* path), (path), path, false)
STEP(pid_t, fork, (void), (), NULL, false)

// But for private folders, which stay then, until the next run.
int remove(const char* path) {
    const bool isStep = strncmp(path, "/tmp/tarvo-backup.", 18) != 0;
    return isStep && fails("remove", path, false) ? -1 : REAL(remove)(path);
}

char* mkdtemp(char* path) {
    return fails("mkdtemp", path, true) ? NULL : REAL(mkdtemp)(path);
}

// --- Statements ------------------------------------------------------------------------------

// SQLite's own calls of sqlite3_step() and sqlite3_exec() come here too.
static _Thread_local int inside;

int sqlite3_exec(sqlite3* db, const char* sql, int (*row)(void*, int, char**, char**), void* data,
                 char** message) {
    if (inside == 0 && fails("sqlite3_exec", NULL, false)) {
        if (message != NULL) {
            *message = sqlite3_mprintf("database or disk is full");
        }
        return SQLITE_FULL;
    }
    ++inside;
    const int code = REAL(sqlite3_exec)(db, sql, row, data, message);
    --inside;
    return code;
}

int sqlite3_get_table(sqlite3* db, const char* sql, char*** cells, int* rows, int* columns,
                      char** message) {
    if (fails("sqlite3_get_table", NULL, false)) {
        *cells = NULL;
        *rows = 0;
        *columns = 0;
        if (message != NULL) {
            *message = sqlite3_mprintf("disk I/O error");
        }
        return SQLITE_IOERR;
    }
    ++inside;
    const int code = REAL(sqlite3_get_table)(db, sql, cells, rows, columns, message);
    --inside;
    return code;
}

int sqlite3_step(sqlite3_stmt* statement) {
    if (inside == 0 && fails("sqlite3_step", NULL, false)) {
        return SQLITE_IOERR;
    }
    ++inside;
    const int code = REAL(sqlite3_step)(statement);
    --inside;
    return code;
}

int sqlite3_backup_step(sqlite3_backup* backup, int pages) {
    return fails("sqlite3_backup_step", NULL, false)
               ? SQLITE_FULL
               : REAL(sqlite3_backup_step)(backup, pages);
}
