// Waiting for other programs, which are not told that somebody waits.
#pragma once

#include <chrono>
#include <thread>

#include "backup/progress.h"

namespace tarvo_backup {

// Repeats attempt() until it gives true, half a minute at most. `step` is what Progress shows
// meanwhile; betweenTries() may throw.
template <class Attempt, class BetweenTries>
void tryPatiently(const char* step, Attempt attempt, BetweenTries betweenTries) {
    using Clock = std::chrono::steady_clock;
    constexpr auto kLongest = std::chrono::seconds(30);
    constexpr auto kPause = std::chrono::milliseconds(20);
    const auto end = Clock::now() + kLongest;
    const char* before = nullptr;
    for (;;) {
        const bool isDone = attempt();
        if (before != nullptr) {
            beginStep(before);
        }
        if (isDone || Clock::now() >= end) {
            return;
        }
        betweenTries();
        before = beginStep(step);
        std::this_thread::sleep_for(kPause);
    }
}

template <class Attempt>
void tryPatiently(const char* step, Attempt attempt) {
    tryPatiently(step, attempt, [] {});
}

}  // namespace tarvo_backup
