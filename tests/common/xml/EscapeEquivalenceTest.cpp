// The escapers examine sixteen bytes at a time, with separate paths for blocks, for the last
// blocks and for the tail. Random texts of every length up to a few blocks, dense in bytes to
// replace, must come out exactly as a byte-by-byte escaper writes them, whether escaped alone or
// written by the JSON writer.
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

#include "ReferenceEscapers.hpp"

namespace Xml = Corvane::Soa::Common::Xml;

using Corvane::Soa::Common::Xml::JsonStream;
using cvsoa::reference::jsonEscape;
using cvsoa::reference::xmlEscape;

TEST(EscapeEquivalence, BlockwiseEscapingMatchesByteByByte) {
    std::mt19937 random(20161205);
    const std::string alphabet = "ab <>&\"'%\t\n\r\f/\\\b";
    std::ostringstream written;
    JsonStream stream(&written);
    stream.writeEncodedValue("");  // from here on each value is preceded by a comma only
    for (int round = 0; round < 20000; ++round) {
        const std::size_t length = random() % 80;
        const bool dense = round % 2 == 0;
        std::string text;
        for (std::size_t i = 0; i < length; ++i) {
            text += (dense || random() % 8 == 0) ? alphabet[random() % alphabet.size()]
                                                 : static_cast<char>(random() % 256);
        }
        ASSERT_EQ(Xml::toXmlString(text), xmlEscape(text)) << "round " << round;
        ASSERT_EQ(Xml::toJsonString(text), jsonEscape(text)) << "round " << round;
        written.str("");
        stream.writeValue(text);
        ASSERT_EQ(written.str(), ",\"" + jsonEscape(text) + "\"") << "round " << round;
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
