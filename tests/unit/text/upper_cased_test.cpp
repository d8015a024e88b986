#include "text/upper_cased.h"

#include <gtest/gtest.h>

namespace text {

TEST(UpperCased, AsciiLettersBecomeCapitalsAndNothingElseChanges) {
    EXPECT_EQ(upperCased("onid-2 Es"), "ONID-2 ES");
    EXPECT_EQ(upperCased("ñ\xFF"), "ñ\xFF");
    EXPECT_EQ(upperCased(""), "");
}

}  // namespace text
