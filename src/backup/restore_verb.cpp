// The verbs restore, confirm and undo.
#include "backup/backup_folder.h"
#include "backup/diff_report.h"
#include "backup/document.h"
#include "backup/fault.h"
#include "backup/plan_report.h"
#include "backup/restore.h"
#include "backup/restore_state.h"
#include "backup/verbs.h"

namespace tarvo_backup {

namespace {

bool isAgreedTo(const Console& console) {
    console.out << "\nRestore it? [y/N] " << std::flush;
    std::string answer;
    std::getline(console.in, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

// Neither an abandoned restore, which is undone, nor one that is to be confirmed may be in the way.
void makeWay(const Console& console) {
    if (undoAbandoned()) {
        console.out << "An earlier restore that had not come to its end was undone.\n";
    }
    if (const auto state = readState()) {
        throw Fault(ExitStatus::busy, "the restore of " + state->document +
                                          " waits for tarvo-backup confirm or undo");
    }
}

void printRestored(const Restored& restored, const RestoreOptions& options,
                   const Console& console) {
    const Painter paint(console, options.output.color);
    if (!restored.notTaken.empty()) {
        console.out << paint(Style::heading, "The headend is not as the document in:") << '\n';
        printDifferences(restored.notTaken, paint, console.out);
    }
    if (restored.isUnconfirmed) {
        console.out << paint(Style::warning, "Undone in " +
                                                 std::to_string(*options.confirmMinutes) +
                                                 " minutes unless you run: tarvo-backup confirm")
                    << '\n';
    }
}

}  // namespace

ExitStatus runRestore(const RestoreOptions& options, const Console& console) {
    if (options.path == "-" && !options.yes) {
        throw Fault(ExitStatus::usage, "a document from standard input needs --yes");
    }
    const Document document = readDocument(options.path, console);
    RestoreLock lock("restore of " + document.name());
    makeWay(console);
    const Plan plan = makePlan(document);
    printPlan(plan, document, Painter(console, options.output.color), console.out);
    if (plan.status != app::ExitStatus::success) {
        return ExitStatus::refused;
    }
    if (!options.yes && !isAgreedTo(console)) {
        return ExitStatus::failure;
    }
    const Saved saved = saveInto(kBackupFolder, verifiedExport(), std::nullopt);
    console.out << "The backup from before is " << saved.path << '\n' << std::flush;
    std::optional<std::chrono::seconds> toConfirm;
    if (options.confirmMinutes) {
        toConfirm = std::chrono::minutes(*options.confirmMinutes);
    }
    const Restored restored = restore(document, plan, toConfirm, lock);
    if (restored.status != app::ExitStatus::success) {
        console.err << "tarvo-backup: the import ended with status "
                    << static_cast<int>(restored.status) << " and was undone\n";
        return ExitStatus::refused;
    }
    console.out << "Restored.\n";
    printRestored(restored, options, console);
    return ExitStatus::done;
}

ExitStatus runConfirm(const ConfirmOptions&, const Console& console) {
    const RestoreLock lock("confirm");
    if (undoAbandoned()) {
        throw Fault(ExitStatus::failure, "too late: the restore was undone");
    }
    const auto state = readState();
    if (!state) {
        throw Fault(ExitStatus::failure, "there is no restore to confirm");
    }
    removeState();
    console.out << "The restore of " << state->document << " stays.\n";
    return ExitStatus::done;
}

ExitStatus runUndo(const UndoOptions& options, const Console& console) {
    const RestoreLock lock("undo");
    const auto state = readState();
    const bool hasWork = state && (!options.abandonedOnly || isAbandoned(*state));
    if (!hasWork && options.abandonedOnly) {
        return ExitStatus::done;
    }
    if (!hasWork) {
        throw Fault(ExitStatus::failure, "there is no restore to undo");
    }
    undo(*state);
    console.out << "The restore of " << state->document << " was undone.\n";
    return ExitStatus::done;
}

}  // namespace tarvo_backup
