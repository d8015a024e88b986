#include "backup/document.h"
#include "backup/json.h"
#include "backup/plan.h"
#include "backup/plan_report.h"
#include "backup/progress.h"
#include "backup/verbs.h"

namespace tarvo_backup {

namespace {

Plan planned(const Document& document, const Console& console) {
    const Progress progress(console, "Copying the databases");
    return PlannedRestore(document).plan();
}

}  // namespace

ExitStatus runPlan(const PlanOptions& options, const Console& console) {
    const Document document = readDocument(options.path, console);
    const Plan plan = planned(document, console);
    if (options.output.json) {
        console.out << toJson(plan) << '\n';
    } else {
        printPlan(plan, document, Painter(console, options.output.color), console.out);
    }
    if (!plan.notBegun.empty()) {
        return ExitStatus::cannotRead;
    }
    if (plan.status != app::ExitStatus::success) {
        return ExitStatus::refused;
    }
    return plan.isEmpty() ? ExitStatus::done : ExitStatus::differences;
}

}  // namespace tarvo_backup
