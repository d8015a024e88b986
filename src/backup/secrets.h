// What a document should not show to everybody.
#pragma once

#include <string>
#include <string_view>

#include "backup/document.h"

namespace tarvo_backup {

// Whether elements of the name are secret, wherever they stand, in any letter case.
bool isSecret(std::string_view name);

// Stands for a secret text, whatever its length.
inline constexpr const char* kMask = "(masked)";

// The text with the users and passwords of the addresses in it masked: "ftp://(masked)@host/path",
// and "(masked)@host" for "user:password@host".
std::string withoutCredentials(std::string_view text);

// The document with its secrets masked, inside an element `redacted`. An import finds no
// configuration in it and ends with an error, before anything is written.
std::string redacted(const Document& document);

}  // namespace tarvo_backup
