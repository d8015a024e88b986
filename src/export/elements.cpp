#include "export/elements.h"

#include <string>

#include "db/value.h"
#include "device/device_identity.h"
#include "document/coded_texts.h"

namespace tarvo_remote_control {

using mapping::Element;

namespace {

const char* exportedText(const Element& element, const tarvodb::tSqlite3parent& value) {
    if (element.exportedAsOnOff) {
        return value.asInt() > 0 ? "1" : "0";
    }
    if (element.texts.empty()) {
        return value.textOrEmpty();
    }
    const char* otherwise =
        element.take == mapping::Take::codeOrNumber ? value.textOrEmpty() : element.otherwise;
    return document::codeText(element.texts, value.asInt(), otherwise);
}

}  // namespace

bool isExported(const Element& element) {
    return mapping::isExportedBy(element.exportedBy, DeviceIdentity::instance().getModel());
}

void writeLeaf(document::Writer& out, const Element& element, const tarvodb::Row& record) {
    const char* text = exportedText(element, record.value(element.column.index));
    if (element.rnbPrefix != nullptr && *text != '\0' && DeviceIdentity::instance().isRNB()) {
        out.leaf(element.name, (std::string(element.rnbPrefix) + text).c_str());
    } else {
        out.leaf(element.name, text);
    }
}

void writeLeaves(document::Writer& out, mapping::Elements elements, const tarvodb::Row& record,
                 Conditions conditions) {
    writeChildren(out, elements, record, conditions, [](const Element&) {});
}

}  // namespace tarvo_remote_control
