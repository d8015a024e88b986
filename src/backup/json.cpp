#include "backup/json.h"

#include <nlohmann/json.hpp>

#include "backup/console.h"
#include "backup/utc_time.h"
#include "backup/utf8.h"

namespace tarvo_backup {

using Json = nlohmann::ordered_json;

namespace {

// Bytes that are not UTF-8 become U+FFFD: JSON has no others. Of the characters that a terminal may
// obey, the library escapes those below U+0020 only.
std::string printed(const Json& json) {
    const std::string dumped = json.dump(2, ' ', false, Json::error_handler_t::replace);
    std::string text;
    text.reserve(dumped.size());
    for (std::string_view rest = dumped; !rest.empty();) {
        const std::string_view character = rest.substr(0, characterLength(rest));
        rest.remove_prefix(character.size());
        if (character != "\n" && isTerminalControl(character)) {
            const char32_t point = codePoint(character);
            text += "\\u" + twoHexDigits(static_cast<char>(point >> 8U)) +
                    twoHexDigits(static_cast<char>(point & 0xffU));
        } else {
            text += character;
        }
    }
    return text;
}

Json jsonOf(const std::optional<std::string>& text) { return text ? Json(*text) : Json(nullptr); }

Json jsonOf(const Difference& difference) {
    return {{"path", difference.path},
            {"old", jsonOf(difference.oldText)},
            {"new", jsonOf(difference.newText)}};
}

Json jsonOf(const Finding& finding) {
    return {{"line", finding.position.line},
            {"column", finding.position.column},
            {"severity", finding.severity == Severity::error ? "error" : "warning"},
            {"path", finding.path},
            {"message", finding.message}};
}

Json jsonOf(const ElementPlace& element) {
    return {{"path", element.path},
            {"line", element.position.line},
            {"column", element.position.column}};
}

Json jsonOf(const ImportError& error) {
    return {{"code", error.code},
            {"text", error.text},
            {"element", error.element ? jsonOf(*error.element) : Json(nullptr)}};
}

Json jsonOf(const CellChange& cell) {
    return {{"column", cell.column}, {"old", jsonOf(cell.before)}, {"new", jsonOf(cell.after)}};
}

Json jsonOf(const ModuleBinding& module) {
    static constexpr const char* kHow[] = {"address", "kind", "none"};
    return {{"element", jsonOf(module.element)},
            {"mac", module.documentMac},
            {"headendMac", module.headendMac},
            {"by", kHow[static_cast<int>(module.how)]}};
}

Json jsonOf(const Rename& rename) { return {{"from", rename.from}, {"to", rename.to}}; }

Json jsonOf(const Asymmetry* asymmetry) {
    return {{"what", asymmetry->what}, {"remedy", asymmetry->remedy}};
}

template <class Item>
Json listOf(const std::vector<Item>& items);

Json jsonOf(const RowChange& change) {
    static constexpr const char* kKinds[] = {"added", "removed", "changed"};
    return {{"table", change.table},
            {"row", change.row},
            {"change", kKinds[static_cast<int>(change.kind)]},
            {"cells", listOf(change.cells)}};
}

Json jsonOf(const Mark& mark) {
    return {{"meaning", mark.meaning},
            {"table", mark.row->table},
            {"row", mark.row->row},
            {"mac", mark.row->mac},
            {"cell", jsonOf(*mark.cell)}};
}

template <class Item>
Json listOf(const std::vector<Item>& items) {
    Json list = Json::array();
    for (const Item& item : items) {
        list.push_back(jsonOf(item));
    }
    return list;
}

// When it was undone, and what became of what was taken back; nulls where nothing was.
Json detailsOf(const std::optional<Undone>& undone) {
    const Undone details = undone.value_or(Undone());
    return {
        {"undoneAt", undone ? Json(utcText(details.moment, "%Y-%m-%dT%H:%M:%SZ")) : Json(nullptr)},
        {"kept", details.kept},
        {"notKept", details.notKept.empty() ? Json(nullptr) : Json(details.notKept)}};
}

Json jsonOf(const std::optional<Undone>& undone) {
    if (!undone) {
        return nullptr;
    }
    Json object = {{"document", undone->document}};
    object.update(detailsOf(undone));
    return object;
}

// As printed(listOf(items)), of which there may be as many as a document has bytes: a tree of all
// of them would take some times their text.
template <class Item>
std::string printedList(const std::vector<Item>& items) {
    std::string text = "[";
    for (const Item& item : items) {
        text += text.size() == 1 ? "\n  " : ",\n  ";
        // Within a text JSON has no line ends.
        for (const char character : printed(jsonOf(item))) {
            text += character;
            text += character == '\n' ? "  " : "";
        }
    }
    return text + (items.empty() ? "]" : "\n]");
}

Json jsonOf(const Plan& plan) {
    return {{"notBegun", plan.notBegun.empty() ? Json(nullptr) : Json(plan.notBegun)},
            {"status", static_cast<int>(plan.status)},
            {"tries", plan.tries},
            {"errors", listOf(plan.errors)},
            {"complaints", plan.complaints},
            {"changes", plan.changesUnknown.empty() ? listOf(plan.changes) : Json(nullptr)},
            {"notTaken", listOf(plan.notTaken)},
            {"marks", listOf(marksIn(plan.rows))},
            {"rows", listOf(plan.rows)},
            {"modules", listOf(plan.modules)},
            {"leftOverModules", plan.leftOverModules},
            {"scripts", plan.scripts},
            {"runsNetworkScript", plan.runsNetworkScript},
            {"renames", listOf(plan.renames)},
            {"asymmetries", listOf(plan.asymmetries)}};
}

}  // namespace

std::string toJson(const std::vector<Difference>& differences) { return printedList(differences); }

std::string toJson(const Plan& plan) { return printed(jsonOf(plan)); }

std::string toJson(const RestoreReport& report) {
    static constexpr const char* kOutcomes[] = {"restored", "refused", "declined", "undone"};
    return printed(
        {{"outcome", kOutcomes[static_cast<int>(report.outcome)]},
         {"undidEarlier", jsonOf(report.undoneEarlier)},
         {"plan", jsonOf(report.plan)},
         {"backup", report.backup.empty() ? Json(nullptr) : Json(report.backup)},
         {"importStatus",
          report.importStatus ? Json(static_cast<int>(*report.importStatus)) : Json(nullptr)},
         {"notTaken", report.notCompared.empty() ? listOf(report.notTaken) : Json(nullptr)},
         {"confirmMinutes", report.confirmMinutes ? Json(*report.confirmMinutes) : Json(nullptr)}});
}

std::string toJson(const Ending& ending) {
    static constexpr const char* kOutcomes[] = {"nothing", "confirmed", "undone"};
    Json object = {{"outcome", kOutcomes[static_cast<int>(ending.outcome)]},
                   {"document", ending.document.empty() ? Json(nullptr) : Json(ending.document)}};
    object.update(detailsOf(ending.undone));
    return printed(object);
}

std::string toJson(const Overview& overview) {
    Json sections = Json::array();
    for (const Section& section : overview.sections) {
        Json fields = Json::array();
        for (const auto& [label, text] : section.fields) {
            fields.push_back({{"label", label}, {"text", text}});
        }
        Json tables = Json::array();
        for (const Table& table : section.tables) {
            tables.push_back(
                {{"title", table.title}, {"columns", table.columns}, {"rows", table.rows}});
        }
        sections.push_back({{"title", section.title}, {"fields", fields}, {"tables", tables}});
    }
    return printed({{"title", overview.title}, {"sections", sections}});
}

std::string toJson(const Saved& saved, const TriedExport& tried) {
    return printed({{"file", saved.path},
                    {"unchanged", saved.isUnchanged},
                    {"removed", saved.removed},
                    {"refusals", listOf(tried.refusals)},
                    {"notTried", tried.notTried.empty() ? Json(nullptr) : Json(tried.notTried)}});
}

std::string toJson(const std::vector<Finding>& findings) { return printedList(findings); }

}  // namespace tarvo_backup
