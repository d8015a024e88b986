#include "backup/utf8.h"

#include <gtest/gtest.h>

namespace tarvo_backup {

TEST(Utf8, CharactersAreAsLongAsTheirFirstByteSays) {
    EXPECT_EQ(characterLength("a"), 1U);
    EXPECT_EQ(characterLength("\xc3\xa9"), 2U);
    EXPECT_EQ(characterLength("\xe2\x82\xac"), 3U);
    EXPECT_EQ(characterLength("\xf0\x9f\x93\xba"), 4U);
}

TEST(Utf8, CharactersHaveNumbers) {
    EXPECT_EQ(codePoint("\x7f"), U'\x7f');
    EXPECT_EQ(codePoint("\xc3\xa9"), U'\u00e9');
    EXPECT_EQ(codePoint("\xe2\x82\xac"), U'\u20ac');
    EXPECT_EQ(codePoint("\xf0\x9f\x93\xba"), U'\U0001f4fa');
}

TEST(Utf8, WhatIsNotACharacterHasNoLength) {
    for (const char* text : {"\xc3", "\xc3 a", "\xe2\x82", "\xe2\x82 ", "\xe2 \xac", "\xf0\x9f\x93",
                             "\xf0\x9f \xba", "\xf0\x9f\x93\xc3", "\x80", "\xc0\x80", "\xff"}) {
        EXPECT_EQ(characterLength(text), 0U) << text;
    }
}

TEST(Utf8, ALongTextLosesItsMiddle) {
    EXPECT_EQ(shortened("abcdef", 6), "abcdef");
    EXPECT_EQ(shortened("abcdefg", 6),
              "abc\xe2\x80\xa6"
              "efg");
    EXPECT_EQ(shortened("", 0), "");
    EXPECT_EQ(shortened("a", 0), "\xe2\x80\xa6");
}

TEST(Utf8, NoCharacterIsPartedWhereATextIsShortened) {
    std::string text;
    for (int count = 0; count < 10; ++count) {
        text += "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x93\xba";
    }
    for (std::size_t longest = 0; longest < text.size(); ++longest) {
        std::string_view rest;
        const std::string result = shortened(text, longest);
        EXPECT_LE(result.size(), longest + 3);
        for (rest = result; !rest.empty(); rest.remove_prefix(characterLength(rest))) {
            ASSERT_NE(characterLength(rest), 0U) << longest;
        }
    }
}

TEST(Utf8, WhatIsNotACharacterIsShortenedToo) {
    const std::string text(1000, '\x80');
    EXPECT_LE(shortened(text, 10).size(), 13U);
    EXPECT_LT(shortened(text).size(), 200U);
}

TEST(Utf8, TabsAndLineEndsAreNotControlCharactersHere) {
    for (const char character : {'\x01', '\x1f', '\x7f', '\0'}) {
        EXPECT_TRUE(isControl(character));
    }
    for (const char character : {'\t', '\n', '\r', ' ', '\x80'}) {
        EXPECT_FALSE(isControl(character));
    }
}

}  // namespace tarvo_backup
