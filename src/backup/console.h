// The streams that a verb reads and writes, and how it writes for people.
#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <string_view>

namespace tarvo_backup {

enum class ColorMode { automatic, always, never };

// The options that every verb has.
struct OutputOptions {
    bool json = false;
    ColorMode color = ColorMode::automatic;
};

struct Console {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    bool outIsTerminal = false;
    bool errIsTerminal = false;
    // NO_COLOR is set, which counts where the color mode is automatic.
    bool colorUnwanted = false;
};

enum class Style { heading, added, removed, changed, error, warning };

// Puts texts into colours, or leaves them as they are.
class Painter {
  public:
    Painter(const Console& console, ColorMode mode)
        : active_(mode == ColorMode::always || (mode == ColorMode::automatic &&
                                                console.outIsTerminal && !console.colorUnwanted)) {}

    [[nodiscard]] std::string operator()(Style style, std::string_view text) const;

  private:
    bool active_;
};

// A character, as UTF-8, that some terminals obey: below U+0020, U+007F to U+009F, or one that
// turns the direction of a text, so that it seems to be another.
bool isTerminalControl(std::string_view character);

std::string twoHexDigits(char byte);

// The text on one line, without what a terminal takes for a command: control characters and bytes
// that are not UTF-8 as \n, \t or \x1b, a backslash as it is.
std::string onOneLine(std::string_view text);

}  // namespace tarvo_backup
