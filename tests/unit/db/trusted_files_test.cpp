#include "db/trusted_files.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include "db/database.h"
#include "support/fake_device.h"

namespace tarvodb {

namespace {

namespace fs = std::filesystem;

constexpr const char* kJournal = "/tmp/temp_global.sqlite-journal";
constexpr unsigned kUs = 500;
constexpr unsigned kConfigOwner = 77;
constexpr unsigned kStranger = 1001;

class TrustedFiles : public test::DeviceTest {
  protected:
    TrustedFiles() {
        device.user = kUs;
        device.owners = {{kConfigDatabase, kConfigOwner}, {kStateDatabase, 0}};
    }
};

TEST_F(TrustedFiles, AreThoseOfRootOfUsAndOfTheConfigurationsOwner) {
    for (const unsigned owner : {0U, kUs, kConfigOwner}) {
        device.owners[kStateDatabase] = owner;
        EXPECT_EQ(reasonAgainst(kStateDatabase), "");
        EXPECT_TRUE(openDatabase(kStateDatabase));
    }
    EXPECT_EQ(err(), "");
}

TEST_F(TrustedFiles, DatabaseOfAStrangerIsNotOpened) {
    device.owners[kStateDatabase] = kStranger;
    EXPECT_EQ(openDatabase(kStateDatabase), nullptr);
    EXPECT_EQ(err(),
              "tarvo-config: /tmp/temp_global.sqlite belongs to another user (1001);"
              " /tmp/temp_global.sqlite is not opened\n");
    EXPECT_TRUE(device.eventsOf("open: ").empty());
}

TEST_F(TrustedFiles, WhatLiesBesideADatabaseCountsToo) {
    for (const char* companion : {"-journal", "-wal", "-shm"}) {
        const std::string path = std::string(kStateDatabase) + companion;
        device.writeFile(path, "");
        device.owners[path] = kStranger;
        EXPECT_EQ(reasonAgainst(kStateDatabase), path + " belongs to another user (1001)");
        device.owners[path] = kConfigOwner;
        EXPECT_EQ(reasonAgainst(kStateDatabase), "");
    }
}

TEST_F(TrustedFiles, ALinkAPipeAndAFolderAreNotAJournal) {
    device.writeFile("/tmp/mine", "");
    fs::create_symlink(device.path("/tmp/mine"), device.path(kJournal));
    EXPECT_EQ(reasonAgainst(kStateDatabase), std::string(kJournal) + " is not a regular file");
    fs::remove(device.path(kJournal));
    ASSERT_EQ(mkfifo(device.path(kJournal).c_str(), 0600), 0);
    EXPECT_EQ(reasonAgainst(kStateDatabase), std::string(kJournal) + " is not a regular file");
    fs::remove(device.path(kJournal));
    fs::create_directory(device.path(kJournal));
    EXPECT_EQ(reasonAgainst(kStateDatabase), std::string(kJournal) + " is not a regular file");
}

TEST_F(TrustedFiles, ALinkIsNotADatabaseNotEvenADanglingOne) {
    fs::rename(device.path(kStateDatabase), device.path("/tmp/elsewhere"));
    fs::create_symlink(device.path("/tmp/elsewhere"), device.path(kStateDatabase));
    EXPECT_EQ(openDatabase(kStateDatabase), nullptr);
    fs::remove(device.path("/tmp/elsewhere"));
    EXPECT_EQ(openDatabase(kStateDatabase), nullptr);
    EXPECT_FALSE(device.exists("/tmp/elsewhere"));
}

TEST_F(TrustedFiles, AFolderIsLeftToTheOpenWhichSaysNothing) {
    device.removeFile(kStateDatabase);
    fs::create_directory(device.path(kStateDatabase));
    EXPECT_EQ(openDatabase(kStateDatabase), nullptr);
    EXPECT_EQ(err(), "");
}

TEST_F(TrustedFiles, AMissingDatabaseIsMade) {
    device.removeFile(kStateDatabase);
    EXPECT_TRUE(openDatabase(kStateDatabase));
    EXPECT_TRUE(device.exists(kStateDatabase));
}

TEST_F(TrustedFiles, TheConfigurationMayBelongToAnybodyButItsJournalNot) {
    EXPECT_TRUE(openDatabase(kConfigDatabase));
    const std::string journal = std::string(kConfigDatabase) + "-journal";
    device.writeFile(journal, "");
    device.owners[journal] = kStranger;
    Database db;
    EXPECT_EQ(openDatabaseFile(kConfigDatabase, db), SQLITE_CANTOPEN);
    EXPECT_EQ(db, nullptr);
    EXPECT_EQ(err(), "tarvo-config: " + journal + " belongs to another user (1001); " +
                         kConfigDatabase + " is not opened\n");
}

TEST_F(TrustedFiles, WithoutAConfigurationOnlyRootAndWeCount) {
    device.removeFile(kConfigDatabase);
    device.owners[kStateDatabase] = kConfigOwner;
    EXPECT_NE(reasonAgainst(kStateDatabase), "");
}

TEST_F(TrustedFiles, TheOwnerOfALinkInTheConfigurationsPlaceDoesNotCount) {
    fs::rename(device.path(kConfigDatabase), device.path("/tmp/elsewhere"));
    fs::create_symlink(device.path("/tmp/elsewhere"), device.path(kConfigDatabase));
    device.owners[kStateDatabase] = kConfigOwner;
    EXPECT_EQ(reasonAgainst(kStateDatabase),
              "/tmp/temp_global.sqlite belongs to another user (77)");
}

TEST_F(TrustedFiles, ADatabaseThatIsTakenAwayDuringTheOpenIsClosedAgain) {
    device.whenOpened[kStateDatabase] = [this] { fs::remove(device.path(kStateDatabase)); };
    EXPECT_EQ(openDatabase(kStateDatabase), nullptr);
    EXPECT_EQ(test::last(device.events()), "close: /tmp/temp_global.sqlite");
    EXPECT_EQ(err(),
              "tarvo-config: /tmp/temp_global.sqlite was replaced;"
              " /tmp/temp_global.sqlite is not opened\n");
}

TEST_F(TrustedFiles, ADatabaseThatIsExchangedDuringTheOpenIsClosedAgain) {
    device.whenOpened[kStateDatabase] = [this] {
        fs::remove(device.path(kStateDatabase));
        device.writeFile(kStateDatabase, "");
        device.writeFile("/tmp/keeps-the-number-in-use", "");
    };
    EXPECT_EQ(openDatabase(kStateDatabase), nullptr);
    EXPECT_EQ(test::last(device.events()), "close: /tmp/temp_global.sqlite");
}

TEST_F(TrustedFiles, ADatabaseThatIsThereForTheOpenAloneIsClosedAgain) {
    device.removeFile(kStateDatabase);
    device.whenOpened[kStateDatabase] = [this] { fs::remove(device.path(kStateDatabase)); };
    EXPECT_EQ(openDatabase(kStateDatabase), nullptr);
    EXPECT_EQ(test::last(device.events()), "close: /tmp/temp_global.sqlite");
    EXPECT_EQ(err(),
              "tarvo-config: /tmp/temp_global.sqlite was replaced;"
              " /tmp/temp_global.sqlite is not opened\n");
}

TEST_F(TrustedFiles, AJournalThatAppearsDuringTheOpenClosesTheDatabaseAgain) {
    device.whenOpened[kStateDatabase] = [this] {
        device.writeFile(kJournal, "");
        device.owners[kJournal] = kStranger;
    };
    EXPECT_EQ(openDatabase(kStateDatabase), nullptr);
    EXPECT_EQ(test::last(device.events()), "close: /tmp/temp_global.sqlite");
}

}  // namespace

}  // namespace tarvodb
