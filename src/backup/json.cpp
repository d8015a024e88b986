#include "backup/json.h"

#include <nlohmann/json.hpp>

namespace tarvo_backup {

using Json = nlohmann::ordered_json;

namespace {

// Bytes that are not UTF-8 become U+FFFD: JSON has no others.
std::string printed(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

Json jsonOf(const std::optional<std::string>& text) { return text ? Json(*text) : Json(nullptr); }

}  // namespace

std::string toJson(const std::vector<Difference>& differences) {
    Json list = Json::array();
    for (const Difference& difference : differences) {
        list.push_back({{"path", difference.path},
                        {"old", jsonOf(difference.oldText)},
                        {"new", jsonOf(difference.newText)}});
    }
    return printed(list);
}

std::string toJson(const std::vector<Finding>& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings) {
        list.push_back({{"line", finding.position.line},
                        {"column", finding.position.column},
                        {"severity", finding.severity == Severity::error ? "error" : "warning"},
                        {"path", finding.path},
                        {"message", finding.message}});
    }
    return printed(list);
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

}  // namespace tarvo_backup
