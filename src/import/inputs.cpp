// A module's inputs with their tuners.
#include <syslog.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "db/clauses.h"
#include "document/input_type.h"
#include "document/settings.h"
#include "import/child_rules.h"
#include "import/required_child.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "platform/debug_log.h"

namespace tarvo_remote_control {

using document::InputType;
using document::XmlNode;
using tarvodb::configuracionWebGlobal;
using tarvodb::DiSEqCGlobal;
using tarvodb::EntradasGlobal;
using tarvodb::NimCOFDMGlobal;
using tarvodb::NimGlobal;
using tarvodb::NimQAMGlobal;
using tarvodb::Record;

namespace {

constexpr RequiredNumber kInputId{.element = "inputId",
                                  .errorCode = error::kModuleInput,
                                  .missing = "Input has no inputId field",
                                  .lowest = 1,
                                  .highest = 2,
                                  .outOfRange = "Input inputId should be 1 or 2"};

constexpr RequiredNumber kType{
    .element = "type",
    .errorCode = error::kModuleInput,
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

// Children of one type of input. On an input of another type they are only told in the log.
constexpr ValueRule<NimGlobal> kSatelliteRules[] = {
    {"frequency", NimGlobal::fe, Compare::text, nullptr},
    {"diseqc", NimGlobal::DiSEqC, Compare::text, nullptr},
    {"scramblingID", NimGlobal::ScramblingID, Compare::numberStoredText, " scramblingID: "},
};

constexpr ValueRule<NimCOFDMGlobal> kTerrestrialRules[] = {
    {"frequency", NimCOFDMGlobal::Frequency, Compare::text, nullptr},
    {"autoScan", NimCOFDMGlobal::trackingStatusEn, Compare::text, " autoScan: "},
    {"onidScan", NimCOFDMGlobal::ONID_Tracking, Compare::text, " onidScan: "},
    {"tsidScan", NimCOFDMGlobal::TSID_Tracking, Compare::text, " tsidScan: "},
};

constexpr ValueRule<NimQAMGlobal> kCableRules[] = {
    {"frequency", NimQAMGlobal::Frequency, Compare::text, nullptr},
    {"symbolRate", NimQAMGlobal::SymbolRate, Compare::numberStoredText, " symbolRate: "},
    {"constelacion", NimQAMGlobal::Constelacion, Compare::numberStoredText, " constelacion: "},
};

using ReadCode = std::optional<int> (*)(document::CodeTable, const char*);

// "auto" or a number.
std::optional<int> automaticOrNumber(document::CodeTable texts, const char* text) {
    return document::codeOfExactly(texts, text).value_or(tarvodb::toInt(text));
}

// A child whose text stands for a code. A text that does not is recorded under `errorCode` and
// always logged as an input's error.
template <class Table>
struct CodedRule {
    const char* element;
    typename Table::Column column;
    document::CodeTable texts;
    ReadCode read;
    const char* label;
    int errorCode = error::kModuleInput;
};

constexpr CodedRule<NimGlobal> kSatelliteCodes[] = {
    {"band", NimGlobal::banda_FI, document::kBand, document::codeOf, " band: "},
    {"PLSmode", NimGlobal::ModoPLS, document::kPlsModeImported, document::codeOfExactly,
     " PLSmode: ", error::kModuleOutput},
    {"streamID", NimGlobal::StreamID, document::kAutomaticId, automaticOrNumber, " streamID: "},
};

constexpr CodedRule<NimCOFDMGlobal> kTerrestrialCodes[] = {
    {"bandwidth", NimCOFDMGlobal::Bandwidth, document::kInputBandwidth, document::codeOfExactly,
     " bandwidth: ", error::kModuleOutput},
    {"hierarchy", NimCOFDMGlobal::Hierarchy, document::kHierarchy, document::codeOfExactly,
     " hierarchy: "},
    {"PLPID", NimCOFDMGlobal::PLP_ID, document::kAutomaticId, automaticOrNumber, " PLPID: "},
};

bool failOnValue(CmdSetConfiguration& command, const char* element,
                 int errorCode = error::kModuleInput) {
    return fail(command,
                Failure{.code = errorCode,
                        .message = std::string("Invalid value for module/input/") + element,
                        .loggedCode = error::kModuleInput});
}

// The first satellite tuner of an input, if it has one. Read anew, so that it is what is stored.
std::optional<Record<NimGlobal>> satelliteTuner(const CmdSetConfiguration& command,
                                                const Record<EntradasGlobal>& input) {
    auto rows = tarvodb::selectByFkIdEntradasGlobal(command.db(), input.key());
    return rows.empty() ? std::nullopt : std::optional(std::move(rows.front()));
}

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
    for (auto& input : inputs) {
        if (input[EntradasGlobal::fk_idEntrada].asInt() == number) {
            return &input;
        }
    }
    return nullptr;
}

bool isFedThroughLoop(const Record<NimGlobal>& satellite) {
    return satellite[NimGlobal::RFIN_LOOP].asInt() == 1;
}

// Input 2 can be fed through input 1's loop: it then shares input 1's polarity and band.
void followLoop(Change<NimGlobal>& second, const Record<NimGlobal>& first) {
    second.copy(NimGlobal::DiSEqC, first[NimGlobal::DiSEqC]);
    second.copy(NimGlobal::banda_FI, first[NimGlobal::banda_FI]);
}

enum class Outcome {
    stored,
    failed,
    outOfRange,  // the frequency cannot be received; the section ends, but does not fail
};

// The tuner's input is in its range between these intermediate frequencies, in MHz.
constexpr int kLowestIntermediateFrequency = 950;
constexpr int kHighestIntermediateFrequency = 2150;

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
        if (const InputRule* rule = ruleOf(kInputRules, child)) {
            const char* text = document::textOf(child);
            reportProgress(std::string("Input: ") + rule->progressName + " = " + text);
            input_.setNumber(rule->column, document::numberOf(child));
            tell(log_, rule->label, child);
            return true;
        }
        if (document::hasName(child, "frequency")) {
            frequencyGiven_ = true;
            tell(log_, " frequency: ", child);
        }
        return applyTunerChild(child, InputType::satellite, satellite_, kSatelliteRules,
                               kSatelliteCodes) &&
               applyTunerChild(child, InputType::terrestrial, terrestrial_, kTerrestrialRules,
                               kTerrestrialCodes) &&
               applyTunerChild(child, InputType::cable, cable_, kCableRules);
    }

    // Applies a child that `rules` name to the tuner when that is of the input's type.
    template <class Table, std::size_t Size>
    bool applyTunerChild(const XmlNode& child, InputType tunerType,
                         std::optional<Change<Table>>& tuner,
                         const ValueRule<Table> (&rules)[Size]) {
        if (const auto* rule = ruleOf(rules, child)) {
            if (type_ == tunerType) {
                setValue(*tuner, rule->column, rule->compare, document::textOf(child));
            }
            tell(log_, rule->label, child);
        }
        return true;
    }

    template <class Table, std::size_t Size, std::size_t CodeSize>
    bool applyTunerChild(const XmlNode& child, InputType tunerType,
                         std::optional<Change<Table>>& tuner, const ValueRule<Table> (&rules)[Size],
                         const CodedRule<Table> (&codes)[CodeSize]) {
        if (const auto* code = ruleOf(codes, child)) {
            if (type_ == tunerType) {
                const auto value = code->read(code->texts, document::textOf(child));
                if (!value) {
                    return failOnValue(command_, code->element, code->errorCode);
                }
                tuner->setNumber(code->column, *value);
            }
            tell(log_, code->label, child);
            return true;
        }
        return applyTunerChild(child, tunerType, tuner, rules);
    }

    // A switched-off input's tuners stand by.
    bool applyActive(const XmlNode& child) {
        const int active = document::numberOf(child);
        if (active != 0 && active != 1) {
            return failOnValue(command_, "active");
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
                return failOnValue(command_, "rfLoop");
            }
            satellite_->setNumber(NimGlobal::RFIN_LOOP, loop);
        }
        tell(log_, " rfLoop: ", child);
        return true;
    }

    Outcome save() {
        bool saved = saveRow(input_, "Could not update eg");
        if (satelliteChanged()) {
            satellite_->row.set(NimGlobal::Estado, 1);
            if (!tuneSatellite()) {
                return saved ? Outcome::outOfRange : Outcome::failed;
            }
            saved &= updateRecord(command_, satellite_->row, "Could not update nim");
        }
        if (terrestrial_) {
            saved &= saveRow(*terrestrial_, "Could not update nimCOFDM");
        }
        if (cable_) {
            saved &= saveRow(*cable_, "Could not update nimQAM");
        }
        return saved ? Outcome::stored : Outcome::failed;
    }

    template <class Table>
    bool saveRow(Change<Table>& change, const char* message) {
        if (!change.changed) {
            return true;
        }
        change.row.set(Table::Estado, 1);
        return updateRecord(command_, change.row, message);
    }

    // Brings DiSEqC, band and the two frequencies of the satellite tuner in line. False when the
    // tuner cannot receive the frequency.
    bool tuneSatellite() {
        if (inputId_ == 2 && isFedThroughLoop(satellite_->row)) {
            if (const auto first = firstInputsSatelliteTuner()) {
                followLoop(*satellite_, *first);
            }
        }
        const auto positions =
            tarvodb::doSelect<DiSEqCGlobal>(command_.db(), tarvodb::clause::kByDiseqcPosition,
                                            satellite_->row[NimGlobal::DiSEqC].textOrEmpty());
        if (!positions.empty()) {
            satellite_->copy(NimGlobal::banda_FI, positions.front()[DiSEqCGlobal::Banda]);
        }
        const auto oscillator = oscillatorFrequency();
        return !oscillator || setFrequencies(*oscillator);
    }

    [[nodiscard]] std::optional<Record<NimGlobal>> firstInputsSatelliteTuner() const {
        const auto* first = inputNumbered(inputs_, 1);
        return first == nullptr ? std::nullopt : satelliteTuner(command_, *first);
    }

    // The local oscillator of the tuner's band in MHz; nothing when it is not set up.
    [[nodiscard]] std::optional<int> oscillatorFrequency() const {
        const bool highBand = satellite_->row[NimGlobal::banda_FI].asInt() == 1;
        const auto settings = tarvodb::selectByNombre(
            command_.db(), tarvodb::tSqlite3parent(highBand ? document::kHighBandOscillatorKey
                                                            : document::kLowBandOscillatorKey));
        return settings.empty()
                   ? std::nullopt
                   : std::optional(settings.front()[configuracionWebGlobal::valor].asInt());
    }

    bool setFrequencies(int oscillator) {
        Record<NimGlobal>& row = satellite_->row;
        if (!frequencyGiven_) {
            const auto received = std::int64_t{row[NimGlobal::Frequency].asInt()} + oscillator;
            row.set(NimGlobal::fe, static_cast<int>(received));
            return true;
        }
        const auto intermediate = std::int64_t{row[NimGlobal::fe].asInt()} - oscillator;
        if (intermediate < kLowestIntermediateFrequency ||
            intermediate > kHighestIntermediateFrequency) {
            return fail(command_, error::kModuleInput,
                        "Resulting intermediate frequency is out of range. Please check frequency "
                        "and diseqc/band/rfLoop values.");
        }
        row.set(NimGlobal::Frequency, static_cast<int>(intermediate));
        return true;
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
            fail(command_, error::kInvalidCommand, "No input element found");
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
            fail(command_, error::kModuleInput, "Input could not be found");
            return Outcome::failed;
        }
        InputImport import(command_, inputs_, *input, tuners, *inputId, inputType);
        const Outcome outcome = import.apply(element);
        firstInputChanged_ |= *inputId == 1 && import.satelliteChanged();
        return outcome;
    }

    [[nodiscard]] Tuners tunersOf(const Record<EntradasGlobal>& input) const {
        Tuners tuners;
        tuners.satellite = satelliteTuner(command_, input);
        tuners.terrestrial = tuner<NimCOFDMGlobal>(command_, input);
        tuners.cable = tuner<NimQAMGlobal>(command_, input);
        return tuners;
    }

    // An input 2 that the document left alone must follow an input 1 that it changed, as far as
    // the module's inputs are satellite ones.
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
                first = satelliteTuner(command_, input);
            } else if (number == 2) {
                second = satelliteTuner(command_, input);
            }
        }
        if (!first || !second || !isFedThroughLoop(*second)) {
            return true;
        }
        Change<NimGlobal> change(*second);
        followLoop(change, *first);
        if (!change.changed) {
            return true;
        }
        second->set(NimGlobal::Estado, 1);
        return updateRecord(command_, *second, "Could not update nim2");
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
        return fail(command, error::kDatabase, "No module inputs found");
    }
    return InputsImport(command, std::move(inputs)).apply(section);
}

}  // namespace tarvo_remote_control
