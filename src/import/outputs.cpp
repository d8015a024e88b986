// A module's logical outputs with their RF modulators.
#include <string>
#include <vector>

#include "db/clauses.h"
#include "device/device_identity.h"
#include "import/child_rules.h"
#include "import/required_child.h"
#include "import/sections.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::Record;
using tarvodb::RFOutGlobal;
using tarvodb::SalidasLogicasGlobal;

namespace {

constexpr RequiredNumber kOutputId{.element = "outputId",
                                   .errorCode = ErrorCode::moduleOutput,
                                   .missing = "Output has no outputId field",
                                   .lowest = 1,
                                   .highest = 2,
                                   .outOfRange = "Output outputId should be 1 or 2"};

constexpr ValueRule<SalidasLogicasGlobal> kTransportStreamRules[] = {
    {"onid", SalidasLogicasGlobal::ONID_Out, Compare::text, " onid: "},
    {"tsid", SalidasLogicasGlobal::TSID_Out, Compare::text, " tsid: "},
};

constexpr ValueRule<RFOutGlobal> kRfRules[] = {
    {"frequency", RFOutGlobal::Frecuencia, Compare::text, " frequency: "},
    {"symbolRate", RFOutGlobal::Symbol_Rate, Compare::text, " symbolRate: "},
};

// A coded text of an output, in any letter case.
constexpr CodedRule<RFOutGlobal> codedText(const char* element, RFOutGlobal::Column column,
                                           document::CodeTable texts, const char* label) {
    return {element,
            column,
            texts,
            document::codeOfAnyCase,
            label,
            ErrorCode::moduleOutput,
            ErrorCode::moduleOutput};
}

constexpr CodedRule<RFOutGlobal> kCodedRules[] = {
    codedText("modeOFDM", RFOutGlobal::Modo_OFDM, document::kModeOFDM, " modeOFDM: "),
    codedText("bandwidth", RFOutGlobal::Ancho_Banda, document::kOutputBandwidth, " bandwidth: "),
    codedText("guardInterval", RFOutGlobal::Intervalo_Guarda, document::kGuardInterval,
              " guardInterval: "),
    codedText("codeRate", RFOutGlobal::Code_Rate, document::kCodeRate, " codeRate: "),
    codedText("formatIQ", RFOutGlobal::Espectro_Salida, document::kSpectrum, "formatIQ: "),
};

CodedRule<RFOutGlobal> constellationRule(int rfOutputMode) {
    return codedText("constellation", RFOutGlobal::Constelacion,
                     document::constellationOf(rfOutputMode), " constellation: ");
}

// Writes one `output` element.
class OutputImport {
  public:
    OutputImport(CmdSetConfiguration& command, int outputId, Record<SalidasLogicasGlobal>& logical,
                 Record<RFOutGlobal>& rf)
        : command_(command), outputId_(outputId), logical_(logical), rf_(rf) {}

    bool apply(const XmlNode& element, int rfOutputMode) {
        for (const XmlNode& child : document::childrenOf(element)) {
            if (!applyChild(child, rfOutputMode)) {
                return false;
            }
        }
        applySecondOutputMode();
        logChange("New OUTPUT parameters: " + log_);
        return save();
    }

  private:
    bool applyChild(const XmlNode& child, int rfOutputMode) {
        if (document::hasName(child, "active")) {
            return applyActive(child);
        }
        if (document::hasName(child, "constellation")) {
            return applyCoded(child, constellationRule(rfOutputMode),
                              rfOutputMode == 0 ? " DVBT" : " DVBC");
        }
        if (const auto* rule = document::rowFor(kCodedRules, child)) {
            return applyCoded(child, *rule);
        }
        if (const auto* rule = document::rowFor(kTransportStreamRules, child)) {
            setValue(logical_, *rule, child);
            appendToLog(log_, rule->label, child);
        } else if (const auto* rfRule = document::rowFor(kRfRules, child)) {
            setValue(rf_, *rfRule, child);
            appendToLog(log_, rfRule->label, child);
        }
        return true;
    }

    bool applyActive(const XmlNode& child) {
        const int active = document::numberOf(child);
        if (active != 0 && active != 1) {
            return failOnValue(command_, "output/active", ErrorCode::moduleOutput,
                               ErrorCode::moduleOutput);
        }
        // A modulator that is on holds 3: it never equals 1, so that "on" always is a change.
        if (rf_.row[RFOutGlobal::Modo_Salida_Modulacion].asInt() != active) {
            rf_.row.set(RFOutGlobal::Modo_Salida_Modulacion, active == 1 ? "3" : "0");
            rf_.changed = true;
        }
        givenActive_ = active;
        appendToLog(log_, " active: ", child);
        return true;
    }

    // An error message tells the constellation's table too.
    bool applyCoded(const XmlNode& child, const CodedRule<RFOutGlobal>& rule,
                    const char* errorSuffix = "") {
        const auto code =
            readCode(command_, rule, child, std::string("output/") + rule.element + errorSuffix);
        if (!code) {
            return false;
        }
        rf_.setNumber(rule.column, *code);
        if (rule.column == RFOutGlobal::Modo_OFDM) {
            givenModeOfdm_ = *code;
        }
        appendToLog(log_, rule.label, child);
        return true;
    }

    // On these models the second logical output is there unless the element makes it an 8K output
    // that is switched off.
    void applySecondOutputMode() {
        if (!DeviceIdentity::instance().isLMV() || outputId_ != 2) {
            return;
        }
        const bool off = givenModeOfdm_ == document::kMode8K && givenActive_ == 0;
        logical_.setNumber(SalidasLogicasGlobal::Activo, off ? 0 : 1);
    }

    bool save() {
        const bool logicalSaved =
            saveIfChanged(command_, logical_, SalidasLogicasGlobal::Estado, "Could not update sg");
        return saveIfChanged(command_, rf_, RFOutGlobal::Estado, "Could not update rfog") &&
               logicalSaved;
    }

    CmdSetConfiguration& command_;
    int outputId_;
    Change<SalidasLogicasGlobal> logical_;
    Change<RFOutGlobal> rf_;
    int givenActive_ = 0;
    int givenModeOfdm_ = 0;
    std::string log_;
};

std::vector<Record<RFOutGlobal>> rfOutputs(const CmdSetConfiguration& command,
                                           const Record<SalidasLogicasGlobal>& logical) {
    return tarvodb::doSelect<RFOutGlobal>(command.db(), tarvodb::clause::kByLogicalOutput,
                                          logical.key().text());
}

bool applyOutput(CmdSetConfiguration& command, std::vector<Record<SalidasLogicasGlobal>>& outputs,
                 int rfOutputMode, const XmlNode& element) {
    if (!document::hasName(element, "output")) {
        return fail(command, ErrorCode::invalidCommand, "No output element found");
    }
    const auto outputId = requiredNumber(command, element, kOutputId);
    if (!outputId) {
        return false;
    }
    auto* logical = rowWithNumber(outputs, SalidasLogicasGlobal::fk_idSalidasLogicas, *outputId);
    std::vector<Record<RFOutGlobal>> rfRows;
    if (logical != nullptr) {
        rfRows = rfOutputs(command, *logical);
    }
    if (rfRows.empty()) {
        return fail(command, Failure{.code = ErrorCode::moduleOutput,
                                     .message = "Output could not be found",
                                     .loggedCode = ErrorCode::invalidCommand});
    }
    return OutputImport(command, *outputId, *logical, rfRows.front()).apply(element, rfOutputMode);
}

}  // namespace

bool applyOutputs(CmdSetConfiguration& command, const char* mac, int rfOutputMode,
                  const XmlNode& section) {
    reportProgress("Processing: Outputs");
    auto outputs =
        tarvodb::doSelect<SalidasLogicasGlobal>(command.db(), tarvodb::clause::kByMac, mac);
    if (outputs.empty()) {
        return fail(command, ErrorCode::database, "No module outputs found");
    }
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!applyOutput(command, outputs, rfOutputMode, element)) {
            return false;
        }
    }
    return true;
}

}  // namespace tarvo_remote_control
