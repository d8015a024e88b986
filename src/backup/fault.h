// What ends a verb before it has done its work.
#pragma once

#include <stdexcept>
#include <string>

#include "backup/exit_status.h"

namespace tarvo_backup {

// The program prints what() on standard error and ends with status().
class Fault : public std::runtime_error {
  public:
    Fault(ExitStatus status, const std::string& message)
        : std::runtime_error(message), status_(status) {}

    [[nodiscard]] ExitStatus status() const { return status_; }

  private:
    ExitStatus status_;
};

}  // namespace tarvo_backup
