// Characters of a text that may not be UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarvo_backup {

// The bytes of the UTF-8 character that `text` begins with, 0 when it begins with none.
std::size_t characterLength(std::string_view text);

// The number of a character, as characterLength has found it whole.
char32_t codePoint(std::string_view character);

// A text of more than `longest` bytes without its middle, "..." as one character in its place; the
// two ends together are at most so long, and no character of them is parted.
std::string shortened(std::string_view text, std::size_t longest);

// A text of a document as it is shown in passing: in paths, in messages, beside other things.
// Whole, it could come back with each of the many elements inside the one that it names.
std::string shortened(std::string_view text);

// A control character other than the white space of texts.
bool isControl(char character);

}  // namespace tarvo_backup
