// What the verbs are asked to do, and the functions that do it. Each prints its result on the
// console and throws Fault for what keeps it from its work.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "backup/console.h"
#include "backup/exit_status.h"

namespace tarvo_backup {

// Paths may be "-" for standard input.

struct DiffOptions {
    OutputOptions output;
    std::string oldPath;
    std::string newPath;
    bool liveState = false;
};
// Status `differences` when there are some.
ExitStatus runDiff(const DiffOptions& options, const Console& console);

struct CheckOptions {
    OutputOptions output;
    std::string path;
};
// Status `usage` when there are errors; warnings leave it at `done`.
ExitStatus runCheck(const CheckOptions& options, const Console& console);

struct ShowOptions {
    OutputOptions output;
    std::string path;
    std::string htmlPath;  // empty: no page
    bool redact = false;
    bool withSecrets = false;
};
ExitStatus runShow(const ShowOptions& options, const Console& console);

struct PlanOptions {
    OutputOptions output;
    std::string path;
};
// Status `differences` when a restore would do anything, `refused` when it would fail.
ExitStatus runPlan(const PlanOptions& options, const Console& console);

struct SaveOptions {
    OutputOptions output;
    std::string folder;
    std::string outputPath;           // instead of the folder; empty: not given
    std::optional<std::size_t> keep;  // all of them
};
ExitStatus runSave(const SaveOptions& options, const Console& console);

struct RestoreOptions {
    OutputOptions output;
    std::string path;
    bool yes = false;
    std::optional<int> confirmMinutes;
};
// Status `refused` when the import fails, or would; `failure` when the answer is no.
ExitStatus runRestore(const RestoreOptions& options, const Console& console);

struct ConfirmOptions {
    OutputOptions output;
};
ExitStatus runConfirm(const ConfirmOptions& options, const Console& console);

struct UndoOptions {
    OutputOptions output;
    bool abandonedOnly = false;
};
ExitStatus runUndo(const UndoOptions& options, const Console& console);

}  // namespace tarvo_backup
