// The floor that the program is measured against: replays what a run of it did to its surroundings,
// through the same calls of SQLite's C interface, and does nothing of its own.
//
//     floor TRACE OUTPUT [FILE]
//
// TRACE is what tests/compare/trace.c wrote of the run, OUTPUT what the run printed; that is copied
// to standard output and, when it is named, to FILE, which lacks the line end behind a document.
#define _GNU_SOURCE
#include <sqlite3.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <syslog.h>
#include <unistd.h>

enum { kMaxFields = 8, kMaxConnections = 256 };

static sqlite3* connections[kMaxConnections];

static void endWith(const char* what, const char* detail) {
    fprintf(stderr, "floor: %s: %s\n", what, detail);
    exit(1);
}

static void unescape(char* text) {
    char* to = text;
    for (const char* from = text; *from != '\0'; ++from) {
        if (*from == '\\') {
            ++from;
            *to++ = (char)(*from == 't' ? '\t' : *from == 'n' ? '\n' : *from);
        } else {
            *to++ = *from;
        }
    }
    *to = '\0';
}

static sqlite3** connection(const char* name) {
    const int index = atoi(name);
    if (index < 1 || index >= kMaxConnections) {
        endWith("no such connection", name);
    }
    return &connections[index];
}

static void replayOpen(char** fields) {
    if (sqlite3_open(fields[1], connection(fields[3])) != SQLITE_OK) {
        endWith("cannot open", fields[1]);
    }
}

static void replayClose(char** fields) { sqlite3_close(*connection(fields[1])); }

static void replayExec(char** fields) {
    if (sqlite3_exec(*connection(fields[1]), fields[2], NULL, NULL, NULL) != SQLITE_OK) {
        endWith("failed", fields[2]);
    }
}

static void replayGetTable(char** fields) {
    char** cells = NULL;
    int rows = 0;
    int columns = 0;
    if (sqlite3_get_table(*connection(fields[1]), fields[2], &cells, &rows, &columns, NULL) !=
        SQLITE_OK) {
        endWith("failed", fields[2]);
    }
    sqlite3_free_table(cells);
}

static void replaySyslog(char** fields) { syslog(atoi(fields[1]), "%s", fields[2]); }

static void replayPopen(char** fields) {
    FILE* pipe = popen(fields[1], fields[2]);
    char line[128];
    while (pipe != NULL && fgets(line, sizeof line, pipe) != NULL) {
    }
    if (pipe != NULL) {
        pclose(pipe);
    }
}

static void replaySystem(char** fields) {
    if (system(fields[1]) < 0) {
        endWith("cannot run", fields[1]);
    }
}

static const struct {
    const char* kind;
    int fields;
    void (*replay)(char** fields);
} kEvents[] = {
    {"open", 4, replayOpen},           {"close", 2, replayClose},   {"exec", 3, replayExec},
    {"get_table", 3, replayGetTable},  {"syslog", 3, replaySyslog}, {"popen", 3, replayPopen},
    {"system", 2, replaySystem},
};

static void replay(char* line) {
    char* fields[kMaxFields];
    int count = 0;
    for (char* field; count < kMaxFields && (field = strsep(&line, "\t")) != NULL; ++count) {
        unescape(field);
        fields[count] = field;
    }
    for (size_t i = 0; i < sizeof kEvents / sizeof kEvents[0]; ++i) {
        if (count >= kEvents[i].fields && strcmp(fields[0], kEvents[i].kind) == 0) {
            kEvents[i].replay(fields);
        }
    }
}

static FILE* opened(const char* path, const char* mode) {
    FILE* file = fopen(path, mode);
    if (file == NULL) {
        endWith("cannot open", path);
    }
    return file;
}

int main(int argc, char** argv) {
    if (argc < 3) {
        endWith("usage", "floor TRACE OUTPUT [FILE]");
    }
    FILE* trace = opened(argv[1], "r");
    char* line = NULL;
    size_t size = 0;
    for (ssize_t length; (length = getline(&line, &size, trace)) > 0;) {
        line[length - 1] = '\0';
        replay(line);
    }
    FILE* output = opened(argv[2], "r");
    FILE* copy = argc > 3 ? opened(argv[3], "w") : NULL;
    char block[4096];
    for (size_t length; (length = fread(block, 1, sizeof block, output)) > 0;) {
        fwrite(block, 1, length, stdout);
        if (copy != NULL) {
            fwrite(block, 1, length, copy);
        }
    }
    if (copy != NULL && (fflush(copy) != 0 || ftruncate(fileno(copy), ftell(copy) - 1) != 0)) {
        endWith("cannot end", argv[3]);
    }
    return 0;
}
