// A module's logical outputs with their RF modulators.
#include "mapping/outputs.h"

#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "document/coded_texts.h"
#include "document/writer.h"
#include "export/elements.h"
#include "export/sections.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using mapping::Element;
using tarvodb::doSelect;
using tarvodb::Record;
using tarvodb::RedesModulos;
using tarvodb::RFOutGlobal;
using tarvodb::SalidasLogicasGlobal;

namespace {

void writeRfOutput(document::Writer& out, const Record<RFOutGlobal>& rf, int rfOutputMode) {
    writeChildren(out, mapping::kRfOutput, rf, {}, [&](const Element& constellation) {
        out.leaf(constellation.name,
                 document::codeText(mapping::exportedTexts(constellation, rfOutputMode),
                                    rf.value(constellation.column.index).asInt()));
    });
}

}  // namespace

void write::outputs(CmdGetConfiguration& command, const Element& section, const Module& module) {
    const int rfOutputMode = module[RedesModulos::ModoSalidaRF].asInt();
    document::Writer& out = command.out();
    out.open(section.name);
    for (const auto& output :
         doSelect<SalidasLogicasGlobal>(command.configDb(), tarvodb::clause::kByMac,
                                        module[RedesModulos::MAC].textOrEmpty())) {
        out.open(section.children[0].name);
        writeLeaves(out, mapping::kOutput, output);
        for (const auto& rf : doSelect<RFOutGlobal>(
                 command.configDb(), tarvodb::clause::kByLogicalOutput, output.key().text())) {
            writeRfOutput(out, rf, rfOutputMode);
        }
        out.close();
    }
    out.close();
}

}  // namespace tarvo_remote_control
