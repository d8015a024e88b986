// The functions of platform/platform.h as Linux does them, for the doors that are made of them.
#pragma once

#include "platform/platform.h"

namespace platform::os {

sqlite3* openDatabase(const std::string& path);
int openDatabaseFile(const std::string& path, sqlite3** db);
int closeDatabase(sqlite3* db);
int executeSql(sqlite3* db, const char* sql, char** errorMessage);
int getTable(sqlite3* db, const char* sql, char*** cells, int* rows, int* columns,
             char** errorMessage);

int runShell(const std::string& command);
std::vector<std::string> readCommandLines(const std::string& command, std::size_t maxLines);
void sleepSeconds(unsigned seconds);

std::optional<FileStatus> fileStatus(const std::string& path);
unsigned effectiveUser();
std::optional<std::string> readFile(const std::string& path);
std::optional<std::string> readRegularFile(const std::string& path);
bool writeFile(const std::string& path, const std::string& content);
bool replaceFile(const std::string& path, std::span<const std::string> pieces,
                 const FileAccess& access);
void renameFile(const std::string& from, const std::string& to);
void removeFile(const std::string& path);
void syncFiles();
std::optional<std::time_t> modificationTime(const std::string& path);

bool print(std::string_view text);
void printError(std::string_view text);

std::time_t now();
void logLine(int priority, const std::string& line);
void printSystemError(const char* message);

}  // namespace platform::os
