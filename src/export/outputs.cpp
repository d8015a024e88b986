// A module's logical outputs with their RF modulators.
#include "db/clauses.h"
#include "export/leaves.h"
#include "export/sections.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::doSelect;
using tarvodb::Record;
using tarvodb::RFOutGlobal;
using tarvodb::SalidasLogicasGlobal;

namespace {

constexpr Leaf<SalidasLogicasGlobal> kTransportStreamLeaves[] = {
    {"onid", SalidasLogicasGlobal::ONID_Out},
    {"tsid", SalidasLogicasGlobal::TSID_Out},
};

constexpr Leaf<RFOutGlobal> kRfLeavesExceptRnb[] = {
    {"symbolRate", RFOutGlobal::Symbol_Rate},
    {"modeOFDM", RFOutGlobal::Modo_OFDM, document::kModeOFDM},
};

void appendRfOutput(CmdGetConfiguration& command, XmlNode* node, const Record<RFOutGlobal>& rf,
                    int rfOutputMode) {
    command.append(node, "active", rf[RFOutGlobal::Modo_Salida_Modulacion].asInt() > 0 ? "1" : "0");
    appendLeaf(command, node, rf, {"frequency", RFOutGlobal::Frecuencia});
    if (!CmdGetConfiguration::device().isRNB()) {
        appendLeaves(command, node, rf, kRfLeavesExceptRnb);
    }
    const Leaf<RFOutGlobal> modulationLeaves[] = {
        {"bandwidth", RFOutGlobal::Ancho_Banda, document::kOutputBandwidth},
        {"guardInterval", RFOutGlobal::Intervalo_Guarda, document::kGuardInterval},
        {"constellation", RFOutGlobal::Constelacion, document::constellationOf(rfOutputMode)},
        {"codeRate", RFOutGlobal::Code_Rate, document::kCodeRate},
        {"formatIQ", RFOutGlobal::Espectro_Salida, document::kSpectrum},
    };
    appendLeaves(command, node, rf, modulationLeaves);
}

}  // namespace

XmlNode* outputsSection(CmdGetConfiguration& command, const char* mac, int rfOutputMode) {
    XmlNode* section = command.createNode("outputs");
    for (const auto& output :
         doSelect<SalidasLogicasGlobal>(command.configDb(), tarvodb::clause::kByMac, mac)) {
        XmlNode* node = command.append(section, "output");
        appendLeaf(command, node, output, {"outputId", SalidasLogicasGlobal::fk_idSalidasLogicas});
        if (!CmdGetConfiguration::device().isRNB()) {
            appendLeaf(command, node, output, {"type", SalidasLogicasGlobal::tipoSalida});
        }
        appendLeaves(command, node, output, kTransportStreamLeaves);
        for (const auto& rf : doSelect<RFOutGlobal>(
                 command.configDb(), tarvodb::clause::kByLogicalOutput, output.key().text())) {
            appendRfOutput(command, node, rf, rfOutputMode);
        }
    }
    return section;
}

}  // namespace tarvo_remote_control
