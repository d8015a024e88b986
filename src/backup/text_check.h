// What is wrong with a document's text although the XML library takes it.
#pragma once

#include <string_view>

#include "backup/findings.h"

namespace tarvo_backup {

// Another encoding than UTF-8, closing tags that do not match, text behind a NUL, control
// characters and bytes that are not UTF-8. `text` is one that the library has parsed.
void checkText(std::string_view text, Findings& findings);

}  // namespace tarvo_backup
