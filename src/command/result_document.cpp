#include "command/result_document.h"

#include <syslog.h>

#include <string_view>

#include "command/error_line.h"
#include "device/device_identity.h"
#include "platform/debug_log.h"

namespace tarvo_remote_control {

using document::XmlNode;

ResultDocument::ResultDocument() { completeShape(); }

XmlNode* ResultDocument::createNode(const char* name, const char* value) {
    return document_.allocate_node(rapidxml::node_element, document_.allocate_string(name),
                                   value == nullptr ? nullptr : document_.allocate_string(value));
}

XmlNode* ResultDocument::appendNew(XmlNode* parent, const char* name, const char* value) {
    XmlNode* node = createNode(name, value);
    parent->append_node(node);
    return node;
}

XmlNode* ResultDocument::childOrNew(XmlNode* parent, const char* name, const char* value) {
    XmlNode* child = findChild(*parent, name);
    return child == nullptr ? appendNew(parent, name, value) : child;
}

void ResultDocument::completeShape() {
    XmlNode* commandResult = childOrNew(&document_, "commandResult");
    const DeviceIdentity& device = DeviceIdentity::instance();
    childOrNew(commandResult, "id", device.getHostName().c_str());
    childOrNew(commandResult, "mac", device.getMac().c_str());
    childOrNew(commandResult, "serialNumber", device.getSerialNumber().c_str());
    childOrNew(commandResult, "zenContractId", device.getContractId().c_str());
    commandId_ = childOrNew(commandResult, "commandId", "1");
    result_ = childOrNew(commandResult, "result", "1");
    errors_ = childOrNew(commandResult, "errors");
    data_ = childOrNew(commandResult, "data");
}

void ResultDocument::addError(ErrorCode code, const std::string& detail) {
    errorCodes_.insert(code);
    const std::string text = errorMessage(code) + (detail.empty() ? "" : ": " + detail);
    XmlNode* error = createNode("error");
    appendNew(error, "id", std::to_string(number(code)).c_str());
    appendNew(error, "text", text.c_str());
    platform::debugLog(LOG_ERR, kErrorLine + std::to_string(number(code)) + " " + text);
    errors_->append_node(error);
}

void ResultDocument::reset() {
    errorCodes_.clear();
    errors_->remove_all_nodes();
    data_->remove_all_nodes();
    setResult(1);
}

void ResultDocument::setText(XmlNode* node, int value) {
    node->value(document_.allocate_string(std::to_string(value).c_str()));
    // A loaded element keeps its text in a child too, which is what printing shows.
    node->remove_all_nodes();
}

void ResultDocument::setCommandId(int id) { setText(commandId_, id); }

void ResultDocument::setResult(int value) { setText(result_, value); }

void ResultDocument::appendToData(XmlNode* element) { data_->append_node(element); }

void ResultDocument::loadXml(const std::string& text) {
    try {
        document::parseCopy(document_, text);
    } catch (const document::ParseError&) {
        document_.remove_all_nodes();
        completeShape();
        throw;
    }
    const XmlNode* loaded = findChild(document_, "commandResult");
    const bool hasErrors = loaded != nullptr && findChild(*loaded, "errors") != nullptr;
    completeShape();
    if (hasErrors) {
        readErrorCodes();
    }
}

void ResultDocument::readErrorCodes() {
    errorCodes_.clear();
    for (const XmlNode& error : document::childrenOf(*errors_)) {
        const XmlNode* id = findChild(error, "id");
        if (std::string_view(error.name()) == "error" && id != nullptr &&
            findChild(error, "text") != nullptr) {
            errorCodes_.insert(ErrorCode{document::numberOf(*id)});
        }
    }
}

std::string ResultDocument::toXml(int printFlags) {
    setResult(errorCodes_.empty() ? 1 : 0);
    const bool indented = (printFlags & document::kNoIndenting) == 0;
    return std::string(kXmlDeclaration) + (indented ? "\n" : "") +
           document::printed(*findChild(document_, "commandResult"), printFlags);
}

XmlNode* ResultDocument::findChild(const XmlNode& parent, const char* name) {
    return document::findSibling(parent.first_node(), name);
}

}  // namespace tarvo_remote_control
