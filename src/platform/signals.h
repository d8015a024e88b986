// Signals that must not leave work half done.
#pragma once

namespace platform {

// From here on a hang-up, a closed pipe and a file that grows too large do not end the program:
// they show where they matter, as writes that fail. Signals that the program was started with
// ignored stay so. Programs that it starts get what it was started with.
void outliveHangUps();

// Lets the ends of programs that it starts be waited for, also when it was started by one that
// ignores them: each script would seem to have failed otherwise.
void waitForChildren();

// While one exists, SIGTERM and SIGINT do not end the program; one that came meanwhile does so when
// it goes. (While system() waits for a script, it has SIGINT ignored.) One at a time.
class HeldSignals {
  public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
};

}  // namespace platform
