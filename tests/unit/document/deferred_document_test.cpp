#include "document/deferred_document.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

#include "support/environment.h"

namespace document {

namespace {

const ElementPath kPath = {"list", "entry", "rows"};

std::string repeated(const std::string& text, std::size_t times) {
    std::string all;
    for (std::size_t time = 0; time < times; ++time) {
        all += text;
    }
    return all;
}

std::string rows(const std::string& content) {
    return "<entry><rows a='1'>" + content + "</rows></entry>";
}

// Long enough to be deferred, when there are enough of them.
std::string manyRows() { return repeated("<row>1 &amp; 2</row>", 60); }

// All nodes with their kinds and texts, each loaded right before its children are visited.
std::string loadedOf(DeferredDocument& document, XmlNode* node) {
    std::string text;
    for (; node != nullptr; node = node->next_sibling()) {
        document.load(*node);
        text += std::to_string(node->type()) + node->name() + "=" + node->value() + "\n(" +
                loadedOf(document, node->first_node()) + ")";
    }
    return text;
}

std::string loadedOf(const std::string& text) {
    DeferredDocument document(text, kPath);
    return loadedOf(document, document.firstNode());
}

// The same of the whole tree.
std::string undeferredOf(const std::string& text) {
    DeferredDocument document(text, {"no such element"});
    return loadedOf(document, document.firstNode());
}

std::string faultOf(const std::string& text) {
    try {
        const DeferredDocument document(text, kPath);
    } catch (const ParseError& error) {
        return error.what();
    }
    return "";
}

}  // namespace

TEST(DeferredDocument, HasAnElementsContentOnceItIsAskedFor) {
    DeferredDocument document("<list>" + repeated(rows(manyRows()), 5) + "</list>", kPath);
    const XmlNode& list = *document.firstNode();
    const XmlNode& first = *list.first_node()->first_node();
    const XmlNode& last = *list.last_node()->first_node();
    EXPECT_EQ(childNamed(first, "row"), nullptr);
    document.load(first);
    EXPECT_STREQ(lastText(first, "row"), "1 & 2");
    EXPECT_EQ(first.first_node()->parent(), &first);
    document.load(first);
    EXPECT_STREQ(lastText(first, "row"), "1 & 2");
    document.load(last);
    EXPECT_STREQ(lastText(last, "row"), "1 & 2");
    EXPECT_EQ(first.first_node(), nullptr);
}

TEST(DeferredDocument, IsWholeWhereAPartIsMostOfIt) {
    DeferredDocument document("<list>" + repeated(rows(manyRows()), 3) + "</list>", kPath);
    EXPECT_STREQ(lastText(*document.firstNode()->first_node()->first_node(), "row"), "1 & 2");
}

TEST(DeferredDocument, DefersOnlyAtItsPath) {
    const std::string other = "<x><rows>" + manyRows() + "</rows></x>";
    DeferredDocument document(
        "<a><LIST>" + repeated(rows(manyRows()), 5) + "</LIST>" + other + "</a>", kPath);
    const XmlNode& list = *document.firstNode()->first_node();
    EXPECT_EQ(childNamed(*list.first_node()->first_node(), "row"), nullptr);
    EXPECT_STREQ(lastText(*list.next_sibling()->first_node(), "row"), "1 & 2");
}

TEST(DeferredDocument, TellsWhatIsMalformedInADeferredPart) {
    const std::string good = "<list>\n" + repeated(rows(manyRows()), 5);
    const auto at = [&good](std::size_t behind) {
        return "2:" + std::to_string(good.size() - std::string("<list>\n").size() + behind + 1);
    };
    EXPECT_EQ(faultOf(good + rows("<row b>" + manyRows() + "</row>") + "</list>"),
              at(std::string("<entry><rows a='1'><row b").size()) + ": expected =");
    EXPECT_EQ(faultOf(good), at(0) + ": unexpected end of data");
}

TEST(DeferredDocument, HasOtherTextsAsTheyAre) {
    const std::string text =
        "<list>" + repeated(rows(manyRows()), 5) + "<entry><![CDATA[<y>]]></entry></list>";
    EXPECT_EQ(loadedOf(text), undeferredOf(text));
    DeferredDocument document(text, kPath);
    const XmlNode& list = *document.firstNode();
    EXPECT_EQ(list.first_node()->first_node()->first_node()->type(), rapidxml::node_cdata);
    EXPECT_STREQ(list.last_node()->first_node()->value(), "<y>");
}

TEST(DeferredDocument, IsRefusedWhereADeferredPartIsNestedTooDeeply) {
    const std::string before = "<list>" + repeated(rows(manyRows()), 10);
    const auto nested = [&before](std::size_t levels) {
        return before + rows(repeated("<a>", levels) + repeated("</a>", levels)) + "</list>";
    };
    constexpr std::size_t kDeepest = kMaxLevels - 3;  // below list, entry and rows
    EXPECT_EQ(faultOf(nested(kDeepest)), "");
    const std::size_t column =
        (before + "<entry><rows a='1'>").size() + kDeepest * std::string("<a>").size() + 1;
    EXPECT_EQ(faultOf(nested(kDeepest + 1)),
              "1:" + std::to_string(column) + ": more than 256 levels of elements");
}

// TARVO_DEFERRED_TEXTS asks for more texts, TARVO_DEFERRED_SEED for others.
TEST(DeferredDocument, IsTheDocumentInAnyText) {
    // A text in which much is broken or unusual, around parts that are long enough to be deferred.
    const std::array<std::string, 23> pieces = {"<list>",
                                                "</list>",
                                                rows(manyRows()),
                                                rows(manyRows()),
                                                rows(manyRows()),
                                                rows(manyRows()),
                                                rows(manyRows()),
                                                rows("x" + manyRows()),
                                                rows(manyRows() + "<b/>text"),
                                                rows("<![CDATA[<x>]]>" + manyRows()),
                                                rows("<!-- </rows> -->" + manyRows()),
                                                rows("<b c='</rows>'/>" + manyRows()),
                                                rows("<b>" + manyRows()),
                                                rows(manyRows() + "</b>"),
                                                rows(manyRows() + "&#65;&lt;"),
                                                rows("<entry><rows/></entry>" + manyRows()),
                                                rows(""),
                                                rows("<list>" + rows(manyRows()) + "</list>"),
                                                "<rows><![CDATA[<x>1</x>]]></rows>",
                                                "text",
                                                "<",
                                                "<?p?>",
                                                std::string(1, '\0')};
    const unsigned long texts = test::fromEnvironment("TARVO_DEFERRED_TEXTS", 1000);
    std::mt19937 random(
        static_cast<unsigned>(test::fromEnvironment("TARVO_DEFERRED_SEED", 20260102)));
    unsigned long accepted = 0;
    for (unsigned long round = 0; round < texts; ++round) {
        std::string text = "<list>";
        for (std::size_t left = 4 + random() % 12; left > 0; --left) {
            // Most pieces are whole, so that most texts are accepted.
            text += pieces.at(random() % 3 == 0 ? random() % pieces.size() : 2 + random() % 9);
        }
        text += random() % 8 == 0 ? "" : "</list>";
        std::string fault;
        try {
            XmlDocument whole;
            parseCopy(whole, text);
        } catch (const ParseError& error) {
            fault = error.what();
        }
        ASSERT_EQ(faultOf(text), fault) << text;
        if (fault.empty()) {
            ++accepted;
            ASSERT_EQ(loadedOf(text), undeferredOf(text)) << text;
        }
    }
    EXPECT_GT(accepted, texts / 4);
}

}  // namespace document
