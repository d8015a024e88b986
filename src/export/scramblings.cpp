// The scrambling systems with their control words.
#include "mapping/scramblings.h"

#include "db/clauses.h"
#include "db/operations.h"
#include "db/schema.h"
#include "document/writer.h"
#include "export/elements.h"
#include "export/sections.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using mapping::Element;
using tarvodb::doSelect;
using tarvodb::ScramblingGlobal;
using tarvodb::ScramblingKeysGlobal;

namespace {

// The elements of the system that the keys are of; off when there is no such system.
void writeSystem(CmdGetConfiguration& command, const Element& element, const char* name) {
    const auto systems =
        doSelect<ScramblingGlobal>(command.configDb(), tarvodb::clause::kByScramblingName, name);
    if (systems.empty()) {
        command.out().leaf(element.name, "0");
    } else {
        writeLeaf(command.out(), element, systems.front());
    }
}

}  // namespace

void write::scramblings(CmdGetConfiguration& command, const Element& section) {
    document::Writer& out = command.out();
    out.open(section.name);
    for (const auto& keys : doSelect<ScramblingKeysGlobal>(command.configDb())) {
        out.open(section.children[0].name);
        writeChildren(out, mapping::kScrambling, keys, {}, [&](const Element& element) {
            writeSystem(command, element, keys[ScramblingKeysGlobal::System].textOrEmpty());
        });
        out.close();
    }
    out.close();
}

}  // namespace tarvo_remote_control
