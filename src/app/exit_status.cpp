#include "app/exit_status.h"

#include <iostream>
#include <string>

#include "command/error_codes.h"
#include "platform/platform.h"

namespace app {

namespace {

namespace error = tarvo_remote_control::error;

constexpr const char* kErrorFile = "/tmp/Errors_ConfigurationXML.xml";

struct CodeStatus {
    int code;
    int status;
};

constexpr CodeStatus kStatuses[] = {
    {error::kInvalidCommand, 2},   {error::kDatabase, 3},    {error::kInvalidValue, 4},
    {error::kSetConfiguration, 5}, {error::kModuleInput, 6}, {error::kModuleOutput, 7},
    {error::kModuleNotFound, 8},   {error::kModuleModel, 9}, {error::kModuleAmount, 10},
};

int exitStatusOf(int code) {
    for (const CodeStatus& row : kStatuses) {
        if (row.code == code) {
            return row.status;
        }
    }
    return kFailure;
}

}  // namespace

int errorsToExitStatus(const std::set<int>& errors) {
    if (errors.empty()) {
        return kSuccess;
    }
    const int lowest = *errors.begin();
    const std::string report = "Error: " + std::to_string(lowest);
    std::cerr << report << std::endl;
    platform::writeFile(kErrorFile, report);
    return exitStatusOf(lowest);
}

}  // namespace app
