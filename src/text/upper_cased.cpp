#include "text/upper_cased.h"

#include <algorithm>
#include <cctype>

namespace text {

std::string upperCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

}  // namespace text
