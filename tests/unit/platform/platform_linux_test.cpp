// What of the Linux side of the door no run of the program in the simulated device shows.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "platform/os.h"

namespace platform {

using Lines = std::vector<std::string>;

TEST(CommandLines, AreThoseThatThereAre) {
    EXPECT_EQ(os::readCommandLines("echo one; echo two", 3), (Lines{"one\n", "two\n"}));
    EXPECT_EQ(os::readCommandLines("echo one; echo two; echo three", 2), (Lines{"one\n", "two\n"}));
    EXPECT_EQ(os::readCommandLines("printf one", 2), Lines{"one"});
    EXPECT_EQ(os::readCommandLines("true", 2), Lines{});
}

TEST(CommandLines, ContinueAfter127Characters) {
    const std::string line(130, 'x');
    EXPECT_EQ(os::readCommandLines("echo " + line, 2), (Lines{line.substr(3), "xxx\n"}));
}

TEST(CommandLines, OfACommandThatCannotBeStartedAreNone) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{0, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const Lines lines = os::readCommandLines("echo one", 2);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(lines, Lines{});
}

TEST(Shell, AScriptThatASignalEndsIsNotTheProgramsEnd) {
    EXPECT_EQ(os::runShell("exit 3"), 3 << 8);
    EXPECT_EQ(os::runShell("kill -KILL $$"), SIGKILL);
}

}  // namespace platform
