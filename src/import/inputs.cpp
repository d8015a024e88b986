// A module's inputs with their tuners.
#include <syslog.h>

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "db/clauses.h"
#include "document/input_type.h"
#include "import/child_rules.h"
#include "import/required_child.h"
#include "import/satellite_tuning.h"
#include "import/sections.h"
#include "platform/debug_log.h"
#include "text/to_int.h"

namespace tarvo_remote_control {

using document::InputType;
using document::XmlNode;
using tarvodb::EntradasGlobal;
using tarvodb::NimCOFDMGlobal;
using tarvodb::NimGlobal;
using tarvodb::NimQAMGlobal;
using tarvodb::Record;

namespace {

constexpr RequiredNumber kInputId{.element = "inputId",
                                  .errorCode = ErrorCode::moduleInput,
                                  .missing = "Input has no inputId field",
                                  .lowest = 1,
                                  .highest = 2,
                                  .outOfRange = "Input inputId should be 1 or 2"};

constexpr RequiredNumber kType{
    .element = "type",
    .errorCode = ErrorCode::moduleInput,
    .missing = "Input has no type field",
    .lowest = 0,
    .highest = 2,
    .outOfRange = "Input type should be 0, 1 or 2",
    .outOfRangeDebugLine = "Error 401, Input Input type should be 0, 1 or 2"};

// Children for every type of input; `progressName` is how standard output calls them.
struct InputRule {
    const char* element;
    EntradasGlobal::Column column;
    const char* label;
    const char* progressName;
};

constexpr InputRule kInputRules[] = {
    {"type", EntradasGlobal::tipoEntrada, " type: ", "Type"},
    {"tsid", EntradasGlobal::TSID, " tsid: ", "TSID"},
    {"onid", EntradasGlobal::ONID, " onid: ", "ONID"},
};

// Children of one type of input. On an input of another type they only appear in the log, where
// they have a label. A `frequency` is logged and remembered once, whatever the type.
constexpr ValueRule<NimGlobal> kSatelliteRules[] = {
    {"frequency", NimGlobal::fe, Compare::text, kNotLogged},
    {"diseqc", NimGlobal::DiSEqC, Compare::text, kNotLogged},
    {"scramblingID", NimGlobal::ScramblingID, Compare::numberStoredText, " scramblingID: "},
};

constexpr ValueRule<NimCOFDMGlobal> kTerrestrialRules[] = {
    {"frequency", NimCOFDMGlobal::Frequency, Compare::text, kNotLogged},
    {"autoScan", NimCOFDMGlobal::trackingStatusEn, Compare::text, " autoScan: "},
    {"onidScan", NimCOFDMGlobal::ONID_Tracking, Compare::text, " onidScan: "},
    {"tsidScan", NimCOFDMGlobal::TSID_Tracking, Compare::text, " tsidScan: "},
};

constexpr ValueRule<NimQAMGlobal> kCableRules[] = {
    {"frequency", NimQAMGlobal::Frequency, Compare::text, kNotLogged},
    {"symbolRate", NimQAMGlobal::SymbolRate, Compare::numberStoredText, " symbolRate: "},
    {"constelacion", NimQAMGlobal::Constelacion, Compare::numberStoredText, " constelacion: "},
};

// "auto" or a number.
std::optional<int> automaticOrNumber(document::CodeTable texts, const char* text) {
    return document::codeOfExactly(texts, text).value_or(text::toInt(text));
}

// `PLSmode` and `bandwidth` are recorded as an output's error and logged as an input's: kept.
constexpr CodedRule<NimGlobal> kSatelliteCodes[] = {
    {"band", NimGlobal::banda_FI, document::kBand, document::codeOfAnyCase,
     " band: ", ErrorCode::moduleInput, ErrorCode::moduleInput},
    {"PLSmode", NimGlobal::ModoPLS, document::kPlsModeImported, document::codeOfExactly,
     " PLSmode: ", ErrorCode::moduleOutput, ErrorCode::moduleInput},
    {"streamID", NimGlobal::StreamID, document::kAutomaticId, automaticOrNumber,
     " streamID: ", ErrorCode::moduleInput, ErrorCode::moduleInput},
};

constexpr CodedRule<NimCOFDMGlobal> kTerrestrialCodes[] = {
    {"bandwidth", NimCOFDMGlobal::Bandwidth, document::kInputBandwidth, document::codeOfExactly,
     " bandwidth: ", ErrorCode::moduleOutput, ErrorCode::moduleInput},
    {"hierarchy", NimCOFDMGlobal::Hierarchy, document::kHierarchy, document::codeOfExactly,
     " hierarchy: ", ErrorCode::moduleInput, ErrorCode::moduleInput},
    {"PLPID", NimCOFDMGlobal::PLP_ID, document::kAutomaticId, automaticOrNumber,
     " PLPID: ", ErrorCode::moduleInput, ErrorCode::moduleInput},
};

constexpr std::span<const CodedRule<NimQAMGlobal>> kCableCodes{};

bool failOnInputValue(CmdSetConfiguration& command, const char* element) {
    return failOnValue(command, std::string("input/") + element, ErrorCode::moduleInput,
                       ErrorCode::moduleInput);
}

// The first tuner row of an input, if it has one. Read anew each time, so that it is what is
// stored.
template <class Table>
std::optional<Record<Table>> tuner(const CmdSetConfiguration& command,
                                   const Record<EntradasGlobal>& input) {
    auto rows =
        tarvodb::doSelect<Table>(command.db(), tarvodb::clause::kByInput, input.key().text());
    return rows.empty() ? std::nullopt : std::optional(std::move(rows.front()));
}

// The first tuner rows of an input, one of each type.
struct Tuners {
    std::optional<Record<NimGlobal>> satellite;
    std::optional<Record<NimCOFDMGlobal>> terrestrial;
    std::optional<Record<NimQAMGlobal>> cable;

    [[nodiscard]] bool has(InputType type) const {
        switch (type) {
            case InputType::satellite:
                return satellite.has_value();
            case InputType::terrestrial:
                return terrestrial.has_value();
            case InputType::cable:
                return cable.has_value();
        }
        return false;
    }
};

Record<EntradasGlobal>* inputNumbered(std::vector<Record<EntradasGlobal>>& inputs, int number) {
    return rowWithNumber(inputs, EntradasGlobal::fk_idEntrada, number);
}

enum class Outcome {
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
        : command_(command), inputs_(inputs), input_(input), inputId_(inputId), type_(type) {
        if (tuners.satellite) {
            satellite_.emplace(*tuners.satellite);
        }
        if (tuners.terrestrial) {
            terrestrial_.emplace(*tuners.terrestrial);
        }
        if (tuners.cable) {
            cable_.emplace(*tuners.cable);
        }
    }

    Outcome apply(const XmlNode& element) {
        for (const XmlNode& child : document::childrenOf(element)) {
            if (!applyChild(child)) {
                return Outcome::failed;
            }
        }
        logChange("New INPUT parameters: " + log_);
        return save();
    }

    [[nodiscard]] bool satelliteChanged() const { return satellite_ && satellite_->changed; }

  private:
    bool applyChild(const XmlNode& child) {
        if (document::hasName(child, "active")) {
            return applyActive(child);
        }
        if (document::hasName(child, "rfLoop")) {
            return applyLoop(child);
        }
        if (const InputRule* rule = document::rowFor(kInputRules, child)) {
            const char* text = document::textOf(child);
            reportProgress(std::string("Input: ") + rule->progressName + " = " + text);
            input_.setNumber(rule->column, document::numberOf(child));
            appendToLog(log_, rule->label, child);
            return true;
        }
        if (document::hasName(child, "frequency")) {
            frequencyGiven_ = true;
            appendToLog(log_, " frequency: ", child);
        }
        return applyTunerChild(child, InputType::satellite, satellite_, kSatelliteRules,
                               kSatelliteCodes) &&
               applyTunerChild(child, InputType::terrestrial, terrestrial_, kTerrestrialRules,
                               kTerrestrialCodes) &&
               applyTunerChild(child, InputType::cable, cable_, kCableRules, kCableCodes);
    }

    // Applies a child that has a rule to the tuner, when that is of the input's type.
    template <class Table, class Codes, std::size_t Size>
    bool applyTunerChild(const XmlNode& child, InputType tunerType,
                         std::optional<Change<Table>>& tuner, const ValueRule<Table> (&rules)[Size],
                         const Codes& codes) {
        const bool applies = type_ == tunerType;
        if (const auto* rule = document::rowFor(rules, child)) {
            if (applies) {
                setValue(*tuner, *rule, child);
            }
            appendToLog(log_, rule->label, child);
        } else if (const auto* coded = document::rowFor(codes, child)) {
            if (applies) {
                const auto code =
                    readCode(command_, *coded, child, std::string("input/") + coded->element);
                if (!code) {
                    return false;
                }
                tuner->setNumber(coded->column, *code);
            }
            appendToLog(log_, coded->label, child);
        }
        return true;
    }

    // A switched-off input's tuners stand by.
    bool applyActive(const XmlNode& child) {
        const int active = document::numberOf(child);
        if (active != 0 && active != 1) {
            return failOnInputValue(command_, "active");
        }
        if (!input_.row.setIfOtherNumber(EntradasGlobal::Activo, active)) {
            return true;
        }
        input_.changed = true;
        const int standby = active == 1 ? 0 : 1;
        if (satellite_) {
            satellite_->setNumber(NimGlobal::STANDBY, standby);
        }
        if (terrestrial_) {
            terrestrial_->setNumber(NimCOFDMGlobal::STANDBY, standby);
        }
        if (cable_) {
            cable_->setNumber(NimQAMGlobal::STANDBY, standby);
        }
        log_ += "STANDBY: " + std::to_string(standby);
        return true;
    }

    // Input 1 feeds the loop and is never fed by it.
    bool applyLoop(const XmlNode& child) {
        if (satellite_) {
            const int loop = inputId_ == 1 ? 0 : document::numberOf(child);
            if (loop != 0 && loop != 1) {
                return failOnInputValue(command_, "rfLoop");
            }
            satellite_->setNumber(NimGlobal::RFIN_LOOP, loop);
        }
        appendToLog(log_, " rfLoop: ", child);
        return true;
    }

    Outcome save() {
        bool saved = saveIfChanged(command_, input_, EntradasGlobal::Estado, "Could not update eg");
        if (satelliteChanged()) {
            satellite_->row.set(NimGlobal::Estado, StatusMark::changed);
            takeOverFromLoop();
            if (!tuneSatellite(command_, *satellite_, frequencyGiven_)) {
                return saved ? Outcome::outOfRange : Outcome::failed;
            }
            saved &= updateRecord(command_, satellite_->row, "Could not update nim");
        }
        if (terrestrial_) {
            saved &= saveIfChanged(command_, *terrestrial_, NimCOFDMGlobal::Estado,
                                   "Could not update nimCOFDM");
        }
        if (cable_) {
            saved &=
                saveIfChanged(command_, *cable_, NimQAMGlobal::Estado, "Could not update nimQAM");
        }
        return saved ? Outcome::stored : Outcome::failed;
    }

    // Lets input 2 follow input 1 when it is fed through input 1's loop.
    void takeOverFromLoop() {
        if (inputId_ != 2 || !isFedThroughLoop(satellite_->row)) {
            return;
        }
        const auto* firstInput = inputNumbered(inputs_, 1);
        if (firstInput == nullptr) {
            return;
        }
        if (const auto first = tuner<NimGlobal>(command_, *firstInput)) {
            followLoop(*satellite_, *first);
        }
    }

    CmdSetConfiguration& command_;
    std::vector<Record<EntradasGlobal>>& inputs_;
    Change<EntradasGlobal> input_;
    std::optional<Change<NimGlobal>> satellite_;
    std::optional<Change<NimCOFDMGlobal>> terrestrial_;
    std::optional<Change<NimQAMGlobal>> cable_;
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
            const Outcome outcome = applyInput(element);
            if (outcome == Outcome::failed) {
                return false;
            }
            if (outcome == Outcome::outOfRange) {
                break;
            }
        }
        return !firstInputChanged_ || updateLoopedInput();
    }

  private:
    Outcome applyInput(const XmlNode& element) {
        if (!document::hasName(element, "input")) {
            fail(command_, ErrorCode::invalidCommand, "No input element found");
            return Outcome::failed;
        }
        const auto inputId = requiredNumber(command_, element, kInputId);
        const auto type = inputId ? requiredNumber(command_, element, kType) : std::nullopt;
        if (!type) {
            return Outcome::failed;
        }
        const auto inputType = static_cast<InputType>(*type);
        auto* input = inputNumbered(inputs_, *inputId);
        Tuners tuners = input == nullptr ? Tuners{} : tunersOf(*input);
        if (!tuners.has(inputType)) {
            fail(command_, ErrorCode::moduleInput, "Input could not be found");
            return Outcome::failed;
        }
        InputImport inputImport(command_, inputs_, *input, tuners, *inputId, inputType);
        const Outcome outcome = inputImport.apply(element);
        firstInputChanged_ |= *inputId == 1 && inputImport.satelliteChanged();
        return outcome;
    }

    [[nodiscard]] Tuners tunersOf(const Record<EntradasGlobal>& input) const {
        Tuners tuners;
        tuners.satellite = tuner<NimGlobal>(command_, input);
        tuners.terrestrial = tuner<NimCOFDMGlobal>(command_, input);
        tuners.cable = tuner<NimQAMGlobal>(command_, input);
        return tuners;
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
                first = tuner<NimGlobal>(command_, input);
            } else if (number == 2) {
                second = tuner<NimGlobal>(command_, input);
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

bool applyInputs(CmdSetConfiguration& command, const char* mac, const XmlNode& section) {
    reportProgress("Processing: Inputs");
    auto inputs = tarvodb::doSelect<EntradasGlobal>(command.db(), tarvodb::clause::kByMac, mac);
    if (inputs.empty()) {
        return fail(command, ErrorCode::database, "No module inputs found");
    }
    return InputsImport(command, std::move(inputs)).apply(section);
}

}  // namespace tarvo_remote_control
