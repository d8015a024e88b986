#include "backup/plan_report.h"

#include <gtest/gtest.h>

#include <sstream>

#include "unit/backup/backup_test.h"

namespace tarvo_backup {

namespace {

std::string printed(const Plan& plan, const Document& document = configured("")) {
    std::istringstream in;
    std::ostringstream out;
    const Console console{.in = in, .out = out, .err = out};
    printPlan(plan, document, Painter(console, ColorMode::never), out);
    return out.str();
}

// What is printed below the first line of a plan that changes something.
std::string below(Plan plan) {
    plan.tries = 1;
    const std::string text = printed(plan);
    return text.substr(text.find('\n') + 1);
}

}  // namespace

TEST(BackupPlan, IsEmptyWhenARestoreDoesNothing) {
    EXPECT_TRUE(Plan().isEmpty());
    EXPECT_EQ(printed({}), "The restore would succeed. Nothing would change.\n");
}

TEST(BackupPlan, IsNotEmptyWithAnythingInIt) {
    Plan notBegun;
    notBegun.notBegun = "x";
    Plan failing;
    failing.status = app::ExitStatus::failure;
    Plan withError;
    withError.errors = {{}};
    Plan withChange;
    withChange.changes = {{}};
    Plan untold;
    untold.changesUnknown = "x";
    Plan withRow;
    withRow.rows = {{}};
    Plan withScript;
    withScript.scripts = {"x"};
    Plan withRename;
    withRename.renames = {{"x", "y"}};
    for (const Plan& plan :
         {notBegun, failing, withError, withChange, untold, withRow, withScript, withRename}) {
        EXPECT_FALSE(plan.isEmpty());
    }
}

TEST(BackupPlanReport, TellsWhyNothingOfADocumentIsRead) {
    Plan plan;
    plan.status = app::ExitStatus::failure;
    plan.tries = 3;
    const std::string result = "The restore would end with status 1. It would be tried 3 times.\n";
    EXPECT_EQ(printed(plan, parsed("<lnb/>")),
              result + "The document has no 'configuration' element.\n");
    EXPECT_EQ(printed(plan, parsed("<redacted><configuration/></redacted>")),
              result + "The secrets of this document are masked; no import takes it.\n");
}

TEST(BackupPlanReport, HasTheErrorsWithTheirPlacesAndWhatIsComplainedOf) {
    Plan plan;
    plan.status = app::ExitStatus::database;
    plan.tries = 3;
    plan.errors = {{102, "Could not access database", std::nullopt},
                   {201, "No module element found", ElementPlace{"modules/module[1]", {4, 9}}},
                   {202, "at the top", ElementPlace{"", {1, 2}}}};
    plan.complaints = {"[ERROR_DB]doSelect: locked\n"};
    EXPECT_EQ(printed(plan),
              "The restore would end with status " +
                  std::to_string(static_cast<int>(app::ExitStatus::database)) +
                  ". It would be tried 3 times.\n"
                  "test.xml: error 102: Could not access database\n"
                  "test.xml:4:9: error 201: modules/module[1]: No module element found\n"
                  "test.xml:1:2: error 202: at the top\n"
                  "warning: [ERROR_DB]doSelect: locked\\n\n");
}

TEST(BackupPlanReport, SaysFirstThatARestoreWouldNotBegin) {
    Plan plan;
    plan.notBegun = "it is lost";
    const std::string start =
        "tarvo-backup restore would not begin: there is no backup of this headend.\nit is lost\n"
        "The import by tarvo-config would ";
    EXPECT_EQ(printed(plan), start + "succeed.\n");
    plan.status = app::ExitStatus::failure;
    EXPECT_EQ(printed(plan), start + "end with status 1.\n");
}

TEST(BackupPlan, IsAnotherOneWhenAnythingOfItIs) {
    Plan script;
    script.scripts = {"x"};
    Plan cell;
    cell.rows = {{.table = "t", .row = "1", .mac = "", .kind = {}, .cells = {{"c", "1", "2"}}}};
    Plan otherCell = cell;
    otherCell.rows.front().cells.front().after = "3";
    Plan module;
    module.modules = {{}};
    Plan otherModule = module;
    otherModule.modules.front().headendMac = "02:01";
    EXPECT_EQ(cell, Plan(cell));
    EXPECT_NE(Plan(), script);
    EXPECT_NE(cell, otherCell);
    EXPECT_NE(module, otherModule);
}

TEST(BackupPlanReport, SaysWhyTheChangesCannotBeTold) {
    Plan plan;
    plan.changesUnknown = "it fails";
    EXPECT_EQ(below(plan), "\nWhat would change cannot be told\nit fails\n");
}

TEST(BackupPlanReport, CountsTheRowsThatNoElementAndNoMarkTellsOf) {
    const auto row = [](const char* table, const char* column) {
        return RowChange{.table = table,
                         .row = "1",
                         .mac = "",
                         .kind = RowChange::Kind::changed,
                         .cells = {{column, "0", "1"}}};
    };
    Plan plan;
    plan.rows = {row("RedesModulos", "estado"), row("b\n", "c"), row("a", "c"), row("a", "d")};
    EXPECT_NE(below(plan).find("\nNo element would change, but rows of these tables "
                               "would\na: 2\nb\\n: 1\n\nMarked"),
              std::string::npos)
        << below(plan);
    plan.rows.resize(1);
    EXPECT_EQ(below(plan).find("No element"), std::string::npos);
    plan.rows.push_back(row("a", "c"));
    plan.changesUnknown = "x";
    EXPECT_EQ(below(plan).find("No element"), std::string::npos);
    plan.changesUnknown.clear();
    plan.changes = {{.path = "p", .oldText = "1", .newText = "2"}};
    EXPECT_EQ(below(plan).find("No element"), std::string::npos);
}

TEST(BackupPlanReport, TellsHowEachModuleIsFound) {
    Plan plan;
    plan.scripts = {"x"};
    plan.modules = {{{}, "02:01", "02:01", ModuleBinding::Kind::address},
                    {{}, "02:02", "02:03", ModuleBinding::Kind::kind},
                    {{}, "02:04", "", ModuleBinding::Kind::none}};
    plan.leftOverModules = {"02:05"};
    EXPECT_EQ(below(plan),
              "\nModules\n02:01: by its address\n02:02: by its kind, 02:03 replaces it\n"
              "02:04: no module of the headend fits\n"
              "02:05: of the headend, not in the document\n"
              "\nScripts that would run\nx\n");
}

TEST(BackupPlanReport, TellsOfModulesThatAreNotInTheDocumentAlone) {
    Plan plan;
    plan.leftOverModules = {"02:05"};
    EXPECT_NE(printed(plan).find("\nModules\n02:05: of the headend, not in the document\n"),
              std::string::npos);
}

}  // namespace tarvo_backup
