// Walking a document together with the rows that its elements stand for.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

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

// The name as the rows have it, whatever the document's letter case.
const char* shownName(const mapping::Element* row, const XmlNode& node);

// One step of a path. An entry of a list is shown with its identity or, without one, its place in
// the list, from 1.
struct Step {
    const char* name = nullptr;
    const std::string* identity = nullptr;  // null: no entry; outlives the step
    std::size_t place = 0;
};
using Path = std::vector<Step>;

// "modules/module[mac=02:1E:A4:00:10:01]/inputs/input[inputId=1]/frequency". At most some 1000
// bytes: long names and identities, and paths of very many levels, are without their middle.
std::string pathText(const Path& path);

}  // namespace tarvo_backup
