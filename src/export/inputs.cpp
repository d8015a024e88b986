// A module's inputs with their tuners and live signal state.
#include <string>
#include <vector>

#include "db/clauses.h"
#include "document/input_type.h"
#include "export/leaves.h"
#include "export/sections.h"

namespace tarvo_remote_control {

using document::InputType;
using document::XmlNode;
using tarvodb::doSelect;
using tarvodb::EntradasGlobal;
using tarvodb::NimCOFDMGlobal;
using tarvodb::NimGlobal;
using tarvodb::NimQAMGlobal;
using tarvodb::Record;
using tarvodb::TempNIMCOFDMGlobal;
using tarvodb::TempNIMGlobal;
using tarvodb::TempNIMQAMGlobal;

namespace {

constexpr Leaf<EntradasGlobal> kInputLeaves[] = {
    {"inputId", EntradasGlobal::fk_idEntrada},
    {"active", EntradasGlobal::Activo},
};

constexpr Leaf<EntradasGlobal> kInputLeavesExceptRnb[] = {
    {"type", EntradasGlobal::tipoEntrada},
    {"onid", EntradasGlobal::ONID},
    {"tsid", EntradasGlobal::TSID},
};

constexpr Leaf<NimCOFDMGlobal> kTerrestrialLeaves[] = {
    {"frequency", NimCOFDMGlobal::Frequency},
    {"bandwidth", NimCOFDMGlobal::Bandwidth, document::kInputBandwidth},
    {"hierarchy", NimCOFDMGlobal::Hierarchy, document::kHierarchy},
};

constexpr Leaf<NimCOFDMGlobal> kTerrestrialScanLeaves[] = {
    {"autoScan", NimCOFDMGlobal::trackingStatusEn},
    {"onidScan", NimCOFDMGlobal::ONID_Tracking},
    {"tsidScan", NimCOFDMGlobal::TSID_Tracking},
};

// The constellation of a cable input is exported as its code.
constexpr Leaf<NimQAMGlobal> kCableLeaves[] = {
    {"frequency", NimQAMGlobal::Frequency},
    {"symbolRate", NimQAMGlobal::SymbolRate},
    {"constelacion", NimQAMGlobal::Constelacion},
};

// What the parts of one input element share.
struct Input {
    CmdGetConfiguration& command;
    XmlNode* node;
    const char* mac;
    const Record<EntradasGlobal>& row;
    // RFIN_LOOP of the input's second satellite tuner, empty without one.
    std::string loopThrough;

    template <class Table>
    void leaf(const Record<Table>& record, const Leaf<Table>& leaf) const {
        appendLeaf(command, node, record, leaf);
    }
};

// A stream or pipe id, or "auto".
void appendAutomaticId(const Input& input, const char* element, const tarvodb::tSqlite3parent& id) {
    input.command.append(input.node, element,
                         document::codeText(document::kAutomaticId, id.asInt(), id.textOrEmpty()));
}

// Only a second tuner is fed through the loop.
void appendLoopThrough(const Input& input, const tarvodb::tSqlite3parent& tunerNumber) {
    if (tunerNumber.asInt() > 1) {
        input.command.append(input.node, "rfLoop", input.loopThrough.c_str());
    }
}

// One element per live state row of the module that is of this input.
//   isOfInput(row), isLocked(row) -> bool
template <class State, class IsOfInput, class IsLocked>
void appendStatus(const Input& input, IsOfInput isOfInput, IsLocked isLocked) {
    if (CmdGetConfiguration::device().isRNB()) {
        return;
    }
    XmlNode* status = input.command.append(input.node, "inputStatus");
    for (const auto& state :
         doSelect<State>(input.command.stateDb(), tarvodb::clause::kByMac, input.mac)) {
        if (isOfInput(state)) {
            const int quality = state[State::quality].asInt();
            input.command.append(status, "signalQuality",
                                 isLocked(state)
                                     ? document::codeText(document::kSignalQuality, quality)
                                     : document::kSignalUnlocked);
        }
    }
}

void appendSatelliteStatus(const Input& input) {
    const int inputNumber = input.row[EntradasGlobal::fk_idEntrada].asInt();
    appendStatus<TempNIMGlobal>(
        input,
        [inputNumber](const auto& state) {
            return state[TempNIMGlobal::inputNumber].asInt() == inputNumber;
        },
        [](const auto& state) { return state[TempNIMGlobal::locked].asInt() == 1; });
}

// The terrestrial and cable states are not matched to an input: every input of the module lists
// them all.
template <class State>
void appendModuleStatus(const Input& input) {
    appendStatus<State>(
        input, [](const auto&) { return true; },
        [](const auto& state) { return state[State::locked].asInt() != 0; });
}

void appendSatelliteTuner(const Input& input, const Record<NimGlobal>& tuner) {
    input.leaf(tuner, {"frequency", NimGlobal::fe});
    input.leaf(tuner, {"diseqc", NimGlobal::DiSEqC});
    if (tuner[NimGlobal::DiSEqC].asInt() < 1) {
        input.leaf(tuner, {"band", NimGlobal::banda_FI, document::kBand});
    }
    input.leaf(tuner, {"PLSmode", NimGlobal::ModoPLS, document::kPlsModeExported,
                       document::kPlsModeExportedOtherwise});
    input.leaf(tuner, {"scramblingID", NimGlobal::ScramblingID});
    appendAutomaticId(input, "streamID", tuner[NimGlobal::StreamID]);
    appendLoopThrough(input, tuner[NimGlobal::fk_idNim]);
    appendSatelliteStatus(input);
}

void appendTerrestrialTuner(const Input& input, const Record<NimCOFDMGlobal>& tuner) {
    appendLeaves(input.command, input.node, tuner, kTerrestrialLeaves);
    appendAutomaticId(input, "PLPID", tuner[NimCOFDMGlobal::PLP_ID]);
    appendLeaves(input.command, input.node, tuner, kTerrestrialScanLeaves);
    appendModuleStatus<TempNIMCOFDMGlobal>(input);
    appendLoopThrough(input, tuner[NimCOFDMGlobal::fk_idNimCOFDM]);
}

void appendCableTuner(const Input& input, const Record<NimQAMGlobal>& tuner) {
    appendLeaves(input.command, input.node, tuner, kCableLeaves);
    appendModuleStatus<TempNIMQAMGlobal>(input);
    appendLoopThrough(input, tuner[NimQAMGlobal::fk_idNimQAM]);
}

std::string loopThroughOf(const std::vector<Record<NimGlobal>>& satelliteTuners) {
    std::string loopThrough;
    for (const auto& tuner : satelliteTuners) {
        if (tuner[NimGlobal::fk_idNim].asInt() > 1) {
            loopThrough = tuner[NimGlobal::RFIN_LOOP].asString();
        }
    }
    return loopThrough;
}

void appendTuners(const Input& input, const std::vector<Record<NimGlobal>>& satelliteTuners) {
    sqlite3* db = input.command.configDb();
    const char* key = input.row.key().text();
    switch (static_cast<InputType>(input.row[EntradasGlobal::tipoEntrada].asInt())) {
        case InputType::satellite:
            for (const auto& tuner : satelliteTuners) {
                appendSatelliteTuner(input, tuner);
            }
            break;
        case InputType::terrestrial:
            for (const auto& tuner : doSelect<NimCOFDMGlobal>(db, tarvodb::clause::kByInput, key)) {
                appendTerrestrialTuner(input, tuner);
            }
            break;
        case InputType::cable:
            for (const auto& tuner : doSelect<NimQAMGlobal>(db, tarvodb::clause::kByInput, key)) {
                appendCableTuner(input, tuner);
            }
            break;
    }
}

XmlNode* inputElement(CmdGetConfiguration& command, const char* mac,
                      const Record<EntradasGlobal>& row) {
    XmlNode* node = command.createNode("input");
    appendLeaves(command, node, row, kInputLeaves);
    if (!CmdGetConfiguration::device().isRNB()) {
        appendLeaves(command, node, row, kInputLeavesExceptRnb);
    }
    // Whatever the input's type: the loop is a property of its satellite tuners.
    const auto satelliteTuners = tarvodb::selectByFkIdEntradasGlobal(command.configDb(), row.key());
    appendTuners({command, node, mac, row, loopThroughOf(satelliteTuners)}, satelliteTuners);
    return node;
}

}  // namespace

XmlNode* inputsSection(CmdGetConfiguration& command, const char* mac) {
    XmlNode* section = command.createNode("inputs");
    for (const auto& input :
         doSelect<EntradasGlobal>(command.configDb(), tarvodb::clause::kByMac, mac)) {
        section->append_node(inputElement(command, mac, input));
    }
    return section;
}

}  // namespace tarvo_remote_control
