// Tells a person at a terminal what takes so long.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "backup/console.h"

namespace tarvo_backup {

// What the program does now, for whatever Progress shows it. Gives what it did before. `step` must
// outlive the program.
const char* beginStep(const char* step);

// While it lives, and after a second, a line on the terminal says the step that was begun last and
// since when all of it has been going on. The line is gone when this is. Does nothing unless
// standard error is a terminal.
class Progress {
  public:
    Progress(const Console& console, const char* firstStep);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

  private:
    void show();

    std::mutex mutex_;
    std::condition_variable ending_;
    bool isEnding_ = false;
    std::thread thread_;
};

}  // namespace tarvo_backup
