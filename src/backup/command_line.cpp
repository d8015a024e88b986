#include "backup/command_line.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <climits>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>

#include "backup/backup_folder.h"
#include "backup/fault.h"
#include "backup/verbs.h"

namespace tarvo_backup {

namespace {

constexpr const char* kDescription =
    "Looks after backups of a DVB headend's configuration, beside tarvo-config.";
constexpr const char* kFooter = "A FILE named - is standard input. See tarvo-backup(8).";

// What a verb's command line fills in, and what came of running it.
struct Session {
    const Console& console;
    ExitStatus status = ExitStatus::done;
    DiffOptions diff = {};
    CheckOptions check = {};
    ShowOptions show = {};
    PlanOptions plan = {};
    SaveOptions save = {};
    RestoreOptions restore = {};
    ConfirmOptions confirm = {};
    UndoOptions undo = {};
};

// The library reads the value of the enumeration.
std::string codeOfColorMode(const std::string& word) {
    static const std::map<std::string, ColorMode> kModes{
        {"auto", ColorMode::automatic}, {"always", ColorMode::always}, {"never", ColorMode::never}};
    const auto found = kModes.find(CLI::detail::to_lower(word));
    if (found == kModes.end()) {
        throw CLI::ValidationError("'" + word + "' is not auto, always or never");
    }
    return std::to_string(static_cast<int>(found->second));
}

void addOutputOptions(CLI::App& verb, OutputOptions& options) {
    verb.add_flag("--json", options.json, "Print JSON");
    verb.add_option("--color", options.color, "Use colors: auto, always or never")
        ->transform(codeOfColorMode, "")
        ->option_text("WHEN");
}

// An empty name is a variable of a script that was not set, and would count as none given.
CLI::Option* notEmpty(CLI::Option* option) {
    return option->check(
        [](const std::string& name) { return name.empty() ? "the name is empty" : ""; }, "");
}

// A verb whose options the caller adds to the returned command.
template <class Options>
CLI::App& addVerb(CLI::App& app, const char* name, const char* description, Session& session,
                  Options& options, ExitStatus (*runVerb)(const Options&, const Console&)) {
    CLI::App& verb = *app.add_subcommand(name, description);
    addOutputOptions(verb, options.output);
    verb.callback(
        [&session, &options, runVerb] { session.status = runVerb(options, session.console); });
    return verb;
}

void addDiff(CLI::App& app, Session& session) {
    DiffOptions& options = session.diff;
    CLI::App& verb =
        addVerb(app, "diff", "What is different between two documents", session, options, runDiff);
    verb.add_option("OLD", options.oldPath, "The document to compare with")->required();
    verb.add_option("NEW", options.newPath, "The document that may be different")->required();
    verb.add_flag("--state", options.liveState, "Also what the device reports of itself");
}

void addCheck(CLI::App& app, Session& session) {
    CheckOptions& options = session.check;
    CLI::App& verb = addVerb(app, "check", "Every fault of a document", session, options, runCheck);
    verb.add_option("FILE", options.path, "The document")->required();
}

void addShow(CLI::App& app, Session& session) {
    ShowOptions& options = session.show;
    CLI::App& verb =
        addVerb(app, "show", "What is in a document, for people", session, options, runShow);
    verb.add_option("FILE", options.path, "The document")->required();
    CLI::Option* html = notEmpty(
        verb.add_option("--html", options.htmlPath, "Write a web page")->option_text("PAGE"));
    CLI::Option* redact =
        verb.add_flag("--redact", options.redact, "Print the document itself, its secrets masked");
    CLI::Option* secrets =
        verb.add_flag("--secrets", options.withSecrets, "Show passwords and keys");
    redact->excludes(html)->excludes(secrets)->excludes(verb.get_option("--json"));
    html->excludes(verb.get_option("--json"));
}

void addPlan(CLI::App& app, Session& session) {
    PlanOptions& options = session.plan;
    CLI::App& verb =
        addVerb(app, "plan", "What a restore of a document would do", session, options, runPlan);
    verb.add_option("FILE", options.path, "The document")->required();
}

void addSave(CLI::App& app, Session& session) {
    SaveOptions& options = session.save;
    options.folder = kBackupFolder;
    CLI::App& verb = addVerb(app, "save", "A verified backup, kept with the ones before", session,
                             options, runSave);
    const auto isOption = [](const std::string& name) {
        return name == "-" ? "- is no folder; --output - is standard output" : "";
    };
    auto* folder = notEmpty(verb.add_option("DIR", options.folder, "The folder; " + options.folder))
                       ->check(isOption, "");
    auto* keep = verb.add_option("--keep", options.keep, "How many backups to keep")
                     ->check(CLI::Range(1, INT_MAX))
                     ->option_text("N");
    notEmpty(
        verb.add_option("--output", options.outputPath, "A file instead; - is standard output"))
        ->excludes(folder)
        ->excludes(keep)
        ->option_text("FILE");
}

void addRestore(CLI::App& app, Session& session) {
    RestoreOptions& options = session.restore;
    constexpr int kLongestMinutes = 24 * 60;
    CLI::App& verb = addVerb(app, "restore", "Plan, back up, and restore a document", session,
                             options, runRestore);
    verb.add_option("FILE", options.path, "The document")->required();
    verb.add_flag("--yes", options.yes, "Do not ask");
    verb.add_option("--confirm", options.confirmMinutes, "Undo it unless it is confirmed in time")
        ->check(CLI::Range(1, kLongestMinutes))
        ->option_text("MINUTES");
}

void addConfirmAndUndo(CLI::App& app, Session& session) {
    addVerb(app, "confirm", "Keep what was restored with --confirm", session, session.confirm,
            runConfirm);
    CLI::App& undo = addVerb(app, "undo", "Put back what was before a restore with --confirm",
                             session, session.undo, runUndo);
    undo.add_flag("--abandoned", session.undo.abandonedOnly,
                  "Only what nobody can confirm or finish any more");
}

// The library would miss a verb, and not tell what it has found instead.
void checkVerb(const CLI::App& app, int argc, const char* const* argv) {
    const std::string_view verb = argc > 1 ? argv[1] : "-";
    const auto isMeant = [verb](const CLI::App* each) { return each->get_name() == verb; };
    if (!verb.starts_with('-') && app.get_subcommands(isMeant).empty()) {
        throw CLI::ValidationError("there is no verb '" + std::string(verb) + "'");
    }
}

// Help is of several lines; of what a message repeats nothing may be a command to a terminal.
void printLines(const std::string& text, std::ostream& out) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        out << onOneLine(line) << '\n';
    }
}

// Whether a verb prints what it has done; the others' work is what they print.
bool isReport(const CLI::App& app, const Session& session) {
    const bool isSaved = app.got_subcommand("save") && session.save.outputPath != "-";
    return isSaved || app.got_subcommand("restore") || app.got_subcommand("confirm") ||
           app.got_subcommand("undo");
}

}  // namespace

ExitStatus run(int argc, const char* const* argv, const Console& console) {
    Session session{.console = console};
    CLI::App app(kDescription, "tarvo-backup");
    app.set_version_flag("--version", std::string("tarvo-backup ") + TARVO_VERSION);
    app.require_subcommand(1);
    app.footer(kFooter);
    addSave(app, session);
    addPlan(app, session);
    addRestore(app, session);
    addConfirmAndUndo(app, session);
    addDiff(app, session);
    addCheck(app, session);
    addShow(app, session);
    try {
        checkVerb(app, argc, argv);
        app.parse(argc, argv);
    } catch (const CLI::ParseError& request) {
        // Help and version come as errors of status 0.
        std::ostringstream message;
        const bool isHelp = app.exit(request, console.out, message) == 0;
        printLines(message.str(), console.err);
        return isHelp ? ExitStatus::done : ExitStatus::usage;
    } catch (const Fault& fault) {
        console.err << "tarvo-backup: " << fault.what() << '\n';
        return fault.status();
    }
    console.out.flush();
    if (!console.out) {
        console.err << "tarvo-backup: cannot write standard output\n";
        if (!isReport(app, session)) {
            return ExitStatus::cannotWrite;
        }
        return session.status == ExitStatus::done ? ExitStatus::untold : session.status;
    }
    return session.status;
}

}  // namespace tarvo_backup
