#include "common/XmlDocument.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace onvif_client {
namespace {

const std::string kReplaced = "\xEF\xBF\xBD";

TEST(XmlDocument, PathsLeadToTheFirstChildOfEachName) {
    CXmlDocument document(
        "<Get><a n='1'><b>first</b><b>second</b></a><a n='2'><c/></a><Get n='inner'/></Get>");
    // The element's name and its attribute n; nothing for none.
    const std::pair<const char*, const char*> cases[] = {
        {"Get", "Get"},     {"Get/a", "a1"},     {"a", "a1"},     {"a/b", "b"},
        {"Get/a/c", ""},    {"x", ""},           {"Get/x/b", ""}, {"get", ""},
        {"Get/Get", "Get"}, {"Get/Get/a", "a1"}, {"a/a/b", "b"},  {"", ""},
    };
    for (const auto& [path, found] : cases) {
        const XMLElement* element = document.Find(path);
        const char* n = AttributeOf(element, "n");
        EXPECT_EQ(std::string(NameOf(element)) + (n == nullptr ? "" : n), found) << path;
    }
    EXPECT_EQ(TextOf(document.Find("a/b")), "first");
    EXPECT_EQ(TextOf(NextSibling(document.Find("a/b"), "b")), "second");
}

TEST(XmlDocument, TextIsTheFirstChildOnly) {
    CXmlDocument document(
        "<r><t>x<e/></t><m><e/>x</m><c><![CDATA[a<b]]></c><k><!-- no -->x</k><n/></r>");
    const std::pair<const char*, const char*> cases[] = {{"t", "x"}, {"m", ""}, {"c", "a<b"},
                                                         {"k", ""},  {"n", ""}, {"missing", ""}};
    for (const auto& [path, text] : cases) {
        EXPECT_EQ(TextAt(document.Root(), path), text) << path;
    }
}

TEST(XmlDocument, SettingTextReplacesTheFirstChildWhateverItIs) {
    CXmlDocument document(
        "<r><empty/><text>old</text><cdata><![CDATA[old]]></cdata><e><x/></e></r>");
    for (const char* path : {"empty", "text", "cdata", "e"}) {
        EXPECT_TRUE(SetText(document.Find(path), "a&b")) << path;
    }
    EXPECT_FALSE(SetText(document.Find("missing"), "x"));
    EXPECT_FALSE(SetText(document.Find("text"), nullptr));
    const std::string& printed = document.Print();
    EXPECT_NE(printed.find("<cdata>a&amp;b</cdata>"), std::string::npos) << printed;
    EXPECT_STREQ(document.Find("e")->FirstChildElement()->Name(), "a&b");
}

TEST(XmlDocument, DeclarationIsAddedOnlyWhereThereIsNone) {
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    const std::pair<std::string, std::string> cases[] = {
        {"", declaration},
        {"<a/>", declaration},
        {"<?xml version=\"1.0\"?><a/>", "<?xml version=\"1.0\"?>"},
        {"<a><b></a>", declaration},  // a text that does not parse leaves nothing else
        {std::string("<a/>\0<b/>", 9), declaration},
    };
    for (const auto& [text, start] : cases) {
        CXmlDocument document(text);
        EXPECT_TRUE(document.Print().starts_with(start)) << text;
        EXPECT_EQ(document.Root() != nullptr, text.find("<a/>") != std::string::npos) << text;
        EXPECT_EQ(document.Find("b"), nullptr);
    }
}

TEST(XmlDocument, AmpersandsThatStartNoReferenceAreText) {
    const std::pair<std::string, std::string> cases[] = {
        {"x &amp; &copy; y", "x & &copy; y"},
        {"&copy;&lt;&copy;", "&copy;<&copy;"},
        {"a\r\n&copy;b", "a\n&copy;b"},
        {"&#65;&#x42;&;& &&amp", "AB&;& &&amp"},
        {"&lt;&&gt;&quot&AMP;&apos;", "<&>&quot&AMP;'"},
        {"&amp;copy; &am&amp;p;", "&copy; &am&p;"},
        {"&amp;&#xZZ;&#65", "&&#xZZ;&#65"},
        {"&amp;&#;&#x;z&#", "&&#;&#x;z&#"},
        {"&#x41x42;&#6&#65;", "&#x41x42;&#6A"},
        {"&#0;&#x110000;&#99999999999;z", kReplaced + kReplaced + kReplaced + "z"},
        {"&#xD83D;&#1;&#xFFFE;&#x1F600;", kReplaced + kReplaced + kReplaced + "\xF0\x9F\x98\x80"},
        {"&#x0000000E9;&#13;&#233;", "\xC3\xA9\r\xC3\xA9"},
    };
    for (const auto& [written, text] : cases) {
        std::string whole = "<r a=\"";
        whole.append(written).append("\" b='").append(written).append("\">'><t>");
        CXmlDocument document(whole.append(written).append("</t></r>"));
        ASSERT_NE(document.Root(), nullptr) << written;
        EXPECT_EQ(AttributeOf(document.Root(), "a"), text);
        EXPECT_EQ(AttributeOf(document.Root(), "b"), text + "\">");
        EXPECT_EQ(TextAt(document.Root(), "t"), text);
        // Printed and read again, for all but a carriage return.
        std::string printed = text;
        std::replace(printed.begin(), printed.end(), '\r', '\n');
        EXPECT_EQ(TextAt(CXmlDocument(document.Print()).Root(), "t"), printed);
    }
    const std::string verbatim =
        "<?x &copy; '?><!DOCTYPE a \"&b;\"><!-- &c; --><r><![CDATA[<&d;]]><!--&e;'--></r>";
    CXmlDocument document(verbatim + "<!-- &copy");
    EXPECT_EQ(document.Root(), nullptr);
    document.Load(verbatim);
    EXPECT_EQ(TextOf(document.Root()), "<&d;");
    EXPECT_EQ(document.Print().find("&amp;"), std::string::npos) << document.Print();
    for (const char* unreadable :
         {"<r &copy;='1'/>", "<r a=&copy;/>", "<r>&copy;", "<r a='&copy;"}) {
        EXPECT_FALSE(document.Load(unreadable)) << unreadable;
    }
}

TEST(XmlDocument, PrintsWhatStrictParsersTake) {
    const std::string text = "\t plain \x7F \xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80" +
                             kReplaced + "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
    for (const char* bad : {"\x01", "\x1F", "\x80", "\xC0\x80", "\xC1\xBF", "\xC2", "\xE0\x9F\xBF",
                            "\xED\xA0\x80", "\xEF\xBF\xBE", "\xEF\xBF\xBF", "\xEF\xBF",
                            "\xF0\x8F\xBF\xBF", "\xF0\x9F", "\xF4\x90\x80\x80", "\xF8", "\xFF"}) {
        // Where a block of plain characters ends must not matter.
        for (std::size_t before = 0; before < 40; ++before) {
            std::string given = bad;
            given.append(before, '.').append(text).append(bad);
            std::string wanted = kReplaced;
            wanted.append(before, '.').append(text).append(kReplaced);
            CXmlDocument document("<r/>");
            SetText(document.Root(), given);
            EXPECT_EQ(TextOf(CXmlDocument(document.Print()).Root()), wanted);
        }
    }
}

TEST(XmlDocument, ChainsAppendNewElementsAndDeletesTakeTheFirst) {
    CXmlDocument document("<r><a>1</a></r>");
    EXPECT_STREQ(Append(document.Root(), "a/b", 7)->Name(), "b");
    EXPECT_EQ(TextOf(NextSibling(document.Find("a"), "a")->FirstChildElement()), "7");
    EXPECT_EQ(Append(nullptr, "a", "x"), nullptr);
    EXPECT_EQ(Append(document.Root(), "", "x"), nullptr);
    document.Delete("a");
    document.Delete("missing");
    EXPECT_EQ(TextAt(document.Root(), "a/b"), "7");
}

}  // namespace
}  // namespace onvif_client
