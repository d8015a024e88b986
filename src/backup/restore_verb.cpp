// The verbs restore, confirm and undo.
#include <memory>

#include "backup/backup_folder.h"
#include "backup/diff_report.h"
#include "backup/document.h"
#include "backup/fault.h"
#include "backup/interruption.h"
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
    if (!console.out) {
        // Nobody has seen what would be agreed to.
        throw Fault(ExitStatus::cannotWrite, "cannot write standard output; nothing was done");
    }
    std::string answer;
    std::getline(console.in, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

// Neither an abandoned restore, which is undone, nor one that is to be confirmed may be in the way.
std::optional<Undone> makeWay() {
    auto undone = undoAbandoned();
    if (const auto state = readState()) {
        throw Fault(ExitStatus::busy, "the restore of " + state->document +
                                          " waits for tarvo-backup confirm or undo");
    }
    return undone;
}

// Where what an undo took back is, and what is not; empty where nothing had changed.
std::string toldOfKept(const Undone& undone) {
    std::string told;
    for (const std::string& path : undone.kept) {
        told += (told.empty() ? "what it took back is in " : ", ") + path;
    }
    if (!undone.notKept.empty()) {
        told += std::string(told.empty() ? "" : "; ") +
                "what it took back could not be saved: " + undone.notKept;
    }
    return told;
}

void warnOfLoss(const Undone& undone, const Console& console) {
    if (!undone.notKept.empty()) {
        console.err << "tarvo-backup: what the undo took back could not be saved: "
                    << undone.notKept << '\n';
    }
}

void printKept(const Undone& undone, const Console& console) {
    for (const std::string& path : undone.kept) {
        console.out << "What was there before that is in " << path << '\n';
    }
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

// A restore from its command line on, as far as it comes.
class Run {
  public:
    Run(const RestoreOptions& options, const Console& console)
        : options_(options),
          console_(console),
          document_(readDocument(options.path, console)),
          lock_("restore of " + document_.name()) {}

    RestoreReport report() && {
        {
            const Progress progress(console_, "Undoing an earlier restore");
            report_.undoneEarlier = makeWay();
        }
        tellOfEarlier();
        plan();
        report_.outcome = agreed();
        if (report_.outcome == RestoreOutcome::restored) {
            const RestoreState state = saved();
            planned_.reset();
            tell("The backup from before is " + report_.backup);
            begin(state);
        }
        return std::move(report_);
    }

  private:
    void tell(const std::string& line) const {
        if (!options_.output.json) {
            console_.out << line << '\n' << std::flush;
        }
    }

    void tellOfEarlier() const {
        if (!report_.undoneEarlier) {
            return;
        }
        tell("An earlier restore that had not come to its end was undone.");
        if (!options_.output.json) {
            printKept(*report_.undoneEarlier, console_);
        }
        warnOfLoss(*report_.undoneEarlier, console_);
    }

    // Of the headend as it is now.
    void plan() {
        const Progress progress(console_, "Copying the databases");
        planned_ = std::make_unique<PlannedRestore>(document_);
    }

    // Prints the plan. Gives whether the restore would succeed.
    bool shown() const {
        if (!report_.plan.notBegun.empty()) {
            throw Fault(ExitStatus::cannotRead, report_.plan.notBegun);
        }
        if (!options_.output.json) {
            printPlan(report_.plan, document_, Painter(console_, options_.output.color),
                      console_.out);
        }
        return report_.plan.status == app::ExitStatus::success;
    }

    // Shows what is planned and asks, until that is what the headend as it is now needs: who is
    // asked takes his time, and somebody else may change the headend meanwhile. `restored` for what
    // is to be done; it is planned then.
    RestoreOutcome agreed() {
        for (;;) {
            report_.plan = planned_->plan();
            planned_.reset();  // signals end a program that waits for an answer
            if (!shown()) {
                return RestoreOutcome::refused;
            }
            if (!options_.yes && !isAgreedTo(console_)) {
                tell("Nothing was done.");
                return RestoreOutcome::declined;
            }
            plan();
            if (planned_->plan() == report_.plan) {
                return RestoreOutcome::restored;
            }
            tell("\nThe headend has changed meanwhile. What a restore would do now:\n");
            if (options_.yes) {
                report_.plan = planned_->plan();
                return shown() ? RestoreOutcome::restored : RestoreOutcome::refused;
            }
        }
    }

    RestoreState saved() {
        const Progress progress(console_, "Saving a backup");
        report_.backup = saveInto(kBackupFolder, planned_->headend(), std::nullopt).path;
        return keepForUndo(document_, *planned_);
    }

    void begin(const RestoreState& state) {
        std::optional<std::chrono::seconds> toConfirm;
        if (options_.confirmMinutes) {
            toConfirm = std::chrono::minutes(*options_.confirmMinutes);
            report_.confirmMinutes = options_.confirmMinutes;
        }
        const Progress progress(console_, "Importing the document");
        Restored restored = restore(document_, state, toConfirm, lock_);
        report_.importStatus = restored.status;
        report_.notTaken = std::move(restored.notTaken);
        report_.notCompared = std::move(restored.notCompared);
        if (restored.undone) {
            report_.outcome = RestoreOutcome::undone;
            if (!options_.output.json) {
                printKept(*restored.undone, console_);
            }
            warnOfLoss(*restored.undone, console_);
        }
    }

    const RestoreOptions& options_;
    const Console& console_;
    const Document document_;
    RestoreLock lock_;
    RestoreReport report_;
    std::unique_ptr<PlannedRestore> planned_;
};

Ending endingOf(const Undone& undone) {
    return {.outcome = Ending::Outcome::undone, .document = undone.document, .undone = undone};
}

// In a sentence.
std::string told(const Undone& undone) {
    const std::string kept = toldOfKept(undone);
    return "the restore of " + undone.document + " was undone " +
           utcText(undone.moment, "on %Y-%m-%d at %H:%M UTC") + (kept.empty() ? "" : "; ") + kept;
}

void printEnding(const Ending& ending, const OutputOptions& output, const Console& console) {
    if (output.json) {
        console.out << toJson(ending) << '\n';
    } else if (ending.outcome != Ending::Outcome::nothing) {
        console.out << "The restore of " << ending.document
                    << (ending.outcome == Ending::Outcome::confirmed ? " stays.\n"
                                                                     : " was undone.\n");
        if (ending.undone) {
            printKept(*ending.undone, console);
        }
    }
    console.out << std::flush;
}

}  // namespace

ExitStatus runRestore(const RestoreOptions& options, const Console& console) {
    if (!options.yes && (options.path == "-" || options.output.json)) {
        throw Fault(ExitStatus::usage, options.path == "-"
                                           ? "a document from standard input needs --yes"
                                           : "--json needs --yes");
    }
    // Whoever does not listen any more does not end what was begun.
    const SignalsNoted brokenPipe({SIGPIPE});
    const RestoreReport report = Run(options, console).report();
    if (options.output.json) {
        console.out << toJson(report) << '\n';
    } else if (report.outcome == RestoreOutcome::restored) {
        printRestored(report, options, console);
    }
    console.out << std::flush;
    switch (report.outcome) {
        case RestoreOutcome::restored:
            if (!report.notCompared.empty()) {
                console.err
                    << "tarvo-backup: restored, but the headend cannot be compared with the "
                       "document: "
                    << report.notCompared << '\n';
                return ExitStatus::untold;
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
    const SignalsNoted brokenPipe({SIGPIPE});
    const RestoreLock lock("confirm");
    const Progress progress(console, "Undoing a restore that nobody can confirm any more");
    auto undone = undoAbandoned();
    if (const auto state = readState()) {
        removeState();
        printEnding({.outcome = Ending::Outcome::confirmed,
                     .document = state->document,
                     .undone = std::nullopt},
                    options.output, console);
        return ExitStatus::done;
    }
    if (!undone) {
        undone = lastUndone();
    }
    if (options.output.json) {
        printEnding(undone ? endingOf(*undone) : Ending(), options.output, console);
    }
    if (!undone) {
        throw Fault(ExitStatus::failure, "there is no restore to confirm");
    }
    throw Fault(ExitStatus::refused, "too late: " + told(*undone));
}

ExitStatus runUndo(const UndoOptions& options, const Console& console) {
    const SignalsNoted brokenPipe({SIGPIPE});
    const RestoreLock lock("undo");
    const auto state = readState();
    const bool hasWork = state && (!options.abandonedOnly || isAbandoned(*state));
    if (!hasWork && !options.abandonedOnly) {
        const auto undone = lastUndone();
        if (options.output.json) {
            printEnding({}, options.output, console);
        }
        throw Fault(ExitStatus::failure,
                    "there is no restore to undo" + (undone ? "; " + told(*undone) : ""));
    }
    Ending ending;
    if (hasWork) {
        const Progress progress(console, "Saving a backup of what is undone");
        ending = endingOf(undo(*state));
    }
    if (ending.undone) {
        warnOfLoss(*ending.undone, console);
    }
    printEnding(ending, options.output, console);
    return ExitStatus::done;
}

}  // namespace tarvo_backup
