#include "backup/document.h"

#include "backup/fault.h"
#include "unit/backup/backup_test.h"

namespace tarvo_backup {

namespace {

Position positionOfConfigurationChild(const Document& document, const char* name) {
    return document.positionOf(*document::childNamed(*document.configuration(), name));
}

}  // namespace

TEST(BackupDocument, TellsWhereAnElementStands) {
    const Document document =
        parsed("<?xml version=\"1.0\"?>\n<configuration>\n\t<network/>\n</configuration>");
    EXPECT_EQ(positionOfConfigurationChild(document, "network"), (Position{3, 3}));
}

TEST(BackupDocument, TellsPositionsBehindEntitiesAndAByteOrderMarkInTheTextAsItWas) {
    const Document document =
        parsed("\xef\xbb\xbf<configuration><lnb>&amp;&amp;</lnb>\r\n<network/></configuration>");
    EXPECT_EQ(positionOfConfigurationChild(document, "lnb"), (Position{1, 20}));
    EXPECT_EQ(positionOfConfigurationChild(document, "network"), (Position{2, 2}));
}

TEST(BackupDocument, TellsWhereTextBetweenElementsStands) {
    const Document document = configured("<lnb/>\nloose");
    const XmlNode* text = document.configuration()->last_node();
    EXPECT_EQ(document.positionOf(*text), (Position{2, 1}));
}

TEST(BackupDocument, TellsWhereTextBetweenElementsBeginsBehindWhiteSpace) {
    const auto position = [](const std::string& text) {
        const Document document = configured("<lnb/>" + text + "<lnb/>");
        return document.positionOf(*document.configuration()->first_node()->next_sibling());
    };
    EXPECT_EQ(position("\n\n    stray\n  "), (Position{3, 5}));
    EXPECT_EQ(position(" \t\r\n &amp;"), (Position{2, 2}));
    EXPECT_EQ(position(" &#32;x"), (Position{1, 23}));
    EXPECT_EQ(position("<![CDATA[\n x]]>"), (Position{2, 2}));
    EXPECT_EQ(position("<![CDATA[ ]]>"), (Position{1, 31}));
    EXPECT_EQ(position("<![CDATA[]]>"), (Position{1, 31}));
}

TEST(BackupDocument, KeepsItsNodesWhenMoved) {
    Document first = configured("<lnb/>");
    const Document second = std::move(first);
    EXPECT_EQ(positionOfConfigurationChild(second, "lnb"), (Position{1, 17}));
}

TEST(BackupDocument, FindsWhatTheImportTakes) {
    const Document plain = parsed("<configuration/><vsecureCAMList/>");
    EXPECT_NE(plain.configuration(), nullptr);
    EXPECT_EQ(plain.camList(), nullptr);

    const Document backup = parsed("<backup><configuration/><vsecureCAMList/></backup>");
    EXPECT_NE(backup.configuration(), nullptr);
    EXPECT_NE(backup.camList(), nullptr);

    EXPECT_EQ(parsed("<Configuration/>").configuration(), nullptr);
}

TEST(BackupDocument, IsRedactedUnlessTheImportFindsWhatStandsBeside) {
    const Document masked = parsed("<x/><redacted><configuration><a/></configuration></redacted>");
    EXPECT_TRUE(masked.isRedacted());
    ASSERT_NE(masked.configuration(), nullptr);
    EXPECT_STREQ(masked.configuration()->first_node()->name(), "a");
    for (const char* text : {"<redacted><configuration><a/></configuration></"
                             "redacted><configuration><b/></configuration>",
                             "<configuration><b/></configuration><redacted/>",
                             "<redacted/><backup><configuration><b/></configuration></backup>"}) {
        const Document read = parsed(text);
        EXPECT_FALSE(read.isRedacted()) << text;
        ASSERT_NE(read.configuration(), nullptr) << text;
        EXPECT_STREQ(read.configuration()->first_node()->name(), "b") << text;
    }
    const Document without = parsed("<redacted><configuration/></redacted><backup/>");
    EXPECT_FALSE(without.isRedacted());
    EXPECT_EQ(without.configuration(), nullptr);
    // The import compares these names exactly.
    EXPECT_TRUE(parsed("<redacted><configuration/></redacted><Configuration/>").isRedacted());
}

TEST(BackupDocument, ThatIsNotWellFormedIsAFaultWithItsPosition) {
    try {
        parsed("<configuration>\n  <lnb");
        FAIL();
    } catch (const Fault& fault) {
        EXPECT_EQ(fault.status(), ExitStatus::usage);
        EXPECT_STREQ(fault.what(), "test.xml:2:7: expected >");
    }
}

}  // namespace tarvo_backup
