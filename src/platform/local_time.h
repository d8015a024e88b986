// Times as texts.
#pragma once

#include <ctime>
#include <string>

namespace platform {

// `time` in the device's time zone, formatted as strftime does, at most 29 characters. Empty when
// it is longer, or when the time cannot be told.
std::string localTimeText(std::time_t time, const char* format);

}  // namespace platform
