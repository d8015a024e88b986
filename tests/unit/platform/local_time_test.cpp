#include "platform/local_time.h"

#include <gtest/gtest.h>

#include <limits>

namespace platform {

TEST(LocalTime, IsWrittenAsTheFormatSays) {
    // Noon of a day in the middle of 2023, so that the year is the same everywhere.
    EXPECT_EQ(localTimeText(1688212800, "%Y %%"), "2023 %");
}

TEST(LocalTime, ThatCannotBeWrittenIsEmpty) {
    EXPECT_EQ(localTimeText(std::numeric_limits<std::time_t>::max(), "%d"), "");  // no such year
    EXPECT_EQ(localTimeText(0, "a text of thirty characters, or"), "");
    EXPECT_EQ(localTimeText(0, "a text of twenty-nine letters"), "a text of twenty-nine letters");
}

}  // namespace platform
