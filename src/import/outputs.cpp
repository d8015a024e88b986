// A module's logical outputs with their RF modulators.
#include "mapping/outputs.h"

#include <string>
#include <vector>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "device/device_identity.h"
#include "document/coded_texts.h"
#include "document/xml.h"
#include "import/elements.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::Record;
using tarvodb::RFOutGlobal;
using tarvodb::SalidasLogicasGlobal;

namespace {

constexpr const Element& kOutputId = mapping::rowNamed(mapping::kOutput, "outputId");
constexpr const Element& kActive = mapping::rowNamed(mapping::kRfOutput, "active");

// How an error calls the element: of a constellation it names the table too.
std::string errorPath(const Element& element, int rfOutputMode) {
    const char* table = element.dvbCTexts.empty() ? "" : rfOutputMode == 0 ? " DVBT" : " DVBC";
    return std::string("output/") + element.name + table;
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
        if (const Element* element = mapping::elementOf(mapping::kOutput, child)) {
            logical_.take(*element, child);
            appendToLog(log_, element->label, child);
        } else if (const Element* rfElement = mapping::elementOf(mapping::kRfOutput, child)) {
            return applyRf(*rfElement, child, rfOutputMode);
        }
        return true;
    }

    bool applyRf(const Element& element, const XmlNode& child, int rfOutputMode) {
        if (!takeRf(element, child, rfOutputMode)) {
            return failOnValue(command_, errorPath(element, rfOutputMode), ErrorCode::moduleOutput,
                               ErrorCode::moduleOutput);
        }
        appendToLog(log_, element.label, child);
        return true;
    }

    bool takeRf(const Element& element, const XmlNode& child, int rfOutputMode) {
        if (&element == &kActive) {
            return applyActive(document::numberOf(child));
        }
        if (element.take == mapping::Take::code) {
            return applyCode(element, document::textOf(child), rfOutputMode);
        }
        rf_.take(element, child);
        return true;
    }

    bool applyActive(int active) {
        if (!kActive.range.contains(active)) {
            return false;
        }
        // A modulator that is on holds 3: it never equals 1, so that "on" always is a change.
        if (rf_.row[RFOutGlobal::Modo_Salida_Modulacion].asInt() != active) {
            rf_.row.set(RFOutGlobal::Modo_Salida_Modulacion, active == 1 ? "3" : "0");
            rf_.changed = true;
        }
        givenActive_ = active;
        return true;
    }

    bool applyCode(const Element& element, const char* text, int rfOutputMode) {
        const auto code = codeOf(element, text, rfOutputMode);
        if (!code) {
            return false;
        }
        rf_.setNumber(element, *code);
        if (element.column.index == RFOutGlobal::Modo_OFDM) {
            givenModeOfdm_ = *code;
        }
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

bool applyOutput(CmdSetConfiguration& command, std::vector<Record<SalidasLogicasGlobal>>& logicals,
                 int rfOutputMode, const XmlNode& element) {
    if (!document::hasName(element, mapping::kOutputs[0].name)) {
        return fail(command, ErrorCode::invalidCommand, "No output element found");
    }
    const auto outputId = requiredNumber(command, element, kOutputId, ErrorCode::moduleOutput);
    if (!outputId) {
        return false;
    }
    auto* logical = rowWithNumber(logicals, SalidasLogicasGlobal::fk_idSalidasLogicas, *outputId);
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

bool apply::outputs(CmdSetConfiguration& command, const char* mac, int rfOutputMode,
                    const XmlNode& section) {
    reportProgress("Processing: Outputs");
    auto logicals =
        tarvodb::doSelect<SalidasLogicasGlobal>(command.db(), tarvodb::clause::kByMac, mac);
    if (logicals.empty()) {
        return fail(command, ErrorCode::database, "No module outputs found");
    }
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!applyOutput(command, logicals, rfOutputMode, element)) {
            return false;
        }
    }
    return true;
}

}  // namespace tarvo_remote_control
