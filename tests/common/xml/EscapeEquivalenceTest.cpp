// The escapers examine sixteen bytes at a time, with separate paths for blocks, for the last
// blocks and for the tail. Random texts of every length up to a few blocks, dense in bytes to
// replace, must come out exactly as a byte-by-byte escaper writes them.
#include <corvane/soa/common/xml/XmlText.hpp>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace Xml = Corvane::Soa::Common::Xml;

namespace {

std::string referenceXml(const std::string& text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '\t':
                out += "&#9;";
                break;
            case '\n':
                out += "&#10;";
                break;
            case '\f':
                out += "&#12;";
                break;
            case '\r':
                out += "&#13;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '%':
                out += "&#x25;";
                break;
            case '&':
                out += "&amp;";
                break;
            case '\'':
                out += "&apos;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string referenceJson(const std::string& text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '/':
                out += "\\/";
                break;
            case '\b':
                out += "\\b";
                break;
            case '\f':
                out += "\\f";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                out += c;
        }
    }
    return out;
}

}  // namespace

TEST(EscapeEquivalence, BlockwiseEscapingMatchesByteByByte) {
    std::mt19937 random(20161205);
    const std::string alphabet = "ab <>&\"'%\t\n\r\f/\\\b";
    for (int round = 0; round < 20000; ++round) {
        const std::size_t length = random() % 80;
        const bool dense = round % 2 == 0;
        std::string text;
        for (std::size_t i = 0; i < length; ++i) {
            text += (dense || random() % 8 == 0) ? alphabet[random() % alphabet.size()]
                                                 : static_cast<char>(random() % 256);
        }
        ASSERT_EQ(Xml::toXmlString(text), referenceXml(text)) << "round " << round;
        ASSERT_EQ(Xml::toJsonString(text), referenceJson(text)) << "round " << round;
        ASSERT_EQ(Xml::decodeXml(Xml::toXmlString(text)), text);
        ASSERT_EQ(Xml::decodeJson(Xml::toJsonString(text)), text);
    }
}

TEST(EscapeEquivalence, OutputMuchLongerThanItsInputGrowsTheBuffer) {
    const std::string quotes(1000, '"');
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        expected += "&quot;";
    }
    EXPECT_EQ(Xml::toXmlString(quotes), expected);
    EXPECT_EQ(Xml::toJsonString(std::string(1000, '\\')), std::string(2000, '\\'));
}
