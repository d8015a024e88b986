#include "platform/signals.h"

#include <array>
#include <csignal>
#include <cstddef>

namespace platform {

namespace {

constexpr std::array kHeld = {SIGTERM, SIGINT};

// What came while signals were held, and what was to be done about each before.
volatile std::sig_atomic_t pendingSignal = 0;
std::array<struct sigaction, kHeld.size()> earlier{};

void note(int number) { pendingSignal = number; }
void doNothing(int) {}

// Installs a handler, not SIG_IGN, which the programs that we start would inherit. Returns what was
// there before; a signal that was ignored stays so.
struct sigaction handle(int number, void (*handler)(int)) {
    struct sigaction before {};
    sigaction(number, nullptr, &before);
    if (before.sa_handler != SIG_IGN) {
        struct sigaction action {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;
        sigaction(number, &action, nullptr);
    }
    return before;
}

}  // namespace

void outliveHangUps() {
    for (const int number : {SIGHUP, SIGPIPE, SIGXFSZ}) {
        handle(number, doNothing);
    }
}

void waitForChildren() { std::signal(SIGCHLD, SIG_DFL); }

HeldSignals::HeldSignals() {
    pendingSignal = 0;
    for (std::size_t i = 0; i < kHeld.size(); ++i) {
        earlier.at(i) = handle(kHeld.at(i), note);
    }
}

HeldSignals::~HeldSignals() {
    for (std::size_t i = 0; i < kHeld.size(); ++i) {
        sigaction(kHeld.at(i), &earlier.at(i), nullptr);
    }
    if (pendingSignal != 0) {
        raise(pendingSignal);
    }
}

}  // namespace platform
