// The scrambling systems with their control words.
#include "mapping/scramblings.h"

#include "db/clauses.h"
#include "db/operations.h"
#include "db/schema.h"
#include "document/xml.h"
#include "export/sections.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::doSelect;
using tarvodb::ScramblingGlobal;
using tarvodb::ScramblingKeysGlobal;

namespace {

// The elements of the system that the keys are of; off when there is no such system.
void appendSystem(CmdGetConfiguration& command, XmlNode* node, const Element& element,
                  const char* name) {
    const auto systems =
        doSelect<ScramblingGlobal>(command.configDb(), tarvodb::clause::kByScramblingName, name);
    if (systems.empty()) {
        append(command, node, element.name, "0");
    } else {
        appendLeaf(command, node, element, systems.front());
    }
}

}  // namespace

XmlNode* write::scramblings(CmdGetConfiguration& command, const Element& section) {
    XmlNode* list = command.createNode(section.name);
    for (const auto& keys : doSelect<ScramblingKeysGlobal>(command.configDb())) {
        XmlNode* node = append(command, list, section.children[0].name);
        appendChildren(command, node, mapping::kScrambling, keys, {}, [&](const Element& element) {
            appendSystem(command, node, element, keys[ScramblingKeysGlobal::System].textOrEmpty());
        });
    }
    return list;
}

}  // namespace tarvo_remote_control
