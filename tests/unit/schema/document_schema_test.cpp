#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

#include "mapping/document_tree.h"
#include "schema/export_schema.h"
#include "schema/import_schema.h"
#include "schema/manual.h"
#include "schema/meanings.h"
#include "schema/places.h"
#include "schema/rnc.h"

namespace schema {

namespace {

std::string contentOf(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(std::string(TARVO_SOURCE_FOLDER) + "/" + path).rdbuf();
    return content.str();
}

std::set<std::string> found(const std::string& text, const std::string& expression) {
    const std::regex wanted(expression);
    std::set<std::string> names;
    for (std::sregex_iterator match(text.begin(), text.end(), wanted), end; match != end; ++match) {
        names.insert((*match)[1].str());
    }
    return names;
}

// Every row's name, also the ones of a copy, counted down from the outermost element by hand: the
// generator's own walk is not asked.
void addNames(const mapping::Element& element, std::set<std::string>& names) {
    names.insert(element.name);
    mapping::forEachChild(element,
                          [&names](const mapping::Element& child) { addNames(child, names); });
}

std::set<std::string> namesOfAllRows() {
    std::set<std::string> names;
    addNames(mapping::kBackup, names);
    return names;
}

}  // namespace

TEST(DocumentSchema, FilesOfTheRepositoryAreWhatTheRowsGive) {
    constexpr const char* kRemedy = "run scripts/document-schema";
    EXPECT_EQ(contentOf("schema/tarvo-config-export.rnc"), exportSchema()) << kRemedy;
    EXPECT_EQ(contentOf("schema/tarvo-config-import.rnc"), importSchema()) << kRemedy;
    EXPECT_EQ(contentOf("docs/tarvo-config-document.5"), documentManual()) << kRemedy;
}

TEST(DocumentSchema, OfTheExportHasEveryRowAndNothingElse) {
    EXPECT_EQ(found(exportSchema(), R"(element (\w+) \{)"), namesOfAllRows());
}

// What the import does not look into may hold anything.
TEST(DocumentSchema, OfTheImportHasEveryRowThatIsReadAndNothingElse) {
    std::set<std::string> expected = namesOfAllRows();
    for (const char* name : {"signalQuality", "decrytStatus", "transcodingStatus"}) {
        EXPECT_EQ(expected.erase(name), 1U) << name;
    }
    EXPECT_EQ(found(importSchema(), R"(element (\w+) \{)"), expected);
}

TEST(DocumentSchema, EveryPlaceHasAMeaningAndEveryMeaningAPlace) {
    std::set<std::string_view> used;
    for (const Place& place : places()) {
        used.insert(meaningOf(place.name).place);
    }
    for (const Meaning& meaning : kMeanings) {
        EXPECT_TRUE(used.contains(meaning.place)) << meaning.place;
    }
    EXPECT_EQ(used.size(), kMeanings.size());
}

TEST(DocumentSchema, APlaceWithoutAMeaningIsNotPassedOver) {
    EXPECT_THROW(meaningOf("cable input/nothing"), std::out_of_range);
}

TEST(DocumentSchema, PlacesAreThoseOfEveryRow) {
    std::set<std::string> names{mapping::kBackup.name};
    for (const Place& place : places()) {
        names.insert(place.element->name);
    }
    EXPECT_EQ(names, namesOfAllRows());
}

TEST(DocumentSchema, ModelsThatExportAnElementDifferentlyHaveDefinitionsOfTheirOwn) {
    const auto names = found(exportSchema(), R"(\n(identification[\w.-]*) =)");
    EXPECT_EQ(names, (std::set<std::string>{
                         "identification.QRA-310.LMV-502.PKD-707", "identification.RNB-K408",
                         "identification.WVX-AQ4.WVX-BQ4", "identification.LMV-512"}));
}

TEST(Rnc, NumbersInARangeThatHasZeroMayBeEmpty) {
    EXPECT_EQ(number(), "number");
    EXPECT_EQ(number({1, 2}), R"(xsd:integer { minInclusive = "1" maxInclusive = "2" })");
    EXPECT_EQ(number({.lowest = 3}), R"(xsd:integer { minInclusive = "3" })");
    EXPECT_EQ(number({.highest = 9}), R"(xsd:integer { maxInclusive = "9" } | "")");
}

TEST(Rnc, LettersOfATextInAnyCaseAreClasses) {
    EXPECT_EQ(inAnyCase("8 MHz"), R"(xsd:string { pattern = "8 [Mm][Hh][Zz]" })");
    EXPECT_EQ(exactly("8 MHz"), R"(string "8 MHz")");
}

}  // namespace schema
