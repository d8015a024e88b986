#include "backup/element_place.h"

#include <gtest/gtest.h>

#include "unit/backup/backup_test.h"

namespace tarvo_backup {

TEST(ElementPlace, OfTextBetweenElementsIsBelowTheElementAroundIt) {
    const Document document = configured("\n<network>text</network>");
    const XmlNode& network = *document::childNamed(*document.configuration(), "network");
    EXPECT_EQ(placeOf(document, *network.first_node()),
              (ElementPlace{.path = "network", .position = {2, 10}}));
}

TEST(ElementPlace, OfWhatTheImportDoesNotKnowHasItsNames) {
    const Document document = configured("<colours><Red><deep/></Red></colours>");
    const XmlNode& colours = *document::childNamed(*document.configuration(), "colours");
    const XmlNode& deep = *document::childNamed(*document::childNamed(colours, "red"), "deep");
    EXPECT_EQ(placeOf(document, deep).path, "colours/Red/deep");
}

TEST(ElementPlace, OfAnEntryHasItsIdentityOrItsPlace) {
    const Document document = parsed(
        "<backup><configuration><diseqcs><diseqc><id>7</id></diseqc><x/><diseqc/></diseqcs>"
        "</configuration></backup>");
    const XmlNode& list = *document::childNamed(*document.configuration(), "diseqcs");
    EXPECT_EQ(placeOf(document, *list.first_node()).path, "diseqcs/diseqc[id=7]");
    EXPECT_EQ(placeOf(document, *list.first_node()->next_sibling()).path, "diseqcs/x[2]");
    EXPECT_EQ(placeOf(document, *list.last_node()).path, "diseqcs/diseqc[3]");
}

}  // namespace tarvo_backup
