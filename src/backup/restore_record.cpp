#include "backup/restore_record.h"

#include <algorithm>
#include <array>
#include <limits>
#include <sstream>

#include "backup/fault.h"

namespace tarvo_backup {

namespace {

constexpr std::array kPhases{"importing", "unconfirmed", "undoing"};

[[noreturn]] void failUnderstanding(const std::string& what) {
    throw Fault(ExitStatus::cannotRead, what + " is not known");
}

// On one line, whatever is in it.
std::string encoded(const std::string& text) {
    std::string line;
    for (const char character : text) {
        if (character == '\n' || character == '\\') {
            line += '\\';
        }
        line += character == '\n' ? 'n' : character;
    }
    return line;
}

std::string decoded(const std::string& line) {
    std::string text;
    for (std::size_t place = 0; place < line.size(); ++place) {
        const bool isEscaped = line[place] == '\\' && place + 1 < line.size();
        place += isEscaped ? 1U : 0U;
        text += isEscaped && line[place] == 'n' ? '\n' : line[place];
    }
    return text;
}

// A line: a word, a blank, the rest.
struct Line {
    std::string word;
    std::string rest;
};

std::vector<Line> linesOf(const std::string& text) {
    std::vector<Line> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        const std::size_t blank = std::min(line.find(' '), line.size());
        lines.push_back({.word = line.substr(0, blank),
                         .rest = decoded(line.substr(std::min(blank + 1, line.size())))});
    }
    return lines;
}

class Lines {
  public:
    void add(const char* word, const std::string& rest) {
        text_ += word + (' ' + encoded(rest)) + '\n';
    }
    void add(const char* word, const std::vector<std::string>& list) {
        for (const std::string& each : list) {
            add(word, each);
        }
    }
    [[nodiscard]] const std::string& text() const { return text_; }

  private:
    std::string text_;
};

RestorePhase phaseNamed(const std::string& name) {
    const auto* found = std::find(kPhases.begin(), kPhases.end(), name);
    if (found == kPhases.end()) {
        failUnderstanding("the phase '" + name + "'");
    }
    return static_cast<RestorePhase>(found - kPhases.begin());
}

std::optional<long long> numberFrom(const std::string& text) {
    if (text.empty() || text.size() > std::numeric_limits<long long>::digits10 ||
        text.find_first_not_of("0123456789") != std::string::npos) {
        return std::nullopt;
    }
    return std::stoll(text);
}

long long deadlineFrom(const std::string& text) {
    const auto number = numberFrom(text);
    if (!number) {
        failUnderstanding("the deadline '" + text + "'");
    }
    return *number;
}

}  // namespace

std::string textOf(const RestoreState& state) {
    Lines lines;
    lines.add("phase", kPhases.at(static_cast<std::size_t>(state.phase)));
    lines.add("id", state.id);
    lines.add("document", state.document);
    lines.add("deadline", std::to_string(state.deadline));
    lines.add("boot", state.boot);
    lines.add("serial", state.serialNumber);
    lines.add("script", state.scripts);
    lines.add("copied", state.copied);
    lines.add("absent", state.absent);
    lines.add("kept", state.kept);
    return lines.text();
}

RestoreState restoreStateFrom(const std::string& text) {
    RestoreState state;
    bool hasPhase = false;
    for (const auto& [word, rest] : linesOf(text)) {
        if (word == "phase") {
            state.phase = phaseNamed(rest);
            hasPhase = true;
        } else if (word == "id") {
            state.id = rest;
        } else if (word == "document") {
            state.document = rest;
        } else if (word == "deadline") {
            state.deadline = deadlineFrom(rest);
        } else if (word == "boot") {
            state.boot = rest;
        } else if (word == "script") {
            state.scripts.push_back(rest);
        } else if (word == "copied") {
            state.copied.push_back(rest);
        } else if (word == "absent") {
            state.absent.push_back(rest);
        } else if (word == "serial") {
            state.serialNumber = rest;
        } else if (word == "kept") {
            state.kept.push_back(rest);
        }
    }
    if (!hasPhase) {
        failUnderstanding("the phase");
    }
    return state;
}

std::string textOf(const Undone& undone) {
    Lines lines;
    lines.add("document", undone.document);
    lines.add("moment", std::to_string(undone.moment));
    lines.add("kept", undone.kept);
    if (!undone.notKept.empty()) {
        lines.add("lost", undone.notKept);
    }
    return lines.text();
}

std::optional<Undone> undoneFrom(const std::string& text) {
    Undone undone;
    for (const auto& [word, rest] : linesOf(text)) {
        if (word == "document") {
            undone.document = rest;
        } else if (word == "moment") {
            undone.moment = numberFrom(rest).value_or(0);
        } else if (word == "kept") {
            undone.kept.push_back(rest);
        } else if (word == "lost") {
            undone.notKept = rest;
        }
    }
    return undone.document.empty() ? std::nullopt : std::optional(undone);
}

}  // namespace tarvo_backup
