#include <algorithm>
#include <utility>

#include "backup/check.h"
#include "backup/document.h"
#include "backup/json.h"
#include "backup/progress.h"
#include "backup/verbs.h"

namespace tarvo_backup {

namespace {

std::vector<Finding> findingsIn(const std::string& path, const Console& console) {
    std::string text = readText(path, console);
    const Progress progress(console, "Checking");
    try {
        return check(Document(nameOf(path), std::move(text)));
    } catch (const NotWellFormed& fault) {
        return {{.position = fault.position(),
                 .severity = Severity::error,
                 .path = "",
                 .message = "not well-formed: " + fault.reason()}};
    }
}

// As compilers print it, so that editors go there.
void print(const Finding& finding, const std::string& name, const Painter& paint,
           std::ostream& out) {
    out << onOneLine(name) << ':' << finding.position.line << ':' << finding.position.column << ": "
        << (finding.severity == Severity::error ? paint(Style::error, "error")
                                                : paint(Style::warning, "warning"))
        << ": " << onOneLine(finding.path) << (finding.path.empty() ? "" : ": ")
        << onOneLine(finding.message) << '\n';
}

}  // namespace

ExitStatus runCheck(const CheckOptions& options, const Console& console) {
    const auto findings = findingsIn(options.path, console);
    if (options.output.json) {
        console.out << toJson(findings) << '\n';
    } else {
        for (const Finding& finding : findings) {
            print(finding, options.path, Painter(console, options.output.color), console.out);
        }
    }
    const bool hasErrors =
        std::any_of(findings.begin(), findings.end(),
                    [](const Finding& finding) { return finding.severity == Severity::error; });
    return hasErrors ? ExitStatus::usage : ExitStatus::done;
}

}  // namespace tarvo_backup
