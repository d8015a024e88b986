#include "schema/import_schema.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>

#include "document/coded_texts.h"
#include "mapping/document_tree.h"
#include "mapping/element.h"
#include "schema/rnc.h"

namespace schema {

using mapping::Element;
using mapping::Form;
using mapping::Kind;
using mapping::Take;

namespace {

// Whatever the import does not look at, and the attributes, which it never does.
constexpr const char* kAnything = "anything";
constexpr const char* kAttributes = "attributes";

// --- Values --------------------------------------------------------------------------------------

void addTexts(Patterns& patterns, const Element& element, document::CodeTable texts) {
    for (const document::CodeText& each : texts) {
        const std::string pattern =
            element.take == Take::code ? inAnyCase(each.text) : exactly(each.text);
        if (std::find(patterns.begin(), patterns.end(), pattern) == patterns.end()) {
            patterns.push_back(pattern);
        }
    }
}

// An output takes the constellations of either mode here; the import those of the module's mode.
std::string codes(const Element& element) {
    if (element.otherTextsAreOne) {
        return "text";
    }
    constexpr int kDvbC = 1;
    Patterns patterns;
    addTexts(patterns, element, mapping::importedTexts(element));
    addTexts(patterns, element, mapping::importedTexts(element, kDvbC));
    if (element.take == Take::codeOrNumber) {
        patterns.push_back(number());
    }
    return oneOf(patterns);
}

// Settings are stored as they stand.
bool isNumber(const Element& element) {
    const Form form = mapping::formOf(element);
    return element.key == nullptr && (form == Form::number || form == Form::onOff);
}

std::string value(const Element& element) {
    switch (element.take) {
        case Take::code:
        case Take::codeExactly:
        case Take::codeOrNumber:
            return codes(element);
        default:
            return isNumber(element) ? number(mapping::importedRange(element)) : "text";
    }
}

std::string withAttributes(const std::string& content) {
    const bool isChoice = content.find(" | ") != std::string::npos;
    return std::string(kAttributes) + ", " + (isChoice ? "(" + content + ")" : content);
}

// --- What an element holds -----------------------------------------------------------------------

// The document's outermost elements are found by their exact names, and others beside them do not
// matter.
bool isRequired(const Element& parent, const Element& row) {
    return row.required.missing != nullptr ||
           (&parent == &mapping::kBackup && mapping::isNamed(row, mapping::kConfiguration.name));
}

bool refusesOthers(const Element& element) {
    return element.kind == Kind::list && !element.skipsOthers;
}

class Members {
  public:
    explicit Members(const Element& parent) : parent_(parent) {}

    void add(mapping::Elements rows, std::optional<int> inputType = {}) {
        for (const Element& row : rows) {
            const bool isType = inputType && row.isInputType;
            add(row, isType ? number({*inputType, *inputType}) : value(row));
        }
    }

    // In any order and number, between anything else.
    [[nodiscard]] std::string pattern() const {
        Patterns choice{"text"};
        choice.insert(choice.end(), optional_.begin(), optional_.end());
        choice.push_back("element * - (" + joined(names_, " | ") + ") { " + kAnything + " }");
        std::string others = block("(", choice, " |", ")*");
        if (required_.empty()) {
            return others;
        }
        Patterns operands = required_;
        operands.push_back(others);
        return block("(", operands, " &", ")");
    }

  private:
    void add(const Element& row, const std::string& value) {
        names_.emplace_back(row.name);
        const bool isNeeded = isRequired(parent_, row);
        (isNeeded ? required_ : optional_).push_back(once(row, value) + (isNeeded ? "+" : ""));
    }

    static std::string once(const Element& row, const std::string& value) {
        if (row.take == Take::ignored) {
            return leaf(row.name, kAnything);
        }
        return row.kind == Kind::leaf ? leaf(row.name, withAttributes(value)) : row.name;
    }

    const Element& parent_;
    Patterns names_;
    Patterns required_;
    Patterns optional_;
};

// An input takes the elements of its type; those of the others count as unknown.
std::string membersOfInput(const Element& input) {
    Patterns alternatives;
    for (const mapping::ChildTable& table : input.childTables) {
        Members members(input);
        members.add(input.children, static_cast<int>(table.inputType.value()));
        members.add(table.rows);
        alternatives.push_back(members.pattern());
    }
    return block("(", {joined(alternatives, "\n| ")}, "", ")");
}

std::string membersOf(const Element& element) {
    if (refusesOthers(element)) {
        const Element& entry = element.children[0];
        return (entry.kind == Kind::leaf ? leaf(entry.name, withAttributes(value(entry)))
                                         : entry.name) +
               std::string("*");
    }
    if (!element.childTables.empty() && element.childTables[0].inputType) {
        return membersOfInput(element);
    }
    Members members(element);
    members.add(element.children);
    for (const mapping::ChildTable& table : element.childTables) {
        members.add(table.rows);
    }
    return members.pattern();
}

void define(const Element& element, std::string& text) {
    const std::string open = std::string("element ") + element.name + " {";
    text += definition(element.name, block(open, {kAttributes, membersOf(element)}, ",", "}"));
    mapping::forEachChild(element, [&text](const Element& child) {
        if (child.kind != Kind::leaf && child.take != Take::ignored) {
            define(child, text);
        }
    });
}

}  // namespace

const std::vector<std::string>& refusedAlthoughTaken() {
    // NOLINTBEGIN(bugprone-suspicious-missing-comma): most reasons are longer than a line
    static const std::vector<std::string> kReasons{
        "Names in another letter case. RELAX NG tells them apart. The import does not, but for "
        "configuration, backup and vsecureCAMList.",
        "A value with an element, a comment or a CDATA section inside. The import takes the first "
        "piece of text; a schema sees all of it, and no value beside an element.",
        "What is no whole number where one is meant. The import reads the number that the text "
        "begins with, 0 where there is none, or stores the text as it stands.",
        "An element that is there twice. The schema looks at each; the import takes the first "
        "configuration, inputId, outputId, outputSid and type and the last pidOrders, audiosEPGs "
        "and replacingEPGs, and need not read the others.",
        "An rfLoop that is neither 0 nor 1, of input 1 or of an input that has no satellite "
        "tuner. The import does not look at it there.",
        "What is not well-formed XML. The import does not check everything that XML demands, and "
        "reads on.",
    };
    // NOLINTEND(bugprone-suspicious-missing-comma)
    return kReasons;
}

std::string importSchema() {
    Patterns about{
        "What tarvo-config imports. Made from the program's own description of its",
        "documents; see tarvo-config-document(5).",
        "",
        "The order of elements is free, and attributes and unknown elements are skipped.",
        "What the headend's own tables decide is not said here: which modules, inputs",
        "and outputs there are, what fits their mode, and where numbers depend on each",
        "other. The import takes some documents that are refused here; the manual page",
        "lists them."};
    std::string text = preamble(about);
    text += definition("start", "configuration | backup");
    text += definition(kAttributes, "attribute * { text }*");
    text += definition(kAnything, "(attribute * { text } | text | element * { anything })*");
    define(mapping::kBackup, text);
    return text;
}

}  // namespace schema
