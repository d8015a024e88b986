#include "schema/rnc.h"

#include <cctype>

namespace schema {

namespace {

// The name of any whole number; ranges are spelled out.
constexpr std::string_view kNumber = "number";

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string indented(std::string_view text) {
    std::string result = "  ";
    for (const char character : text) {
        result += character;
        if (character == '\n') {
            result += "  ";
        }
    }
    return result;
}

std::string limit(std::string_view name, int value) {
    return std::string(name) + " = " + quoted(std::to_string(value));
}

}  // namespace

std::string joined(const Patterns& parts, std::string_view separator) {
    std::string result;
    for (const std::string& part : parts) {
        result += result.empty() ? "" : separator;
        result += part;
    }
    return result;
}

std::string block(std::string_view open, const Patterns& patterns, std::string_view separator,
                  std::string_view close) {
    return std::string(open) + "\n" + indented(joined(patterns, std::string(separator) + "\n")) +
           "\n" + std::string(close);
}

std::string oneOf(const Patterns& patterns) { return joined(patterns, " | "); }

std::string exactly(std::string_view text) { return "string " + quoted(text); }

std::string inAnyCase(std::string_view text) {
    std::string pattern;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isalpha(byte) != 0) {
            pattern += {'[', static_cast<char>(std::toupper(byte)),
                        static_cast<char>(std::tolower(byte)), ']'};
        } else {
            pattern += character;
        }
    }
    return "xsd:string { pattern = " + quoted(pattern) + " }";
}

std::string number(mapping::Range range) {
    if (!range.isLimited()) {
        return std::string(kNumber);
    }
    Patterns limits;
    if (range.lowest != INT_MIN) {
        limits.push_back(limit("minInclusive", range.lowest));
    }
    if (range.highest != INT_MAX) {
        limits.push_back(limit("maxInclusive", range.highest));
    }
    return "xsd:integer { " + joined(limits, " ") + " }" + (range.contains(0) ? " | \"\"" : "");
}

std::string leaf(std::string_view name, std::string_view content) {
    return "element " + std::string(name) + " { " + std::string(content) + " }";
}

std::string definition(std::string_view name, std::string_view pattern) {
    return "\n" + std::string(name) + " =\n" + indented(pattern) + "\n";
}

std::string preamble(const Patterns& about) {
    std::string text;
    for (const std::string& line : about) {
        text += line.empty() ? "#\n" : "# " + line + "\n";
    }
    return text + definition(kNumber, "xsd:integer | \"\"");
}

}  // namespace schema
