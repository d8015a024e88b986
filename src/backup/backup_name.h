// The names of backups, which tell the host and the time: HOST-2026-11-21T0315Z.xml.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarvo_backup {

// What the names of a host's backups begin with. No two hosts have the same: what neither letter,
// digit, '-', '_' nor '.' is, and a '.' at the beginning, which would hide the file, is written as
// % and two hexadecimal digits.
std::string stemOf(std::string_view host);

// What tells the backups of a host from each other.
struct BackupName {
    std::string minute;             // "2026-11-21T0315Z"
    unsigned long long number = 1;  // within the minute; the first one's name has none

    bool operator==(const BackupName&) const = default;
};

// Nothing when no backup of the host is called `name`.
std::optional<BackupName> backupNameFrom(std::string_view name, std::string_view stem);

std::string fileName(const std::string& stem, const BackupName& name);

}  // namespace tarvo_backup
