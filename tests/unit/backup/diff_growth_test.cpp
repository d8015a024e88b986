// How long a comparison takes, measured against the parsing of the same documents.
#include <algorithm>
#include <ctime>

#include "unit/backup/backup_test.h"

namespace tarvo_backup {

namespace {

// A document with so many services, in ascending or descending order.
std::string withServices(int count, bool ascending) {
    std::string text = "<configuration><modules><module><mac>02:01</mac><services>";
    for (int place = 0; place < count; ++place) {
        const std::string number = std::to_string(ascending ? place : count - 1 - place);
        text += "<service><outputId>1</outputId><outputSid>" + number +
                "</outputSid><inputId>1</inputId><inputSid>" + number +
                "</inputSid><inputName>Service</inputName><forcedName>0</forcedName>"
                "<outputName>Service</outputName><lcn>" +
                number +
                "</lcn><olcn>0</olcn><simulcastLcn>0</simulcastLcn><forcedLcn>0</forcedLcn>"
                "<idEPG>0</idEPG><videoFormat>0</videoFormat><pidOrders><pidOrder><languageCode/>"
                "<streamId>4</streamId><type>27</type><order>1</order></pidOrder><pidOrder>"
                "<languageCode>eng</languageCode><streamId>5</streamId><type>4</type><order>2"
                "</order></pidOrder></pidOrders></service>";
    }
    return text + "</services></module></modules></configuration>";
}

// The processor time of the quickest of some tries, as other programs disturb the others.
template <class Work>
double quickest(Work work) {
    double least = 1e9;
    for (int tries = 0; tries < 5; ++tries) {
        timespec start{};
        timespec end{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &start);
        work();
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);
        least = std::min(least, static_cast<double>(end.tv_sec - start.tv_sec) +
                                    static_cast<double>(end.tv_nsec - start.tv_nsec) * 1e-9);
    }
    return least;
}

struct Times {
    double parsing;
    double comparing;
};

Times timesOf(int services) {
    const std::string older = withServices(services, true);
    const std::string newer = withServices(services, false);
    const Document first = parsed(older);
    const Document second = parsed(newer);
    EXPECT_TRUE(diff(first, second).empty());
    return {.parsing = quickest([&] {
                const Document one = parsed(older);
                const Document other = parsed(newer);
            }),
            .comparing = quickest([&] { diff(first, second); })};
}

}  // namespace

TEST(BackupDiffGrowth, TakesLessThanTwiceTheParsingOfBothDocuments) {
#ifndef NDEBUG
    GTEST_SKIP() << "says something of optimized builds only";
#endif
    const Times times = timesOf(10000);
    EXPECT_LT(times.comparing, 2 * times.parsing);
}

// Eight times as long would be in between of linear (4) and quadratic (16).
TEST(BackupDiffGrowth, IsNearLinear) {
    EXPECT_LT(timesOf(8000).comparing, 8 * timesOf(2000).comparing);
}

}  // namespace tarvo_backup
