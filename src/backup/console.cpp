#include "backup/console.h"

#include <algorithm>

#include "backup/utf8.h"

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

bool isTerminalControl(std::string_view character) {
    const auto first = static_cast<unsigned char>(character.front());
    if (character.size() == 1) {
        return first < 0x20 || first == 0x7f;
    }
    struct Range {
        char32_t first;
        char32_t last;
    };
    // The control characters, and what turns the direction of the text around it.
    constexpr Range kRanges[] = {
        {0x80, 0x9f}, {0x61c, 0x61c}, {0x200e, 0x200f}, {0x202a, 0x202e}, {0x2066, 0x2069}};
    const char32_t point = codePoint(character);
    return std::any_of(std::begin(kRanges), std::end(kRanges), [point](const Range& range) {
        return point >= range.first && point <= range.last;
    });
}

std::string twoHexDigits(char byte) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const auto number = static_cast<unsigned char>(byte);
    return {kDigits[number >> 4U], kDigits[number & 0xfU]};
}

std::string onOneLine(std::string_view text) {
    std::string line;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        text.remove_prefix(character.size());
        if (character == "\n") {
            line += "\\n";
        } else if (character == "\t") {
            line += "\\t";
        } else if (length == 0 || isTerminalControl(character)) {
            for (const char each : character) {
                line += "\\x" + twoHexDigits(each);
            }
        } else {
            line += character;
        }
    }
    return line;
}

}  // namespace tarvo_backup
