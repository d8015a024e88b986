#include "backup/utf8.h"

#include <gtest/gtest.h>

namespace tarvo_backup {

TEST(Utf8, CharactersAreAsLongAsTheirFirstByteSays) {
    EXPECT_EQ(characterLength("a"), 1U);
    EXPECT_EQ(characterLength("\xc3\xa9"), 2U);
    EXPECT_EQ(characterLength("\xe2\x82\xac"), 3U);
    EXPECT_EQ(characterLength("\xf0\x9f\x93\xba"), 4U);
}

TEST(Utf8, WhatIsNoCharacterHasNoLength) {
    for (const char* text : {"\xc3", "\xc3 a", "\xe2\x82", "\xe2\x82 ", "\xe2 \xac", "\xf0\x9f\x93",
                             "\xf0\x9f \xba", "\xf0\x9f\x93\xc3", "\x80", "\xc0\x80", "\xff"}) {
        EXPECT_EQ(characterLength(text), 0U) << text;
    }
}

TEST(Utf8, TabsAndLineEndsAreNoControlCharactersHere) {
    for (const char character : {'\x01', '\x1f', '\x7f', '\0'}) {
        EXPECT_TRUE(isControl(character));
    }
    for (const char character : {'\t', '\n', '\r', ' ', '\x80'}) {
        EXPECT_FALSE(isControl(character));
    }
}

}  // namespace tarvo_backup
