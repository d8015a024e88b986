#include "app/exit_status.h"

#include <string>

#include "platform/platform.h"

namespace app {

namespace {

using tarvo_remote_control::ErrorCode;

constexpr const char* kErrorFile = "/tmp/Errors_ConfigurationXML.xml";
constexpr unsigned kReadableByAll = 0644;

struct CodeStatus {
    ErrorCode code;
    ExitStatus status;
};

constexpr CodeStatus kStatuses[] = {
    {ErrorCode::invalidCommand, ExitStatus::invalidCommand},
    {ErrorCode::database, ExitStatus::database},
    {ErrorCode::invalidValue, ExitStatus::invalidValue},
    {ErrorCode::setConfiguration, ExitStatus::setConfiguration},
    {ErrorCode::moduleInput, ExitStatus::moduleInput},
    {ErrorCode::moduleOutput, ExitStatus::moduleOutput},
    {ErrorCode::moduleNotFound, ExitStatus::moduleNotFound},
    {ErrorCode::moduleModel, ExitStatus::moduleModel},
    {ErrorCode::moduleAmount, ExitStatus::moduleAmount},
};

ExitStatus exitStatusOf(ErrorCode code) {
    for (const CodeStatus& row : kStatuses) {
        if (row.code == code) {
            return row.status;
        }
    }
    return ExitStatus::failure;
}

}  // namespace

ExitStatus errorsToExitStatus(const std::set<ErrorCode>& errors) {
    if (errors.empty()) {
        return ExitStatus::success;
    }
    const ErrorCode lowest = *errors.begin();
    const std::string report = "Error: " + std::to_string(number(lowest));
    platform::printError(report + "\n");
    platform::replaceFile(kErrorFile, report, {.mode = kReadableByAll});
    return exitStatusOf(lowest);
}

}  // namespace app
