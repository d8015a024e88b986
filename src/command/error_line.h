// How the debug log tells of an error that a command records.
#pragma once

namespace tarvo_remote_control {

// Followed by the error's code, a blank and its text.
inline constexpr const char* kErrorLine = "Command error: ";

}  // namespace tarvo_remote_control
