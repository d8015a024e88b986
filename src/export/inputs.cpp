// A module's inputs with their tuners and live signal state.
#include "mapping/inputs.h"

#include <string>
#include <vector>

#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "document/coded_texts.h"
#include "document/input_type.h"
#include "document/writer.h"
#include "export/elements.h"
#include "export/sections.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::InputType;
using mapping::Element;
using mapping::When;
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

// What the parts of one input element share.
struct Input {
    CmdGetConfiguration& command;
    const char* mac;
    const Record<EntradasGlobal>& row;
    // RFIN_LOOP of the input's second satellite tuner, empty without one.
    std::string loopThrough;
};

// The terrestrial and cable states are not matched to an input: every input of the module lists
// them all.
template <class State>
bool isOfInput(const Record<State>&, const Input&) {
    return true;
}
bool isOfInput(const Record<TempNIMGlobal>& state, const Input& input) {
    return state[TempNIMGlobal::inputNumber].asInt() ==
           input.row[EntradasGlobal::fk_idEntrada].asInt();
}

template <class State>
bool isLocked(const Record<State>& state) {
    return state[State::locked].asInt() != 0;
}
bool isLocked(const Record<TempNIMGlobal>& state) {
    return state[TempNIMGlobal::locked].asInt() == 1;
}

template <class State>
const char* signalQuality(const Element& element, const Record<State>& state) {
    return isLocked(state) ? document::codeText(element.texts, state[State::quality].asInt())
                           : element.unknown;
}

// One element per live state row of the module that is of this input.
template <class State>
void writeStatus(const Input& input, const Element& section) {
    document::Writer& out = input.command.out();
    out.open(section.name);
    const Element& quality = section.children[0];
    for (const auto& state :
         doSelect<State>(input.command.stateDb(), tarvodb::clause::kByMac, input.mac)) {
        if (isOfInput(state, input)) {
            out.leaf(quality.name, signalQuality(quality, state));
        }
    }
    out.close();
}

bool hasDiseqcPosition(const Record<NimGlobal>& tuner) {
    return tuner[NimGlobal::DiSEqC].asInt() >= 1;
}
template <class Tuner>
bool hasDiseqcPosition(const Record<Tuner>&) {
    return false;
}

// `number` is the column with the tuner's number on its module.
template <class State, class Tuner>
void writeTuners(const Input& input, mapping::Elements elements,
                 const std::vector<Record<Tuner>>& tuners, typename Tuner::Column number) {
    for (const auto& tuner : tuners) {
        const auto conditions = Conditions()
                                    .with(When::noDiseqcPosition, !hasDiseqcPosition(tuner))
                                    .with(When::secondTuner, tuner[number].asInt() > 1);
        writeChildren(input.command.out(), elements, tuner, conditions,
                      [&input](const Element& element) {
                          if (element.liveState) {
                              writeStatus<State>(input, element);
                          } else {
                              input.command.out().leaf(element.name, input.loopThrough.c_str());
                          }
                      });
    }
}

template <class Tuner>
std::vector<Record<Tuner>> tunersOf(const Input& input) {
    return doSelect<Tuner>(input.command.configDb(), tarvodb::clause::kByInput,
                           input.row.key().text());
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

void writeTunersOfType(const Input& input, const std::vector<Record<NimGlobal>>& satelliteTuners) {
    switch (static_cast<InputType>(input.row[EntradasGlobal::tipoEntrada].asInt())) {
        case InputType::satellite:
            writeTuners<TempNIMGlobal>(input, mapping::kSatelliteTuner, satelliteTuners,
                                       NimGlobal::fk_idNim);
            break;
        case InputType::terrestrial:
            writeTuners<TempNIMCOFDMGlobal>(input, mapping::kTerrestrialTuner,
                                            tunersOf<NimCOFDMGlobal>(input),
                                            NimCOFDMGlobal::fk_idNimCOFDM);
            break;
        case InputType::cable:
            writeTuners<TempNIMQAMGlobal>(input, mapping::kCableTuner,
                                          tunersOf<NimQAMGlobal>(input), NimQAMGlobal::fk_idNimQAM);
            break;
    }
}

}  // namespace

void write::inputs(CmdGetConfiguration& command, const Element& section, const Module& module) {
    const char* mac = module[tarvodb::RedesModulos::MAC].textOrEmpty();
    document::Writer& out = command.out();
    out.open(section.name);
    for (const auto& row :
         doSelect<EntradasGlobal>(command.configDb(), tarvodb::clause::kByMac, mac)) {
        out.open(section.children[0].name);
        writeLeaves(out, mapping::kInput, row);
        // Whatever the input's type: the loop is a property of its satellite tuners.
        const auto satelliteTuners =
            tarvodb::selectByFkIdEntradasGlobal(command.configDb(), row.key());
        writeTunersOfType({command, mac, row, loopThroughOf(satelliteTuners)}, satelliteTuners);
        out.close();
    }
    out.close();
}

}  // namespace tarvo_remote_control
