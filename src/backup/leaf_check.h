// What is written in an element that holds no others.
#pragma once

#include "backup/check.h"
#include "backup/findings.h"
#include "mapping/element.h"

namespace tarvo_backup {

struct LeafContext {
    bool isFirst = true;  // of the elements of its name beside it
    // How bad it is when the import would refuse the text.
    Severity error = Severity::error;
    // Of the module, where the element's texts depend on it.
    int rfOutputMode = 0;
    // Whether the import looks at the loop of the input around it.
    bool isLoopRead = false;
};

// Numbers out of range or cut, texts that stand for no code, or not for what the element means.
// `walk` is at the element, which `row` is of, inside what `parent` is of.
void checkLeaf(const mapping::Element& parent, const mapping::Element& row, const XmlNode& node,
               const LeafContext& context, Walk& walk);

}  // namespace tarvo_backup
