#include <optional>
#include <string>
#include <vector>

#include "backup/backup_folder.h"
#include "backup/fault.h"
#include "backup/json.h"
#include "backup/output_file.h"
#include "backup/progress.h"
#include "backup/verbs.h"
#include "backup/verified_export.h"

namespace tarvo_backup {

namespace {

constexpr const char* kStandardOutput = "-";

void printForPeople(const Saved& saved, std::ostream& out) {
    out << onOneLine(saved.path) << (saved.isUnchanged ? ": unchanged since" : ": saved") << '\n';
    for (const std::string& path : saved.removed) {
        out << onOneLine(path) << ": removed\n";
    }
}

// It is kept all the same: nothing else holds these settings. Of what was kept before, it was said
// before.
void warn(const TriedExport& tried, bool isUnchanged, std::ostream& err) {
    if (!tried.notTried.empty()) {
        err << "tarvo-backup: warning: whether this headend would take the backup back cannot be "
               "tried: "
            << tried.notTried << '\n';
    }
    if (tried.refusals.empty() || isUnchanged) {
        return;
    }
    err << "tarvo-backup: warning: this headend would not take the backup back as it is\n";
    for (const ImportError& refusal : tried.refusals) {
        err << "  " << described(refusal) << '\n';
    }
}

Saved keep(const SaveOptions& options, const std::string& document) {
    if (options.outputPath.empty()) {
        return saveInto(options.folder, document, options.keep);
    }
    writeForOwner(options.outputPath, document);
    return {.path = options.outputPath, .isUnchanged = false, .removed = {}};
}

}  // namespace

ExitStatus runSave(const SaveOptions& options, const Console& console) {
    const bool toStandardOutput = options.outputPath == kStandardOutput;
    if (toStandardOutput && options.output.json) {
        throw Fault(ExitStatus::usage, "--json: with --output - the output is the document itself");
    }
    std::optional<Progress> progress(std::in_place, console, "Copying the databases");
    const TriedExport tried = triedExport();
    if (toStandardOutput) {
        progress.reset();
        console.out << tried.document;
        warn(tried, false, console.err);
        return ExitStatus::done;
    }
    const Saved result = keep(options, tried.document);
    progress.reset();
    if (options.output.json) {
        console.out << toJson(result, tried) << '\n';
    } else {
        printForPeople(result, console.out);
    }
    warn(tried, result.isUnchanged, console.err);
    return ExitStatus::done;
}

}  // namespace tarvo_backup
