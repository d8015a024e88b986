#include "backup/interruption.h"

#include <cstdlib>

namespace tarvo_backup {

namespace {

volatile std::sig_atomic_t noted = 0;

void note(int signal) { noted = signal; }

}  // namespace

SignalsNoted::SignalsNoted(std::initializer_list<int> signals) {
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : signals) {
        struct sigaction earlier {};
        sigaction(signal, nullptr, &earlier);
        if (earlier.sa_handler != SIG_IGN) {
            sigaction(signal, &action, nullptr);
            earlier_.emplace_back(signal, earlier);
        }
    }
}

SignalsNoted::~SignalsNoted() {
    for (const auto& [signal, earlier] : earlier_) {
        sigaction(signal, &earlier, nullptr);
    }
}

int notedSignal() { return noted; }

void forgetSignals() { noted = 0; }

void endIfInterrupted() {
    if (noted != 0) {
        throw Interrupted(noted);
    }
}

void endBy(int signal) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    std::_Exit(128 + signal);
}

}  // namespace tarvo_backup
