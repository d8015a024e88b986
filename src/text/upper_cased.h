// Texts in capital letters.
#pragma once

#include <string>

namespace text {

// The text with its ASCII letters as capitals.
std::string upperCased(std::string text);

}  // namespace text
