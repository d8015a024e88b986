#include "backup/plan_report.h"

#include <map>
#include <set>
#include <string>

#include "backup/diff_report.h"

namespace tarvo_backup {

namespace {

class Report {
  public:
    Report(const Document& document, const Painter& paint, std::ostream& out)
        : document_(document), paint_(paint), out_(out) {}

    void print(const Plan& plan) {
        printResult(plan);
        printChanges(plan);
        printMarks(plan);
        printModules(plan);
        printActions(plan);
        printAsymmetries(plan);
    }

  private:
    void heading(const std::string& text) { out_ << '\n' << paint_(Style::heading, text) << '\n'; }

    void printResult(const Plan& plan) {
        const auto status = static_cast<int>(plan.status);
        const bool succeeds = status == 0;
        const std::string subject =
            plan.notBegun.empty() ? "The restore" : "The import by tarvo-config";
        if (!plan.notBegun.empty()) {
            out_ << paint_(Style::error,
                           "tarvo-backup restore would not begin: there is no backup "
                           "of this headend.")
                 << '\n'
                 << plan.notBegun << '\n';
        }
        out_ << paint_(
            succeeds ? Style::added : Style::error,
            subject + (succeeds ? " would succeed."
                                : " would end with status " + std::to_string(status) + "."));
        if (plan.isEmpty()) {
            out_ << " Nothing would change.";
        } else if (plan.tries > 1) {
            out_ << " It would be tried " << plan.tries << " times.";
        }
        out_ << '\n';
        printWhyUnreadable();
        for (const ImportError& error : plan.errors) {
            out_ << paint_(Style::error, located(error)) << '\n';
        }
        for (const std::string& complaint : plan.complaints) {
            out_ << paint_(Style::warning, "warning: " + onOneLine(complaint)) << '\n';
        }
    }

    // The import names no error of a document in which it finds no configuration.
    void printWhyUnreadable() {
        if (document_.isRedacted()) {
            out_ << "The secrets of this document are masked; no import takes it.\n";
        } else if (document_.configuration() == nullptr) {
            out_ << "The document has no 'configuration' element.\n";
        }
    }

    [[nodiscard]] std::string located(const ImportError& error) const {
        std::string place = document_.name() + ":";
        if (error.element) {
            place += std::to_string(error.element->position.line) + ":" +
                     std::to_string(error.element->position.column) + ":";
        }
        return place + " " + described(error);
    }

    void printChanges(const Plan& plan) {
        if (!plan.changesUnknown.empty()) {
            heading("What would change cannot be told");
            out_ << plan.changesUnknown << '\n';
        }
        if (!plan.changes.empty()) {
            heading("What would change");
            printDifferences(plan.changes, paint_, out_);
        } else if (plan.changesUnknown.empty()) {
            printUnseenRows(plan.rows);
        }
    }

    // Of those that the device acts on, the marks tell.
    void printUnseenRows(const std::vector<RowChange>& rows) {
        std::set<const RowChange*> marked;
        for (const Mark& mark : marksIn(rows)) {
            marked.insert(mark.row);
        }
        std::map<std::string, std::size_t> counts;
        for (const RowChange& row : rows) {
            counts[row.table] += marked.contains(&row) ? 0U : 1U;
        }
        std::erase_if(counts, [](const auto& table) { return table.second == 0; });
        if (!counts.empty()) {
            heading("No element would change, but rows of these tables would");
        }
        for (const auto& [table, count] : counts) {
            out_ << onOneLine(table) << ": " << count << '\n';
        }
    }

    void printMarks(const Plan& plan) {
        std::map<std::string, std::map<std::string, std::size_t>> counts;
        for (const Mark& mark : marksIn(plan.rows)) {
            ++counts[mark.meaning][mark.row->mac];
        }
        if (counts.empty()) {
            return;
        }
        heading("Marked for the device to act on; outputs and streams are interrupted");
        for (const auto& [meaning, ofModules] : counts) {
            for (const auto& [mac, count] : ofModules) {
                out_ << meaning << (mac.empty() ? "" : ", module " + onOneLine(mac)) << ": "
                     << count << '\n';
            }
        }
    }

    void printModules(const Plan& plan) {
        if (plan.modules.empty() && plan.leftOverModules.empty()) {
            return;
        }
        heading("Modules");
        for (const ModuleBinding& module : plan.modules) {
            out_ << onOneLine(module.documentMac) << ": ";
            switch (module.how) {
                case ModuleBinding::Kind::address:
                    out_ << "by its address";
                    break;
                case ModuleBinding::Kind::kind:
                    out_ << paint_(Style::warning,
                                   "by its kind, " + onOneLine(module.headendMac) + " replaces it");
                    break;
                case ModuleBinding::Kind::none:
                    out_ << paint_(Style::error, "no module of the headend fits");
                    break;
            }
            out_ << '\n';
        }
        for (const std::string& mac : plan.leftOverModules) {
            out_ << onOneLine(mac) << ": "
                 << paint_(Style::warning, "of the headend, not in the document") << '\n';
        }
    }

    void printActions(const Plan& plan) {
        if (!plan.scripts.empty()) {
            heading("Scripts that would run");
        }
        for (const std::string& script : plan.scripts) {
            out_ << onOneLine(script) << '\n';
        }
        if (plan.runsNetworkScript) {
            out_ << paint_(Style::warning,
                           "warning: the network is set up anew; this connection may end. Use "
                           "restore --confirm.")
                 << '\n';
        }
        if (!plan.renames.empty()) {
            heading("Files that would be renamed");
        }
        for (const auto& [from, to] : plan.renames) {
            out_ << onOneLine(from) << " -> " << onOneLine(to) << '\n';
        }
    }

    void printAsymmetries(const Plan& plan) {
        if (!plan.asymmetries.empty()) {
            heading("To know of this document");
        }
        for (const Asymmetry* asymmetry : plan.asymmetries) {
            out_ << asymmetry->what << ": " << asymmetry->remedy << '\n';
        }
    }

    const Document& document_;
    const Painter& paint_;
    std::ostream& out_;
};

}  // namespace

void printPlan(const Plan& plan, const Document& document, const Painter& paint,
               std::ostream& out) {
    Report(document, paint, out).print(plan);
}

}  // namespace tarvo_backup
