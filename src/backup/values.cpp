#include "backup/values.h"

#include <algorithm>
#include <cctype>

#include "db/value.h"
#include "text/to_int.h"

namespace tarvo_backup {

using document::XmlNode;
using mapping::Element;
using mapping::Form;
using mapping::Take;

namespace {

bool isSpace(unsigned char character) { return std::isspace(character) != 0; }

// How the import reads the element's text.
enum class Reading { text, number, code, codeOrNumber, bit, withoutWhiteSpace };

Reading readingOf(const Element& row) {
    const bool isNumeric =
        mapping::formOf(row) == Form::number || mapping::formOf(row) == Form::onOff;
    switch (row.take) {
        case Take::number:
        case Take::numberStoredText:
        case Take::numberUnlessZero:
            return Reading::number;
        case Take::code:
        case Take::codeExactly:
            return Reading::code;
        case Take::codeOrNumber:
            return Reading::codeOrNumber;
        case Take::bits:
            return Reading::bit;
        case Take::special:
            return isNumeric ? Reading::number : Reading::withoutWhiteSpace;
        case Take::key:
            // A number that the import checks it has read. Others are compared as texts, row ids
            // too: "01" finds no row 1, but makes a new one.
            return isNumeric && row.required.range.isLimited() ? Reading::number : Reading::text;
        case Take::text:
        case Take::children:
        case Take::ignored:
            return Reading::text;
    }
    return Reading::text;
}

std::string numberText(const char* text) { return std::to_string(text::toInt(text)); }

// The table's own text for a text in another letter case or for the code itself.
std::optional<std::string> codedText(const Element& row, const char* text, int rfOutputMode) {
    const document::CodeTable table = mapping::importedTexts(row, rfOutputMode);
    auto code = row.take == Take::code ? document::codeOfAnyCase(table, text)
                                       : document::codeOfExactly(table, text);
    if (!code && isWholeNumber(text)) {
        code = text::toInt(text);
    }
    if (row.otherTextsAreOne && (!code || *document::codeText(table, *code) == '\0')) {
        code = 1;
    }
    const char* known = code ? document::codeText(table, *code) : "";
    return *known == '\0' ? std::nullopt : std::optional<std::string>(known);
}

}  // namespace

bool isRowIdElement(const Element& row) {
    return row.identity && row.take == Take::key && row.column.index == 0;
}

bool isWholeNumber(std::string_view text) {
    while (!text.empty() && isSpace(static_cast<unsigned char>(text.front()))) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(static_cast<unsigned char>(text.back()))) {
        text.remove_suffix(1);
    }
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        text.remove_prefix(1);
    }
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char character) {
        return std::isdigit(character) != 0;
    });
}

// 0 is DVB-T, any other DVB-C. It counts for the outputs that come after it.
int RfOutputModes::at(const Element& row, const XmlNode& node) {
    if (row.dvbCTexts.empty()) {
        return 0;
    }
    const XmlNode& outputs = *node.parent()->parent();
    const auto [mode, isNew] = known_.try_emplace(&outputs, 0);
    for (const XmlNode* before = isNew ? outputs.previous_sibling() : nullptr; before != nullptr;
         before = before->previous_sibling()) {
        const auto known = known_.find(before);
        const bool isMode = document::hasName(*before, "modoSalidaRF");
        if (isMode || known != known_.end()) {
            mode->second = isMode ? document::numberOf(*before) : known->second;
            break;
        }
    }
    return mode->second;
}

std::string canonicalText(const Element* row, const XmlNode& node, int rfOutputMode) {
    const char* text = document::textOf(node);
    if (row == nullptr) {
        return text;
    }
    switch (readingOf(*row)) {
        case Reading::text:
            return text;
        case Reading::number:
            return numberText(text);
        case Reading::code:
            return codedText(*row, text, rfOutputMode).value_or(text);
        case Reading::codeOrNumber:
            return codedText(*row, text, rfOutputMode).value_or(numberText(text));
        case Reading::bit:
            return std::string_view(text) == "1" ? "1" : "0";
        case Reading::withoutWhiteSpace: {
            std::string dense = text;
            std::erase_if(dense, isSpace);
            return dense;
        }
    }
    return text;
}

std::string storedText(const Element& row, const char* text) {
    const Reading reading = readingOf(row);
    const bool isReadAsNumber = reading == Reading::number || reading == Reading::codeOrNumber;
    return isReadAsNumber && row.take != Take::numberStoredText
               ? tarvodb::columnValue(text::toInt(text)).asString()
               : text;
}

bool isCut(const Element& row, const char* text) {
    return text::toInt(storedText(row, text).c_str()) != text::toInt(text);
}

}  // namespace tarvo_backup
