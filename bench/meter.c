// Runs a program to its end and tells what it took:
//
//     meter FILE PROGRAM [ARGUMENT...]
//
// appends a line to FILE: CPU seconds of the program and of all that it waited for, wall seconds,
// the program's peak memory in KiB, and its exit status. Small, because a new process inherits the
// peak of the one that starts it.
#define _DEFAULT_SOURCE
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static double now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + 1e-9 * (double)time.tv_nsec;
}

static double seconds(struct timeval time) {
    return (double)time.tv_sec + 1e-6 * (double)time.tv_usec;
}

int main(int argc, char** argv) {
    if (argc < 3) {
        return 2;
    }
    const double begin = now();
    const pid_t child = fork();
    if (child == 0) {
        execvp(argv[2], argv + 2);
        _exit(127);
    }
    int status = 0;
    struct rusage usage;
    if (wait4(child, &status, 0, &usage) != child) {
        return 2;
    }
    const double wall = now() - begin;
    FILE* file = fopen(argv[1], "a");
    if (file == NULL) {
        return 2;
    }
    fprintf(file, "%.6f %.6f %ld %d\n", seconds(usage.ru_utime) + seconds(usage.ru_stime), wall,
            usage.ru_maxrss, WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
    return fclose(file) == 0 ? 0 : 2;
}
