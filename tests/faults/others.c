// A library to be preloaded into a program: what other users and programs do meanwhile, and what a
// disk does.
//
//   OTHERS_OWN     what has this in its path belongs to another user
//   OTHERS_REMOVE  a folder with this in its path is removed when it is about to be locked, once
//   OTHERS_WRITE   a file with this in its path is there when it is about to get its name, once
//   OTHERS_RECOVER a database with this in its path is rolled back when it has just been opened to be
//                  read as a file, once: PATH.whole takes its place, and its journal goes
//   DISK_NO_LOCKS  what has this in its path cannot be locked
//   DISK_NO_LINKS  hard links are not known
//   DISK_UNREADABLE  a file with this in its path cannot be opened for reading
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

// What a function of this name does without this library.
#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

static bool isMeant(const char* variable, const char* path) {
    const char* part = getenv(variable);
    return part != NULL && strstr(path, part) != NULL;
}

// Where an open file is.
static const char* pathOf(int file) {
    static _Thread_local char path[4096];
    char link[64];
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t size = readlink(link, path, sizeof path - 1);
    path[size < 0 ? 0 : size] = '\0';
    return path;
}

#define STATUS(name, parameter, argument, status, path)       \
    int name(parameter, struct status* found) {               \
        const int result = REAL(name)(argument, found);       \
        if (result == 0 && isMeant("OTHERS_OWN", path)) {     \
            found->st_uid = geteuid() + 1;                    \
        }                                                     \
        return result;                                        \
    }

STATUS(lstat, const char* path, path, stat, path)
STATUS(lstat64, const char* path, path, stat64, path)
STATUS(fstat, int file, file, stat, pathOf(file))
STATUS(fstat64, int file, file, stat64, pathOf(file))

int flock(int file, int operation) {
    static bool isDone;
    if (!isDone && isMeant("OTHERS_REMOVE", pathOf(file))) {
        isDone = true;
        rmdir(pathOf(file));
    }
    if (isMeant("DISK_NO_LOCKS", pathOf(file))) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return REAL(flock)(file, operation);
}

int link(const char* from, const char* to) {
    static bool isDone;
    if (!isDone && isMeant("OTHERS_WRITE", to)) {
        isDone = true;
        FILE* file = fopen(to, "w");
        fputs("<configuration/>", file);
        fclose(file);
    }
    if (getenv("DISK_NO_LINKS") != NULL) {
        errno = EPERM;
        return -1;
    }
    return REAL(link)(from, to);
}

// Files are read without waiting for what they might be, unlike databases.
static void recoverOnce(const char* path, int flags) {
    static bool isDone;
    if (isDone || (flags & O_NONBLOCK) == 0 || !isMeant("OTHERS_RECOVER", path) ||
        strstr(path, "-journal") != NULL) {
        return;
    }
    isDone = true;
    char beside[4096];
    snprintf(beside, sizeof beside, "%s.whole", path);
    rename(beside, path);
    snprintf(beside, sizeof beside, "%s-journal", path);
    unlink(beside);
}

#define OPEN(name)                                                                \
    int name(const char* path, int flags, ...) {                                  \
        va_list rest;                                                             \
        va_start(rest, flags);                                                    \
        const mode_t mode = va_arg(rest, mode_t);                                 \
        va_end(rest);                                                             \
        if ((flags & O_ACCMODE) == O_RDONLY && isMeant("DISK_UNREADABLE", path)) { \
            errno = EIO;                                                          \
            return -1;                                                            \
        }                                                                         \
        const int file = REAL(name)(path, flags, mode);                           \
        recoverOnce(path, flags);                                                 \
        return file;                                                              \
    }
OPEN(open)
OPEN(open64)
