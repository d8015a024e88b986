// What the program tells its caller.
#pragma once

#include <set>

namespace app {

// Exit statuses: 0 success, 1 general failure, 2 to 10 by the lowest recorded error code.
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;

// Reports the lowest of `errors` ("Error: <code>" on standard error and in the error file) and
// returns its exit status. No errors: no report, kSuccess.
int errorsToExitStatus(const std::set<int>& errors);

}  // namespace app
