#include "backup/document.h"
#include "backup/json.h"
#include "backup/plan.h"
#include "backup/plan_report.h"
#include "backup/verbs.h"

namespace tarvo_backup {

ExitStatus runPlan(const PlanOptions& options, const Console& console) {
    const Document document = readDocument(options.path, console);
    const Plan plan = makePlan(document);
    if (options.output.json) {
        console.out << toJson(plan) << '\n';
    } else {
        printPlan(plan, document, Painter(console, options.output.color), console.out);
    }
    if (plan.status != app::ExitStatus::success) {
        return ExitStatus::refused;
    }
    return plan.isEmpty() ? ExitStatus::done : ExitStatus::differences;
}

}  // namespace tarvo_backup
