#include "schema/manual.h"

#include <iterator>
#include <string_view>
#include <vector>

#include "device/models.h"
#include "document/coded_texts.h"
#include "mapping/document_tree.h"
#include "mapping/element.h"
#include "schema/import_schema.h"
#include "schema/meanings.h"
#include "schema/places.h"
#include "schema/rnc.h"

namespace schema {

using mapping::Element;
using mapping::Form;
using mapping::Kind;
using mapping::Take;
using mapping::When;

namespace {

// --- troff ---------------------------------------------------------------------------------------

std::string escaped(std::string_view text) {
    std::string result;
    for (const char character : text) {
        result += character == '-' ? "\\-" : std::string(1, character);
    }
    return result;
}

std::string quotedTexts(document::CodeTable texts) {
    std::vector<std::string> quoted;
    for (const document::CodeText& each : texts) {
        quoted.push_back("\"" + std::string(each.text) + "\"");
    }
    return joined(quoted, ", ");
}

// --- What is said of a row -----------------------------------------------------------------------

std::string valuesOf(const Element& element) {
    if (!element.dvbCTexts.empty()) {
        return "Values of DVB-T: " + quotedTexts(element.texts) +
               "; of DVB-C: " + quotedTexts(element.dvbCTexts) + ".";
    }
    std::string values;
    switch (mapping::formOf(element)) {
        case Form::number:
            values = "A number";
            break;
        case Form::onOff:
            values = "1 or 0";
            break;
        case Form::address:
            values = "A dotted address";
            break;
        case Form::code:
            values = quotedTexts(element.texts);
            break;
        case Form::codeOrNumber:
            values = quotedTexts(element.texts) + " or a number";
            break;
        case Form::text:
        case Form::none:
            return "";
    }
    if (*element.otherwise != '\0') {
        values += ", otherwise \"" + std::string(element.otherwise) + "\"";
    }
    if (element.unknown != nullptr) {
        values += ", or \"" + std::string(element.unknown) + "\"";
    }
    return values + ".";
}

std::string conditionOf(When when) {
    switch (when) {
        case When::moduleDescrambles:
            return " if the module descrambles";
        case When::moduleReportsCam:
            return " if the module reports its conditional-access module";
        case When::noDiseqcPosition:
            return " if there is no DiSEqC position";
        case When::secondTuner:
            return " for a second tuner";
        case When::fileExists:
            return " if the table's file exists";
        case When::always:
        case When::publicKeysAskedFor:
        case When::fullList:
            return "";
    }
    return "";
}

std::string exportOf(const Element& element) {
    std::vector<std::string> models;
    for (const std::string_view model : tarvo_remote_control::model::kAll) {
        if (mapping::isExportedBy(element.exportedBy, model)) {
            models.emplace_back(model);
        }
    }
    const bool byAll = models.size() == std::size(tarvo_remote_control::model::kAll);
    const std::string how =
        (element.constant == nullptr ? "" : " as " + std::string(element.constant)) +
        (byAll ? "" : " by " + joined(models, ", ")) + conditionOf(element.when) +
        (element.rnbPrefix == nullptr
             ? ""
             : ", on RNB-K408 with \"" + std::string(element.rnbPrefix) + "\" in front");
    return how.empty() ? "" : "Exported" + how + ".";
}

std::string rangeOf(const Element& element) {
    const mapping::Range range = mapping::importedRange(element);
    if (!range.isLimited()) {
        return "";
    }
    if (range.lowest == INT_MIN) {
        return ", at most " + std::to_string(range.highest);
    }
    return ", from " + std::to_string(range.lowest) + " to " + std::to_string(range.highest);
}

std::string takenTexts(const Element& element) {
    const bool differ = !element.importedTexts.empty();
    return differ ? " (" + quotedTexts(element.importedTexts) + ")" : "";
}

std::string takeOf(const Element& element) {
    switch (element.take) {
        case Take::text:
            return "stored as it stands";
        case Take::number:
            return "read as a number";
        case Take::numberStoredText:
            return "compared as a number, stored as it stands";
        case Take::numberUnlessZero:
            return "read as a number; 0 counts as not given";
        case Take::code:
            return element.otherTextsAreOne
                       ? "in any letter case; any other text counts as \"" +
                             std::string(document::codeText(mapping::importedTexts(element), 1)) +
                             "\""
                       : "in any letter case";
        case Take::codeExactly:
            return "in this letter case" + takenTexts(element);
        case Take::codeOrNumber:
            return "a text in this letter case, or else read as a number";
        case Take::bits:
            return element.bit != 0 ? "1, or any other text for 0" : "only what is given";
        case Take::key:
            return "finds the row";
        case Take::special:
            return mapping::formOf(element) == Form::text ? "without white space"
                                                          : "read as a number";
        case Take::children:
        case Take::ignored:
            return "";
    }
    return "";
}

std::string importOf(const Element& element) {
    const bool isRequired = element.required.missing != nullptr;
    const std::string how = takeOf(element);
    if (!how.empty()) {
        return "Import: " + how + rangeOf(element) + (isRequired ? "; required" : "") + ".";
    }
    if (element.take == Take::children) {
        return "";
    }
    return isRequired ? "Not imported, but required." : "Not imported.";
}

std::string storedIn(const Element& element) {
    if (element.key != nullptr) {
        return "Setting " + std::string(element.key) + ".";
    }
    // Columns that are read by their position have no names.
    if (!element.column.exists()) {
        return "";
    }
    const std::string_view name = element.column.table->columns[element.column.index];
    return name.empty() ? ""
                        : "Column " + std::string(element.column.table->name) + "." +
                              std::string(name) + ".";
}

std::string stateOf(const Element& element) { return element.liveState ? "Live state." : ""; }

std::string described(const Place& place) {
    std::string text(meaningOf(place.name).text);
    for (const std::string& more :
         {valuesOf(*place.element), stateOf(*place.element), exportOf(*place.element),
          importOf(*place.element), storedIn(*place.element)}) {
        text += more.empty() ? "" : "\n" + more;
    }
    return ".TP\n.B " + escaped(place.element->name) + "\n" + escaped(text) + "\n";
}

// --- The page ------------------------------------------------------------------------------------

constexpr const char* kIntroduction =
    R"(.TH TARVO\-CONFIG\-DOCUMENT 5 "" "tarvo\-config @PROJECT_VERSION@" "File formats"
.SH NAME
tarvo\-config\-document \- the configuration of a DVB headend as a document
.SH DESCRIPTION
.BR tarvo\-config (8)
exports and imports XML 1.0 in UTF\-8: elements with text, without attributes or namespaces.
.PP
The export writes elements in the order in which they stand here, each of them once unless it is an
entry of a list. A column without a value and a code without a text give an empty element.
.PP
The import takes elements in any order, whatever the model that exported them. What is not given
stays as it is, but homeChannels, dvbNetworks, diseqcs, preferredLanguages, serviceEPGs and
vsecureCAMList replace what is stored, and what services and pidOrders do not list is marked for
removal. Unknown elements and text
between elements are skipped, except in lists, which hold nothing but their entries; vsecureCAMList
is no such list. Names are taken in any letter case, but for configuration, backup and
vsecureCAMList. Attributes are not read. Numbers are read as far as they go, and beyond 32 bits as
the nearest number that 32 bits hold.
)";

constexpr const char* kSchemas = R"(.SH SCHEMAS
Two RELAX NG schemas, each in the compact and in the XML syntax, describe what the export writes and
what the import takes. An export is valid as long as columns of numbers hold numbers. The schema of
the import is one for all models and headends: what fits their modules, and numbers that depend on
each other, are left to the import. It refuses some documents that the import takes:
)";

constexpr const char* kEnd = R"(.SH SEE ALSO
.BR tarvo\-config (8)
)";

std::string headingOf(const std::string& holder) { return ".SS " + escaped(holder) + "\n"; }

std::string elements() {
    std::string text = ".SH ELEMENTS\n";
    std::string holder;
    for (const Place& place : places()) {
        if (place.holder != holder) {
            holder = place.holder;
            text += headingOf(holder);
        }
        text += described(place);
    }
    return text;
}

std::string schemas() {
    std::string text = kSchemas;
    for (const std::string& reason : refusedAlthoughTaken()) {
        text += ".IP \\(bu 2\n" + escaped(reason) + "\n";
    }
    return text;
}

}  // namespace

std::string documentManual() { return kIntroduction + elements() + schemas() + kEnd; }

}  // namespace schema
