#include "db/watched_database.h"

#include "support/fake_device.h"

namespace tarvodb {

namespace {

class Watched : public test::DeviceTest {
  protected:
    void insertNetwork() {
        device.execute(kConfigDatabase, "INSERT INTO RedesCabecera (NID) VALUES (1)");
    }

    static void read(WatchedDatabase& database) {
        EXPECT_EQ(execWithRetries(database.handle(), "SELECT * FROM RedesCabecera"), 0);
    }
};

}  // namespace

TEST_F(Watched, HasChangedWhenAnotherWroteBetweenTwoStatements) {
    WatchedDatabase database(openDatabase(kConfigDatabase));
    read(database);
    EXPECT_FALSE(database.hasChanged());
    read(database);
    EXPECT_FALSE(database.hasChanged());
    insertNetwork();
    read(database);
    EXPECT_TRUE(database.hasChanged());
}

TEST_F(Watched, HasNotChangedByWhatWasWrittenBeforeTheFirstStatement) {
    WatchedDatabase database(openDatabase(kConfigDatabase));
    insertNetwork();
    read(database);
    read(database);
    EXPECT_FALSE(database.hasChanged());
}

TEST_F(Watched, ThatIsNotOpenHasNoHandleAndDoesNotChange) {
    WatchedDatabase database;
    EXPECT_FALSE(database.isOpen());
    EXPECT_EQ(database.handle(), nullptr);
    EXPECT_EQ(database.handle(), nullptr);
    EXPECT_FALSE(database.hasChanged());
}

}  // namespace tarvodb
