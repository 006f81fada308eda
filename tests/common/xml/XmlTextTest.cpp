#include <corvane/soa/common/xml/XmlText.hpp>

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Corvane::Soa::Common::Xml;

std::string allBytes() {
    std::string bytes;
    for (int c = 0; c < 256; ++c) {
        bytes.push_back(static_cast<char>(c));
    }
    return bytes;
}

// --- XML escaping ------------------------------------------------------------------------------

TEST(XmlEscaping, EveryByteValue) {
    const std::string specials = "\t\n\f\r\"%&'<>";
    const char* const references[] = {"&#9;",   "&#10;", "&#12;",  "&#13;", "&quot;",
                                      "&#x25;", "&amp;", "&apos;", "&lt;",  "&gt;"};
    for (int c = 0; c < 256; ++c) {
        const std::string text(1, static_cast<char>(c));
        const std::size_t k = specials.find(text);
        EXPECT_EQ(toXmlString(text), k == std::string::npos ? text : references[k]) << c;
    }
    EXPECT_EQ(toXmlString("100%"), "100&#x25;");
    EXPECT_EQ(toXmlString("a<b>&c"), "a&lt;b&gt;&amp;c");
    EXPECT_EQ(toXmlString(std::string("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(toXmlString(""), "");
}

TEST(XmlUnescaping, EveryEntitySpelling) {
    const std::vector<std::pair<std::string, char>> table = {
        {"&amp;", '&'},   {"&lt;", '<'},    {"&gt;", '>'},   {"&#x25;", '%'}, {"&#37;", '%'},
        {"&quot;", '"'},  {"&apos;", '\''}, {"&#10;", '\n'}, {"&#xA;", '\n'}, {"&#xa;", '\n'},
        {"&#x0A;", '\n'}, {"&#x0a;", '\n'}, {"&#12;", '\f'}, {"&#xC;", '\f'}, {"&#xc;", '\f'},
        {"&#x0C;", '\f'}, {"&#x0c;", '\f'}, {"&#13;", '\r'}, {"&#xD;", '\r'}, {"&#xd;", '\r'},
        {"&#x0D;", '\r'}, {"&#x0d;", '\r'}, {"&#9;", '\t'},
    };
    for (const auto& [entity, character] : table) {
        EXPECT_EQ(decodeXml(entity), std::string(1, character)) << entity;
        EXPECT_EQ(decodeXml("x" + entity + "y"), "x" + std::string(1, character) + "y") << entity;
    }
}

TEST(XmlUnescaping, OnePassOnly) {
    EXPECT_EQ(decodeXml("&amp;lt;"), "&lt;");
    EXPECT_EQ(decodeXml("&amp;amp;"), "&amp;");
    EXPECT_EQ(decodeXml("&&amp;&"), "&&&");
}

TEST(XmlUnescaping, IncompleteOrUnknownReferencesStayAsTheyStand) {
    for (const std::string text : {"&amp", "&#xA", "&#10", "&#x0", "&lt", "&", "&#xA x", "&#10 ;",
                                   "&#x9;", "&#x41;", "&#65;", "&nbsp;", "&AMP;", "&#x25"}) {
        EXPECT_EQ(decodeXml(text), text) << text;
    }
    EXPECT_EQ(decodeXml("a&ltb&lt;"), "a&ltb<");
}

TEST(XmlUnescaping, RoundTripsEveryByte) {
    const std::string bytes = allBytes() + allBytes();
    EXPECT_EQ(decodeXml(toXmlString(bytes)), bytes);
}

// --- JSON escaping -----------------------------------------------------------------------------

TEST(JsonEscaping, EveryByteValue) {
    const std::string escaped = "\"\\/\b\f\n\r\t";
    const char* const escapes[] = {"\\\"", "\\\\", "\\/", "\\b", "\\f", "\\n", "\\r", "\\t"};
    for (int c = 0; c < 256; ++c) {  // control bytes other than the eight stay as they are
        const std::string text(1, static_cast<char>(c));
        const std::size_t k = escaped.find(text);
        EXPECT_EQ(toJsonString(text), k == std::string::npos ? text : escapes[k]) << c;
    }
    EXPECT_EQ(toJsonString("a/b \"c\""), "a\\/b \\\"c\\\"");
    EXPECT_EQ(toJsonString(""), "");
    // No page is set: a byte that would lead a double-byte character elsewhere is a byte.
    EXPECT_EQ(toJsonString("\x83\\"), "\x83\\\\");
}

TEST(JsonEscaping, ShiftJisCopiesTheTrailByteUnexamined) {
    setDefaultCharacterEncoding("Shift_JIS");
    EXPECT_EQ(toJsonString("\x83\x5C"), "\x83\x5C");        // the backslash is a trail byte
    EXPECT_EQ(toJsonString("\x83\x5C\\"), "\x83\x5C\\\\");  // the next byte is escaped again
    EXPECT_EQ(toJsonString("\x95\x2F\xE0\"/"), "\x95\x2F\xE0\"\\/");
    EXPECT_EQ(toJsonString("\xA0\\"), "\xA0\\\\");  // 0xA0 leads nothing here
    EXPECT_EQ(toJsonString("a\x83"), "a\x83");      // a lead byte at the end
}

TEST(JsonEscaping, Big5CopiesTheTrailByteUnexamined) {
    setDefaultCharacterEncoding("Big5");
    EXPECT_EQ(toJsonString("\xA5\x5C\""), "\xA5\x5C\\\"");
    EXPECT_EQ(toJsonString("\x80\\"), "\x80\\\\");
}

TEST(JsonUnescaping, TheEightEscapes) {
    EXPECT_EQ(decodeJson("\\\"\\\\\\/\\b\\f\\n\\r\\t"), "\"\\/\b\f\n\r\t");
    EXPECT_EQ(decodeJson("\\\\n"), "\\n");  // one pass
    EXPECT_EQ(decodeJson("plain"), "plain");
}

TEST(JsonUnescaping, OtherBackslashesAreKept) {
    EXPECT_EQ(decodeJson("\\u0041"), "\\u0041");
    EXPECT_EQ(decodeJson("\\x\\a"), "\\x\\a");
    EXPECT_EQ(decodeJson("end\\"), "end\\");
    EXPECT_EQ(decodeJson("\\"), "\\");
    EXPECT_EQ(decodeJson("\\n\\"), "\n\\");
}

TEST(JsonUnescaping, RoundTripsEveryByte) {
    const std::string bytes = allBytes() + allBytes();
    EXPECT_EQ(decodeJson(toJsonString(bytes)), bytes);
}

// --- lead bytes of double-byte pages -----------------------------------------------------------

enum class Family { Japanese, Chinese, None };

bool expectedLead(Family family, int c) {
    switch (family) {
        case Family::Japanese:
            return (c >= 0x80 && c <= 0x9F) || (c >= 0xE0 && c <= 0xEF);
        case Family::Chinese:
            return c >= 0x81 && c <= 0xFE;
        case Family::None:
            break;
    }
    return false;
}

struct PageCase {
    const char* page;
    Family family;
};

class LeadBytes : public ::testing::TestWithParam<PageCase> {};

TEST_P(LeadBytes, FollowTheFamilyOfTheDefaultPage) {
    const auto [page, family] = GetParam();
    setDefaultCharacterEncoding(page);
    EXPECT_EQ(getDefaultCharacterEncoding(), page);
    for (int c = 0; c < 256; ++c) {
        EXPECT_EQ(isFirstOfMultibyte(static_cast<char>(c)), expectedLead(family, c)) << c;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Pages, LeadBytes,
    ::testing::Values(PageCase{"Shift_JIS", Family::Japanese},
                      PageCase{"ibm-943_P15A-2003", Family::Japanese},
                      PageCase{"ISO_2022,locale=ja,version=1", Family::Japanese},
                      PageCase{"Big5", Family::Chinese},
                      PageCase{"ibm-950_P110-1999", Family::Chinese},
                      PageCase{"shift_jis", Family::None},  // case counts
                      PageCase{"UTF-8", Family::None}, PageCase{"windows-1252", Family::None}),
    [](const ::testing::TestParamInfo<PageCase>& info) {
        std::string name = info.param.page;
        for (char& c : name) {
            c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
        }
        return name;
    });

TEST(LeadBytesUnset, NoPageMeansNoLeadBytes) {
    EXPECT_EQ(getDefaultCharacterEncoding(), "");
    for (int c = 0; c < 256; ++c) {
        EXPECT_FALSE(isFirstOfMultibyte(static_cast<char>(c))) << c;
    }
}

// --- searches over raw XML text ----------------------------------------------------------------

TEST(RootNamespace, PrefixedRootTakesTheUriOfItsPrefix) {
    EXPECT_EQ(
        getRootNamespace("<ns1:Root xmlns:ns0=\"urn:a\" xmlns:ns1=\"urn:b\"><ns0:c/></ns1:Root>"),
        "urn:b");
    EXPECT_EQ(getRootNamespace("<ns1:R xmlns:ns10=\"urn:wrong\" xmlns:ns1='urn:right'/>"),
              "urn:right");
}

TEST(RootNamespace, UnprefixedRootTakesTheDefaultNamespace) {
    EXPECT_EQ(getRootNamespace("<Root xmlns:x=\"urn:x\" xmlns=\"urn:d\"/>"), "urn:d");
    EXPECT_EQ(getRootNamespace("<Root\n  xmlns = \"urn:spaced\">"), "urn:spaced");
}

TEST(RootNamespace, DeclarationAndCommentsBeforeTheRootAreSkipped) {
    const std::string xml =
        "<?xml version=\"1.0\"?>\n<!-- <ns9:Fake xmlns:ns9=\"urn:fake\"> -->\n"
        "<ns0:Root xmlns:ns0=\"urn:real\"><ns9:Fake xmlns:ns9=\"urn:fake\"/></ns0:Root>";
    EXPECT_EQ(getRootNamespace(xml), "urn:real");
}

TEST(RootNamespace, NoneGivesTheEmptyString) {
    EXPECT_EQ(getRootNamespace(""), "");
    EXPECT_EQ(getRootNamespace("no markup"), "");
    EXPECT_EQ(getRootNamespace("<Root a=\"1\"><c xmlns=\"urn:child\"/></Root>"), "");
    EXPECT_EQ(getRootNamespace("<p:Root xmlns:q=\"urn:q\"/>"), "");
    EXPECT_EQ(getRootNamespace("<Root xmlns:p=\"urn:p\"/>"), "");
    EXPECT_EQ(getRootNamespace("<?xml version=\"1.0\"?><!-- only a comment -->"), "");
}

TEST(FindElement, StartAndEndTagsByLocalName) {
    const std::string xml =
        "<?xml version=\"1.0\"?><ns0:Envelope xmlns:ns0=\"urn:e\">"
        "<ns0:bodystring>t</ns0:bodystring><ns0:body id=\"1\"><Login/></ns0:body></ns0:Envelope>";
    EXPECT_EQ(findElement(xml, "Envelope", false), xml.find("<ns0:Envelope"));
    EXPECT_EQ(findElement(xml, "body", false), xml.find("<ns0:body "));
    EXPECT_EQ(findElement(xml, "bodystring", false), xml.find("<ns0:bodystring>"));
    EXPECT_EQ(findElement(xml, "Login", false), xml.find("<Login/>"));
    EXPECT_EQ(findElement(xml, "body", true), xml.find("</ns0:body>"));
    EXPECT_EQ(findElement(xml, "Envelope", true), xml.find("</ns0:Envelope>"));
}

TEST(FindElement, NotFound) {
    const std::string xml = "<?xml version=\"1.0\"?><a:bodystring><Login/></a:bodystring>";
    EXPECT_EQ(findElement(xml, "body", false), std::string::npos);  // only a longer name
    EXPECT_EQ(findElement(xml, "body", true), std::string::npos);
    EXPECT_EQ(findElement(xml, "Log", false), std::string::npos);
    EXPECT_EQ(findElement(xml, "Login", true), std::string::npos);  // empty-element tag
    EXPECT_EQ(findElement(xml, "xml", false), std::string::npos);
    EXPECT_EQ(findElement("", "a", false), std::string::npos);
    EXPECT_EQ(findElement("<a", "a", false), std::string::npos);
}

}  // namespace
