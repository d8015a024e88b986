#include "mapping/obeyed.h"

#include <gtest/gtest.h>

#include "db/schema.h"
#include "mapping/cam_list.h"

namespace mapping {

namespace {

using Table = tarvodb::DiSEqCGlobal;

constexpr Element leaf(Take take) {
    return {.name = "name", .column = Table::Nombre, .take = take};
}

template <class Change>
Element changed(Take take, Change change) {
    Element row = leaf(take);
    change(row);
    return row;
}

// A number in two sections: `obeying` does what the row says and `other` does not.
template <class Change>
void expectObeyedOnlyBy(const Obeyed& obeying, Change change, Take take = Take::number) {
    EXPECT_TRUE(isObeyed(leaf(take), Obeyed{.takes = take})) << "to begin with";
    const Element row = changed(take, change);
    EXPECT_TRUE(isObeyed(row, obeying));
    EXPECT_FALSE(isObeyed(row, Obeyed{.takes = take}));
}

}  // namespace

TEST(Obeyed, AreTheWaysToTakeThatTheSectionKnows) {
    const Obeyed section{.takes = {Take::text, Take::key}};
    EXPECT_TRUE(isObeyed(leaf(Take::text), section));
    EXPECT_TRUE(isObeyed(leaf(Take::key), section));
    EXPECT_FALSE(isObeyed(leaf(Take::number), section));
}

TEST(Obeyed, AreTheMembersOfElementsThatAreTakenInTheseWays) {
    expectObeyedOnlyBy({.takes = Take::number, .labels = Take::number},
                       [](Element& row) { row.label = "label"; });
    expectObeyedOnlyBy({.takes = Take::number, .ranges = Take::number},
                       [](Element& row) { row.range = kBinary; });
    expectObeyedOnlyBy({.takes = Take::number, .lowestOfOther = Take::number},
                       [](Element& row) { row.lowestOfOther = 1; });
    expectObeyedOnlyBy({.takes = Take::number, .derived = Take::number},
                       [](Element& row) { row.derived = Table::Banda; });
    expectObeyedOnlyBy({.takes = Take::number, .conditions = When::fileExists},
                       [](Element& row) { row.when = When::fileExists; });
    expectObeyedOnlyBy({.takes = Take::number, .refusedAsOutput = true},
                       [](Element& row) { row.refusedAsOutput = true; });
    expectObeyedOnlyBy({.takes = Take::number, .dvbCTexts = Take::number},
                       [](Element& row) { row.dvbCTexts = document::kConstellationDvbC; });
    const Element logged = changed(Take::text, [](Element& row) { row.label = "label"; });
    EXPECT_FALSE(isObeyed(logged, {.takes = {Take::text, Take::number}, .labels = Take::number}));
}

TEST(Obeyed, IsARangeOnlyWhenTheSectionsErrorTellsOfIt) {
    const Obeyed section{.takes = Take::number, .ranges = Take::number, .toldRange = kBinary};
    EXPECT_TRUE(isObeyed(leaf(Take::number), section));
    EXPECT_TRUE(
        isObeyed(changed(Take::number, [](Element& row) { row.range = kBinary; }), section));
    for (const Range other : {kIdentifier, Range{kBinary.lowest, kBinary.highest + 1}}) {
        EXPECT_FALSE(isObeyed(changed(Take::number, [&other](Element& row) { row.range = other; }),
                              section));
    }
}

TEST(Obeyed, IsACodeOnlyWhereATextWithoutOneIsRefusedOrCountsAsOne) {
    const auto othersAreOne = [](Element& row) { row.otherTextsAreOne = true; };
    const Obeyed refusing{.takes = Take::code, .refusedCodes = Take::code};
    const Obeyed taking{.takes = {Take::code, Take::text}, .otherTextsAreOne = true};
    EXPECT_TRUE(isObeyed(leaf(Take::code), refusing));
    EXPECT_FALSE(isObeyed(leaf(Take::codeExactly),
                          {.takes = Take::codeExactly, .refusedCodes = Take::code}));
    EXPECT_FALSE(isObeyed(leaf(Take::code), taking));
    EXPECT_FALSE(isObeyed(changed(Take::code, othersAreOne), refusing));
    EXPECT_TRUE(isObeyed(changed(Take::code, othersAreOne), taking));
    EXPECT_FALSE(isObeyed(changed(Take::text, othersAreOne), taking));
}

TEST(Obeyed, IsARequirementOnlyOfTheElementsThatTheSectionAsksFor) {
    static constexpr std::string_view kName[] = {"name"};
    const Obeyed section{.takes = Take::key, .required = kName};
    const auto missing = [](Element& row) { row.required.missing = "missing"; };
    const auto outOfRange = [](Element& row) {
        row.required = {.missing = "missing", .range = kBinary};
    };
    EXPECT_FALSE(isObeyed(leaf(Take::key), section));
    EXPECT_FALSE(isObeyed(changed(Take::key, [](Element& row) { row.required.range = kBinary; }),
                          {.takes = Take::key, .requiredRanges = true}));
    EXPECT_TRUE(isObeyed(changed(Take::key, missing), section));
    EXPECT_FALSE(isObeyed(changed(Take::key, missing), {.takes = Take::key}));
    EXPECT_FALSE(isObeyed(changed(Take::key, outOfRange), section));
    EXPECT_TRUE(isObeyed(changed(Take::key, outOfRange),
                         {.takes = Take::key, .required = kName, .requiredRanges = true}));
}

TEST(Obeyed, AreSettingsThatAreWrittenAsTheyStandAndNothingElse) {
    const Obeyed settings{.takes = {Take::text, Take::children}, .settings = true};
    const auto setting = [](Element& row) {
        row.key = "key";
        row.postAction = PostAction::network;
    };
    EXPECT_FALSE(isObeyed(leaf(Take::text), settings));
    EXPECT_TRUE(isObeyed(changed(Take::text, setting), settings));
    EXPECT_FALSE(isObeyed(changed(Take::text, setting), {.takes = Take::text}));
    EXPECT_FALSE(
        isObeyed(changed(Take::text, [](Element& row) { row.postAction = PostAction::network; }),
                 {.takes = Take::text}));
    EXPECT_TRUE(isObeyed(section("holder", {}), settings));
    void (*const notPlain[])(Element&) = {
        [](Element& row) { row.texts = document::kBand; },
        [](Element& row) { row.constant = "0"; },
        [](Element& row) { row.exportedAsOnOff = true; },
        [](Element& row) { row.presenceOf = &kPublicKey; },
        [](Element& row) { row.rnbPrefix = "000"; },
        [](Element& row) { row.writtenSpecially = true; },
    };
    for (const auto& change : notPlain) {
        Element row = changed(Take::text, setting);
        change(row);
        EXPECT_FALSE(isObeyed(row, settings));
    }
}

}  // namespace mapping
