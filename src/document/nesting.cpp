#include "document/nesting.h"

#include <algorithm>
#include <string_view>

namespace document {

namespace {

constexpr std::string_view kBlanks = " \n\r\t";
constexpr std::string_view kEndOfName = " \n\r\t/>?";
constexpr std::string_view kEndOfAttributeName = " \n\r\t/<>=?!";

// Reads from one mark to the next, as the XML library does. Where that would refuse the text, or
// come to its end, the scanner is at the end.
class Scanner {
  public:
    // The library reads to the first zero byte.
    explicit Scanner(const std::string& text) : text_(text.c_str()) {}

    std::optional<std::size_t> firstElementBelow(std::size_t levels) {
        std::size_t level = 0;
        for (skipTo("<", 0); !atEnd(); skipTo("<", 0)) {
            const std::size_t start = position_;
            if (begins("</")) {
                endTag();
                level -= level == 0 ? 0 : 1;
            } else if (begins("<?")) {
                skipBehind("?>", 2);
            } else if (begins("<!")) {
                declaration();
            } else if (level == levels) {
                return start;
            } else if (startTag()) {
                ++level;
            }
        }
        return std::nullopt;
    }

  private:
    [[nodiscard]] bool atEnd() const { return position_ >= text_.size(); }
    [[nodiscard]] char here() const { return atEnd() ? '\0' : text_[position_]; }
    [[nodiscard]] bool begins(std::string_view mark) const {
        return text_.substr(position_).starts_with(mark);
    }
    void moveTo(std::size_t position) { position_ = std::min(position, text_.size()); }
    void stop() { position_ = text_.size(); }

    void skipTo(std::string_view mark, std::size_t from) {
        moveTo(text_.find(mark, position_ + from));
    }
    void skipBehind(std::string_view mark, std::size_t from) {
        skipTo(mark, from);
        moveTo(position_ + mark.size());
    }
    void skipAll(std::string_view characters) {
        moveTo(text_.find_first_not_of(characters, position_));
    }
    // Whether there was anything before one of these characters.
    bool skipUntil(std::string_view characters) {
        const std::size_t start = position_;
        moveTo(text_.find_first_of(characters, position_));
        return position_ != start;
    }
    // Stops unless this character stands here.
    bool take(char character) {
        if (here() != character) {
            stop();
            return false;
        }
        ++position_;
        return true;
    }

    void endTag() {
        moveTo(position_ + 2);
        skipUntil(kEndOfName);
        skipAll(kBlanks);
        take('>');
    }

    void declaration() {
        constexpr std::string_view kDocumentType = "<!DOCTYPE";
        if (begins("<!--")) {
            skipBehind("-->", 4);
        } else if (begins("<![CDATA[")) {
            skipBehind("]]>", 9);
        } else if (begins(kDocumentType) && position_ + kDocumentType.size() < text_.size() &&
                   kBlanks.find(text_[position_ + kDocumentType.size()]) != kBlanks.npos) {
            moveTo(position_ + kDocumentType.size() + 1);
            documentType();
        } else {
            skipBehind(">", 2);
        }
    }

    // An internal subset in brackets may hold ">".
    void documentType() {
        for (skipUntil("[>"); here() == '['; skipUntil("[>")) {
            ++position_;
            for (std::size_t depth = 1; depth > 0 && !atEnd();) {
                skipUntil("[]");
                here() == '[' ? ++depth : --depth;
                moveTo(position_ + 1);
            }
        }
        take('>');
    }

    // Whether an element was opened, and not closed at once.
    bool startTag() {
        ++position_;
        if (!skipUntil(kEndOfName)) {
            stop();
            return false;
        }
        skipAll(kBlanks);
        while (!atEnd() && kEndOfAttributeName.find(here()) == kEndOfAttributeName.npos) {
            if (!attribute()) {
                return false;
            }
        }
        if (here() == '/') {
            ++position_;
            take('>');
            return false;
        }
        return take('>');
    }

    bool attribute() {
        skipUntil(kEndOfAttributeName);
        skipAll(kBlanks);
        if (!take('=')) {
            return false;
        }
        skipAll(kBlanks);
        const char quote = here();
        if (quote != '"' && quote != '\'') {
            stop();
            return false;
        }
        skipBehind(std::string_view(&quote, 1), 1);
        skipAll(kBlanks);
        return true;
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

}  // namespace

std::optional<std::size_t> firstElementBelow(const std::string& text, std::size_t levels) {
    return Scanner(text).firstElementBelow(levels);
}

}  // namespace document
