#include "platform/signals.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace platform {

namespace {

// The rest of a test that a signal is to end, or not.
void say(const char* text) { std::fputs(text, stderr); }

}  // namespace

TEST(HeldSignalsDeathTest, TakeEffectAtTheirEnd) {
    for (const int number : {SIGTERM, SIGINT}) {
        EXPECT_EXIT(
            {
                // A shell starts what runs in the background with SIGINT ignored.
                std::signal(number, SIG_DFL);
                {
                    const HeldSignals held;
                    raise(number);
                    say("still there");
                }
                _exit(0);
            },
            testing::KilledBySignal(number), "still there");
    }
}

TEST(HeldSignalsDeathTest, LeaveTheSignalsAsTheyWere) {
    EXPECT_EXIT(
        {
            { const HeldSignals held; }
            say("held");
            raise(SIGTERM);
        },
        testing::KilledBySignal(SIGTERM), "held");
}

TEST(HeldSignalsDeathTest, LeaveAnIgnoredSignalIgnored) {
    EXPECT_EXIT(
        {
            std::signal(SIGINT, SIG_IGN);
            {
                const HeldSignals held;
                raise(SIGINT);
            }
            raise(SIGINT);
            _exit(7);
        },
        testing::ExitedWithCode(7), "");
}

TEST(HangUpsDeathTest, DoNotEndTheProgramButItsChildren) {
    EXPECT_EXIT(
        {
            outliveHangUps();
            for (const int number : {SIGHUP, SIGPIPE, SIGXFSZ}) {
                raise(number);
            }
            // Started with the defaults, the shell is ended by them.
            for (const char* name : {"HUP", "PIPE", "XFSZ"}) {
                const std::string command = std::string("kill -") + name + " $$";
                if (!WIFSIGNALED(std::system(command.c_str()))) {
                    _exit(1);
                }
            }
            _exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST(ChildrenDeathTest, AreWaitedForAlsoWhereTheirEndsWereIgnored) {
    EXPECT_EXIT(
        {
            std::signal(SIGCHLD, SIG_IGN);
            waitForChildren();
            _exit(WEXITSTATUS(std::system("exit 7")));
        },
        testing::ExitedWithCode(7), "");
}

}  // namespace platform
