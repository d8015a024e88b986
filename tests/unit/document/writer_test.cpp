#include "document/writer.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace document {

namespace {

std::string joined(const TextWriter& writer) {
    std::string text;
    for (const std::string& block : writer.blocks()) {
        text += block;
    }
    return text;
}

// Writes the same elements every time for the same number; every element has a few children or a
// text.
void writeAnyTree(Writer& out, unsigned number) {
    constexpr std::array kNames = {"a", "list", "outputSid"};
    constexpr std::array<const char*, 8> kTexts = {
        nullptr, "", " ", "7", "<&>\"'", "a & b", "caf\xC3\xA9\n\t", "]]>"};
    std::mt19937 random(number);  // NOLINT(cert-msc51-cpp): the same trees every time
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    out.open("root");
    std::size_t open = 1;
    for (std::size_t left = below(60); left > 0; --left) {
        const char* name = kNames.at(below(kNames.size()));
        if (open > 1 && below(4) == 0) {
            out.close();
            --open;
        } else if (below(3) == 0) {
            out.open(name);
            ++open;
        } else {
            out.leaf(name, kTexts.at(below(kTexts.size())));
        }
    }
    for (; open > 0; --open) {
        out.close();
    }
}

}  // namespace

TEST(TextWriter, IndentsElementsWithinElements) {
    TextWriter writer("<?xml?>\n");
    writer.open("a");
    writer.leaf("b", "1");
    writer.open("c");
    writer.leaf("d", nullptr);
    writer.leaf("e", "");
    writer.close();
    writer.open("f");
    writer.close();
    writer.close();
    EXPECT_EQ(joined(writer),
              "<?xml?>\n<a>\n\t<b>1</b>\n\t<c>\n\t\t<d/>\n\t\t<e/>\n\t</c>\n\t<f/>\n</a>\n");
}

TEST(TextWriter, WritesReferencesForWhatXmlReserves) {
    TextWriter writer("");
    writer.leaf("a", "&&amp; <b c=\"'\"> ");
    EXPECT_EQ(joined(writer), "<a>&amp;&amp;amp; &lt;b c=&quot;&apos;&quot;&gt; </a>\n");
}

TEST(TextWriter, WritesWhatATreeIsPrintedAs) {
    for (unsigned number = 0; number < 2000; ++number) {
        TextWriter text("");
        writeAnyTree(text, number);
        XmlDocument document;
        TreeWriter tree(document, document);
        writeAnyTree(tree, number);
        ASSERT_EQ(joined(text), printed(*document.first_node())) << number;
    }
}

TEST(TextWriter, KeepsALongDocumentInBlocks) {
    TextWriter writer("");
    std::string expected = "<a>\n";
    writer.open("a");
    for (std::size_t size = 0; size < 1200; ++size) {
        const std::string text(size, 'x');
        writer.leaf("b", text.c_str());
        expected += size == 0 ? "\t<b/>\n" : "\t<b>" + text + "</b>\n";
    }
    const std::string huge(200000, 'y');
    writer.leaf("b", huge.c_str());
    writer.close();
    EXPECT_EQ(joined(writer), expected + "\t<b>" + huge + "</b>\n</a>\n");
    EXPECT_GT(writer.blocks().size(), 10U);
}

TEST(TreeWriter, AppendsToANode) {
    XmlDocument document;
    parseCopy(document, "<a><b/></a>");
    TreeWriter writer(document, *document.first_node());
    writer.open("c");
    std::string text = "1";
    writer.leaf("d", text.c_str());
    text = "2";  // is copied
    writer.close();
    writer.leaf("e", nullptr);
    EXPECT_EQ(printed(document, kNoIndenting), "<a><b/><c><d>1</d></c><e/></a>");
}

}  // namespace document
