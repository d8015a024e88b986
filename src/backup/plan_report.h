// A plan for people.
#pragma once

#include <ostream>

#include "backup/console.h"
#include "backup/plan.h"

namespace tarvo_backup {

void printPlan(const Plan& plan, const Document& document, const Painter& paint, std::ostream& out);

}  // namespace tarvo_backup
