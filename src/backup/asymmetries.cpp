#include "backup/asymmetries.h"

#include <algorithm>
#include <string_view>

#include "backup/plan.h"
#include "backup/tree.h"
#include "backup/values.h"
#include "db/schema.h"
#include "db/table.h"
#include "device/device_identity.h"
#include "mapping/document_tree.h"
#include "mapping/element.h"

namespace tarvo_backup {

namespace {

using tarvo_remote_control::DeviceIdentity;

// Whether an element below `parent` passes.
template <class Test>
bool anyBelow(const XmlNode* parent, Test test) {
    if (parent == nullptr) {
        return false;
    }
    for (const XmlNode* node = firstElement(*parent); node != nullptr; node = nextElement(*node)) {
        if (test(*node) || anyBelow(node, test)) {
            return true;
        }
    }
    return false;
}

bool isNamed(const XmlNode& node, const char* name) { return document::hasName(node, name); }

bool isInside(const XmlNode& node, const char* name) {
    const XmlNode* parent = node.parent();
    return parent != nullptr && (isNamed(*parent, name) || isInside(*parent, name));
}

std::string_view textIn(const XmlNode& node) { return document::textOf(node); }

bool isEmptyElement(const XmlNode& node) {
    return firstElement(node) == nullptr && textIn(node).empty();
}

template <class Test>
bool anyElement(const Document& document, Test test) {
    return anyBelow(document.configuration(), test);
}

// Whether the device would show an element otherwise than the document, at such a path.
bool differsIn(const Plan& plan, std::string_view part, std::string_view end) {
    return std::any_of(plan.notTaken.begin(), plan.notTaken.end(), [&](const Difference& each) {
        return each.path.find(part) != std::string::npos && each.path.ends_with(end);
    });
}

bool hasError(const Plan& plan, std::string_view text) {
    return std::any_of(plan.errors.begin(), plan.errors.end(), [text](const ImportError& error) {
        return error.text.find(text) != std::string::npos;
    });
}

bool hasMark(const Plan& plan, std::string_view meaning) {
    const auto marks = marksIn(plan.rows);
    return std::any_of(marks.begin(), marks.end(),
                       [meaning](const Mark& mark) { return mark.meaning == meaning; });
}

bool changesTable(const Plan& plan, const tarvodb::TableInfo& table) {
    return std::any_of(plan.rows.begin(), plan.rows.end(),
                       [&table](const RowChange& change) { return change.table == table.name; });
}

bool swapsPlsMode(const Document& document, const Plan&) {
    return anyElement(document, [](const XmlNode& node) {
        return isNamed(node, "PLSmode") && (textIn(node) == "gold" || textIn(node) == "root");
    });
}

bool inputHasNoType(const Document& document, const Plan&) {
    return anyElement(document, [](const XmlNode& node) {
        return isNamed(node, "input") && document::childNamed(node, "type") == nullptr;
    });
}

bool moduleHasNoRfOutputMode(const Document& document, const Plan&) {
    return anyElement(document, [](const XmlNode& node) {
        return isNamed(node, "module") && document::childNamed(node, "outputs") != nullptr &&
               document::childNamed(node, "modoSalidaRF") == nullptr;
    });
}

bool hasBlankText(const Document&, const Plan& plan) {
    return std::any_of(plan.notTaken.begin(), plan.notTaken.end(), [](const Difference& each) {
        return each.oldText && each.newText == "" &&
               each.oldText->find_first_not_of(" \t\r\n") == std::string::npos;
    });
}

bool hasEmptyInputsOrOutputs(const Document& document, const Plan&) {
    return anyElement(document, [](const XmlNode& node) {
        return (isNamed(node, "inputs") || isNamed(node, "outputs")) && isEmptyElement(node);
    });
}

bool hasSeveralTuners(const Document& document, const Plan&) {
    return anyElement(document, [](const XmlNode& node) {
        std::size_t count = 0;
        for (const XmlNode* child = firstElement(node); child != nullptr;
             child = nextElement(*child)) {
            count += isNamed(*child, "frequency") ? 1U : 0U;
        }
        return isNamed(node, "input") && count > 1;
    });
}

bool runsNetworkScript(const Document&, const Plan& plan) { return plan.runsNetworkScript; }

bool frequencyIsOutOfRange(const Document&, const Plan& plan) {
    return hasError(plan, "intermediate frequency is out of range") ||
           std::any_of(plan.complaints.begin(), plan.complaints.end(), [](const auto& text) {
               return text.find("intermediate frequency is out of range") != std::string::npos;
           });
}

bool switchesOtherInput(const Document&, const Plan& plan) {
    return plan.status == app::ExitStatus::success && plan.tries > 1;
}

bool isImportedAsCode(const mapping::Element& row) {
    return row.take == mapping::Take::code || row.take == mapping::Take::codeExactly;
}

// Whether the import takes an element below `parent`, which `row` stands for, as a code, and it has
// no text.
bool hasCodeWithoutTextBelow(const mapping::Element* row, const XmlNode& parent) {
    for (const XmlNode* node = firstElement(parent); node != nullptr; node = nextElement(*node)) {
        const mapping::Element* child = rowOf(row, *node);
        if ((child != nullptr && isImportedAsCode(*child) && isEmptyElement(*node)) ||
            hasCodeWithoutTextBelow(child, *node)) {
            return true;
        }
    }
    return false;
}

bool hasCodeWithoutText(const Document& document, const Plan&) {
    return document.configuration() != nullptr &&
           hasCodeWithoutTextBelow(&mapping::kConfiguration, *document.configuration());
}

bool guideHasNoNumber(const Document& document, const Plan&) {
    return anyElement(document, [](const XmlNode& node) {
        return isInside(node, "serviceEPGs") &&
               (isNamed(node, "onid") || isNamed(node, "tsid") || isNamed(node, "sid") ||
                isNamed(node, "lcn")) &&
               document::numberOf(node) == 0;
    });
}

// Whether the import refuses a network's NIT pattern.
bool hasOddNitPattern(const XmlNode& network) {
    mapping::NitPattern pattern;
    for (const XmlNode* node = firstElement(network); node != nullptr; node = nextElement(*node)) {
        const mapping::Element* row = mapping::elementOf(mapping::kDvbNetwork, *node);
        if (row != nullptr && !pattern.allows(*row, document::numberOf(*node))) {
            return true;
        }
    }
    return false;
}

bool nitPatternIsOdd(const Document& document, const Plan&) {
    return anyElement(document, [](const XmlNode& node) {
        return isNamed(node, "dvbNetwork") && hasOddNitPattern(node);
    });
}

bool hasSeveralScramblings(const Document& document, const Plan&) {
    return anyElement(document, [](const XmlNode& node) {
        const XmlNode* first = isNamed(node, "scramblings") ? firstElement(node) : nullptr;
        return first != nullptr && nextElement(*first) != nullptr;
    });
}

bool networkNumberIsZero(const Document&, const Plan& plan) {
    return std::any_of(plan.notTaken.begin(), plan.notTaken.end(), [](const Difference& each) {
        return each.path.starts_with("dvbNetworks/") && each.oldText == "0" &&
               !each.newText.value_or("").empty();
    });
}

bool addsNetwork(const Document&, const Plan& plan) {
    return std::any_of(plan.rows.begin(), plan.rows.end(), [](const RowChange& change) {
        return change.table == tarvodb::RedesCabecera::info.name &&
               change.kind == RowChange::Kind::added;
    });
}

// Below `parent`, which the row stands for.
bool hasCutNumber(const mapping::Element& row, const XmlNode& parent) {
    for (const XmlNode* node = firstElement(parent); node != nullptr; node = nextElement(*node)) {
        const mapping::Element* known = rowOf(&row, *node);
        if (known != nullptr &&
            (isCut(*known, document::textOf(*node)) || hasCutNumber(*known, *node))) {
            return true;
        }
    }
    return false;
}

bool hasLongNumber(const Document& document, const Plan&) {
    return document.configuration() != nullptr &&
           hasCutNumber(mapping::kConfiguration, *document.configuration());
}

bool outputTypeIsNotTaken(const Document&, const Plan& plan) {
    return differsIn(plan, "/outputs/", "/type");
}

bool writesCamList(const Document&, const Plan& plan) {
    return changesTable(plan, tarvodb::VSecure::info);
}

bool homeChannelIdsAreNotTaken(const Document&, const Plan& plan) {
    return differsIn(plan, "homeChannels/", "/onid") || differsIn(plan, "homeChannels/", "/tsid");
}

bool encryptIsNotTaken(const Document&, const Plan& plan) {
    return differsIn(plan, "/services/", "/encrypt");
}

bool removesServices(const Document&, const Plan& plan) {
    return hasMark(plan, "service to be removed");
}

bool numbersRowsAnew(const Document&, const Plan& plan) {
    return changesTable(plan, tarvodb::AudioLanguageListGlobal::info) ||
           changesTable(plan, tarvodb::Service_EPG::info);
}

bool worksSecondOutputOut(const Document&, const Plan& plan) {
    return DeviceIdentity::instance().isLMV() &&
           changesTable(plan, tarvodb::SalidasLogicasGlobal::info);
}

bool marksRows(const Document&, const Plan& plan) {
    return hasMark(plan, "output to be applied") || hasMark(plan, "stream to be applied");
}

bool renamesSiTables(const Document&, const Plan& plan) { return !plan.renames.empty(); }

bool percentIsLost(const Document&, const Plan& plan) {
    return std::any_of(plan.notTaken.begin(), plan.notTaken.end(), [](const Difference& each) {
        return each.oldText && each.newText && each.oldText->find('%') != std::string::npos;
    });
}

constexpr Asymmetry kKnown[] = {
    {R"(`PLSmode` changes places)",
     R"(After a restore, check inputs that use physical layer scrambling. In a document that is to be restored, swap "gold" and "root" before.)",
     swapsPlsMode},
    {R"(RNB-K408: an input has no `type`)",
     R"(Add `<type>0</type>` (satellite), `1` (terrestrial) or `2` (cable) to every `input`.)",
     inputHasNoType},
    {R"(RNB-K408: a module has no `modoSalidaRF`)",
     R"(For a DVB-C module add its `<modoSalidaRF>` in front of `outputs`.)",
     moduleHasNoRfOutputMode},
    {R"(A text of blanks only)", R"(Nothing to do.)", hasBlankText},
    {R"(A module without inputs or outputs)", R"(Remove the empty elements from the document.)",
     hasEmptyInputsOrOutputs},
    {R"(An input with several tuner rows)", R"(Set the further tuners by hand.)", hasSeveralTuners},
    {R"(A failing network script)",
     R"(Do not rely on the status alone: look for "Error 203" in the log and run the network script yourself.)",
     runsNetworkScript},
    {R"(A frequency that the tuner cannot receive)",
     R"(Correct frequency, DiSEqC position, band or loop and restore again. If the same document switched the input on or off, do that once more: its tuners have not followed.)",
     frequencyIsOutOfRange},
    {R"(A terrestrial or cable input)",
     R"(Look for "intermediate frequency is out of range" in the log; then switch the input off and on again.)",
     switchesOtherInput},
    {R"(A code that has no text)", R"(Fill in the element before restoring.)", hasCodeWithoutText},
    {R"(A service of the guide with a number of 0 or none)",
     R"(Give the numbers, or remove the element.)", guideHasNoNumber},
    {R"(A NIT pattern with a version but no number, or with a number above 1 and no type)",
     R"(Correct the three elements.)", nitPatternIsOdd},
    {R"(Several scrambling systems)", R"(Keep only the element of the system in use.)",
     hasSeveralScramblings},
    {R"(A setting of 0 in a DVB network)", R"(Set it to 0 on the device's own pages.)",
     networkNumberIsZero},
    {R"(A setting of 0 in a DVB network that is new to the device)", R"(Nothing to do.)",
     addsNetwork},
    {R"(Numbers of more than nine characters)", R"(Nothing that DVB uses is that long.)",
     hasLongNumber},
    {R"(`type` of an output)", R"(Set it on the device's own pages.)", outputTypeIsNotTaken},
    {R"(The CAM list of a `backup`)", R"(Nothing to do.)", writesCamList},
    {R"(`onid` and `tsid` of home channels)", R"(Set them on the device's own pages.)",
     homeChannelIdsAreNotTaken},
    {R"(`encrypt` of a service)", R"(Nothing to do.)", encryptIsNotTaken},
    {R"(Services that a backup does not list)",
     R"(Nothing, unless such a service is still in use: list it in the document.)",
     removesServices},
    {R"(Rows that the document cannot name)", R"(Nothing to do.)", numbersRowsAnew},
    {R"(LMV-502, LMV-512)", R"(Nothing to do.)", worksSecondOutputOut},
    {R"(Restoring an unchanged backup marks rows)",
     R"(Restore when a short interruption does no harm.)", marksRows},
    {R"(SI tables of a network that gets another identifier)",
     R"(Correct the document and restore it.)", renamesSiTables},
    {R"(The first "%" of a changed text)", R"(Avoid "%" in names.)", percentIsLost},
};

}  // namespace

std::span<const Asymmetry> knownAsymmetries() { return kKnown; }

std::vector<const Asymmetry*> asymmetriesMetBy(const Document& document, const Plan& plan) {
    std::vector<const Asymmetry*> met;
    for (const Asymmetry& known : kKnown) {
        if (known.isMetBy(document, plan)) {
            met.push_back(&known);
        }
    }
    return met;
}

}  // namespace tarvo_backup
