#include "platform/debug_log.h"

#include "platform/platform.h"

namespace platform {

void debugLog(int priority, const std::string& line) {
    if ((debugMask & kDebugLogBit) != 0) {
        logLine(priority, line);
    }
}

}  // namespace platform
