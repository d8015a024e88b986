#include "backup/backup_name.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace tarvo_backup {

namespace {

constexpr std::string_view kSuffix = ".xml";
constexpr std::string_view kMinuteForm = "0000-00-00T0000Z";

bool hasFormOfMinute(std::string_view text) {
    return std::equal(text.begin(), text.end(), kMinuteForm.begin(), kMinuteForm.end(),
                      [](char character, char form) {
                          const auto byte = static_cast<unsigned char>(character);
                          return form == '0' ? std::isdigit(byte) != 0 : character == form;
                      });
}

}  // namespace

std::string stemOf(std::string_view host) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string stem;
    for (const char character : host) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isPlain = byte < 0x80 && (std::isalnum(byte) != 0 || byte == '-' || byte == '_');
        if (isPlain || (byte == '.' && !stem.empty())) {
            stem += character;
        } else {
            stem += {'%', kDigits[byte >> 4U], kDigits[byte & 0xfU]};
        }
    }
    return stem + "-";
}

std::optional<BackupName> backupNameFrom(std::string_view name, std::string_view stem) {
    if (!name.starts_with(stem) || !name.ends_with(kSuffix) ||
        name.size() < stem.size() + kMinuteForm.size() + kSuffix.size()) {
        return std::nullopt;
    }
    const std::string_view minute = name.substr(stem.size(), kMinuteForm.size());
    // Another host whose name goes on with a digit may keep its backups in the same folder.
    if (!hasFormOfMinute(minute)) {
        return std::nullopt;
    }
    BackupName found{.minute = std::string(minute)};
    std::string_view rest = name.substr(stem.size() + minute.size());
    rest.remove_suffix(kSuffix.size());
    if (rest.empty()) {
        return found;
    }
    const char* const end = rest.data() + rest.size();
    const auto read = std::from_chars(rest.data() + 1, end, found.number);
    const bool isNumbered = rest[0] == '-' && read.ec == std::errc() && read.ptr == end;
    return isNumbered ? std::optional(found) : std::nullopt;
}

std::string fileName(const std::string& stem, const BackupName& name) {
    return stem + name.minute + (name.number == 1 ? "" : "-" + std::to_string(name.number)) +
           std::string(kSuffix);
}

}  // namespace tarvo_backup
