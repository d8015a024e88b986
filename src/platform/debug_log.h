// The second family of log lines, silent on a device in service.
#pragma once

#include <string>

namespace platform {

// Process-wide debug mask. Nothing in the program sets it; it is there for a developer's build or
// debugger, and its lines are part of the contract then.
inline unsigned debugMask = 0;

// The bit of debugMask that turns debugLog on.
inline constexpr unsigned kDebugLogBit = 0x10;

// Sends `line` to syslog when the debug bit is set.
void debugLog(int priority, const std::string& line);

}  // namespace platform
