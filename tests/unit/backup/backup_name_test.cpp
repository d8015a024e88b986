#include "backup/backup_name.h"

#include <gtest/gtest.h>

#include <set>

namespace tarvo_backup {

TEST(BackupName, OfAnOrdinaryHostBeginsWithTheHost) {
    for (const char* host : {"head", "HEAD-1", "tv_room", "head.example.org"}) {
        EXPECT_EQ(fileName(stemOf(host), {.minute = "2026-11-21T0315Z"}),
                  std::string(host) + "-2026-11-21T0315Z.xml");
    }
}

TEST(BackupName, ASecondOneOfAMinuteHasANumber) {
    EXPECT_EQ(fileName("h-", {.minute = "2026-11-21T0315Z", .number = 2}),
              "h-2026-11-21T0315Z-2.xml");
}

TEST(BackupName, NoTwoHostsHaveTheSameStem) {
    const std::set<std::string> hosts{
        "head.1", "head_1", "head 1", "head/1", "head%1", "head%2F1", "head1", "head-1",
        "",       ".",      "..",     "_",      "%2E",    "\xc3\xa9", "\xc3",  "HEAD1"};
    std::set<std::string> stems;
    for (const std::string& host : hosts) {
        const std::string stem = stemOf(host);
        EXPECT_TRUE(stems.insert(stem).second) << host;
        // A name in the folder that is not hidden, and shown by any terminal.
        EXPECT_EQ(stem.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                         "0123456789-_.%"),
                  std::string::npos)
            << stem;
        EXPECT_NE(stem[0], '.');
    }
}

TEST(BackupName, IsReadAsItIsWritten) {
    for (const BackupName& name : {BackupName{.minute = "2026-11-21T0315Z"},
                                   BackupName{.minute = "2026-11-21T0315Z", .number = 12}}) {
        EXPECT_EQ(backupNameFrom(fileName("head.1-", name), "head.1-"), name);
    }
}

TEST(BackupName, OfAnotherHostOrOfSomethingElseIsNone) {
    for (const char* name :
         {"head-2-2026-11-21T0315Z.xml", "ahead-2026-11-21T0315Z.xml", "head-1.xml", "head-.xml",
          "head-2026-11-21T0315Z.txt", "head-2026-11-21T0315Z", "head-2026-11-21T0315Z-.xml",
          "head-2026-11-21T0315Z-1a.xml", "head-2026-11-21T0315Z--1.xml",
          "head-2026-11-21T0315Z2.xml", "head-2026-11-21T0315Z-2026-11-21T0315Z.xml",
          "head-2026-11-2xT0315Z.xml", "head-2026-11-21 0315Z.xml"}) {
        EXPECT_EQ(backupNameFrom(name, "head-"), std::nullopt) << name;
    }
}

}  // namespace tarvo_backup
