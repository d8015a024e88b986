#include "import/elements.h"

#include "db/value.h"
#include "document/coded_texts.h"
#include "import/reporting.h"
#include "text/to_int.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using mapping::Take;

namespace {

bool setText(tarvodb::Row& record, const Element& element, const char* text) {
    return record.setValue(element.column.index, tarvodb::columnValue(text));
}

bool setIfOtherNumber(tarvodb::Row& record, const Element& element, int number) {
    return record.setIfOtherNumber(element.column.index, number);
}

// The stored number is another one: the text is stored as it stands.
bool setTextIfOtherNumber(tarvodb::Row& record, const Element& element, const char* text) {
    if (record.value(element.column.index).asInt() == text::toInt(text)) {
        return false;
    }
    return setText(record, element, text);
}

bool takeCode(tarvodb::Row& record, const Element& element, const char* text) {
    auto code = codeOf(element, text);
    if (!code && element.otherTextsAreOne) {
        code = 1;
    }
    return code && setIfOtherNumber(record, element, *code);
}

}  // namespace

std::optional<int> codeOf(const Element& element, const char* text, int rfOutputMode) {
    const document::CodeTable texts = mapping::importedTexts(element, rfOutputMode);
    switch (element.take) {
        case Take::code:
            return document::codeOfAnyCase(texts, text);
        case Take::codeExactly:
            return document::codeOfExactly(texts, text);
        case Take::codeOrNumber:
            return document::codeOfExactly(texts, text).value_or(text::toInt(text));
        default:
            return std::nullopt;
    }
}

bool take(tarvodb::Row& record, const Element& element, const XmlNode& child) {
    const char* text = document::textOf(child);
    const int number = document::numberOf(child);
    switch (element.take) {
        case Take::text:
            return setText(record, element, text);
        case Take::number:
            return setIfOtherNumber(record, element, number);
        case Take::numberStoredText:
            return setTextIfOtherNumber(record, element, text);
        case Take::numberUnlessZero:
            return number != 0 && setIfOtherNumber(record, element, number);
        case Take::code:
        case Take::codeExactly:
        case Take::codeOrNumber:
            return takeCode(record, element, text);
        case Take::bits:
        case Take::key:
        case Take::special:
        case Take::children:
        case Take::ignored:
            return false;
    }
    return false;
}

bool takeLast(tarvodb::Row& record, mapping::Elements elements, const XmlNode& parent) {
    bool changed = false;
    for (const Element& element : elements) {
        const XmlNode* child = element.column.isOf(record.table())
                                   ? document::lastChildNamed(parent, element.name)
                                   : nullptr;
        if (child == nullptr || !take(record, element, *child)) {
            continue;
        }
        changed = true;
        if (element.derived.exists()) {
            record.setValue(element.derived.index, tarvodb::columnValue(""));
        }
    }
    return changed;
}

std::optional<int> requiredNumber(CmdSetConfiguration& command, const XmlNode& parent,
                                  const Element& element, ErrorCode code) {
    const mapping::Requirement& required = element.required;
    const XmlNode* child = document::childNamed(parent, element.name);
    if (child == nullptr) {
        fail(command, code, required.missing);
        return std::nullopt;
    }
    const int number = document::numberOf(*child);
    if (!required.range.contains(number)) {
        Failure failure{.code = code, .message = required.outOfRange};
        if (required.outOfRangeDebugLine != nullptr) {
            failure.debugLine = required.outOfRangeDebugLine;
        }
        fail(command, failure);
        return std::nullopt;
    }
    return number;
}

bool failOnValue(CmdSetConfiguration& command, const std::string& path, ErrorCode recordedCode,
                 ErrorCode loggedCode) {
    return fail(command, Failure{.code = recordedCode,
                                 .message = "Invalid value for module/" + path,
                                 .loggedCode = loggedCode});
}

void appendToLog(std::string& log, const char* label, const XmlNode& child) {
    if (label != nullptr) {
        log += label;
        log += document::textOf(child);
    }
}

}  // namespace tarvo_remote_control
