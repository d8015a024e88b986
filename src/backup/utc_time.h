// Times as people and programs read them.
#pragma once

#include <ctime>
#include <string>

namespace tarvo_backup {

// The moment in UTC, as strftime() writes it.
std::string utcText(std::time_t moment, const char* format);

}  // namespace tarvo_backup
