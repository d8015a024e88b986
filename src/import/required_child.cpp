#include "import/required_child.h"

#include "import/reporting.h"

namespace tarvo_remote_control {

std::optional<int> requiredNumber(CmdSetConfiguration& command, const document::XmlNode& element,
                                  const RequiredNumber& required) {
    const document::XmlNode* child = document::childNamed(element, required.element);
    if (child == nullptr) {
        fail(command, required.errorCode, required.missing);
        return std::nullopt;
    }
    const int number = document::numberOf(*child);
    if (number < required.lowest || number > required.highest) {
        Failure failure{.code = required.errorCode, .message = required.outOfRange};
        if (required.outOfRangeDebugLine != nullptr) {
            failure.debugLine = required.outOfRangeDebugLine;
        }
        fail(command, failure);
        return std::nullopt;
    }
    return number;
}

}  // namespace tarvo_remote_control
