// The wire rules of each field kind, once each, through a generated type of the tests' own
// schema: the exact bytes written in both forms, and reading them back.
#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/schemas/Test/_2026_01/Fieldkinds.hpp>

#include "WireForms.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Corvane::Schemas::Test::_2026_01::Fieldkinds::Holder;
using Corvane::Schemas::Test::_2026_01::Fieldkinds::Scalars;
using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Xml::BaseObject;

using WireForms::fromJson;
using WireForms::fromXml;
using WireForms::jsonOf;
using WireForms::xmlOf;

struct KindCase {
    const char* kind;
    std::function<void(Holder&)> set;
    const char* xml;   // a piece of the holder's XML, exact
    const char* json;  // a piece of its JSON, exact
};

// Each kind once: set one field of an otherwise default holder, then find its exact wire text.
const std::vector<KindCase>& kindCases() {
    static const std::vector<KindCase> cases = {
        {"text attribute, escaped; scalars; optional attribute written when set",
         [](Holder& h) {
             Scalars& s = *h.getNested();
             s.setText("a<\"&");
             s.setFlag(true);
             s.setCount(-7);
             s.setRatio(0.1F);
             s.setAmount(2.5);
             s.setNote("n");
         },
         "\n<ns1:nested text=\"a&lt;&quot;&amp;\" flag=\"1\" count=\"-7\" "
         "ratio=\"0.10000000149011612\" amount=\"2.5\" note=\"n\"/>",
         "\"nested\":\n{\n\"text\":\"a<\\\"&\",\n\"flag\":true,\n\"count\":-7,\n"
         "\"ratio\":0.10000000149011612,\n\"amount\":2.5,\n\"note\":\"n\"\n}"},
        {"optional attribute left out when not set; no element field: empty element",
         [](Holder&) {},
         "\n<ns1:nested text=\"\" flag=\"0\" count=\"0\" ratio=\"0\" amount=\"0\"/>",
         "\"nested\":\n{\n\"text\":\"\",\n\"flag\":false,\n\"count\":0,\n\"ratio\":0,\n"
         "\"amount\":0\n}"},
        {"reference: uid always, start tag closed as non-empty",
         [](Holder& h) { h.getRef()->setUid("u1"); }, "\n<ns1:ref uid=\"u1\"></ns1:ref>",
         "\"ref\":\n{\n\"uid\":\"u1\"\n}"},
        {"list of structures: a run of siblings",
         [](Holder& h) {
             h.addItems(AutoPtr<Scalars>(new Scalars));
             h.addItems(AutoPtr<Scalars>(new Scalars));
             h.getItems()[1]->setCount(2);
         },
         "\n<ns1:items text=\"\" flag=\"0\" count=\"0\" ratio=\"0\" amount=\"0\"/>\n<ns1:items "
         "text=\"\" flag=\"0\" count=\"2\" ratio=\"0\" amount=\"0\"/>",
         "\"items\":\n[\n{\n\"text\":\"\",\n\"flag\":false,\n\"count\":0,\n\"ratio\":0,\n"
         "\"amount\":0\n},\n{\n\"text\":\"\",\n\"flag\":false,\n\"count\":2,"},
        {"list of texts: hand-built elements, escaped",
         [](Holder& h) {
             h.addNames("x&");
             h.addNames("y");
         },
         "<ns1:names>x&amp;</ns1:names><ns1:names>y</ns1:names>", "\"names\":[\"x&\",\"y\"],"},
        {"text element: CDATA byte for byte", [](Holder& h) { h.setRaw("<r>&amp;"); },
         "\n<ns1:raw><![CDATA[<r>&amp;]]></ns1:raw>", "\"raw\":\"<r>&amp;\""},
        {"optional structure: in XML only once set", [](Holder& h) { h.getMaybe()->setCount(5); },
         "<![CDATA[]]></ns1:raw>\n<ns0:ServiceData>",
         "\"maybe\":\n{\n\"text\":\"\",\n\"flag\":false,\n\"count\":5,"},
        {"service data: element ServiceData last, with the Base prefix",
         [](Holder& h) { h.setIsMaybeSet(true); },
         "\n<ns1:maybe text=\"\" flag=\"0\" count=\"0\" ratio=\"0\" amount=\"0\"/>\n"
         "<ns0:ServiceData></ns0:ServiceData></ns1:Holder>",
         "\"ServiceData\":\n{\n}\n}"},
    };
    return cases;
}

TEST(ObjectRuntime, EachKindHasItsWireText) {
    for (const KindCase& c : kindCases()) {
        SCOPED_TRACE(c.kind);
        Holder holder;
        c.set(holder);
        const std::string xml = xmlOf(holder);
        const std::string json = jsonOf(holder);
        EXPECT_NE(xml.find(c.xml), std::string::npos) << xml;
        EXPECT_NE(json.find(c.json), std::string::npos) << json;
        // Reading either form back and writing it again gives the same bytes.
        EXPECT_EQ(xmlOf(*fromXml<Holder>(xml)), xml);
        EXPECT_EQ(jsonOf(*fromJson<Holder>(json)), json);
    }
}

TEST(ObjectRuntime, DateTimeAndOptionalAttributesRoundTrip) {
    Scalars scalars;
    scalars.setWhen(Corvane::Soa::Common::DateTime(2014, 3, 22, 0, 19, 59));
    const AutoPtr<Scalars> back = fromXml<Scalars>(xmlOf(scalars));
    EXPECT_TRUE(back->getIsWhenSet());
    EXPECT_FALSE(back->getIsNoteSet());
    EXPECT_EQ(xmlOf(*back), xmlOf(scalars));
    const AutoPtr<Scalars> fromText = fromJson<Scalars>(jsonOf(scalars));
    EXPECT_TRUE(fromText->getIsWhenSet());
    EXPECT_EQ(jsonOf(*fromText), jsonOf(scalars));
}

TEST(ObjectRuntime, ReadingMatchesNamesExactlyAndIgnoresTheUnknown) {
    const AutoPtr<Holder> holder = fromXml<Holder>(
        "<Holder odd='1'><ref uid='r'/><refs uid='no'/><Items count='9'/><items count='3' "
        "extra='x'/><names>n</names><unknown><items count='8'/></unknown></Holder>");
    EXPECT_EQ(holder->getRef()->getUid(), "r");
    ASSERT_EQ(holder->getItems().size(), 1U);
    EXPECT_EQ(holder->getItems()[0]->getCount(), 3);
    EXPECT_EQ(holder->getNames(), std::vector<std::string>{"n"});
    EXPECT_FALSE(holder->getIsMaybeSet());
}

TEST(ObjectRuntime, JsonReferenceIsABareUidOrAnObjectAndListsAreOptional) {
    const std::string scalars = R"({"text":"","flag":false,"count":0,"ratio":0,"amount":0})";
    const std::string head = R"({"nested":)" + scalars + R"(,"raw":"","ServiceData":{},"ref":)";
    AutoPtr<Holder> holder = fromJson<Holder>(head + R"("u7"})");
    EXPECT_EQ(holder->getRef()->getUid(), "u7");
    EXPECT_TRUE(holder->getItems().empty());
    holder = fromJson<Holder>(head + R"({"uid":"u8","type":"Item"},"names":["a"]})");
    EXPECT_EQ(holder->getRef()->getUid(), "u8");
    EXPECT_EQ(holder->getRef()->getType(), "Item");
    EXPECT_EQ(holder->getNames(), std::vector<std::string>{"a"});
}

// Members that are missing or of the wrong kind fail in the JSON layer's own words, whichever
// way the reader found them.
TEST(ObjectRuntime, JsonMembersMissingOrOfTheWrongKindFailInTheTreesWords) {
    const std::string rest = R"(,"raw":"","ServiceData":{},"ref":)";
    const std::string scalars = R"({"text":"","flag":false,"count":0,"ratio":0,"amount":0})";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"({"nested":{"flag":false,"count":0,"ratio":0,"amount":0})" + rest + R"("u"})",
         "text is not a valid key in this JSONObject"},
        {R"({"nested":{"text":1,"flag":false,"count":0,"ratio":0,"amount":0})" + rest + R"("u"})",
         "text is not a string value."},
        {R"({"nested":[])" + rest + R"("u"})", "nested is not a JSONObject value."},
        {R"({"nested":)" + scalars + rest + R"("u","items":{}})",
         "items is not a JSONArray value."},
        {R"({"nested":)" + scalars + rest + R"(7})", "ref is not a JSONObject value."},
    };
    for (const auto& [json, message] : cases) {
        SCOPED_TRACE(json);
        try {
            fromJson<Holder>(json);
            ADD_FAILURE() << "read";
        } catch (const std::exception& error) {
            EXPECT_EQ(error.what(), message);
        }
    }
}

TEST(ObjectRuntime, CopiesShareElementsAndIdentityIsStatic) {
    Holder holder;
    holder.addItems(AutoPtr<Scalars>(new Scalars));
    const AutoPtr<BaseObject> copy(holder.clone());
    const auto& items = copy.dynamicCast<Holder>()->getItems();
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].get(), holder.getItems()[0].get());
    EXPECT_EQ(copy->askRefCount(), 1);
    EXPECT_EQ(&copy->getNamespace(), &holder.getNamespace());
    EXPECT_EQ(holder.getQaulifiedName(),
              "http://corvane.com/Schemas/Test/2026-01/FieldKinds.Holder");
}

}  // namespace
