// What the sections do not show of how a child is taken: they check its text first, and take
// nothing else by these rows.
#include "import/elements.h"

#include <gtest/gtest.h>

#include "db/schema.h"
#include "support/import_fixture.h"

namespace tarvo_remote_control {

namespace {

using mapping::Element;
using mapping::Take;
using tarvodb::DiSEqCGlobal;

constexpr document::CodeText kBands[] = {{0, "low"}, {1, "high"}};

Element bandTaken(Take how) {
    return {.name = "band", .column = DiSEqCGlobal::Banda, .take = how, .texts = kBands};
}

// Whether this text is taken into a band of 7, and the band then.
std::pair<bool, std::string> taken(const Element& element, const std::string& text) {
    const test::ParsedXml child("<band>" + text + "</band>");
    tarvodb::Record<DiSEqCGlobal> position;
    position.set(DiSEqCGlobal::Banda, 7);
    const bool isTaken = take(position, element, child.root());
    return {isTaken, position[DiSEqCGlobal::Banda].asString()};
}

const std::pair kLeftAlone(false, std::string("7"));

}  // namespace

TEST(ATakenChild, WithATextThatHasNoCodeIsLeftAlone) {
    for (const Take how : {Take::code, Take::codeExactly}) {
        EXPECT_EQ(taken(bandTaken(how), "middle"), kLeftAlone);
        EXPECT_EQ(taken(bandTaken(how), "high"), std::pair(true, std::string("1")));
    }
}

TEST(ATakenChild, OfARowThatItsSectionTakesIsLeftAlone) {
    for (const Take how : {Take::bits, Take::key, Take::special, Take::children, Take::ignored}) {
        EXPECT_EQ(taken(bandTaken(how), "1"), kLeftAlone);
    }
}

TEST(ACode, IsThatOfARowThatTakesCodes) {
    EXPECT_EQ(codeOf(bandTaken(Take::code), "HIGH"), 1);
    EXPECT_EQ(codeOf(bandTaken(Take::codeExactly), "HIGH"), std::nullopt);
    EXPECT_EQ(codeOf(bandTaken(Take::codeOrNumber), "HIGH"), 0);
    EXPECT_EQ(codeOf(bandTaken(Take::text), "high"), std::nullopt);
}

}  // namespace tarvo_remote_control
