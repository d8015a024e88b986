#include "backup/console.h"

#include <gtest/gtest.h>

namespace tarvo_backup {

TEST(BackupConsole, ATextOnOneLineHoldsNothingThatATerminalObeys) {
    EXPECT_EQ("a\\nb\\tc", onOneLine("a\nb\tc"));
    EXPECT_EQ("\\x1b[2J\\x0d\\x7f", onOneLine("\x1b[2J\r\x7f"));
    // U+009B begins a command like ESC [; the byte alone does where UTF-8 is not expected.
    EXPECT_EQ("\\xc2\\x9b31m", onOneLine("\xc2\x9b"
                                         "31m"));
    EXPECT_EQ("\\x9b31m\\xff", onOneLine("\x9b"
                                         "31m\xff"));
    EXPECT_EQ("\\xe2\\x80\\xaegpj\\xe2\\x81\\xa6\\xd8\\x9c", onOneLine("\u202egpj\u2066\u061c"));
    for (const char* turning : {"\u200e", "\u200f", "\u202a", "\u2069"}) {
        EXPECT_TRUE(isTerminalControl(turning)) << turning;
    }
    for (const char* other :
         {"\u200d", "\u2010", "\u2029", "\u202f", "\u2065", "\u206a", "\u061b"}) {
        EXPECT_FALSE(isTerminalControl(other)) << other;
    }
    EXPECT_EQ(std::string("\\x00"), onOneLine(std::string(1, '\0')));
}

TEST(BackupConsole, ATextOnOneLineKeepsEveryOtherCharacter) {
    EXPECT_EQ("", onOneLine(""));
    EXPECT_EQ("\\x1b ñ \xc2\xa0 漢字 \U0001f4fa", onOneLine("\\x1b ñ \xc2\xa0 漢字 \U0001f4fa"));
}

}  // namespace tarvo_backup
