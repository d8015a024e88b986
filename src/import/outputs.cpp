// A module's logical outputs with their RF modulators.
#include <optional>
#include <string>
#include <vector>

#include "db/clauses.h"
#include "device/device_identity.h"
#include "import/child_rules.h"
#include "import/required_child.h"
#include "import/sections.h"
#include "import/table_writes.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::Record;
using tarvodb::RFOutGlobal;
using tarvodb::SalidasLogicasGlobal;

namespace {

constexpr RequiredNumber kOutputId{.element = "outputId",
                                   .errorCode = error::kModuleOutput,
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

// A child with a coded text. Its error message ends with the element's name and `errorSuffix`.
struct CodedRule {
    const char* element;
    RFOutGlobal::Column column;
    document::CodeTable texts;
    const char* label;
    const char* errorSuffix = "";
};

constexpr CodedRule kCodedRules[] = {
    {"modeOFDM", RFOutGlobal::Modo_OFDM, document::kModeOFDM, " modeOFDM: "},
    {"bandwidth", RFOutGlobal::Ancho_Banda, document::kOutputBandwidth, " bandwidth: "},
    {"guardInterval", RFOutGlobal::Intervalo_Guarda, document::kGuardInterval, " guardInterval: "},
    {"codeRate", RFOutGlobal::Code_Rate, document::kCodeRate, " codeRate: "},
    {"formatIQ", RFOutGlobal::Espectro_Salida, document::kSpectrum, "formatIQ: "},
};

CodedRule constellationRule(int rfOutputMode) {
    return {"constellation", RFOutGlobal::Constelacion, document::constellationOf(rfOutputMode),
            " constellation: ", rfOutputMode == 0 ? " DVBT" : " DVBC"};
}

// Writes one `output` element.
class OutputImport {
  public:
    OutputImport(CmdSetConfiguration& command, int outputId, Record<SalidasLogicasGlobal>& logical,
                 Record<RFOutGlobal>& rf)
        : command_(command), outputId_(outputId), logical_(logical), rf_(rf) {}

    bool apply(const XmlNode& element, int rfOutputMode) {
        const CodedRule constellation = constellationRule(rfOutputMode);
        for (const XmlNode& child : document::childrenOf(element)) {
            if (!applyChild(child, constellation)) {
                return false;
            }
        }
        applySecondOutputMode();
        logChange("New OUTPUT parameters: " + log_);
        return save();
    }

  private:
    bool applyChild(const XmlNode& child, const CodedRule& constellation) {
        if (document::hasName(child, "active")) {
            return applyActive(child);
        }
        if (const auto* rule = ruleOf(kTransportStreamRules, child)) {
            setValue(logical_, rule->column, rule->compare, document::textOf(child));
            tell(log_, rule->label, child);
        } else if (const auto* rfRule = ruleOf(kRfRules, child)) {
            setValue(rf_, rfRule->column, rfRule->compare, document::textOf(child));
            tell(log_, rfRule->label, child);
        } else if (const auto* codedRule = ruleOf(kCodedRules, child)) {
            return applyCoded(child, *codedRule);
        } else if (document::hasName(child, constellation.element)) {
            return applyCoded(child, constellation);
        }
        return true;
    }

    bool applyActive(const XmlNode& child) {
        const int active = document::numberOf(child);
        if (active != 0 && active != 1) {
            return fail(command_, error::kModuleOutput, "Invalid value for module/output/active");
        }
        // A modulator that is on holds 3: it never equals 1, so that "on" always is a change.
        if (rf_.row[RFOutGlobal::Modo_Salida_Modulacion].asInt() != active) {
            rf_.row.set(RFOutGlobal::Modo_Salida_Modulacion, active == 1 ? "3" : "0");
            rf_.changed = true;
        }
        givenActive_ = active;
        tell(log_, " active: ", child);
        return true;
    }

    bool applyCoded(const XmlNode& child, const CodedRule& rule) {
        const std::optional<int> code = document::codeOf(rule.texts, document::textOf(child));
        if (!code) {
            return fail(
                command_, error::kModuleOutput,
                std::string("Invalid value for module/output/") + rule.element + rule.errorSuffix);
        }
        rf_.setNumber(rule.column, *code);
        if (rule.column == RFOutGlobal::Modo_OFDM) {
            givenModeOfdm_ = *code;
        }
        tell(log_, rule.label, child);
        return true;
    }

    // On these models the second logical output is there unless the element makes it an 8K output
    // that is switched off.
    void applySecondOutputMode() {
        if (!DeviceIdentity::instance().isLMV() || outputId_ != 2) {
            return;
        }
        constexpr int k8K = 1;
        const bool off = givenModeOfdm_ == k8K && givenActive_ == 0;
        logical_.setNumber(SalidasLogicasGlobal::Activo, off ? 0 : 1);
    }

    bool save() {
        bool saved = true;
        if (logical_.changed) {
            logical_.row.set(SalidasLogicasGlobal::Estado, 1);
            saved = updateRecord(command_, logical_.row, "Could not update sg");
        }
        if (rf_.changed) {
            rf_.row.set(RFOutGlobal::Estado, 1);
            saved &= updateRecord(command_, rf_.row, "Could not update rfog");
        }
        return saved;
    }

    CmdSetConfiguration& command_;
    int outputId_;
    Change<SalidasLogicasGlobal> logical_;
    Change<RFOutGlobal> rf_;
    int givenActive_ = 0;
    int givenModeOfdm_ = 0;
    std::string log_;
};

Record<SalidasLogicasGlobal>* logicalOutput(std::vector<Record<SalidasLogicasGlobal>>& outputs,
                                            int outputId) {
    for (auto& output : outputs) {
        if (output[SalidasLogicasGlobal::fk_idSalidasLogicas].asInt() == outputId) {
            return &output;
        }
    }
    return nullptr;
}

std::vector<Record<RFOutGlobal>> rfOutputs(const CmdSetConfiguration& command,
                                           const Record<SalidasLogicasGlobal>& logical) {
    return tarvodb::doSelect<RFOutGlobal>(command.db(), tarvodb::clause::kByLogicalOutput,
                                          logical.key().text());
}

bool applyOutput(CmdSetConfiguration& command, std::vector<Record<SalidasLogicasGlobal>>& outputs,
                 int rfOutputMode, const XmlNode& element) {
    if (!document::hasName(element, "output")) {
        return fail(command, error::kInvalidCommand, "No output element found");
    }
    const auto outputId = requiredNumber(command, element, kOutputId);
    if (!outputId) {
        return false;
    }
    auto* logical = logicalOutput(outputs, *outputId);
    std::vector<Record<RFOutGlobal>> rfRows;
    if (logical != nullptr) {
        rfRows = rfOutputs(command, *logical);
    }
    if (rfRows.empty()) {
        return fail(command, Failure{.code = error::kModuleOutput,
                                     .message = "Output could not be found",
                                     .loggedCode = error::kInvalidCommand});
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
        return fail(command, error::kDatabase, "No module outputs found");
    }
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!applyOutput(command, outputs, rfOutputMode, element)) {
            return false;
        }
    }
    return true;
}

}  // namespace tarvo_remote_control
