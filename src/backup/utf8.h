// Characters of a text that may not be UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarvo_backup {

// The bytes of the UTF-8 character that `text` begins with, 0 when it begins with none.
std::size_t characterLength(std::string_view text);

// A control character other than the white space of texts.
bool isControl(char character);

}  // namespace tarvo_backup
