#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/common/xml/XmlUtil.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::DateTime;
using Corvane::Soa::Common::Xml::BaseObject;
using Corvane::Soa::Common::Xml::JsonStream;
using Corvane::Soa::Common::Xml::lexical_cast;
using Corvane::Soa::Common::Xml::toJsonString;
using Corvane::Soa::Common::Xml::Utf8String;
using Corvane::Soa::Common::Xml::XmlUtil;

// What generated types share: a namespace of their own, and copies of their own type.
template <class Self>
class TestObject : public BaseObject {
public:
    explicit TestObject(const char* type) : BaseObject("urn:test", type) {}
    void getNamespaces(std::set<std::string>& namespaces) const override {
        namespaces.insert(getNamespace());
    }

protected:
    BaseObject* reallyClone() const override { return new Self(static_cast<const Self&>(*this)); }
};

// Written the way generated types write themselves: qualified name, attributes, close.
class Item : public TestObject<Item> {
public:
    explicit Item(std::string name) : TestObject("Item"), m_name(std::move(name)) {}
    void writeJSON(JsonStream* stream) const override {
        stream->writeObjectOpen(getQaulifiedName());
        stream->writeAttribute("name", m_name, true);
        stream->writeObjectClose();
    }
    std::string m_name;
};

// A map entry: key and value become one member of the enclosing object.
class Entry : public TestObject<Entry> {
public:
    Entry(std::string key, std::string value)
        : TestObject("Entry"), m_key(std::move(key)), m_value(std::move(value)) {}
    bool isJsonMapEntry() const override { return true; }
    void writeJSONKey(JsonStream* stream) const override { stream->writeValue(m_key); }
    void writeJSONValue(JsonStream* stream) const override { stream->writeValue(m_value); }
    void writeJSON(JsonStream* stream) const override {
        stream->writeObjectOpen();
        stream->writeAttribute("key", m_key, true);
        stream->writeAttribute("value", m_value, true);
        stream->writeObjectClose();
    }
    std::string m_key;
    std::string m_value;
};

class JsonStreamTest : public ::testing::Test {
protected:
    // The indent table is shared by the process; leave it as the next test expects it.
    void TearDown() override { JsonStream::setTabSize(0); }

    std::ostringstream out;
};

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

TEST_F(JsonStreamTest, FirstOpenHasNoLineFeedAndEveryLaterTokenStartsALine) {
    JsonStream stream(&out);
    EXPECT_TRUE(stream.isEmpty());
    // Only the stream's first object writes its qualified name.
    stream.writeObjectOpen("urn:a.A");
    EXPECT_FALSE(stream.isEmpty());
    stream.writeKey("a");
    stream.writeValue(1);
    stream.writeKey(7);
    stream.writeArrayOpen();
    stream.writeArrayClose();
    stream.writeKey("o");
    stream.writeObjectOpen("urn:b.B");
    stream.writeKey("b");  // no indent without a tab size
    stream.writeObjectClose();
    stream.writeObjectClose();
    EXPECT_EQ(out.str(),
              "{\n\".QName\":\"urn:a.A\",\n\"a\":\n1,\n\"7\":\n[\n],\n\"o\":\n{\n\"b\":\n}\n}");

    // Before anything is opened, tokens are separated by commas only.
    std::ostringstream loose;
    JsonStream values(&loose);
    values.writeValue(1);
    values.writeValue(true);
    values.writeCommaAndLineFeed();
    values.writeValue("x");
    EXPECT_TRUE(values.isEmpty());
    EXPECT_EQ(loose.str(), "1,true,,\"x\"");
}

TEST_F(JsonStreamTest, NestingBeyondTheTableKeepsTheDeepestIndent) {
    JsonStream::setTabSize(1);
    JsonStream stream(&out);
    constexpr int kDepth = 20;
    std::string expected;
    for (int k = 0; k < kDepth; ++k) {
        stream.writeArrayOpen();
        expected += (k == 0 ? "" : "\n") + std::string(std::min(k, 17), ' ') + "[";
    }
    stream.writeValue(0);
    expected += "\n" + std::string(17, ' ') + "0";
    for (int k = 0; k < kDepth; ++k) {
        stream.writeArrayClose();
        // The level stopped at 17, so the closes count down from there.
        expected += "\n" + std::string(std::max(16 - k, 0), ' ') + "]";
    }
    EXPECT_EQ(out.str(), expected);
}

TEST_F(JsonStreamTest, QualifiedNameOnlyWhenTheStreamStartsWithItsObject) {
    JsonStream stream(&out);
    stream.writeArrayOpen();
    stream.writeObjectOpen("urn:a.A");
    EXPECT_EQ(out.str(), "[\n{");
}

TEST_F(JsonStreamTest, KeyedMapOpensWithABraceAndClosesWithABracket) {
    JsonStream stream(&out);
    stream.writeObjectOpen();
    stream.writeMapOpen("m");
    stream.writeKey("a");
    stream.writeValue("b");
    stream.writeMapClose();
    stream.writeMapOpen();
    stream.writeMapClose();
    stream.writeObjectClose();
    EXPECT_EQ(out.str(), "{\n\"m\":\n{\n\"a\":\n\"b\"\n],\n[\n]\n}");

    // A keyed map opens nothing as far as the start of the stream is concerned.
    std::ostringstream fresh;
    JsonStream first(&fresh);
    first.writeMapOpen("m");
    first.writeKey("a");
    EXPECT_TRUE(first.isEmpty());
    EXPECT_EQ(fresh.str(), "\"m\":\n{\"a\":");
}

TEST_F(JsonStreamTest, ValuesAreEscapedUnlessAlreadyEncoded) {
    JsonStream stream(&out);
    const std::string raw = "q\"b\\s/\b\f\n\r\t\x01";
    stream.writeEncodedValue(raw);
    stream.writeValue(raw);
    stream.writeValue(raw.c_str());
    EXPECT_EQ(out.str(), quoted(raw) + ",\"q\\\"b\\\\s\\/\\b\\f\\n\\r\\t\x01\"" +
                             ",\"q\\\"b\\\\s\\/\\b\\f\\n\\r\\t\x01\"");

    out.str("");
    stream.writeAttribute("a/\"", raw, true);
    stream.writeEncodedAttribute("e", raw);
    stream.writeObject("o", raw, true);
    stream.writeObject("b", true, true);
    // Names and one-member objects are written as given; attribute values are escaped.
    EXPECT_EQ(out.str(), ",\"a/\"\":\"q\\\"b\\\\s\\/\\b\\f\\n\\r\\t\x01\",\"e\":" + quoted(raw) +
                             ",{\"o\":" + quoted(raw) + "},{\"b\":true}");
}

TEST_F(JsonStreamTest, EscapingMatchesToJsonStringForLongAndMixedTexts) {
    std::vector<std::string> texts = {"", "plain", std::string(100, 'a'), std::string(40, '"')};
    std::string mixed;
    for (int k = 0; k < 200; ++k) {
        mixed += static_cast<char>("ab/\\\"\n\xc3\xa9"[k % 8]);
    }
    texts.push_back(mixed);
    texts.push_back(std::string("nul\0inside", 10));
    // Every byte value inside, and at the edges of, sixteen-byte blocks.
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        texts.push_back(std::string(20, 'x') + c + std::string(17, c) + "y");
    }
    // Each text alone, and all of them through one stream, so that operations start in the
    // output's put area and some outgrow the room left there.
    texts.push_back(std::string(100000, '/'));
    std::string all;
    JsonStream shared(&out);
    for (const std::string& text : texts) {
        std::ostringstream one;
        JsonStream stream(&one);
        stream.writeValue(text);
        EXPECT_EQ(one.str(), quoted(toJsonString(text))) << text;
        shared.writeValue(text);
        all += (all.empty() ? "" : ",") + quoted(toJsonString(text));
    }
    EXPECT_EQ(out.str(), all);
}

TEST_F(JsonStreamTest, DoubleBytePageLeavesTheTrailByteAlone) {
    Corvane::Soa::Common::Xml::setDefaultCharacterEncoding("Shift_JIS");
    JsonStream stream(&out);
    // 0x81 leads a character whose second byte is '\\'; a lone lead byte ends the text.
    const std::string text = "\x81\\\\/\x81";
    stream.writeValue(text);
    EXPECT_EQ(out.str(), "\"\x81\\\\\\\\/\x81\"");
    EXPECT_EQ(out.str(), quoted(toJsonString(text)));
}

TEST_F(JsonStreamTest, TranscoderConvertsEscapedValuesButNotEncodedOnes) {
    Utf8String latin1("ISO-8859-1");
    JsonStream stream(&out, &latin1);
    stream.writeObjectOpen("caf\xe9");
    stream.writeValue(std::string("\xe9\n"));
    stream.writeAttribute("k", "\xe9", true);
    stream.writeEncodedValue("\xe9");
    stream.writeVector(std::vector<std::string>{"\xe9"}, "v");
    EXPECT_EQ(out.str(),
              "{\n\".QName\":\"caf\xc3\xa9\",\n\"\xc3\xa9\\n\",\n\"k\":\"\xc3\xa9\",\n\"\xe9\",\n"
              "\"v\":[\"\xc3\xa9\"]");
}

TEST_F(JsonStreamTest, NumbersBooleansAndDatesHaveTheirWireTexts) {
    JsonStream stream(&out);
    stream.writeValue(-42);
    stream.writeValue(0.1);
    stream.writeValue(0.1f);
    stream.writeValue(false);
    stream.writeValue(DateTime::getNullDate());
    stream.writeAttribute("i", std::numeric_limits<int>::min(), true);
    stream.writeAttribute("d", 1e300, true);
    stream.writeAttribute("f", 2.5f, true);
    stream.writeAttribute("b", true, true);
    stream.writeAttribute("t", DateTime::getNullDate(), true);
    EXPECT_EQ(out.str(),
              "-42,0.10000000000000001,0.10000000149011612,false,"
              "\"0001-01-01T00:00:00+00:00\",\"i\":-2147483648,\"d\":1.0000000000000001e+300,"
              "\"f\":2.5,\"b\":true,\"t\":\"0001-01-01T00:00:00+00:00\"");

    // The same texts as every other writer of numbers.
    for (const double value : {-0.0, 5e-324, 123456789.125, 1.0 / 3.0, -1e-7}) {
        std::ostringstream one;
        JsonStream single(&one);
        single.writeValue(value);
        EXPECT_EQ(one.str(), lexical_cast<std::string>(value));
    }
}

TEST_F(JsonStreamTest, AbsentAttributesAndEmptyCollectionsWriteNothingAndKeepTheCommaState) {
    JsonStream stream(&out);
    stream.writeObjectOpen();
    stream.writeAttribute("a", "x", true);
    const std::string before = out.str();

    const std::vector<BaseObject*> noObjects;
    const std::vector<std::string> noTexts;
    stream.writeAttribute("s", std::string("v"), false);
    stream.writeAttribute("c", "v", false);
    stream.writeAttribute("b", true, false);
    stream.writeAttribute("i", 1, false);
    stream.writeAttribute("f", 1.0f, false);
    stream.writeAttribute("d", 1.0, false);
    stream.writeAttribute("t", DateTime::getNullDate(), false);
    stream.writeObject("o", std::string("v"), false);
    stream.writeObject("o", "v", false);
    stream.writeObject("o", true, false);
    stream.writeVector(noObjects, "v");
    stream.writeVectorMap(noObjects, "v");
    stream.writeMap(noObjects, "v");
    stream.writeEncodedVector(noTexts, "v");
    stream.writeVector(noTexts, "v");
    EXPECT_EQ(out.str(), before);

    stream.writeKey("k");
    stream.writeVector(noObjects, "v");
    stream.writeAttribute("n", 1, false);
    stream.writeValue(2);
    stream.writeObjectClose();
    EXPECT_EQ(out.str(), "{\n\"a\":\"x\",\n\"k\":\n2\n}");
}

TEST_F(JsonStreamTest, WriteMapLetsEachEntryWriteItselfWhole) {
    Entry entry("k", "v");
    JsonStream stream(&out);
    stream.writeObjectOpen();
    stream.writeMap(std::vector<BaseObject*>{&entry, &entry}, "m");
    stream.writeObjectClose();
    EXPECT_EQ(out.str(),
              "{\n\"m\":\n{\n{\n\"key\":\"k\",\n\"value\":\"v\"\n},\n{\n\"key\":\"k\",\n"
              "\"value\":\"v\"\n}\n}\n}");
}

// Objects nested through writeValue and object vectors; string vectors on one line, escaped or
// not; map entries one per line without indent before the value, whether written as a map or
// handed over by an object vector whose first item is an entry.
TEST_F(JsonStreamTest, SmallDocumentByteForByte) {
    JsonStream::setTabSize(2);
    Item customer("Ann");
    Item x("x");
    Item y("y");
    Entry k1("k1", "v1");
    Entry k2("k/2", "v\"2");
    for (const bool asMap : {true, false}) {
        SCOPED_TRACE(asMap ? "writeVectorMap" : "writeVector");
        out.str("");
        JsonStream stream(&out);
        stream.writeObjectOpen("urn:test.Order");
        stream.writeAttribute("id", "A/1", true);
        stream.writeAttribute("count", 3, true);
        stream.writeAttribute("price", 2.5, true);
        stream.writeAttribute("paid", false, true);
        stream.writeAttribute("due", DateTime::getNullDate(), true);
        stream.writeAttribute("note", "", false);
        stream.writeKey("customer");
        stream.writeValue(customer);  // its qualified name is not written: not the first object
        stream.writeVector(std::vector<BaseObject*>{&x, &y}, "items");
        stream.writeEncodedVector({"a\"", "b"}, "raw");
        stream.writeVector(std::vector<std::string>{"a", "b\"c/"}, "tags");
        const std::vector<BaseObject*> tickets{&k1, &k2};
        asMap ? stream.writeVectorMap(tickets, "tickets") : stream.writeVector(tickets, "tickets");
        stream.writeAttribute("n", 1, true);
        stream.writeObjectClose();
        EXPECT_EQ(out.str(), R"({
  ".QName":"urn:test.Order",
  "id":"A\/1",
  "count":3,
  "price":2.5,
  "paid":false,
  "due":"0001-01-01T00:00:00+00:00",
  "customer":
  {
    "name":"Ann"
  },
  "items":
  [
    {
      "name":"x"
    },
    {
      "name":"y"
    }
  ],
  "raw":["a"","b"],
  "tags":["a","b\"c\/"],
  "tickets":
  {
    "k1":"v1",
    "k\/2":"v\"2"
  },
  "n":1
})");
    }
}

TEST_F(JsonStreamTest, TextWrittenBetweenOperationsStaysInOrder) {
    JsonStream stream(&out);
    stream.writeObjectOpen();
    out << "X";
    stream << "Y" << std::string("Z");
    stream.writeKey("k");
    stream.writeObjectClose();
    EXPECT_EQ(out.str(), "{XYZ\n\"k\":\n}");
}

// Accepts a fixed number of bytes, then refuses.
class ShortBuffer : public std::streambuf {
public:
    explicit ShortBuffer(std::size_t room) : m_room(room) {}
    std::string text;

protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof()) || text.size() >= m_room) {
            return traits_type::eof();
        }
        text.push_back(traits_type::to_char_type(c));
        return c;
    }

private:
    std::size_t m_room;
};

TEST_F(JsonStreamTest, OutputFailureIsLeftInTheStreamState) {
    ShortBuffer buffer(3);
    std::ostream target(&buffer);
    JsonStream stream(&target);
    stream.writeObjectOpen();
    EXPECT_TRUE(target.good());
    stream.writeKey("key");
    EXPECT_TRUE(target.bad());
    stream.writeObjectClose();  // nothing more is attempted
    EXPECT_EQ(buffer.text, "{\n\"");

    std::ostream detached(nullptr);
    JsonStream orphan(&detached);
    orphan.writeValue("x");
    EXPECT_TRUE(detached.bad());
}

TEST_F(JsonStreamTest, SerializeWritesJsonForEveryContentTypeButXml) {
    for (const char* type : {"JSON", "xml"}) {
        std::ostringstream text;
        XmlUtil::serialize(type, AutoPtr<BaseObject>(new Item("n")), &text);
        EXPECT_EQ(text.str(), "{\n\".QName\":\"urn:test.Item\",\n\"name\":\"n\"\n}") << type;
    }
}

}  // namespace
