#include "export/elements.h"

#include "device/device_identity.h"
#include "document/coded_texts.h"
#include "document/xml.h"

namespace tarvo_remote_control {

using document::XmlNode;
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

XmlNode* append(Command& command, XmlNode* parent, const char* name, const char* value) {
    XmlNode* node = command.result().createNamedNode(name, value);
    parent->append_node(node);
    return node;
}

void appendLeaf(Command& command, XmlNode* parent, const Element& element,
                const tarvodb::Row& record) {
    append(command, parent, element.name,
           exportedText(element, record.value(element.column.index)));
}

void appendLeaves(Command& command, XmlNode* node, mapping::Elements elements,
                  const tarvodb::Row& record) {
    appendChildren(command, node, elements, record, {}, [](const Element&) {});
}

}  // namespace tarvo_remote_control
