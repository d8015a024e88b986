#include "db/record.h"

#include <gtest/gtest.h>

#include <array>

#include "db/schema.h"

namespace tarvodb {

namespace {

using Settings = configuracionWebGlobal;

template <std::size_t Size>
Record<Settings> settingOf(const std::array<const char*, Size>& cells) {
    return Record<Settings>(std::span<const char* const>(cells));
}

Record<Settings> setting(const char* value) {
    return settingOf(std::array<const char*, 4>{"7", "network_IP", value, "1"});
}

}  // namespace

TEST(TableRecord, TakesItsCellsInColumnOrderAndCopiesThem) {
    std::string value = "10.0.0.1";
    const Record<Settings> record = setting(value.c_str());
    value = "overwritten";
    EXPECT_EQ(record[Settings::idConfiguracionGlobal].asString(), "7");
    EXPECT_EQ(record[Settings::nombre].asString(), "network_IP");
    EXPECT_EQ(record[Settings::valor].asString(), "10.0.0.1");
    EXPECT_EQ(record[Settings::aplicarBackup].asInt(), 1);
    EXPECT_STREQ(record.key().text(), "7");
}

TEST(TableRecord, IsUnmodifiedWhenItIsMade) {
    const Record<Settings> record = setting("10.0.0.1");
    const Record<Settings> empty;
    for (std::size_t column = 0; column < Settings::columns.size(); ++column) {
        SCOPED_TRACE(column);
        EXPECT_FALSE(record.Row::isModified(column));
        EXPECT_FALSE(empty.Row::isModified(column));
    }
}

TEST(TableRecord, KeepsSqlNullApartFromTheEmptyText) {
    EXPECT_EQ(setting(nullptr)[Settings::valor].text(), nullptr);
    EXPECT_EQ(setting(nullptr)[Settings::valor].asString(), "");
    EXPECT_EQ(setting(nullptr)[Settings::valor].asInt(), 0);
    EXPECT_STREQ(setting("")[Settings::valor].text(), "");
}

TEST(TableRecord, WithoutCellsIsNullInEveryColumn) {
    const Record<Settings> record;
    for (std::size_t column = 0; column < Settings::columns.size(); ++column) {
        EXPECT_EQ(record.value(column).text(), nullptr) << column;
    }
}

TEST(TableRecord, LeavesCellsBeyondItsColumnsOut) {
    const auto record =
        settingOf(std::array<const char*, 6>{"7", "network_IP", "10.0.0.1", "0", "more", nullptr});
    EXPECT_EQ(record[Settings::aplicarBackup].asString(), "0");
}

TEST(TableRecord, IsNullWhereCellsAreMissing) {
    const auto record = settingOf(std::array<const char*, 2>{"7", "network_IP"});
    EXPECT_EQ(record[Settings::nombre].asString(), "network_IP");
    EXPECT_EQ(record[Settings::valor].text(), nullptr);
    EXPECT_EQ(record[Settings::aplicarBackup].text(), nullptr);
}

TEST(TableRecord, SettingAnotherTextMarksThatColumnOnly) {
    Record<Settings> record = setting("10.0.0.1");
    EXPECT_TRUE(record.set(Settings::valor, "10.0.0.2"));
    EXPECT_EQ(record[Settings::valor].asString(), "10.0.0.2");
    EXPECT_TRUE(record.isModified(Settings::valor));
    EXPECT_FALSE(record.isModified(Settings::idConfiguracionGlobal));
    EXPECT_FALSE(record.isModified(Settings::nombre));
    EXPECT_FALSE(record.isModified(Settings::aplicarBackup));
}

TEST(TableRecord, SettingTheSameTextMarksNothing) {
    Record<Settings> record = setting("10.0.0.1");
    EXPECT_FALSE(record.set(Settings::valor, "10.0.0.1"));
    EXPECT_FALSE(record.set(Settings::aplicarBackup, 1));
    EXPECT_FALSE(record.isModified(Settings::valor));
    EXPECT_FALSE(record.isModified(Settings::aplicarBackup));
}

TEST(TableRecord, ComparesTextsByteByByteAndNotAsNumbers) {
    Record<Settings> record = setting("Ten");
    EXPECT_TRUE(record.set(Settings::valor, "ten"));
    EXPECT_TRUE(record.set(Settings::valor, "ten "));
    EXPECT_TRUE(record.set(Settings::aplicarBackup, "01"));
    EXPECT_EQ(record[Settings::aplicarBackup].asString(), "01");
    EXPECT_TRUE(record.isModified(Settings::aplicarBackup));
}

TEST(TableRecord, SettingNullToTheEmptyTextLeavesItNull) {
    Record<Settings> record = setting(nullptr);
    EXPECT_FALSE(record.set(Settings::valor, ""));
    EXPECT_EQ(record[Settings::valor].text(), nullptr);
    EXPECT_FALSE(record.isModified(Settings::valor));
}

TEST(TableRecord, SettingTheEmptyTextToNullLeavesItEmpty) {
    Record<Settings> record = setting("");
    EXPECT_FALSE(record.set(Settings::valor, tSqlite3parent()));
    EXPECT_STREQ(record[Settings::valor].text(), "");
    EXPECT_FALSE(record.isModified(Settings::valor));
}

TEST(TableRecord, SettingATextToNullMakesItNull) {
    Record<Settings> record = setting("10.0.0.1");
    EXPECT_TRUE(record.set(Settings::valor, tSqlite3parent()));
    EXPECT_EQ(record[Settings::valor].text(), nullptr);
    EXPECT_TRUE(record.isModified(Settings::valor));
}

TEST(TableRecord, SettingATextToTheEmptyTextMakesItEmptyAndNotNull) {
    Record<Settings> record = setting("10.0.0.1");
    EXPECT_TRUE(record.set(Settings::valor, ""));
    EXPECT_STREQ(record[Settings::valor].text(), "");
    EXPECT_TRUE(record.isModified(Settings::valor));
}

TEST(TableRecord, AMarkStaysWhenTheOldTextComesBack) {
    Record<Settings> record = setting("10.0.0.1");
    record.set(Settings::valor, "10.0.0.2");
    record.set(Settings::valor, "10.0.0.1");
    EXPECT_TRUE(record.isModified(Settings::valor));
}

TEST(TableRecord, TakesTheValueOfAnotherColumn) {
    const Record<Settings> source = setting("10.0.0.9");
    Record<Settings> record = setting("10.0.0.1");
    EXPECT_TRUE(record.set(Settings::valor, source[Settings::valor]));
    EXPECT_EQ(record[Settings::valor].asString(), "10.0.0.9");
    EXPECT_FALSE(record.set(Settings::nombre, source[Settings::nombre]));
}

TEST(TableRecord, SettingAColumnThatWasNeverFilledStoresTheEmptyTextAndMarksIt) {
    Record<Settings> record;
    EXPECT_TRUE(record.set(Settings::valor, ""));
    EXPECT_STREQ(record[Settings::valor].text(), "");
    EXPECT_TRUE(record.isModified(Settings::valor));
    EXPECT_FALSE(record.isModified(Settings::nombre));
}

TEST(TableRecord, SettingAColumnThatWasNeverFilledToNullMarksIt) {
    Record<Settings> record;
    EXPECT_TRUE(record.set(Settings::valor, tSqlite3parent()));
    EXPECT_EQ(record[Settings::valor].text(), nullptr);
    EXPECT_TRUE(record.isModified(Settings::valor));
    EXPECT_FALSE(record.set(Settings::valor, ""));
    EXPECT_EQ(record[Settings::valor].text(), nullptr);
}

TEST(TableRecord, AColumnIsFilledByItsFirstValue) {
    Record<Settings> record;
    record.set(Settings::valor, "");
    record.clearModified();
    EXPECT_FALSE(record.set(Settings::valor, ""));
    EXPECT_FALSE(record.isModified(Settings::valor));
}

TEST(TableRecord, CellsThatAreMissingAreFilledWithNull) {
    auto record = settingOf(std::array<const char*, 1>{"7"});
    EXPECT_FALSE(record.set(Settings::valor, ""));
    EXPECT_EQ(record[Settings::valor].text(), nullptr);
    EXPECT_FALSE(record.isModified(Settings::valor));
}

TEST(TableRecord, ComparedAsNumberNullIsZeroAndLeadingZerosDoNotCount) {
    auto record = settingOf(std::array<const char*, 4>{"7", "a", nullptr, "05"});
    EXPECT_FALSE(record.setIfOtherNumber(Settings::valor, 0));
    EXPECT_FALSE(record.setIfOtherNumber(Settings::aplicarBackup, 5));
    EXPECT_EQ(record[Settings::valor].text(), nullptr);
    EXPECT_EQ(record[Settings::aplicarBackup].asString(), "05");
    EXPECT_FALSE(record.isModified(Settings::aplicarBackup));
    EXPECT_TRUE(record.setIfOtherNumber(Settings::aplicarBackup, 6));
    EXPECT_EQ(record[Settings::aplicarBackup].asString(), "6");
    EXPECT_TRUE(record.isModified(Settings::aplicarBackup));
}

TEST(TableRecord, CopyHasItsOwnValuesAndTheMarks) {
    auto record = settingOf(std::array<const char*, 4>{"7", "network_IP", "10.0.0.1", nullptr});
    record.set(Settings::valor, "10.0.0.2");
    Record<Settings> copy = record;
    record.set(Settings::valor, "10.0.0.3");
    record.set(Settings::nombre, "other");
    EXPECT_EQ(copy[Settings::valor].asString(), "10.0.0.2");
    EXPECT_EQ(copy[Settings::nombre].asString(), "network_IP");
    EXPECT_EQ(copy[Settings::aplicarBackup].text(), nullptr);
    EXPECT_TRUE(copy.isModified(Settings::valor));
    EXPECT_FALSE(copy.isModified(Settings::nombre));
}

}  // namespace tarvodb
