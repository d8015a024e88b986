// Signals that ask the program to end, put off until it can leave nothing behind.
#pragma once

#include <csignal>
#include <exception>
#include <initializer_list>
#include <utility>
#include <vector>

namespace tarvo_backup {

// Thrown where the work is left because of a signal.
class Interrupted : public std::exception {
  public:
    explicit Interrupted(int signal) : signal_(signal) {}
    [[nodiscard]] int signal() const { return signal_; }
    [[nodiscard]] const char* what() const noexcept override { return "interrupted"; }

  private:
    int signal_;
};

// While it lives, these signals are only noted. A signal that was ignored before stays ignored.
class SignalsNoted {
  public:
    explicit SignalsNoted(std::initializer_list<int> signals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM,
                                                                SIGPIPE, SIGXFSZ});
    ~SignalsNoted();
    SignalsNoted(const SignalsNoted&) = delete;
    SignalsNoted& operator=(const SignalsNoted&) = delete;

  private:
    std::vector<std::pair<int, struct sigaction>> earlier_;
};

// The signal that was noted, 0 when none was.
int notedSignal();

// Goes on in spite of one that was noted.
void forgetSignals();

// Throws Interrupted when a signal was noted.
void endIfInterrupted();

// Ends the program as the signal would have.
[[noreturn]] void endBy(int signal);

}  // namespace tarvo_backup
