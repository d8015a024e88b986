#include "backup/text_check.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <vector>

#include "backup/utf8.h"

namespace tarvo_backup {

namespace {

void checkCharacters(std::string_view text, Findings& findings) {
    for (std::size_t place = 0; place < text.size();) {
        const std::size_t length = characterLength(text.substr(place));
        if (length == 0) {
            findings.add(Severity::warning, place, "a byte that is not UTF-8");
        } else if (isControl(text[place])) {
            findings.add(Severity::warning, place, "a control character");
        }
        place += length == 0 ? 1 : length;
    }
}

bool isNameEnd(char character) {
    return character == '>' || character == '/' || character == ' ' || character == '\t' ||
           character == '\n' || character == '\r';
}

// The bytes are taken as they are, whatever the document's declaration says.
void checkDeclaration(std::string_view text, Findings& findings) {
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    constexpr std::string_view kStart = "<?xml";
    const std::size_t start = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    const std::string_view after = text.substr(start);
    if (!after.starts_with(kStart) || !isNameEnd(after[kStart.size()])) {
        return;
    }
    const std::string_view declaration = text.substr(0, text.find("?>"));
    const std::size_t opening = declaration.find_first_of("\"'", declaration.find("encoding"));
    if (opening == std::string_view::npos) {
        return;
    }
    const std::string_view quoted = declaration.substr(opening + 1);
    const std::string encoding(quoted.substr(0, quoted.find(declaration[opening])));
    // ASCII is UTF-8, too.
    if (!document::sameText(encoding.c_str(), "utf-8") &&
        !document::sameText(encoding.c_str(), "us-ascii")) {
        findings.add(Severity::warning, opening + 1,
                     "the encoding " + inQuotes(encoding) +
                         " is not looked at; the bytes are taken as they are");
    }
}

// Whether the code is of a character that a document may hold. The library refuses what is none of
// Unicode's.
bool isXmlCharacter(unsigned code) {
    return code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code < 0xd800) ||
           (code >= 0xe000 && code < 0xfffe) || code >= 0x10000;
}

// Whether the text between '&' and ';' stands for a character.
bool isReference(std::string_view name) {
    constexpr std::array<std::string_view, 5> kNames{"amp", "lt", "gt", "quot", "apos"};
    if (!name.starts_with('#')) {
        return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
    }
    const bool isHexadecimal = name.starts_with("#x");
    const std::string_view digits = name.substr(isHexadecimal ? 2 : 1);
    unsigned code = 0;
    // The library takes nothing behind the digits, but takes a number without any.
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), code,
                                      isHexadecimal ? 16 : 10);
    return read.ec == std::errc() && isXmlCharacter(code);
}

// Follows the tags of a text that the library has parsed, so that all of them end, and what stands
// between them.
class TagCheck {
  public:
    TagCheck(std::string_view text, Findings& findings) : text_(text), findings_(findings) {}

    void run() {
        for (std::size_t start = 0; seek("<"); start = place_) {
            checkReferences(start);
            if (startsWith("<!--")) {
                skip("-->");
            } else if (startsWith("<![CDATA[")) {
                skip("]]>");
            } else if (startsWith("<?")) {
                skip("?>");
            } else if (startsWith("<!")) {
                skip(">");
            } else if (startsWith("</")) {
                close();
            } else {
                open();
            }
        }
    }

  private:
    [[nodiscard]] bool startsWith(std::string_view start) const {
        return text_.substr(place_, start.size()) == start;
    }

    bool seek(std::string_view wanted) {
        place_ = text_.find(wanted, place_);
        return place_ != std::string_view::npos;
    }

    // In the text from `start` to here.
    void checkReferences(std::size_t start) {
        constexpr std::size_t kLongest = 16;
        const std::string_view text = text_.substr(0, place_);
        for (std::size_t place = text.find('&', start); place != std::string_view::npos;
             place = text.find('&', place + 1)) {
            const std::string_view after = text.substr(place + 1, kLongest);
            const std::size_t end = after.find(';');
            if (end == std::string_view::npos || !isReference(after.substr(0, end))) {
                findings_.add(Severity::warning, place, "an '&' that stands for no character");
            }
        }
    }

    void skip(std::string_view end) { place_ = seek(end) ? place_ + end.size() : text_.size(); }

    std::string_view name(std::size_t start) {
        std::size_t end = start;
        while (end < text_.size() && !isNameEnd(text_[end])) {
            ++end;
        }
        return text_.substr(start, end - start);
    }

    void open() {
        const std::string_view opened = name(place_ + 1);
        place_ += 1 + opened.size();
        char quote = 0;
        while (place_ < text_.size() && (quote != 0 || text_[place_] != '>')) {
            const char character = text_[place_];
            if (quote != 0) {
                quote = character == quote ? '\0' : quote;
            } else if (character == '"' || character == '\'') {
                quote = character;
            }
            ++place_;
        }
        if (text_[place_ - 1] != '/') {
            open_.push_back(opened);
        }
    }

    void close() {
        const std::string_view closed = name(place_ + 2);
        if (!open_.empty()) {
            if (open_.back() != closed) {
                findings_.add(
                    Severity::warning, place_ + 2,
                    "</" + shortened(closed) + "> closes <" + shortened(open_.back()) + ">");
            }
            open_.pop_back();
        }
        skip(">");
    }

    std::string_view text_;
    Findings& findings_;
    std::size_t place_ = 0;
    std::vector<std::string_view> open_;
};

}  // namespace

void checkText(std::string_view text, Findings& findings) {
    const std::size_t end = text.find('\0');
    if (end != std::string_view::npos) {
        findings.add(Severity::warning, end,
                     "a NUL character; the import reads nothing from here on");
        text = text.substr(0, end);
    }
    checkDeclaration(text, findings);
    checkCharacters(text, findings);
    TagCheck(text, findings).run();
}

}  // namespace tarvo_backup
