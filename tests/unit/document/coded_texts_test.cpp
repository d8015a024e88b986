#include "document/coded_texts.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace document {

namespace {

constexpr CodeText kTexts[] = {{-2, "auto"}, {0, "QPSK"}, {1, "16 QAM"}, {3, "64 QAM"}};

}  // namespace

TEST(CodedTexts, HaveTheTextOfEachCode) {
    for (const CodeText& row : kTexts) {
        EXPECT_STREQ(codeText(kTexts, row.code, "other"), row.text);
    }
}

TEST(CodedTexts, HaveTheCodeOfEachText) {
    for (const CodeText& row : kTexts) {
        EXPECT_EQ(codeOfAnyCase(kTexts, row.text), row.code);
        EXPECT_EQ(codeOfExactly(kTexts, row.text), row.code);
    }
}

TEST(CodedTexts, AreEmptyOutsideTheirTableUnlessItNamesAnother) {
    for (const int code : {-3, -1, 2, 4, INT_MIN, INT_MAX}) {
        EXPECT_STREQ(codeText(kTexts, code), "") << code;
        EXPECT_STREQ(codeText(kTexts, code, "other"), "other") << code;
    }
}

TEST(CodedTexts, HaveNoCodeForAnotherText) {
    for (const char* text : {"", "16 QAM ", " 16 QAM", "6 QAM", "16 QAMx", "16"}) {
        EXPECT_EQ(codeOfAnyCase(kTexts, text), std::nullopt) << text;
        EXPECT_EQ(codeOfExactly(kTexts, text), std::nullopt) << text;
    }
}

TEST(CodedTexts, IgnoreLetterCaseUnlessComparedExactly) {
    for (const char* text : {"16 qam", "16 Qam"}) {
        EXPECT_EQ(codeOfAnyCase(kTexts, text), 1);
        EXPECT_EQ(codeOfExactly(kTexts, text), std::nullopt);
    }
}

}  // namespace document
