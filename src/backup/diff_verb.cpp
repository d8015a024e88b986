#include <utility>

#include "backup/diff.h"
#include "backup/diff_report.h"
#include "backup/document.h"
#include "backup/fault.h"
#include "backup/json.h"
#include "backup/verbs.h"

namespace tarvo_backup {

namespace {

Document readConfiguration(const std::string& path, const Console& console) {
    // git gives an empty file for one that is not there.
    std::string text = readText(path, console);
    Document document(nameOf(path), text.empty() ? "<configuration/>" : std::move(text));
    if (document.configuration() == nullptr) {
        throw Fault(ExitStatus::usage, document.name() + ": no 'configuration' element");
    }
    return document;
}

}  // namespace

ExitStatus runDiff(const DiffOptions& options, const Console& console) {
    if (options.oldPath == "-" && options.newPath == "-") {
        throw Fault(ExitStatus::usage, "only one of the documents can be standard input");
    }
    const Document older = readConfiguration(options.oldPath, console);
    const Document newer = readConfiguration(options.newPath, console);
    const auto differences = diff(older, newer, {.liveState = options.liveState});
    if (options.output.json) {
        console.out << toJson(differences) << '\n';
    } else {
        printDifferences(differences, Painter(console, options.output.color), console.out);
    }
    return differences.empty() ? ExitStatus::done : ExitStatus::differences;
}

}  // namespace tarvo_backup
