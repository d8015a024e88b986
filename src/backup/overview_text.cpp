#include "backup/overview_text.h"

#include <algorithm>

namespace tarvo_backup {

namespace {

// What is wider than this moves the rest of its own line only: a long text in each column would
// make every line as long as all of them together.
constexpr std::size_t kWidestColumn = 60;

// The columns that a text takes, a character of UTF-8 being one.
std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char character) {
        return (static_cast<unsigned char>(character) & 0xc0U) != 0x80U;
    }));
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, widthOf(text)), ' ');
}

void printLine(std::string line, std::ostream& out) {
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

void printFields(const std::vector<Field>& fields, std::ostream& out) {
    std::size_t width = 0;
    for (const auto& [label, text] : fields) {
        width = std::max(width, std::min(widthOf(onOneLine(label)), kWidestColumn));
    }
    for (const auto& [label, text] : fields) {
        printLine("  " + padded(onOneLine(label), width) + "  " + onOneLine(text), out);
    }
}

void printTable(const Table& table, const Painter& paint, std::ostream& out) {
    std::vector<std::vector<std::string>> rows{table.columns};
    for (const auto& row : table.rows) {
        auto& shown = rows.emplace_back();
        std::transform(row.begin(), row.end(), std::back_inserter(shown), onOneLine);
    }
    std::vector<std::size_t> widths(table.columns.size(), 0);
    for (const auto& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] =
                std::max(widths[column], std::min(widthOf(row[column]), kWidestColumn));
        }
    }
    if (!table.title.empty()) {
        out << "  " << paint(Style::heading, table.title) << '\n';
    }
    for (const auto& row : rows) {
        std::string line = " ";
        for (std::size_t column = 0; column < row.size(); ++column) {
            line += ' ' + padded(row[column], widths[column]) + ' ';
        }
        printLine(line, out);
    }
}

}  // namespace

void printText(const Overview& overview, const Painter& paint, std::ostream& out) {
    out << paint(Style::heading, onOneLine(overview.title)) << '\n';
    for (const Section& section : overview.sections) {
        out << '\n' << paint(Style::heading, onOneLine(section.title)) << '\n';
        printFields(section.fields, out);
        for (const Table& table : section.tables) {
            printTable(table, paint, out);
        }
    }
}

}  // namespace tarvo_backup
