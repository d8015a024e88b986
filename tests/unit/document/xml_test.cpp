#include "document/xml.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace document {

namespace {

// A text and its tree.
class Parsed {
  public:
    explicit Parsed(std::string text) : text_(std::move(text)) { parse(tree_, text_); }
    [[nodiscard]] XmlNode* first() const { return tree_.first_node(); }
    [[nodiscard]] const XmlNode& root() const { return *first(); }

  private:
    std::string text_;
    XmlDocument tree_;
};

// What a ParseError says, "" without one.
std::string faultOf(std::string text) {
    XmlDocument tree;
    try {
        parse(tree, text);
    } catch (const ParseError& error) {
        return error.what();
    }
    return "";
}

std::string textOfParsed(const std::string& text) { return textOf(Parsed(text).root()); }

// The names of the children, in order; "-" for one without a name.
std::string childNames(const XmlNode& parent) {
    std::string names;
    for (const XmlNode& child : childrenOf(parent)) {
        const std::string name = child.name();
        names += name.empty() ? "-" : name;
    }
    return names;
}

}  // namespace

TEST(Xml, IsParsedToATree) {
    const Parsed xml("<a><b>1</b><c><d/></c></a>");
    EXPECT_STREQ(xml.root().name(), "a");
    EXPECT_EQ(childNames(xml.root()), "bc");
    EXPECT_EQ(printed(xml.root(), kNoIndenting), "<a><b>1</b><c><d/></c></a>");
}

TEST(Xml, MayHaveOtherThingsBeforeItsRoot) {
    EXPECT_EQ(textOfParsed("\xEF\xBB\xBF<a>1</a>"), "1");
    EXPECT_EQ(textOfParsed("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<a>1</a>\n"), "1");
    EXPECT_EQ(textOfParsed("\xEF\xBB\xBF<?xml version=\"1.0\"?><a>1</a>"), "1");
    EXPECT_EQ(textOfParsed("<?xml version=\"1.0\" encoding=\"other\"?><a>1</a>"), "1");
    EXPECT_EQ(textOfParsed("<!-- <b>2</b> --><!DOCTYPE a><a>1</a>"), "1");
    EXPECT_EQ(textOfParsed("<!DOCTYPE a [<!ENTITY b 'c'>]><a>1</a>"), "1");
    EXPECT_EQ(textOfParsed("<?tool do it?><a>1</a>"), "1");
    EXPECT_EQ(textOfParsed(" \r\n\t<a>1</a>"), "1");
}

TEST(Xml, EndsAtAZeroByte) {
    using namespace std::string_literals;
    EXPECT_EQ(textOfParsed("<a>1</a>\0<<<"s), "1");
    EXPECT_EQ(Parsed("\0<a/>"s).first(), nullptr);
}

TEST(Xml, HasNoNodeInAnEmptyText) {
    for (const char* text : {"", " \n\t", "\xEF\xBB\xBF", "<!-- nothing -->", "<?xml?>"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Parsed(text).first(), nullptr);
    }
}

TEST(Xml, TellsWhereItIsMalformed) {
    const std::vector<std::pair<std::string, std::string>> faultsOf = {
        {"no element", "1:1: expected <"},
        {"\n\n  x", "3:3: expected <"},
        {"<a/>\n<b/>\ntext", "3:1: expected <"},
        {"<a", "1:3: expected >"},
        {"<a>\n <b", "2:4: expected >"},
        {"<a>", "1:4: unexpected end of data"},
        {"<a>\n  <b>1</b>\n", "3:1: unexpected end of data"},
        {"<a>text", "1:8: unexpected end of data"},
        {"<>", "1:2: expected element name"},
        {"<a>\n</a>\n</a>", "3:2: expected element name"},
        {"<a b>", "1:5: expected ="},
        {"<a b=c>", "1:6: expected ' or \""},
        {"<a b=\"c>", "1:9: expected ' or \""},
        {"<!-- x", "1:7: unexpected end of data"},
        {"<a>\n<![CDATA[x</a>", "2:15: unexpected end of data"},
        {"<?xml version=\"1.0\"", "1:20: unexpected end of data"},
        {"<a>1</a\n<b/>", "2:1: expected >"},
    };
    for (const auto& [text, fault] : faultsOf) {
        SCOPED_TRACE(text);
        EXPECT_EQ(faultOf(text), fault);
    }
}

TEST(Xml, CountsTheColumnInTheTextAsItWasGiven) {
    EXPECT_EQ(faultOf("<a>\n<b>&lt;&amp;</b><c"), "2:19: expected >");
}

TEST(Xml, TellsWhereACopyIsMalformed) {
    XmlDocument tree;
    try {
        parseCopy(tree, "<a>\n  <b");
        FAIL() << "is taken";
    } catch (const ParseError& error) {
        EXPECT_STREQ(error.what(), "2:5: expected >");
    }
}

TEST(Xml, StaysInACopyWhenTheTextIsGone) {
    XmlDocument tree;
    {
        auto text = std::make_unique<std::string>("<a><b>&lt;1&gt;</b></a>");
        parseCopy(tree, *text);
        EXPECT_EQ(*text, "<a><b>&lt;1&gt;</b></a>");
    }
    EXPECT_STREQ(lastText(*tree.first_node(), "b"), "<1>");
}

TEST(Xml, ReplacesWhatADocumentHeld) {
    XmlDocument tree;
    parseCopy(tree, "<a/>");
    parseCopy(tree, "<b/>");
    EXPECT_STREQ(tree.first_node()->name(), "b");
    EXPECT_EQ(tree.first_node()->next_sibling(), nullptr);
}

TEST(Xml, HasTheTextOfAnElement) {
    EXPECT_EQ(textOfParsed("<a>text</a>"), "text");
    EXPECT_EQ(textOfParsed("<a>  two  words\n</a>"), "  two  words\n");
    EXPECT_EQ(textOfParsed("<a x='1'>text</a>"), "text");
    EXPECT_EQ(textOfParsed("<a></a>"), "");
    EXPECT_EQ(textOfParsed("<a/>"), "");
    EXPECT_EQ(textOfParsed("<a><b>1</b></a>"), "");
}

TEST(Xml, TranslatesEntities) {
    EXPECT_EQ(textOfParsed("<a>&lt;&gt;&amp;&quot;&apos;</a>"), "<>&\"'");
    EXPECT_EQ(textOfParsed("<a>&#65;&#x42;&#xE9;</a>"), "AB\xC3\xA9");
    EXPECT_EQ(textOfParsed("<a>&amp;lt;</a>"), "&lt;");
    EXPECT_EQ(textOfParsed("<a>&other; &</a>"), "&other; &");
}

TEST(Xml, KeepsBytesOfNoEncoding) {
    EXPECT_EQ(textOfParsed("<a>\xFF\x80\x01</a>"), "\xFF\x80\x01");
    EXPECT_EQ(textOfParsed("<a>\xC3\xB1 \xE9\xFF</a>"), "\xC3\xB1 \xE9\xFF");
    EXPECT_EQ(printed(Parsed("<\xC3\xB1>\xE9</\xC3\xB1>").root(), kNoIndenting),
              "<\xC3\xB1>\xE9</\xC3\xB1>");
}

TEST(Xml, HasTheTextOfACdataSection) {
    EXPECT_EQ(textOfParsed("<a><![CDATA[<b>&amp;</b>]]></a>"), "<b>&amp;</b>");
    EXPECT_EQ(textOfParsed("<a>\n <![CDATA[x]]>\n</a>"), "x");
    EXPECT_EQ(textOfParsed("<a><![CDATA[]]></a>"), "");
    EXPECT_EQ(textOfParsed("<a>text<![CDATA[x]]></a>"), "text");
    EXPECT_EQ(textOfParsed("<a><![CDATA[x]]>text</a>"), "text");
}

TEST(Xml, HasTheTextAroundAComment) {
    EXPECT_EQ(textOfParsed("<a><!-- no -->text</a>"), "text");
    EXPECT_EQ(textOfParsed("<a>text<!-- no --></a>"), "text");
}

TEST(Xml, CountsTextBetweenElementsAsAChildWithoutAName) {
    const Parsed xml("<a>x<b/>y<c/>\n z</a>");
    EXPECT_EQ(childNames(xml.root()), "-b-c-");
    EXPECT_STREQ(textOf(xml.root()), "x");
    EXPECT_NE(childNamed(xml.root(), "c"), nullptr);
}

TEST(Xml, CountsNeitherBlanksNorCommentsAsChildren) {
    EXPECT_EQ(childNames(Parsed("<a>\n <b/>\n <!-- c -->\n <d/>\n</a>").root()), "bd");
    EXPECT_EQ(childNames(Parsed("<a>\r\n\t<b/>\r\n</a>").root()), "b");
    EXPECT_EQ(childNames(Parsed("<a> \n </a>").root()), "");
    EXPECT_EQ(childNames(Parsed("<a/>").root()), "");
}

TEST(Xml, ReadsTheTextOfAnElementAsANumber) {
    const std::vector<std::pair<std::string, int>> numbers = {{"12", 12},
                                                              {"-3", -3},
                                                              {"007", 7},
                                                              {"12abc", 12},
                                                              {" 7", 7},
                                                              {"abc", 0},
                                                              {"0x10", 0},
                                                              {"", 0},
                                                              {"1.9", 1},
                                                              {"<![CDATA[5]]>", 5},
                                                              {"4294967301", 2147483647}};
    for (const auto& [text, number] : numbers) {
        SCOPED_TRACE(text);
        EXPECT_EQ(numberOf(Parsed("<a>" + text + "</a>").root()), number);
    }
}

TEST(Xml, ComparesNamesWithoutRegardToCase) {
    EXPECT_TRUE(sameText("inputId", "INPUTID"));
    EXPECT_TRUE(sameText("", ""));
    EXPECT_FALSE(sameText("input", "inputId"));
    EXPECT_FALSE(sameText("inputId", "input"));
    EXPECT_FALSE(sameText("\xC9", "\xE9"));
    const Parsed xml("<Input/>");
    EXPECT_TRUE(hasName(xml.root(), "input"));
    EXPECT_FALSE(hasName(xml.root(), "inputs"));
}

TEST(Xml, FindsTheFirstAndTheLastChildOfAName) {
    const Parsed xml("<a>text<b>1</b><c>2</c><B>3</B><bb>4</bb></a>");
    EXPECT_STREQ(textOf(*childNamed(xml.root(), "b")), "1");
    EXPECT_STREQ(textOf(*childNamed(xml.root(), "C")), "2");
    EXPECT_EQ(childNamed(xml.root(), "d"), nullptr);
    EXPECT_STREQ(textOf(*lastChildNamed(xml.root(), "b")), "3");
    EXPECT_STREQ(textOf(*lastChildNamed(xml.root(), "C")), "2");
    EXPECT_EQ(lastChildNamed(xml.root(), "d"), nullptr);
}

TEST(Xml, LooksForChildrenInTheElementItself) {
    const Parsed xml("<a><b><c>1</c></b></a>");
    EXPECT_EQ(childNamed(xml.root(), "c"), nullptr);
    EXPECT_EQ(lastChildNamed(xml.root(), "a"), nullptr);
}

TEST(Xml, HasTheTextOfTheLastChildOfAName) {
    const Parsed xml("<a><b>1</b><B>2</B><c/></a>");
    EXPECT_STREQ(lastText(xml.root(), "b"), "2");
    EXPECT_STREQ(lastText(xml.root(), "c"), "");
    EXPECT_EQ(lastText(xml.root(), "d"), nullptr);
}

TEST(Xml, FindsTheFirstSiblingOfExactlyAName) {
    const Parsed xml("<a/><B/><b>1</b><b>2</b>");
    EXPECT_STREQ(textOf(*findSibling(xml.first(), "b")), "1");
    EXPECT_EQ(findSibling(xml.first(), "a"), xml.first());
    EXPECT_EQ(findSibling(xml.first(), "A"), nullptr);
    EXPECT_EQ(findSibling(xml.first(), "bb"), nullptr);
}

TEST(Xml, FindsASiblingFromTheNodeOnwards) {
    const Parsed xml("<a/><b/><c/>");
    XmlNode* second = xml.first()->next_sibling();
    EXPECT_EQ(findSibling(second, "a"), nullptr);
    EXPECT_STREQ(findSibling(second, "c")->name(), "c");
}

TEST(Xml, ComparesASiblingWithoutANameAsAnEmptyName) {
    const Parsed xml("<a><b/>text</a>");
    XmlNode* child = xml.root().first_node();
    EXPECT_EQ(findSibling(child, ""), child->next_sibling());
    EXPECT_EQ(findSibling(xml.first(), ""), nullptr);
}

TEST(Xml, FindsNoSiblingFromNothing) {
    const Parsed xml("<a/>");
    EXPECT_EQ(findSibling(nullptr, "a"), nullptr);
    EXPECT_EQ(findSibling(xml.first(), nullptr), nullptr);
    EXPECT_EQ(findSibling(nullptr, nullptr), nullptr);
}

TEST(Xml, IsPrintedWithTabsOrWithout) {
    const Parsed xml("<a><b>1</b><c><d/></c></a>");
    EXPECT_EQ(printed(xml.root()), "<a>\n\t<b>1</b>\n\t<c>\n\t\t<d/>\n\t</c>\n</a>\n");
    EXPECT_EQ(printed(xml.root(), kNoIndenting), "<a><b>1</b><c><d/></c></a>");
}

TEST(Xml, IsPrintedWithEntities) {
    EXPECT_EQ(printed(Parsed("<a><![CDATA[x]]>&lt;&gt;&amp;&quot;&apos;</a>").root(), kNoIndenting),
              "<a><![CDATA[x]]>&lt;&gt;&amp;&quot;&apos;</a>");
}

}  // namespace document
