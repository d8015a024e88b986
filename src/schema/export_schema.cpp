#include "schema/export_schema.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "device/models.h"
#include "document/coded_texts.h"
#include "mapping/document_tree.h"
#include "mapping/element.h"
#include "schema/rnc.h"

namespace schema {

using mapping::Element;
using mapping::Elements;
using mapping::Form;
using mapping::Kind;
using mapping::When;

namespace {

using Models = std::vector<std::string_view>;

// --- Values --------------------------------------------------------------------------------------

bool isWrittenAsOnOff(const Element& element) {
    return element.exportedAsOnOff ||
           (mapping::formOf(element) == Form::onOff && !element.column.exists());
}

void addTexts(Patterns& patterns, document::CodeTable texts) {
    for (const document::CodeText& each : texts) {
        const std::string pattern = exactly(each.text);
        if (std::find(patterns.begin(), patterns.end(), pattern) == patterns.end()) {
            patterns.push_back(pattern);
        }
    }
}

std::string codes(const Element& element) {
    Patterns patterns;
    addTexts(patterns, element.texts);
    addTexts(patterns, element.dvbCTexts);
    patterns.push_back(mapping::formOf(element) == Form::codeOrNumber ? number()
                                                                      : exactly(element.otherwise));
    if (element.unknown != nullptr) {
        patterns.push_back(exactly(element.unknown));
    }
    return oneOf(patterns);
}

// Settings are texts, whatever they should hold.
std::string value(const Element& element) {
    if (element.constant != nullptr) {
        return exactly(element.constant);
    }
    if (!element.texts.empty()) {
        return codes(element);
    }
    if (isWrittenAsOnOff(element)) {
        return oneOf({exactly("0"), exactly("1")});
    }
    const Form form = mapping::formOf(element);
    if (element.key != nullptr || (form != Form::number && form != Form::onOff)) {
        return "text";
    }
    return element.unknown == nullptr ? number() : oneOf({number(), exactly(element.unknown)});
}

// --- What an element holds -----------------------------------------------------------------------

// A backup's list of conditional-access modules is always a full one with keys.
bool isConditional(const Element& element) {
    return element.when != When::always && element.when != When::publicKeysAskedFor &&
           element.when != When::fullList;
}

// The list of maintenances holds the one that the settings are.
const char* occurrences(const Element& list) { return mapping::isOfSettings(list) ? "" : "*"; }

// What the elements hold on one model.
class Content {
  public:
    // `refer` gives the pattern by which a holder of others is referred to.
    using Refer = std::function<std::string(const Element&, std::string_view model)>;

    Content(std::string_view model, const Refer& refer) : model_(model), refer_(refer) {}

    [[nodiscard]] std::string of(const Element& element) const {
        if (element.kind == Kind::list) {
            const Element& entry = element.children[0];
            return block(opening(element), {once(entry) + occurrences(element)}, ",", "}");
        }
        return block(opening(element), members(element), ",", "}");
    }

  private:
    static std::string opening(const Element& element) {
        return std::string("element ") + element.name + " {";
    }

    [[nodiscard]] bool isExported(const Element& element) const {
        return mapping::isExportedBy(element.exportedBy, model_);
    }

    [[nodiscard]] Patterns members(const Element& element) const {
        if (!element.childTables.empty() && element.childTables[0].inputType) {
            return membersOfInput(element);
        }
        Patterns patterns = sequence(element.children);
        for (const mapping::ChildTable& table : element.childTables) {
            patterns.push_back(repeated(table));
        }
        return patterns;
    }

    // An input holds tuners of its type; one of an unknown type holds none. A model that does not
    // tell the type may hold any.
    [[nodiscard]] Patterns membersOfInput(const Element& element) const {
        const Element& type = *mapping::inputTypeOf(element);
        Patterns alternatives;
        for (const mapping::ChildTable& table : element.childTables) {
            if (!isExported(type)) {
                alternatives.push_back(repeated(table));
                continue;
            }
            const int code = static_cast<int>(table.inputType.value());
            Patterns patterns = sequence(element.children, code);
            patterns.push_back(repeated(table));
            alternatives.push_back(block("(", patterns, ",", ")"));
        }
        if (isExported(type)) {
            alternatives.push_back(block("(", sequence(element.children), ",", ")"));
            return {joined(alternatives, "\n| ")};
        }
        Patterns patterns = sequence(element.children);
        patterns.push_back(block("(", {joined(alternatives, "\n| ")}, "", ")"));
        return patterns;
    }

    [[nodiscard]] std::string repeated(const mapping::ChildTable& table) const {
        return block("(", sequence(table.rows), ",", ")*");
    }

    // Rows in their order. Neighbours on the same condition are there together.
    [[nodiscard]] Patterns sequence(Elements rows, std::optional<int> inputType = {}) const {
        Patterns patterns;
        Patterns together;
        When condition = When::always;
        const auto close = [&] {
            if (!together.empty()) {
                patterns.push_back(together.size() == 1 ? together[0] + "?"
                                                        : block("(", together, ",", ")?"));
                together.clear();
            }
        };
        for (const Element& row : rows) {
            if (!isExported(row)) {
                continue;
            }
            if (row.when != condition) {
                close();
            }
            condition = row.when;
            (isConditional(row) ? together : patterns).push_back(once(row, inputType));
        }
        close();
        return patterns;
    }

    [[nodiscard]] std::string once(const Element& row, std::optional<int> inputType = {}) const {
        if (row.kind != Kind::leaf) {
            return refer_(row, model_);
        }
        const bool isType = inputType && row.isInputType;
        return leaf(row.name, isType ? number({*inputType, *inputType}) : value(row)) +
               (row.perRow ? "*" : "");
    }

    std::string_view model_;
    const Refer& refer_;
};

std::string spelledOut(const Element& element, std::string_view model) {
    static const Content::Refer kSpelledOut = spelledOut;
    return Content(model, kSpelledOut).of(element);
}

// --- Definitions ---------------------------------------------------------------------------------

// The models that write an element, those together that write it alike.
std::vector<Models> groupsOf(const Element& element) {
    std::vector<Models> groups;
    for (const std::string_view model : tarvo_remote_control::model::kAll) {
        if (!mapping::isExportedBy(element.exportedBy, model)) {
            continue;
        }
        const auto same = std::find_if(groups.begin(), groups.end(), [&](const Models& group) {
            return spelledOut(element, group[0]) == spelledOut(element, model);
        });
        if (same == groups.end()) {
            groups.push_back({model});
        } else {
            same->push_back(model);
        }
    }
    return groups;
}

// An element that all its models write alike goes by its own name.
std::string nameOf(const Element& element, std::string_view model) {
    const auto groups = groupsOf(element);
    std::string name = element.name;
    for (const Models& group : groups) {
        if (groups.size() > 1 && std::find(group.begin(), group.end(), model) != group.end()) {
            for (const std::string_view each : group) {
                name += "." + std::string(each);
            }
        }
    }
    return name;
}

class Definitions {
  public:
    void add(const Element& element) {
        static const Content::Refer kByName = nameOf;
        for (const Models& group : groupsOf(element)) {
            const std::string name = nameOf(element, group[0]);
            const std::string text = definition(name, Content(group[0], kByName).of(element));
            // Tuners of all types hold the same.
            if (text_.find("\n" + name + " =\n") == std::string::npos) {
                text_ += text;
            }
        }
        mapping::forEachChild(element, [this](const Element& child) {
            if (child.kind != Kind::leaf) {
                add(child);
            }
        });
    }

    [[nodiscard]] const std::string& text() const { return text_; }

  private:
    std::string text_;
};

// What a model writes: a backup where there is one.
const Element& documentOf(std::string_view model) {
    return mapping::isExportedBy(mapping::kBackup.exportedBy, model) ? mapping::kBackup
                                                                     : mapping::kConfiguration;
}

std::string start() {
    Patterns names;
    for (const std::string_view model : tarvo_remote_control::model::kAll) {
        const std::string name = nameOf(documentOf(model), model);
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    }
    return definition("start", joined(names, "\n| "));
}

}  // namespace

std::string exportSchema() {
    Definitions definitions;
    definitions.add(mapping::kBackup);
    return preamble(
               {"What tarvo-config exports. Made from the program's own description of its",
                "documents; see tarvo-config-document(5).", "",
                "Elements stand in this order. Models that export an element alike share its",
                "definition; the names of the others say whose they are.", "",
                "A number is one as long as its column holds one: the device's tables can hold",
                "any text, and what they hold is exported."}) +
           start() + definitions.text();
}

}  // namespace schema
