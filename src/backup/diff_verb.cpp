#include <utility>

#include "backup/diff.h"
#include "backup/diff_report.h"
#include "backup/document.h"
#include "backup/fault.h"
#include "backup/json.h"
#include "backup/progress.h"
#include "backup/verbs.h"

namespace tarvo_backup {

namespace {

// git gives an empty file for one that is not there.
Document readOrEmpty(const std::string& path, const Console& console) {
    std::string text = readText(path, console);
    return configurationIn(nameOf(path), text.empty() ? "<configuration/>" : std::move(text));
}

std::vector<Difference> compared(const Document& older, const Document& newer,
                                 const DiffOptions& options, const Console& console) {
    const Progress progress(console, "Comparing");
    return diff(older, newer, {.liveState = options.liveState});
}

}  // namespace

ExitStatus runDiff(const DiffOptions& options, const Console& console) {
    if (options.oldPath == "-" && options.newPath == "-") {
        throw Fault(ExitStatus::usage, "only one of the documents can be standard input");
    }
    const Document older = readOrEmpty(options.oldPath, console);
    const Document newer = readOrEmpty(options.newPath, console);
    const auto differences = compared(older, newer, options, console);
    if (options.output.json) {
        console.out << toJson(differences) << '\n';
    } else {
        printDifferences(differences, Painter(console, options.output.color), console.out);
    }
    return differences.empty() ? ExitStatus::done : ExitStatus::differences;
}

}  // namespace tarvo_backup
