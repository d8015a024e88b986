// Files as the door's Linux side reads and writes them, on real paths.
#pragma once

#include <optional>
#include <string>

#include "platform/platform.h"

namespace platform::files {

// The door's functions of these names.
std::optional<FileStatus> status(const std::string& path);
std::optional<std::string> read(const std::string& path);
std::optional<std::string> readRegular(const std::string& path);
bool write(const std::string& path, const std::string& content);
bool replace(const std::string& path, std::span<const std::string> pieces,
             const FileAccess& access);
inline bool replace(const std::string& path, const std::string& content, const FileAccess& access) {
    return replace(path, {&content, 1}, access);
}

// The same for a file that must be new: fails with EEXIST, whoever was quicker, where something has
// the name. On a file system without hard links somebody who writes meanwhile is replaced.
bool create(const std::string& path, const std::string& content, const FileAccess& access);

// Puts something in the place of standard streams that the program was started without: the next
// file that is opened would be there otherwise, and be written to. Writing to them fails.
void occupyStandardStreams();

}  // namespace platform::files
