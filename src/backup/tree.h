// Walking a document together with the rows that its elements stand for.
#pragma once

#include <string>

#include "document/xml.h"
#include "mapping/element.h"

namespace tarvo_backup {

using document::XmlNode;

// Whether it has a name: text that stands between elements has none.
bool isElement(const XmlNode& node);

// The first element among `node` and the siblings after it; null when there is none.
const XmlNode* elementFrom(const XmlNode* node);

inline const XmlNode* firstElement(const XmlNode& parent) {
    return elementFrom(parent.first_node());
}
inline const XmlNode* nextElement(const XmlNode& node) { return elementFrom(node.next_sibling()); }

// The row of an element inside what `parent` stands for; null where either is unknown.
const mapping::Element* rowOf(const mapping::Element* parent, const XmlNode& node);

// What tells an entry of a list from the others, as it is shown in paths: "outputId=1,outputSid=7",
// the text of an entry without children. Empty when nothing does. Equal for entries that the
// import takes for the same.
std::string identityOf(const mapping::Element& entry, const XmlNode& node);

}  // namespace tarvo_backup
