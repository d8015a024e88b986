// A module's logical outputs with their RF modulators.
#include "mapping/outputs.h"

#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "document/coded_texts.h"
#include "document/xml.h"
#include "export/sections.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::doSelect;
using tarvodb::Record;
using tarvodb::RedesModulos;
using tarvodb::RFOutGlobal;
using tarvodb::SalidasLogicasGlobal;

namespace {

void appendRfOutput(CmdGetConfiguration& command, XmlNode* node, const Record<RFOutGlobal>& rf,
                    int rfOutputMode) {
    appendChildren(command, node, mapping::kRfOutput, rf, {}, [&](const Element& constellation) {
        append(command, node, constellation.name,
               document::codeText(mapping::exportedTexts(constellation, rfOutputMode),
                                  rf.value(constellation.column.index).asInt()));
    });
}

}  // namespace

XmlNode* write::outputs(CmdGetConfiguration& command, const Element& section,
                        const Module& module) {
    const int rfOutputMode = module[RedesModulos::ModoSalidaRF].asInt();
    XmlNode* list = command.createNode(section.name);
    for (const auto& output :
         doSelect<SalidasLogicasGlobal>(command.configDb(), tarvodb::clause::kByMac,
                                        module[RedesModulos::MAC].textOrEmpty())) {
        XmlNode* node = append(command, list, section.children[0].name);
        appendLeaves(command, node, mapping::kOutput, output);
        for (const auto& rf : doSelect<RFOutGlobal>(
                 command.configDb(), tarvodb::clause::kByLogicalOutput, output.key().text())) {
            appendRfOutput(command, node, rf, rfOutputMode);
        }
    }
    return list;
}

}  // namespace tarvo_remote_control
