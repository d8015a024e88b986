#include "document/nesting.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <functional>
#include <random>

#include "document/xml.h"

namespace document {

namespace {

std::string repeated(const std::string& text, std::size_t times) {
    std::string all;
    for (std::size_t time = 0; time < times; ++time) {
        all += text;
    }
    return all;
}

std::string nested(std::size_t levels) {
    return repeated("<a>", levels) + repeated("</a>", levels);
}

std::size_t levelsBelow(const XmlNode& node) {
    std::size_t deepest = 0;
    for (const XmlNode& child : childrenOf(node)) {
        if (child.type() == rapidxml::node_element) {
            deepest = std::max(deepest, 1 + levelsBelow(child));
        }
    }
    return deepest;
}

// How deep the XML library finds the elements of a text; nothing when it refuses the text.
std::optional<std::size_t> levelsOf(std::string text) {
    XmlDocument tree;
    try {
        tree.parse<0>(text.data());
    } catch (const rapidxml::parse_error&) {
        return std::nullopt;
    }
    return levelsBelow(tree);
}

// Runs it on a stack of 256 kB; the sanitizers' frames need more.
void onASmallStack(const std::function<void()>& work) {
#ifdef __SANITIZE_ADDRESS__
    constexpr std::size_t kStack = 4 << 20;
#else
    constexpr std::size_t kStack = 256 << 10;
#endif
    pthread_attr_t attributes{};
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
    pthread_t thread{};
    const auto run = [](void* context) -> void* {
        (*static_cast<const std::function<void()>*>(context))();
        return nullptr;
    };
    void* context = const_cast<std::function<void()>*>(&work);
    ASSERT_EQ(pthread_create(&thread, &attributes, run, context), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

}  // namespace

TEST(Nesting, IsCountedInElements) {
    EXPECT_EQ(firstElementBelow(nested(3), 3), std::nullopt);
    EXPECT_EQ(firstElementBelow(nested(4), 3), 9U);
    EXPECT_EQ(firstElementBelow("<a><b/><b/><b><c/></b></a>", 2), 14U);
    EXPECT_EQ(firstElementBelow("", 0), std::nullopt);
}

TEST(Nesting, OfWhatIsNotAnElementIsNone) {
    for (const char* text :
         {"<a><!-- <b><c> --></a>", "<a><![CDATA[<b><c>]]></a>", "<a><?p <b><c> ?></a>",
          "<?xml version='<b><c>'?><a/>", "<!DOCTYPE a [<!ELEMENT b><!ENTITY c '<d>'>]><a></a>",
          "<!DOCTYPE a><a/>", "<a b='<c><d>' e=\"'<f>\"/>", "<a b = '/>' ></a>", "<a>&lt;b></a>",
          "<a><!x <b></a>", "<a><!DOCTYPEx [<b>]></a>", "<a></a><a></a>", "\xEF\xBB\xBF<a/>",
          "<a<b></a>"}) {
        EXPECT_EQ(firstElementBelow(text, 1), std::nullopt) << text;
        EXPECT_NE(levelsOf(text), std::nullopt) << text;
    }
}

TEST(Nesting, IsFoundBehindWhatIsNotAnElement) {
    for (const char* text :
         {"<a><!-- > --><b/></a>", "<a><![CDATA[]]]]><b/></a>", "<a><?p > ?><b/></a>",
          "<!DOCTYPE a [ [ ] > ] ><a><b/></a>", "<a c='\"' d=\"'>\"><b/></a>", "<a><!-><b/></a>",
          "<a>text<b/></a>", "<a></x x><b/>", "<a><!DOCTYPEx [>]<b/></a>"}) {
        EXPECT_EQ(firstElementBelow(text, 1).has_value(), levelsOf(text).value_or(0) > 1) << text;
    }
}

TEST(Nesting, OfATextThatEndsTooSoonIsWhatStandsBeforeItsEnd) {
    for (const char* text :
         {"<a><!DOCTYPE", "<a><!DOCTYPE ", "<a><!DOCTYPE b [<c>", "<a><!DOCTYPE b [[<c>",
          "<a><!--<b>", "<a><![CDATA[<b>", "<a><?p <b>", "<a><b", "<a><b c", "<a><b c='"}) {
        EXPECT_EQ(firstElementBelow(text, 2), std::nullopt) << text;
        EXPECT_EQ(levelsOf(text), std::nullopt) << text;
    }
}

TEST(Nesting, IsWhatTheXmlLibraryFindsInAnyText) {
    constexpr std::array kPieces = {
        "<a>",    "<a>", "<a>",       "</a>",    "</a>", "</a >", "<b/>",
        "<b c='", "'",   "\"",        "<b c=\"", ">",    "/>",    "<!--",
        "-->",    "--",  "<![CDATA[", "]]>",     "<?",   "?>",    "<!DOCTYPE ",
        "[",      "]",   "<!",        "x",       " ",    "=",     "<?xml ",
        "<!-",    "\n",  "&lt;",      "&#65;",   "<",    "/",     "<c d = '1' e='2'>"};
    std::mt19937 random(20260101);  // NOLINT(cert-msc51-cpp): the same texts every time
    std::uniform_int_distribution<std::size_t> piece(0, kPieces.size() - 1);
    std::uniform_int_distribution<std::size_t> number(1, 24);
    std::size_t accepted = 0;
    std::size_t deep = 0;
    for (std::size_t round = 0; round < 200000; ++round) {
        std::string text;
        for (std::size_t left = number(random); left > 0; --left) {
            text += kPieces.at(piece(random));
        }
        // What is open is closed, so that more texts are accepted.
        text += repeated("</a>", round % 4);
        const auto levels = levelsOf(text);
        if (!levels) {
            continue;
        }
        ++accepted;
        for (const std::size_t limit : {1U, 2U, 3U}) {
            ASSERT_EQ(firstElementBelow(text, limit).has_value(), *levels > limit) << text;
            deep += *levels > limit ? 1U : 0U;
        }
    }
    EXPECT_GT(accepted, 2000U);
    EXPECT_GT(deep, 500U);
}

TEST(Nesting, OfMoreThan256LevelsIsMalformed) {
    onASmallStack([] {
        XmlDocument tree;
        std::string good = nested(256);
        EXPECT_NO_THROW(parse(tree, good));
        EXPECT_EQ(levelsBelow(tree), 256U);
        EXPECT_EQ(printed(tree, kNoIndenting).size(), good.size() - 3);  // the last is <a/>
        std::string bad = "\n" + nested(257);
        try {
            parse(tree, bad);
            FAIL() << "accepted";
        } catch (const ParseError& error) {
            EXPECT_STREQ(error.what(), "2:769: more than 256 levels of elements");
        }
    });
}

TEST(Nesting, OfAnyDepthNeedsNoStack) {
    onASmallStack([] {
        XmlDocument tree;
        for (const std::string& element : {std::string("<a>"), std::string("<a b='>'>x<!--<-->")}) {
            std::string text = repeated(element, 200000);
            EXPECT_THROW(parse(tree, text), ParseError);
            EXPECT_THROW(parseCopy(tree, text), ParseError);
        }
    });
}

}  // namespace document
