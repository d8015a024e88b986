// The verbs restore, confirm and undo.
#include "backup/backup_folder.h"
#include "backup/diff_report.h"
#include "backup/document.h"
#include "backup/fault.h"
#include "backup/json.h"
#include "backup/plan_report.h"
#include "backup/progress.h"
#include "backup/restore.h"
#include "backup/restore_report.h"
#include "backup/restore_state.h"
#include "backup/utc_time.h"
#include "backup/verbs.h"
#include "backup/verified_export.h"

namespace tarvo_backup {

namespace {

bool isAgreedTo(const Console& console) {
    console.out << "\nRestore it? [y/N] " << std::flush;
    std::string answer;
    std::getline(console.in, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

// Neither an abandoned restore, which is undone, nor one that is to be confirmed may be in the way.
// Gives whether one was undone.
bool makeWay() {
    const bool wasUndone = undoAbandoned().has_value();
    if (const auto state = readState()) {
        throw Fault(ExitStatus::busy, "the restore of " + state->document +
                                          " waits for tarvo-backup confirm or undo");
    }
    return wasUndone;
}

void printRestored(const RestoreReport& report, const RestoreOptions& options,
                   const Console& console) {
    const Painter paint(console, options.output.color);
    console.out << "Restored.\n";
    if (!report.notTaken.empty()) {
        console.out << paint(Style::heading, "The headend is not as the document in:") << '\n';
        printDifferences(report.notTaken, paint, console.out);
    }
    if (options.confirmMinutes) {
        console.out << paint(Style::warning, "Undone in " +
                                                 std::to_string(*options.confirmMinutes) +
                                                 " minutes unless you run: tarvo-backup confirm")
                    << '\n';
    }
}

// Restores the document. What people read is printed as it comes.
RestoreReport restoreAndTell(const RestoreOptions& options, const Console& console) {
    const bool isForPeople = !options.output.json;
    const auto tell = [&](const std::string& line) {
        if (isForPeople) {
            console.out << line << '\n' << std::flush;
        }
    };
    const Document document = readDocument(options.path, console);
    RestoreReport report;
    RestoreLock lock("restore of " + document.name());
    {
        const Progress progress(console, "Undoing an earlier restore");
        report.undidEarlier = makeWay();
        verifyConfiguration();
        report.plan = makePlan(document);
    }
    if (report.undidEarlier) {
        tell("An earlier restore that had not come to its end was undone.");
    }
    if (isForPeople) {
        printPlan(report.plan, document, Painter(console, options.output.color), console.out);
    }
    if (report.plan.status != app::ExitStatus::success) {
        return report;
    }
    if (!options.yes && !isAgreedTo(console)) {
        tell("Nothing was done.");
        report.outcome = RestoreOutcome::declined;
        return report;
    }
    {
        const Progress progress(console, "Saving a backup");
        report.backup = saveInto(kBackupFolder, verifiedExport(), std::nullopt).path;
    }
    tell("The backup from before is " + report.backup);
    std::optional<std::chrono::seconds> toConfirm;
    if (options.confirmMinutes) {
        toConfirm = std::chrono::minutes(*options.confirmMinutes);
        report.confirmMinutes = options.confirmMinutes;
    }
    const Progress progress(console, "Copying the databases");
    Restored restored = restore(document, report.plan, toConfirm, lock);
    report.importStatus = restored.status;
    report.notTaken = std::move(restored.notTaken);
    report.outcome = restored.status == app::ExitStatus::success ? RestoreOutcome::restored
                                                                 : RestoreOutcome::undone;
    return report;
}

Ending endingOf(const Undone& undone) {
    return {
        .outcome = Ending::Outcome::undone, .document = undone.document, .undoneAt = undone.moment};
}

// In a sentence.
std::string told(const Undone& undone) {
    return "the restore of " + undone.document + " was undone " +
           utcText(undone.moment, "on %Y-%m-%d at %H:%M UTC");
}

void printEnding(const Ending& ending, const OutputOptions& output, const Console& console) {
    if (output.json) {
        console.out << toJson(ending) << '\n';
    } else if (ending.outcome != Ending::Outcome::nothing) {
        console.out << "The restore of " << ending.document
                    << (ending.outcome == Ending::Outcome::confirmed ? " stays.\n"
                                                                     : " was undone.\n");
    }
}

}  // namespace

ExitStatus runRestore(const RestoreOptions& options, const Console& console) {
    if (!options.yes && (options.path == "-" || options.output.json)) {
        throw Fault(ExitStatus::usage, options.path == "-"
                                           ? "a document from standard input needs --yes"
                                           : "--json needs --yes");
    }
    const RestoreReport report = restoreAndTell(options, console);
    if (options.output.json) {
        console.out << toJson(report) << '\n';
    }
    switch (report.outcome) {
        case RestoreOutcome::restored:
            if (!options.output.json) {
                printRestored(report, options, console);
            }
            return ExitStatus::done;
        case RestoreOutcome::undone:
            console.err << "tarvo-backup: the import ended with status "
                        << static_cast<int>(*report.importStatus) << " and was undone\n";
            return ExitStatus::refused;
        case RestoreOutcome::refused:
            return ExitStatus::refused;
        case RestoreOutcome::declined:
            break;
    }
    return ExitStatus::failure;
}

ExitStatus runConfirm(const ConfirmOptions& options, const Console& console) {
    const RestoreLock lock("confirm");
    const Progress progress(console, "Undoing a restore that nobody can confirm any more");
    auto undone = undoAbandoned();
    if (const auto state = readState()) {
        removeState();
        printEnding({.outcome = Ending::Outcome::confirmed,
                     .document = state->document,
                     .undoneAt = std::nullopt},
                    options.output, console);
        return ExitStatus::done;
    }
    if (!undone) {
        undone = lastUndone();
    }
    if (!undone) {
        throw Fault(ExitStatus::failure, "there is no restore to confirm");
    }
    if (options.output.json) {
        printEnding(endingOf(*undone), options.output, console);
    }
    throw Fault(ExitStatus::refused, "too late: " + told(*undone));
}

ExitStatus runUndo(const UndoOptions& options, const Console& console) {
    const RestoreLock lock("undo");
    const auto state = readState();
    const bool hasWork = state && (!options.abandonedOnly || isAbandoned(*state));
    if (!hasWork && !options.abandonedOnly) {
        const auto undone = lastUndone();
        throw Fault(ExitStatus::failure,
                    "there is no restore to undo" + (undone ? "; " + told(*undone) : ""));
    }
    Ending ending;
    if (hasWork) {
        const Progress progress(console, "Saving a backup of what is undone");
        ending = endingOf(undo(*state));
    }
    printEnding(ending, options.output, console);
    return ExitStatus::done;
}

}  // namespace tarvo_backup
