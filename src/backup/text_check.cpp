#include "backup/text_check.h"

#include <string>
#include <vector>

namespace tarvo_backup {

namespace {

// The length of the UTF-8 character that `text` begins with, 0 when it begins with none.
std::size_t characterLength(std::string_view text) {
    const auto byteAt = [text](std::size_t place) {
        return place < text.size() ? static_cast<unsigned char>(text[place]) : 0U;
    };
    struct Form {
        unsigned lowestLead;
        unsigned highestLead;
        unsigned lowestSecond;
        unsigned highestSecond;
        std::size_t length;
    };
    // Second bytes are limited where others would be overlong, surrogates or beyond U+10FFFF.
    static constexpr Form kForms[] = {
        {0xc2, 0xdf, 0x80, 0xbf, 2}, {0xe0, 0xe0, 0xa0, 0xbf, 3}, {0xe1, 0xec, 0x80, 0xbf, 3},
        {0xed, 0xed, 0x80, 0x9f, 3}, {0xee, 0xef, 0x80, 0xbf, 3}, {0xf0, 0xf0, 0x90, 0xbf, 4},
        {0xf1, 0xf3, 0x80, 0xbf, 4}, {0xf4, 0xf4, 0x80, 0x8f, 4},
    };
    if (byteAt(0) < 0x80) {
        return 1;
    }
    for (const Form& form : kForms) {
        if (byteAt(0) < form.lowestLead || byteAt(0) > form.highestLead) {
            continue;
        }
        bool isWhole = byteAt(1) >= form.lowestSecond && byteAt(1) <= form.highestSecond;
        for (std::size_t place = 2; place < form.length; ++place) {
            isWhole = isWhole && (byteAt(place) & 0xc0U) == 0x80U;
        }
        return isWhole ? form.length : 0;
    }
    return 0;
}

bool isControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return (byte < 0x20 && character != '\t' && character != '\n' && character != '\r') ||
           byte == 0x7f;
}

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

// Follows the tags of a text that the library has parsed, so that all of them end.
class TagCheck {
  public:
    TagCheck(std::string_view text, Findings& findings) : text_(text), findings_(findings) {}

    void run() {
        while (seek("<")) {
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
                    "</" + std::string(closed) + "> closes <" + std::string(open_.back()) + ">");
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
    checkCharacters(text, findings);
    TagCheck(text, findings).run();
}

}  // namespace tarvo_backup
