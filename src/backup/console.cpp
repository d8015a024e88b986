#include "backup/console.h"

namespace tarvo_backup {

namespace {

std::string_view startOf(Style style) {
    switch (style) {
        case Style::heading:
            return "\x1b[1m";
        case Style::added:
            return "\x1b[32m";
        case Style::removed:
        case Style::error:
            return "\x1b[31m";
        case Style::changed:
        case Style::warning:
            return "\x1b[33m";
    }
    return "";
}

constexpr std::string_view kEnd = "\x1b[0m";

}  // namespace

std::string Painter::operator()(Style style, std::string_view text) const {
    return active_ ? std::string(startOf(style)).append(text).append(kEnd) : std::string(text);
}

std::string onOneLine(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string line;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\n') {
            line += "\\n";
        } else if (character == '\t') {
            line += "\\t";
        } else if (byte < 0x20 || byte == 0x7f) {
            line += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 0xfU]};
        } else {
            line += character;
        }
    }
    return line;
}

}  // namespace tarvo_backup
