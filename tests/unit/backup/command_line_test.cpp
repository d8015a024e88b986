#include "backup/command_line.h"

#include <gmock/gmock.h>

#include <array>

#include "unit/backup/backup_test.h"

namespace tarvo_backup {

using testing::HasSubstr;
using testing::StartsWith;

TEST(BackupCommandLine, HelpIsThereOnEveryLevel) {
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"--help"}, {"diff", "--help"}}) {
        const Ran help = ran(arguments);
        EXPECT_EQ(help.status, ExitStatus::done);
        EXPECT_THAT(help.out, HasSubstr("Usage: "));
        EXPECT_EQ(help.err, "");
    }
}

TEST(BackupCommandLine, TellsItsVersion) {
    const Ran version = ran({"--version"});
    EXPECT_EQ(version.status, ExitStatus::done);
    EXPECT_THAT(version.out, StartsWith("tarvo-backup 1."));
}

TEST(BackupCommandLine, WithoutAVerbOrWithAnUnknownOneOrOptionIsAUsageError) {
    for (const std::vector<const char*>& arguments : {std::vector<const char*>{},
                                                      {"frobnicate"},
                                                      {"diff", "--frobnicate", "a", "b"},
                                                      {"diff", "a"},
                                                      {"diff", "--color", "green", "a", "b"}}) {
        const Ran refused = ran(arguments);
        EXPECT_EQ(refused.status, ExitStatus::usage);
        EXPECT_EQ(refused.out, "");
        EXPECT_THAT(refused.err, HasSubstr("--help"));
    }
}

TEST(BackupCommandLine, TellsWhichNumbersAnOptionTakes) {
    const Ran keep = ran({"save", "--keep", "0"});
    EXPECT_EQ(keep.status, ExitStatus::usage);
    EXPECT_THAT(keep.err, StartsWith("--keep: Value 0 not in range 1 to 2147483647\n"));
    EXPECT_THAT(ran({"restore", "--confirm", "1441", "-"}).err,
                StartsWith("--confirm: Value 1441 not in range 1 to 1440\n"));
}

TEST(BackupCommandLine, SaysInPlainWordsWhatItDoesNotTake) {
    for (const auto& [told, arguments] : {
             std::pair<const char*, std::vector<const char*>>{"there is no verb 'foo'\n", {"foo"}},
             {"there is no verb ''\n", {""}},
             {"--color: 'purple' is not auto, always or never\n", {"check", "--color=purple", "-"}},
             {"DIR: - is no folder; --output - is standard output\n", {"save", "-"}},
             {"The following argument was not expected: \\x1b[2J\n", {"check", "-", "\x1b[2J"}},
             {"there is no verb '\\x1b[2J'\n", {"\x1b[2J"}},
         }) {
        const Ran refused = ran(arguments);
        EXPECT_EQ(refused.status, ExitStatus::usage);
        EXPECT_EQ(refused.out, "");
        EXPECT_EQ(refused.err, std::string(told) + "Run with --help for more information.\n");
    }
}

TEST(BackupCommandLine, AColorModeIsTakenInAnyLetterCase) {
    const Ran colored = ran({"show", "--color", "Always", "-"}, "<configuration/>");
    EXPECT_EQ(colored.out, "\x1b[1mHeadend\x1b[0m\n");
    EXPECT_EQ(ran({"show", "--color", "never", "-"}, "<configuration/>").out, "Headend\n");
}

TEST(BackupCommandLine, ADocumentOnStandardOutputIsNoJson) {
    const Ran refused = ran({"save", "--json", "--output", "-"});
    EXPECT_EQ(refused.status, ExitStatus::usage);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              "tarvo-backup: --json: with --output - the output is the document itself\n");
}

TEST(BackupCommandLine, AnEmptyNameIsNotTakenForNone) {
    for (const auto& [told, arguments] : {
             std::pair<const char*, std::vector<const char*>>{"DIR: the name is empty\n",
                                                              {"save", ""}},
             {"--output: the name is empty\n", {"save", "--output", ""}},
             {"--output: 1 required TEXT missing\n", {"save", "--output="}},
             {"--html: the name is empty\n", {"show", "--html", "", "-"}},
         }) {
        const Ran refused = ran(arguments);
        EXPECT_EQ(refused.status, ExitStatus::usage);
        EXPECT_EQ(refused.out, "");
        EXPECT_THAT(refused.err, StartsWith(told));
    }
}

TEST(BackupCommandLine, AFileThatCannotBeReadHasAStatusOfItsOwn) {
    const Ran refused = ran({"diff", "/nonexistent/a.xml", "-"});
    EXPECT_EQ(refused.status, ExitStatus::cannotRead);
    EXPECT_EQ(refused.err, "tarvo-backup: /nonexistent/a.xml: No such file or directory\n");
    EXPECT_EQ(ran({"diff", "/", "-"}).status, ExitStatus::cannotRead);
}

TEST(BackupCommandLine, AnOutputThatCannotBeWrittenHasAStatusOfItsOwn) {
    std::istringstream in("<configuration/>");
    std::ostringstream out;
    std::ostringstream err;
    out.setstate(std::ios::badbit);
    constexpr std::array kWords = {"tarvo-backup", "show", "-"};
    EXPECT_EQ(run(kWords.size(), kWords.data(), {.in = in, .out = out, .err = err}),
              ExitStatus::cannotWrite);
    EXPECT_EQ(err.str(), "tarvo-backup: cannot write standard output\n");
}

TEST(BackupCommandLine, AFilesNameIsNotACommandToATerminal) {
    EXPECT_EQ(ran({"show", "/nonexistent/\x1b[2J\n.xml"}).err,
              "tarvo-backup: /nonexistent/\\x1b[2J\\n.xml: No such file or directory\n");
}

}  // namespace tarvo_backup
