#include "backup/leaf_check.h"

#include <climits>
#include <cstdlib>
#include <string>
#include <string_view>

#include "backup/forms.h"
#include "backup/tree.h"
#include "backup/values.h"
#include "document/coded_texts.h"

namespace tarvo_backup {

using document::numberOf;
using document::textOf;
using mapping::Element;
using mapping::Form;
using mapping::isNamed;
using mapping::Take;

namespace {

// The texts that an element takes, as in "'low' or 'high'".
std::string listOf(document::CodeTable texts) {
    std::string list;
    for (std::size_t place = 0; place < texts.size(); ++place) {
        list += place == 0 ? "" : place + 1 == texts.size() ? " or " : ", ";
        list += inQuotes(texts[place].text);
    }
    return list;
}

std::string rangeText(mapping::Range range) {
    if (range.lowest == INT_MIN) {
        return "at most " + std::to_string(range.highest);
    }
    return "from " + std::to_string(range.lowest) + " to " + std::to_string(range.highest);
}

// What is written in an element in a form of its own.
struct ParticularForm {
    const char* parent;
    const char* name;
    bool (*fits)(std::string_view text);
    const char* what;
    bool mayBeEmpty = true;
};

constexpr const char* kDate = "date as 2024-02-29";
constexpr ParticularForm kParticularForms[] = {
    {"identification", "installationDate", isDate, kDate},
    {"maintenance", "hour", isHour, "hour"},
    {"maintenance", "min", isMinute, "minute"},
    {"network", "netmask", isNetworkMask, "network mask"},
    {"scrambling", "date", isDate, kDate},
    {"module", "mac", isHardwareAddress, "hardware address", false},
    {"cam", "registerDate", isDate, kDate},
};

class LeafCheck {
  public:
    LeafCheck(const LeafContext& context, Walk& walk) : context_(context), walk_(walk) {}

    void run(const Element& parent, const Element& row, const XmlNode& node) {
        if (firstElement(node) != nullptr) {
            walk_.add(Severity::warning, node, "holds elements, which are not read");
        } else if (node.first_node() != nullptr && node.first_node() != node.last_node()) {
            walk_.add(Severity::warning, node,
                      "a comment or a CDATA section parts its text; one part is read");
        }
        const bool isFit = !row.liveState && !checkRange(row, node) && !checkCode(row, node) &&
                           !checkForm(parent, row, node);
        if (isFit) {
            checkSize(row, node);
        }
        if (numberOf(node) < row.lowestOfOther) {
            checkOtherNumber(row, node);
        }
    }

  private:
    // Whether a number was found out of range.
    bool checkRange(const Element& row, const XmlNode& node) {
        const int number = numberOf(node);
        // Only the first of several is looked at for what an element must have.
        const bool isRequirementMet = !context_.isFirst || row.required.range.contains(number);
        if (row.range.contains(number) && isRequirementMet) {
            return false;
        }
        const bool isLoop = isNamed(row, "rfLoop");
        walk_.add(isLoop && !context_.isLoopRead ? Severity::warning : context_.error, node,
                  inQuotes(textOf(node)) + " is not allowed; it must be " +
                      rangeText(importedRange(row)));
        return true;
    }

    // Whether a text was found that stands for no code.
    bool checkCode(const Element& row, const XmlNode& node) {
        const char* text = textOf(node);
        const document::CodeTable texts = mapping::importedTexts(row, context_.rfOutputMode);
        const bool isExact = row.take == Take::codeExactly || row.take == Take::codeOrNumber;
        const auto code =
            isExact ? document::codeOfExactly(texts, text) : document::codeOfAnyCase(texts, text);
        if (code || texts.empty()) {
            return false;
        }
        if (row.take != Take::codeOrNumber) {
            walk_.add(row.otherTextsAreOne ? Severity::warning : context_.error, node,
                      inQuotes(text) + " is not allowed; it must be " + listOf(texts));
            return true;
        }
        if (isWholeNumber(text)) {
            return false;
        }
        walk_.add(Severity::warning, node,
                  inQuotes(text) + " is neither a number nor " + listOf(texts));
        return true;
    }

    // Whether a text was found that is not what its element stands for. The import stores any.
    bool checkForm(const Element& parent, const Element& row, const XmlNode& node) {
        const std::string_view text = textOf(node);
        const char* missed = generalFormMissed(row, text);
        if (missed == nullptr) {
            missed = particularFormMissed(parent, row, text);
        }
        if (missed != nullptr) {
            walk_.add(Severity::warning, node, inQuotes(text) + " is no " + missed);
        }
        return missed != nullptr;
    }

    // Where the device has nothing, the export writes nothing.
    static const char* generalFormMissed(const Element& row, std::string_view text) {
        if (text.empty()) {
            return nullptr;
        }
        switch (mapping::formOf(row)) {
            case Form::number:
                return isWholeNumber(text) || isRowIdElement(row) ? nullptr : "number";
            case Form::onOff:
                return text == "0" || text == "1" ? nullptr : "1 or 0";
            case Form::address:
                return isDottedAddress(text) ? nullptr : "address";
            default:
                return nullptr;
        }
    }

    static const char* particularFormMissed(const Element& parent, const Element& row,
                                            std::string_view text) {
        for (const ParticularForm& form : kParticularForms) {
            if (isNamed(parent, form.parent) && isNamed(row, form.name)) {
                return form.fits(text) || (text.empty() && form.mayBeEmpty) ? nullptr : form.what;
            }
        }
        return nullptr;
    }

    // What is stored as it stands, other programs read.
    void checkSize(const Element& row, const XmlNode& node) {
        const char* text = textOf(node);
        if (isCut(row, text)) {
            walk_.add(
                Severity::warning, node,
                inQuotes(text) + " is too long; " + inQuotes(storedText(row, text)) + " is stored");
        } else if (row.take != Take::ignored && mapping::formOf(row) == Form::number &&
                   !isRowIdElement(row) && std::strtoll(text, nullptr, 10) != numberOf(node)) {
            walk_.add(Severity::warning, node, inQuotes(text) + " is beyond numbers of 32 bits");
        }
    }

    // A channel number that passes only where the service has it already.
    void checkOtherNumber(const Element& row, const XmlNode& node) {
        const XmlNode* before = node.previous_sibling();
        while (before != nullptr && !document::hasName(*before, row.name)) {
            before = before->previous_sibling();
        }
        if (before != nullptr && numberOf(*before) != numberOf(node)) {
            walk_.add(context_.error, node,
                      inQuotes(textOf(node)) + " is not allowed; it must be at least " +
                          std::to_string(row.lowestOfOther));
        } else if (numberOf(node) < 0) {
            walk_.add(Severity::warning, node, inQuotes(textOf(node)) + " is no channel number");
        }
    }

    const LeafContext& context_;
    Walk& walk_;
};

}  // namespace

void checkLeaf(const Element& parent, const Element& row, const XmlNode& node,
               const LeafContext& context, Walk& walk) {
    LeafCheck(context, walk).run(parent, row, node);
}

}  // namespace tarvo_backup
