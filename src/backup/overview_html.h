// An overview as a web page.
#pragma once

#include <string>
#include <string_view>

#include "backup/overview.h"

namespace tarvo_backup {

// One self-contained page: it loads nothing from elsewhere, has an anchor per section and a search
// box, and can be read on a phone and on paper.
std::string htmlPage(const Overview& overview);

// The text as HTML: markup escaped, what is not a character of a page as U+FFFD.
std::string asHtml(std::string_view text);

}  // namespace tarvo_backup
