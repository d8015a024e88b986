#include "backup/overview_html.h"

#include "backup/utf8.h"

namespace tarvo_backup {

namespace {

constexpr std::string_view kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy"
      content="default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'">
<style>
body { font: 16px/1.4 sans-serif; margin: 0 auto; max-width: 75rem; padding: 1rem;
       overflow-wrap: anywhere; color: #222; background: #fff; }
h1 { margin: 0 0 .5rem; } h2 { border-bottom: 2px solid #567; margin: 2rem 0 .5rem; }
h3 { margin: 1rem 0 .25rem; }
nav a { display: inline-block; margin: .2rem 1rem .2rem 0; color: #046; }
input { box-sizing: border-box; width: 100%; max-width: 30rem; font: inherit; padding: .5rem; }
table { border-collapse: collapse; width: 100%; }
th, td { text-align: left; vertical-align: top; padding: .25rem .5rem; border-bottom: 1px solid #ccd; }
[hidden] { display: none !important; }
@media screen and (max-width: 45rem) {
  table, tbody, tr, th, td { display: block; border: 0; padding: 0; }
  thead { display: none; }
  tr { border-bottom: 1px solid #ccd; padding: .4rem 0; }
  td[data-label]:not(:empty)::before { content: attr(data-label) ": "; color: #567; }
}
@media print {
  nav, #search { display: none; }
  body { font-size: 10pt; max-width: none; padding: 0; }
  h2, h3 { break-after: avoid; } tr { break-inside: avoid; }
}
</style>
)";

// Rows that do not hold what is typed are hidden, and with them the sections that are left empty.
constexpr std::string_view kFoot = R"(<script>
document.getElementById('search').addEventListener('input', function () {
  const wanted = this.value.trim().toLowerCase();
  for (const section of document.querySelectorAll('section')) {
    const whole = section.querySelector('h2').textContent.toLowerCase().includes(wanted);
    let found = whole;
    for (const row of section.querySelectorAll('tbody tr')) {
      row.hidden = !whole && !row.textContent.toLowerCase().includes(wanted);
      found = found || !row.hidden;
    }
    section.hidden = !found;
  }
});
</script>
</body>
</html>
)";

std::string element(const char* name, const std::string& text) {
    return std::string("<") + name + ">" + asHtml(text) + "</" + name + ">";
}

std::string fieldTable(const std::vector<Field>& fields) {
    std::string html = "<table><tbody>\n";
    for (const auto& [label, text] : fields) {
        html += "<tr>" + element("th", label) + element("td", text) + "</tr>\n";
    }
    return html + "</tbody></table>\n";
}

std::string tableHtml(const Table& table) {
    std::string html = table.title.empty() ? "" : element("h3", table.title) + "\n";
    html += "<table><thead><tr>";
    for (const std::string& column : table.columns) {
        html += element("th", column);
    }
    html += "</tr></thead><tbody>\n";
    for (const auto& row : table.rows) {
        html += "<tr>";
        for (std::size_t column = 0; column < row.size(); ++column) {
            html += "<td data-label=\"" + asHtml(table.columns[column]) + "\">" +
                    asHtml(row[column]) + "</td>";
        }
        html += "</tr>\n";
    }
    return html + "</tbody></table>\n";
}

}  // namespace

std::string asHtml(std::string_view text) {
    std::string html;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const char first = text.front();
        if (length == 0 || isControl(first)) {
            html += "\xef\xbf\xbd";
        } else if (first == '&') {
            html += "&amp;";
        } else if (first == '<') {
            html += "&lt;";
        } else if (first == '>') {
            html += "&gt;";
        } else if (first == '"') {
            html += "&quot;";
        } else if (first == '\'') {
            html += "&#39;";
        } else {
            html += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return html;
}

std::string htmlPage(const Overview& overview) {
    std::string page(kHead);
    page += element("title", overview.title) + "\n</head>\n<body>\n" +
            element("h1", overview.title) +
            "\n<input id=\"search\" type=\"search\" placeholder=\"Search\" "
            "aria-label=\"Search\" autocomplete=\"off\">\n<nav>\n";
    for (const Section& section : overview.sections) {
        page += "<a href=\"#" + asHtml(section.anchor) + "\">" + asHtml(section.title) + "</a>\n";
    }
    page += "</nav>\n";
    for (const Section& section : overview.sections) {
        page += "<section id=\"" + asHtml(section.anchor) + "\">\n" + element("h2", section.title) +
                "\n";
        if (!section.fields.empty()) {
            page += fieldTable(section.fields);
        }
        for (const Table& table : section.tables) {
            page += tableHtml(table);
        }
        page += "</section>\n";
    }
    return page.append(kFoot);
}

}  // namespace tarvo_backup
