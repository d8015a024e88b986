// How time and output grow with the documents.
#include <algorithm>
#include <array>
#include <ctime>

#include "backup/check.h"
#include "backup/json.h"
#include "backup/overview.h"
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

// Of a verb over a document that `make` makes with so many entries and as long a text.
template <class Make>
void expectLinearOutput(Make make, const std::vector<const char*>& words) {
    const auto growth = [&](int size) {
        const std::string document = make(size, std::string(static_cast<std::size_t>(size), 'x'));
        return static_cast<double>(ran(words, document).out.size()) /
               static_cast<double>(document.size());
    };
    // Twice as large a document has a quadratic output twice as large in relation to it.
    const double ratio = growth(4000) / growth(2000);
    EXPECT_LT(ratio, 1.3) << words[0];
}

std::string repeated(int count, const std::string& text) {
    std::string all;
    for (int each = 0; each < count; ++each) {
        all += text;
    }
    return all;
}

std::string inModule(const std::string& content) {
    return "<configuration><modules><module>" + content + "</module></modules></configuration>";
}

}  // namespace

TEST(BackupGrowth, FaultsInsideALongIdentityAreNoLonger) {
    const auto faults = [](int count, const std::string& text) {
        return inModule("<mac>" + text + "</mac>" + repeated(count, "<what/>"));
    };
    expectLinearOutput(faults, {"check", "-"});
    expectLinearOutput(faults, {"check", "--json", "-"});
}

TEST(BackupGrowth, AClaimToWhatALongIdentityHasIsNoLonger) {
    expectLinearOutput(
        [](int count, const std::string& text) {
            return inModule("<mac>" + text + "</mac><services>" +
                            repeated(count, "<service><lcn>1</lcn></service>") + "</services>");
        },
        {"check", "-"});
}

TEST(BackupGrowth, WhatALongNameIsShownWithIsNoLonger) {
    const std::vector<std::vector<const char*>> verbs{
        {"show", "-"}, {"show", "--json", "-"}, {"show", "--html", "-", "-"}};
    for (const auto& words : verbs) {
        expectLinearOutput(
            [](int count, const std::string& text) {
                return inModule("<name>" + text + "</name><services>" +
                                repeated(count, "<service/>") + "</services>");
            },
            words);
        expectLinearOutput(
            [](int count, const std::string& text) {
                return "<configuration><dvbNetworks><dvbNetwork><id>1</id><name>" + text +
                       "</name></dvbNetwork></dvbNetworks><diseqcs><diseqc><position>1</position>"
                       "<polarity>" +
                       text + "</polarity><band>" + text + "</band></diseqc></diseqcs><modules>" +
                       repeated(count,
                                "<module><dvbNetworkId>1</dvbNetworkId><inputs><input>"
                                "<diseqc>1</diseqc></input></inputs></module>") +
                       "</modules></configuration>";
            },
            words);
    }
}

TEST(BackupGrowth, ALongTextMakesNoOtherLineLonger) {
    expectLinearOutput(
        [](int count, const std::string& text) {
            return inModule("<services><service><inputName>" + text + "</inputName></service>" +
                            repeated(count,
                                     "<service><inputName>a</inputName><outputSid>1"
                                     "</outputSid></service>") +
                            "</services>");
        },
        {"show", "-"});
    expectLinearOutput(
        [](int count, const std::string& text) {
            return "<configuration><lnb><" + text + "/>" + repeated(count, "<a>b</a>") +
                   "</lnb></configuration>";
        },
        {"show", "-"});
}

TEST(BackupGrowth, DifferencesInsideALongIdentityAreNoLonger) {
    const auto older = [](int count, const std::string& text) {
        return inModule("<mac>" + text + "</mac>" + repeated(count, "<a>1</a>"));
    };
    const auto growth = [&](int size) {
        const std::string text(static_cast<std::size_t>(size), 'x');
        const Document with = parsed(older(size, text));
        const Document without = parsed(older(0, text));
        return static_cast<double>(toJson(diff(with, without)).size()) /
               static_cast<double>(with.text().size());
    };
    EXPECT_LT(growth(4000) / growth(2000), 1.3);
}

TEST(BackupGrowth, APathOfManyLevelsIsShort) {
    std::string opened;
    std::string closed;
    for (int level = 0; level < 200; ++level) {
        opened += "<a" + std::string(100, 'b') + ">";
        closed = "</a" + std::string(100, 'b') + ">" + closed;
    }
    const auto differences =
        diff(configured(opened + "x" + closed), configured(opened + "y" + closed));
    ASSERT_EQ(differences.size(), 1U);
    EXPECT_LT(differences[0].path.size(), 1100U);
    EXPECT_EQ(differences[0].oldText, "x");
}

// Eight times as long would be in between of linear (4) and quadratic (16).
TEST(BackupGrowth, ModulesAndTheNetworksThatTheyReferToAreNearLinear) {
    const auto seconds = [](int count) {
        std::string networks;
        std::string modules;
        for (int id = 1; id <= count; ++id) {
            const std::string number = std::to_string(id);
            networks += "<dvbNetwork><id>" + number + "</id></dvbNetwork>";
            modules += "<module><mac>" + number + "</mac><dvbNetworkId>" + number +
                       "</dvbNetworkId></module>";
        }
        const Document document = configured("<dvbNetworks>" + networks +
                                             "</dvbNetworks><modules>" + modules + "</modules>");
        return std::pair(quickest([&] { check(document); }),
                         quickest([&] { overviewOf(document, false); }));
    };
    const auto few = seconds(500);
    const auto many = seconds(2000);
    EXPECT_LT(many.first, 8 * few.first);
    EXPECT_LT(many.second, 8 * few.second);
}

// Eight times as long would be in between of linear (4) and quadratic (16).
TEST(BackupGrowth, ElementsOfAnInputAndListsOfAServiceAreCheckedInNearLinearTime) {
    for (const auto& [around, each, after] :
         {std::array{"inputs><input", "<frequency/>", ""},
          std::array{"services><service", "<pidOrders/>", "<a/>"}}) {
        const std::string opened = around;
        const std::string inner = opened.substr(opened.rfind('<') + 1);
        const std::string outer = opened.substr(0, opened.find('>'));
        const auto seconds = [&, each = each, after = after](int count) {
            const Document document =
                parsed(inModule("<" + opened + ">" + repeated(count, each) +
                                repeated(count, after) + "</" + inner + "></" + outer + ">"));
            return quickest([&] { check(document); });
        };
        EXPECT_LT(seconds(8000), 8 * seconds(2000)) << opened;
    }
}

// Eight times as long would be in between of linear (4) and quadratic (16).
TEST(BackupGrowth, LoopsOfAnInputAreCheckedInNearLinearTime) {
    const auto seconds = [](int count) {
        const Document document =
            parsed(inModule("<inputs><input>" + repeated(count, "<rfLoop>2</rfLoop>") +
                            "<inputId>2</inputId><type>0</type></input></inputs>"));
        return quickest([&] { check(document); });
    };
    EXPECT_LT(seconds(8000), 8 * seconds(2000));
}

namespace {

// A module with so many lists of outputs, or so many outputs behind as many strangers.
std::string withLists(int count, const std::string& constellation) {
    return inModule(repeated(count, "<outputs><output><outputId>1</outputId><constellation>" +
                                        constellation + "</constellation></output></outputs>"));
}
std::string withStrangers(int count, const std::string& constellation) {
    return inModule(repeated(count, "<a/>") + "<outputs>" +
                    repeated(count, "<output><outputId>1</outputId><constellation>" +
                                        constellation + "</constellation></output>") +
                    "</outputs>");
}

}  // namespace

// Eight times as long would be in between of linear (4) and quadratic (16).
TEST(BackupGrowth, OutputsAreCheckedInNearLinearTime) {
    for (const auto make : {withLists, withStrangers}) {
        const auto seconds = [&](int count) {
            const Document document = parsed(make(count, "QPSK"));
            return quickest([&] { check(document); });
        };
        EXPECT_LT(seconds(8000), 8 * seconds(2000)) << make(1, "");
    }
}

// Eight times as long would be in between of linear (4) and quadratic (16).
TEST(BackupDiffGrowth, OfOutputsIsNearLinear) {
    for (const auto make : {withLists, withStrangers}) {
        const auto seconds = [&](int count) {
            const Document older = parsed(make(count, "QPSK"));
            const Document newer = parsed(make(count, "16 QAM"));
            return quickest([&] { diff(older, newer); });
        };
        EXPECT_LT(seconds(8000), 8 * seconds(2000)) << make(1, "");
    }
}

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
