// Running the verbs of tarvo-backup, and documents for them.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "backup/command_line.h"
#include "backup/diff.h"
#include "backup/document.h"

namespace tarvo_backup {

inline Document parsed(const std::string& text) { return Document("test.xml", text); }

// A document with this inside `configuration`.
inline Document configured(const std::string& sections) {
    return parsed("<configuration>" + sections + "</configuration>");
}

struct Ran {
    ExitStatus status;
    std::string out;
    std::string err;
};

// Runs the program with `arguments`, `input` being its standard input.
inline Ran ran(std::vector<const char*> arguments, const std::string& input = "",
               bool outIsTerminal = false) {
    arguments.insert(arguments.begin(), "tarvo-backup");
    std::istringstream in(input);
    std::ostringstream out;
    std::ostringstream err;
    const Console console{.in = in, .out = out, .err = err, .outIsTerminal = outIsTerminal};
    const ExitStatus status = run(static_cast<int>(arguments.size()), arguments.data(), console);
    return {status, out.str(), err.str()};
}

}  // namespace tarvo_backup
