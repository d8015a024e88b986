// A module's inputs with their tuners.
#include "mapping/inputs.h"

#include <syslog.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "document/input_type.h"
#include "document/xml.h"
#include "import/elements.h"
#include "import/reporting.h"
#include "import/satellite_tuning.h"
#include "import/sections.h"
#include "mapping/element.h"
#include "platform/debug_log.h"

namespace tarvo_remote_control {

using document::InputType;
using document::XmlNode;
using mapping::Element;
using tarvodb::EntradasGlobal;
using tarvodb::NimCOFDMGlobal;
using tarvodb::NimGlobal;
using tarvodb::NimQAMGlobal;
using tarvodb::Record;

namespace {

constexpr const Element& kInputId = mapping::rowNamed(mapping::kInput, "inputId");
constexpr const Element& kActive = mapping::rowNamed(mapping::kInput, "active");
constexpr const Element& kType = mapping::rowNamed(mapping::kInput, "type");
constexpr const Element& kFrequency = mapping::rowNamed(mapping::kSatelliteTuner, "frequency");

// How standard output calls the children of every type of input.
struct ProgressName {
    const char* name;
    const char* shown;
};

constexpr ProgressName kProgressNames[] = {{"type", "Type"}, {"tsid", "TSID"}, {"onid", "ONID"}};

static_assert(mapping::nameOnly(kProgressNames, mapping::kInput));

// The error of a text that cannot be taken.
bool failOnInputValue(CmdSetConfiguration& command, const Element& element) {
    return failOnValue(command, std::string("input/") + element.name,
                       element.refusedAsOutput ? ErrorCode::moduleOutput : ErrorCode::moduleInput,
                       ErrorCode::moduleInput);
}

// The first tuner row of an input, if it has one. Read anew each time, so that it is what is
// stored.
template <class Table>
std::optional<Record<Table>> firstTuner(const CmdSetConfiguration& command,
                                        const Record<EntradasGlobal>& input) {
    auto rows =
        tarvodb::doSelect<Table>(command.db(), tarvodb::clause::kByInput, input.key().text());
    return rows.empty() ? std::nullopt : std::optional(std::move(rows.front()));
}

template <class Table>
constexpr const mapping::ChildTable& tunerTable() {
    return *std::find_if(std::begin(mapping::kTuners), std::end(mapping::kTuners),
                         [](const auto& table) { return table.table == &Table::info; });
}

// The first tuner of its type that an input has, and what is changed of it.
template <class Table>
struct Tuner {
    Tuner(const CmdSetConfiguration& command, const Record<EntradasGlobal>& input,
          const char* message)
        : row(firstTuner<Table>(command, input)), updateMessage(message) {
        if (row) {
            change.emplace(*row);
        }
    }
    Tuner(const Tuner&) = delete;
    Tuner& operator=(const Tuner&) = delete;

    [[nodiscard]] static bool isOfType(InputType type) {
        return tunerTable<Table>().inputType == type;
    }

    // The row of a child that the type has; null when it has none.
    [[nodiscard]] static const Element* elementOf(const XmlNode& child) {
        return mapping::elementOf(tunerTable<Table>().rows, child);
    }

    void setStandby(int standby) {
        if (change) {
            change->setNumber(Table::STANDBY, standby);
        }
    }

    bool save(CmdSetConfiguration& command) {
        return !change || saveIfChanged(command, *change, Table::Estado, updateMessage);
    }

    std::optional<Record<Table>> row;
    std::optional<Change<Table>> change;  // none without a row
    const char* updateMessage;
};

// The first tuners of an input, one of each type. They are read, visited and saved in this order.
struct Tuners {
    Tuners(const CmdSetConfiguration& command, const Record<EntradasGlobal>& input)
        : satellite(command, input, "Could not update nim"),
          terrestrial(command, input, "Could not update nimCOFDM"),
          cable(command, input, "Could not update nimQAM") {}

    // True when `visit` is for every tuner; the first false ends it.
    template <class Visit>
    bool all(Visit visit) {
        return visit(satellite) && visit(terrestrial) && visit(cable);
    }

    [[nodiscard]] bool has(InputType type) {
        return !all([type](auto& tuner) { return !(tuner.isOfType(type) && tuner.change); });
    }

    Tuner<NimGlobal> satellite;
    Tuner<NimCOFDMGlobal> terrestrial;
    Tuner<NimQAMGlobal> cable;
};

Record<EntradasGlobal>* inputNumbered(std::vector<Record<EntradasGlobal>>& inputs, int number) {
    return rowWithNumber(inputs, EntradasGlobal::fk_idEntrada, number);
}

enum class InputOutcome {
    stored,
    failed,  // the section fails
    // The satellite tuner cannot receive the frequency: the error is recorded and the input's
    // tuner rows are not written. The remaining inputs are skipped, but the section does not fail,
    // so that the import is stored.
    outOfRange,
};

// Writes one `input` element.
class InputImport {
  public:
    // `inputs` are the module's inputs, one of which is `input` with the number `inputId`.
    InputImport(CmdSetConfiguration& command, std::vector<Record<EntradasGlobal>>& inputs,
                Record<EntradasGlobal>& input, Tuners& tuners, int inputId, InputType type)
        : command_(command),
          inputs_(inputs),
          input_(input),
          tuners_(tuners),
          inputId_(inputId),
          type_(type) {}

    InputOutcome apply(const XmlNode& element) {
        for (const XmlNode& child : document::childrenOf(element)) {
            if (!applyChild(child)) {
                return InputOutcome::failed;
            }
        }
        logChange("New INPUT parameters: " + log_);
        return save();
    }

    [[nodiscard]] bool satelliteChanged() const {
        return tuners_.satellite.change && tuners_.satellite.change->changed;
    }

  private:
    bool applyChild(const XmlNode& child) {
        if (document::hasName(child, kActive.name)) {
            return applyActive(document::numberOf(child));
        }
        if (document::hasName(child, mapping::kRfLoop.name)) {
            return applyLoop(child);
        }
        if (const Element* element = mapping::elementOf(mapping::kInput, child)) {
            applyToInput(*element, child);
            return true;
        }
        frequencyGiven_ |= document::hasName(child, kFrequency.name);
        return applyToTuners(child);
    }

    void applyToInput(const Element& element, const XmlNode& child) {
        if (const auto* progress = document::rowFor(kProgressNames, child)) {
            reportProgress(std::string("Input: ") + progress->shown + " = " +
                           document::textOf(child));
        }
        input_.take(element, child);
        appendToLog(log_, element.label, child);
    }

    // A child goes to the tuner of the input's type. What only other types have appears in the log
    // all the same; what several have appears once.
    bool applyToTuners(const XmlNode& child) {
        const Element* logged = nullptr;
        return tuners_.all([&](auto& tuner) {
            const Element* element = tuner.elementOf(child);
            if (element == nullptr) {
                return true;
            }
            if (tuner.isOfType(type_) && !takeValue(*tuner.change, *element, child)) {
                return failOnInputValue(command_, *element);
            }
            if (logged == nullptr) {
                appendToLog(log_, element->label, child);
                logged = element;
            }
            return true;
        });
    }

    // False when the text stands for no code.
    template <class Table>
    static bool takeValue(Change<Table>& tuner, const Element& element, const XmlNode& child) {
        if (!element.texts.empty() && !codeOf(element, document::textOf(child))) {
            return false;
        }
        tuner.take(element, child);
        return true;
    }

    // A switched-off input's tuners stand by.
    bool applyActive(int active) {
        if (!kActive.range.contains(active)) {
            return failOnInputValue(command_, kActive);
        }
        if (!input_.row.setIfOtherNumber(EntradasGlobal::Activo, active)) {
            return true;
        }
        input_.changed = true;
        const int standby = active == 1 ? 0 : 1;
        tuners_.all([standby](auto& tuner) {
            tuner.setStandby(standby);
            return true;
        });
        log_ += "STANDBY: " + std::to_string(standby);
        return true;
    }

    // Input 1 feeds the loop and is never fed by it.
    bool applyLoop(const XmlNode& child) {
        if (auto& satellite = tuners_.satellite.change) {
            const int loop = inputId_ == 1 ? 0 : document::numberOf(child);
            if (!mapping::kRfLoop.range.contains(loop)) {
                return failOnInputValue(command_, mapping::kRfLoop);
            }
            satellite->setNumber(NimGlobal::RFIN_LOOP, loop);
        }
        appendToLog(log_, mapping::kRfLoop.label, child);
        return true;
    }

    InputOutcome save() {
        bool saved = saveIfChanged(command_, input_, EntradasGlobal::Estado, "Could not update eg");
        if (satelliteChanged() && !tune(*tuners_.satellite.change)) {
            return saved ? InputOutcome::outOfRange : InputOutcome::failed;
        }
        tuners_.all([&](auto& tuner) {
            saved &= tuner.save(command_);
            return true;
        });
        return saved ? InputOutcome::stored : InputOutcome::failed;
    }

    bool tune(Change<NimGlobal>& satellite) {
        takeOverFromLoop(satellite);
        return tuneSatellite(command_, satellite, frequencyGiven_);
    }

    // Lets input 2 follow input 1 when it is fed through input 1's loop.
    void takeOverFromLoop(Change<NimGlobal>& satellite) {
        if (inputId_ != 2 || !isFedThroughLoop(satellite.row)) {
            return;
        }
        const auto* firstInput = inputNumbered(inputs_, 1);
        if (firstInput == nullptr) {
            return;
        }
        if (const auto first = firstTuner<NimGlobal>(command_, *firstInput)) {
            followLoop(satellite, *first);
        }
    }

    CmdSetConfiguration& command_;
    std::vector<Record<EntradasGlobal>>& inputs_;
    Change<EntradasGlobal> input_;
    Tuners& tuners_;
    int inputId_;
    InputType type_;
    bool frequencyGiven_ = false;
    std::string log_;
};

// The inputs of one module.
class InputsImport {
  public:
    InputsImport(CmdSetConfiguration& command, std::vector<Record<EntradasGlobal>> inputs)
        : command_(command), inputs_(std::move(inputs)) {}

    bool apply(const XmlNode& section) {
        for (const XmlNode& element : document::childrenOf(section)) {
            const InputOutcome outcome = applyInput(element);
            if (outcome == InputOutcome::failed) {
                return false;
            }
            if (outcome == InputOutcome::outOfRange) {
                break;
            }
        }
        return !firstInputChanged_ || updateLoopedInput();
    }

  private:
    InputOutcome applyInput(const XmlNode& element) {
        if (!document::hasName(element, mapping::kInputs[0].name)) {
            fail(command_, ErrorCode::invalidCommand, "No input element found");
            return InputOutcome::failed;
        }
        const auto inputId = requiredNumber(command_, element, kInputId, ErrorCode::moduleInput);
        const auto type = inputId ? requiredNumber(command_, element, kType, ErrorCode::moduleInput)
                                  : std::nullopt;
        return type ? applyTo(element, *inputId, static_cast<InputType>(*type))
                    : InputOutcome::failed;
    }

    // Writes the element to the input of that number, which must have a tuner of that type.
    InputOutcome applyTo(const XmlNode& element, int inputId, InputType type) {
        auto* input = inputNumbered(inputs_, inputId);
        std::optional<Tuners> tuners;
        if (input != nullptr) {
            tuners.emplace(command_, *input);
        }
        if (!tuners || !tuners->has(type)) {
            fail(command_, ErrorCode::moduleInput, "Input could not be found");
            return InputOutcome::failed;
        }
        InputImport inputImport(command_, inputs_, *input, *tuners, inputId, type);
        const InputOutcome outcome = inputImport.apply(element);
        firstInputChanged_ |= inputId == 1 && inputImport.satelliteChanged();
        return outcome;
    }

    // After a change of input 1's satellite tuner, an input 2 that is fed through its loop takes
    // over DiSEqC position and band. The first input that is not a satellite one ends the search.
    // The frequencies of input 2 are not computed anew.
    bool updateLoopedInput() {
        platform::debugLog(LOG_DEBUG, "input 1 changed, need to check input 2");
        std::optional<Record<NimGlobal>> first;
        std::optional<Record<NimGlobal>> second;
        for (const auto& input : inputs_) {
            if (input[EntradasGlobal::tipoEntrada].asInt() !=
                static_cast<int>(InputType::satellite)) {
                break;
            }
            const int number = input[EntradasGlobal::fk_idEntrada].asInt();
            if (number == 1) {
                first = firstTuner<NimGlobal>(command_, input);
            } else if (number == 2) {
                second = firstTuner<NimGlobal>(command_, input);
            }
        }
        if (!first || !second || !isFedThroughLoop(*second)) {
            return true;
        }
        Change<NimGlobal> change(*second);
        followLoop(change, *first);
        return saveIfChanged(command_, change, NimGlobal::Estado, "Could not update nim2");
    }

    CmdSetConfiguration& command_;
    std::vector<Record<EntradasGlobal>> inputs_;
    bool firstInputChanged_ = false;
};

}  // namespace

bool apply::inputs(CmdSetConfiguration& command, const char* mac, const XmlNode& section) {
    reportProgress("Processing: Inputs");
    auto rows = tarvodb::doSelect<EntradasGlobal>(command.db(), tarvodb::clause::kByMac, mac);
    if (rows.empty()) {
        return fail(command, ErrorCode::database, "No module inputs found");
    }
    return InputsImport(command, std::move(rows)).apply(section);
}

}  // namespace tarvo_remote_control
