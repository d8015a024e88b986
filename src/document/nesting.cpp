#include "document/nesting.h"

#include <strings.h>

#include <algorithm>
#include <string_view>
#include <utility>

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

    // Visits the tags of elements in their order:
    //   begin(start, level) -> whether to go on; of an element at `start` with `level` around it
    //   inside(name, position)    its content begins here; not of one that is closed at once
    //   end(start)                its end tag begins here
    template <class Visitor>
    void visit(Visitor& visitor) {
        std::size_t level = 0;
        for (skipTo("<", 0); !atEnd(); skipTo("<", 0)) {
            const std::size_t start = position_;
            if (begins("</")) {
                endTag();
                if (level > 0 && !stopped_) {
                    --level;
                    visitor.end(start);
                }
            } else if (begins("<?")) {
                skipBehind("?>", 2);
            } else if (begins("<!")) {
                declaration();
            } else if (!visitor.begin(start, level)) {
                return;
            } else if (startTag()) {
                ++level;
                visitor.inside(nameAt(start + 1), position_);
            }
        }
    }

  private:
    [[nodiscard]] std::string_view nameAt(std::size_t start) const {
        const std::string_view rest = text_.substr(start);
        return rest.substr(0, rest.find_first_of(kEndOfName));
    }
    [[nodiscard]] bool atEnd() const { return position_ >= text_.size(); }
    [[nodiscard]] char here() const { return atEnd() ? '\0' : text_[position_]; }
    [[nodiscard]] bool begins(std::string_view mark) const {
        return text_.substr(position_).starts_with(mark);
    }
    void moveTo(std::size_t position) { position_ = std::min(position, text_.size()); }
    void stop() {
        position_ = text_.size();
        stopped_ = true;
    }

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
    bool stopped_ = false;
};

// Finds the first element that has too many around it.
struct DepthLimit {
    std::size_t levels;
    std::optional<std::size_t> found = {};

    bool begin(std::size_t start, std::size_t level) {
        found = level == levels ? std::optional(start) : std::nullopt;
        return !found;
    }
    void inside(std::string_view /*name*/, std::size_t /*position*/) {}
    void end(std::size_t /*start*/) {}
};

bool sameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// Finds the contents of the elements at the end of a path.
class PathContents {
  public:
    explicit PathContents(const ElementPath& path) : path_(path) {}

    static bool begin(std::size_t /*start*/, std::size_t /*level*/) { return true; }
    void inside(std::string_view name, std::size_t position) {
        const std::size_t above = open_.empty() ? 0 : open_.back().step;
        std::size_t step = 0;
        if (above >= path_.size()) {
            step = path_.size() + 1;
        } else if (sameName(name, path_[above])) {
            step = above + 1;
        } else if (sameName(name, path_.front())) {
            step = 1;
        }
        open_.push_back({step, position});
    }
    void end(std::size_t start) {
        if (open_.back().step == path_.size()) {
            found_.push_back({open_.back().begin, start});
        }
        open_.pop_back();
    }

    [[nodiscard]] std::vector<Extent> found() && { return std::move(found_); }

  private:
    struct Open {
        // Of the path, from 1; 0: none. One more than it has: within an element that is found.
        std::size_t step;
        std::size_t begin;
    };

    const ElementPath& path_;
    std::vector<Open> open_;
    std::vector<Extent> found_;
};

}  // namespace

std::optional<std::size_t> firstElementBelow(const std::string& text, std::size_t levels) {
    DepthLimit limit{levels};
    Scanner(text).visit(limit);
    return limit.found;
}

std::vector<Extent> contentsAt(const std::string& text, const ElementPath& path) {
    PathContents contents(path);
    Scanner(text).visit(contents);
    return std::move(contents).found();
}

}  // namespace document
