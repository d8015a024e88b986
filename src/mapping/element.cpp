#include "mapping/element.h"

#include <algorithm>
#include <string>

#include "device/models.h"

namespace mapping {

using document::hasName;
using document::XmlNode;

namespace {

template <class Predicate>
const Element* find(Elements rows, Predicate predicate) {
    const auto* found = std::find_if(rows.begin(), rows.end(), predicate);
    return found == rows.end() ? nullptr : found;
}

}  // namespace

bool isExportedBy(ExportedBy exportedBy, std::string_view model) {
    using namespace tarvo_remote_control::model;
    switch (exportedBy) {
        case ExportedBy::all:
            return true;
        case ExportedBy::rnb:
            return isRNB(model);
        case ExportedBy::exceptRnb:
            return !isRNB(model);
        case ExportedBy::familyA:
            return isFamilyA(model);
        case ExportedBy::familyAOrLmv:
            return isFamilyA(model) || isLMV(model);
        case ExportedBy::familyAOrWvxa:
            return isFamilyA(model) || isWVXA(model);
        case ExportedBy::exceptWvxb:
            return !isWVXB(model);
    }
    return false;
}

Form formOf(const Element& element) {
    if (element.form != Form::number) {
        return element.form;
    }
    if (element.take == Take::codeOrNumber) {
        return Form::codeOrNumber;
    }
    if (!element.texts.empty()) {
        return Form::code;
    }
    if (element.bit != 0) {
        return Form::onOff;
    }
    if (element.kind != Kind::leaf) {
        return Form::none;
    }
    return Form::number;
}

Range importedRange(const Element& element) {
    return {std::max(element.range.lowest, element.required.range.lowest),
            std::min(element.range.highest, element.required.range.highest)};
}

document::CodeTable exportedTexts(const Element& element, int rfOutputMode) {
    return rfOutputMode == 0 || element.dvbCTexts.empty() ? element.texts : element.dvbCTexts;
}

document::CodeTable importedTexts(const Element& element, int rfOutputMode) {
    return element.importedTexts.empty() ? exportedTexts(element, rfOutputMode)
                                         : element.importedTexts;
}

const Element* elementOf(Elements rows, const XmlNode& node) {
    return find(rows, [&node](const Element& row) { return hasName(node, row.name); });
}

const Element* elementOf(Elements rows, const XmlNode& node, const tarvodb::TableInfo& table) {
    return find(rows, [&](const Element& row) {
        return row.column.isOf(table) && hasName(node, row.name);
    });
}

const Element* inputTypeOf(const Element& parent) {
    return find(parent.children, [](const Element& child) { return child.isInputType; });
}

const Element* childOf(const Element& parent, std::string_view name) {
    const std::string wanted(name);
    const Element* found = nullptr;
    forEachChild(parent, [&](const Element& child) {
        if (found == nullptr && document::sameText(child.name, wanted.c_str())) {
            found = &child;
        }
    });
    return found;
}

}  // namespace mapping
