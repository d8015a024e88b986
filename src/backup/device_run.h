// What tarvo-config does, run inside a sandbox or on the device.
#pragma once

#include <streambuf>
#include <string>

#include "app/exit_status.h"
#include "backup/sandbox.h"

namespace tarvo_backup {

// Loads the identity of the device, which every run needs. Throws Fault (cannotRead).
void loadIdentity();

// While it lives, what is written to standard output and standard error goes nowhere.
class OutputMuted {
  public:
    OutputMuted();
    ~OutputMuted();
    OutputMuted(const OutputMuted&) = delete;
    OutputMuted& operator=(const OutputMuted&) = delete;

  private:
    // Takes everything: the program looks whether it could write.
    struct Nowhere : std::streambuf {
        int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    };

    Nowhere nowhere_;
    std::streambuf* out_;
    std::streambuf* err_;
};

// Set by the door outside of a sandbox once a transaction is to be stored, a script is run or a
// file renamed: then there may be something to undo.
inline bool deviceIsChanged = false;

// The document that tarvo-config would write. Throws Fault (cannotRead)
// unless every statement succeeded.
std::string exportIn(Sandbox& sandbox);

// Imports the document in the sandbox as tarvo-config does, its three tries included. The
// sandbox's traffic tells the rest.
app::ExitStatus importIn(Sandbox& sandbox, const std::string& document);

}  // namespace tarvo_backup
