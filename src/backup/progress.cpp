#include "backup/progress.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <string_view>

namespace tarvo_backup {

namespace {

std::atomic<const char*> currentStep = "";

constexpr std::string_view kEmptyLine = "\r\x1b[K";

// Not by a stream: the import's output is muted there, and another thread may be writing.
void print(std::string_view text) {
    if (write(STDERR_FILENO, text.data(), text.size()) < 0) {
        // The terminal is gone, and with it whom to tell.
    }
}

// Signals are for the thread that works.
template <class Work>
std::thread withoutSignals(Work work) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread(work);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

}  // namespace

const char* beginStep(const char* step) { return currentStep.exchange(step); }

Progress::Progress(const Console& console, const char* firstStep) {
    beginStep(firstStep);
    if (console.errIsTerminal) {
        thread_ = withoutSignals([this] { show(); });
    }
}

Progress::~Progress() {
    if (thread_.joinable()) {
        {
            const std::lock_guard lock(mutex_);
            isEnding_ = true;
        }
        ending_.notify_one();
        thread_.join();
    }
}

void Progress::show() {
    using Clock = std::chrono::steady_clock;
    constexpr auto kPause = std::chrono::seconds(1);
    const auto start = Clock::now();
    bool isShown = false;
    std::unique_lock lock(mutex_);
    while (!ending_.wait_for(lock, kPause, [this] { return isEnding_; })) {
        const auto seconds =
            std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start).count();
        print(std::string(kEmptyLine) + currentStep.load() + " (" + std::to_string(seconds) +
              " s)");
        isShown = true;
    }
    if (isShown) {
        print(kEmptyLine);
    }
}

}  // namespace tarvo_backup
