#include "backup/backup_folder.h"
#include "backup/json.h"
#include "backup/verbs.h"

namespace tarvo_backup {

namespace {

void printForPeople(const Saved& saved, std::ostream& out) {
    out << saved.path << (saved.isUnchanged ? ": unchanged since" : ": saved") << '\n';
    for (const std::string& path : saved.removed) {
        out << path << ": removed\n";
    }
}

}  // namespace

ExitStatus runSave(const SaveOptions& options, const Console& console) {
    const std::string document = verifiedExport();
    if (options.outputPath == "-") {
        console.out << document;
        return ExitStatus::done;
    }
    Saved saved;
    if (options.outputPath.empty()) {
        saved = saveInto(options.folder, document, options.keep);
    } else {
        writeBackup(options.outputPath, document);
        saved.path = options.outputPath;
    }
    if (options.output.json) {
        console.out << toJson(saved) << '\n';
    } else {
        printForPeople(saved, console.out);
    }
    return ExitStatus::done;
}

}  // namespace tarvo_backup
