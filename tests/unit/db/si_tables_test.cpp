#include "db/si_tables.h"

#include "support/fake_device.h"

namespace tarvodb {

namespace {

using Lines = std::vector<std::string>;

const Lines kEventsFor101To202 = {
    "rename: /tarvo/datosWeb/tablasSI/NIT_table_101 /tarvo/datosWeb/tablasSI/NIT_table_202",
    "rename: /tarvo/datosWeb/tablasSI/SDT_table_101 /tarvo/datosWeb/tablasSI/SDT_table_202",
    "sync",
};

class SiTableFiles : public test::DeviceTest {
  protected:
    [[nodiscard]] std::optional<std::string> content(const std::string& file) const {
        return device.readFile("/tarvo/datosWeb/tablasSI/" + file);
    }
    void write(const std::string& file, const std::string& content) const {
        device.writeFile("/tarvo/datosWeb/tablasSI/" + file, content);
    }
};

}  // namespace

TEST_F(SiTableFiles, OfANetworkAreRenamedNitFirstAndThenSynced) {
    write("NIT_table_101", "nit");
    write("SDT_table_101", "sdt");
    write("BAT_table_101", "bat");
    renameSiTableFiles("101", "202");
    EXPECT_EQ(device.events(), kEventsFor101To202);
    EXPECT_EQ(content("NIT_table_202"), "nit");
    EXPECT_EQ(content("SDT_table_202"), "sdt");
    EXPECT_EQ(content("NIT_table_101"), std::nullopt);
    EXPECT_EQ(content("SDT_table_101"), std::nullopt);
    EXPECT_EQ(content("BAT_table_101"), "bat");
}

TEST_F(SiTableFiles, ThatAreMissingChangeNothingAndAreSyncedAllTheSame) {
    write("NIT_table_303", "other network");
    renameSiTableFiles("101", "202");
    EXPECT_EQ(device.events(), kEventsFor101To202);
    EXPECT_EQ(content("NIT_table_303"), "other network");
    EXPECT_EQ(content("NIT_table_202"), std::nullopt);
    EXPECT_EQ(content("SDT_table_202"), std::nullopt);
}

TEST_F(SiTableFiles, AreRenamedEachForItself) {
    write("SDT_table_101", "sdt");
    renameSiTableFiles("101", "202");
    EXPECT_EQ(content("SDT_table_202"), "sdt");
    EXPECT_EQ(content("NIT_table_202"), std::nullopt);
}

TEST_F(SiTableFiles, ReplaceThoseOfTheNewIdentifier) {
    write("NIT_table_101", "mine");
    write("NIT_table_202", "old");
    renameSiTableFiles("101", "202");
    EXPECT_EQ(content("NIT_table_202"), "mine");
}

TEST_F(SiTableFiles, OfAnIdentifierThatLeadsElsewhereAreNotRenamed) {
    write("NIT_table_101", "nit");
    write("NIT_table_x/y", "below");
    for (const auto& [oldId, newId] : {std::pair("101", "x/z"), std::pair("x/y", "7"),
                                       std::pair("101", "../../../tmp/z"), std::pair("101", "/")}) {
        device.forgetEvents();
        renameSiTableFiles(oldId, newId);
        EXPECT_EQ(device.events(), Lines{"sync"});
    }
    EXPECT_EQ(content("NIT_table_101"), "nit");
    EXPECT_EQ(content("NIT_table_x/y"), "below");
    EXPECT_FALSE(namesSiTableFile("../1"));
    EXPECT_TRUE(namesSiTableFile("1.."));
}

TEST_F(SiTableFiles, TakeTheIdentifierAsTextAsItStands) {
    write("NIT_table_", "unnumbered");
    renameSiTableFiles("", "07");
    EXPECT_EQ(content("NIT_table_07"), "unnumbered");
    EXPECT_EQ(content("NIT_table_"), std::nullopt);
}

}  // namespace tarvodb
