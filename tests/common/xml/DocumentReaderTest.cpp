// The direct reader against the tree path: each document, read both ways into a new object and
// into the caller's, gives the same object or the same exception, and the case's own point.
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/xml/DocumentReader.hpp>
#include <corvane/soa/schemas/Core/_2006_03/Filemanagement.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include <corvane/soa/schemas/Test/_2026_01/Fieldkinds.hpp>

#include "ReadOutcome.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Corvane::Schemas::Test::_2026_01::Fieldkinds::Holder;
using Corvane::Soa::Common::Xml::DocumentReader;
using Path = DocumentReader::Path;

constexpr char kNs[] = "http://corvane.com/Schemas/Test/2026-01/FieldKinds";
constexpr char kTickets[] = "http://corvane.com/Schemas/Core/2006-03/FileManagement";

struct Case {
    const char* what;
    std::string text;
    // What the outcome shows: a piece of the object written, or of the exception's message.
    const char* shows;
    // Whether reading into the caller's object gives the tree path's object too: not for a
    // document that the direct path hands to the tree path after binding part of it.
    bool intoCaller = true;
};

std::string holderJson(const std::string& members) {
    return std::string("{\".QName\":\"") + kNs + ".Holder\"," + members + "}";
}

constexpr char kNestedText[] =
    R"("nested":{"text":"t","flag":true,"count":3,"ratio":0.5,"amount":2.25})";
constexpr char kRestText[] = R"("ref":"u1","raw":"r","ServiceData":{})";

std::string holderXml(const std::string& body) {
    return std::string("<Holder xmlns=\"") + kNs + "\" xmlns:h=\"" + kNs + "\">" + body +
           "</Holder>";
}

std::string deepArrays(int depth) {
    return std::string(static_cast<std::size_t>(depth), '[') +
           std::string(static_cast<std::size_t>(depth), ']');
}

std::string deepXml(int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) {
        text += "<x>";
    }
    for (int i = 0; i < depth; ++i) {
        text += "</x>";
    }
    return text;
}

const std::vector<Case>& cases() {
    const std::string nested = kNestedText;
    const std::string rest = kRestText;
    static const std::vector<Case> all = {
        // JSON
        {"bare uid reference", holderJson(nested + "," + rest), "uid=\"u1\""},
        {"reference as object",
         holderJson(nested + R"(,"ref":{"uid":"u2","className":"C"},"raw":"r","ServiceData":{})"),
         "className=\"C\""},
        {"members in any order, unknown ones skipped",
         holderJson(R"("zz":{"a":[1,{"b":null}]},"raw":"r","ServiceData":{"x":[]},"ref":"u",)" +
                    nested),
         "raw"},
        {"date-shaped text read as a date",
         holderJson(R"("nested":{"text":"2016-12-05T14:03:09+01:00","flag":false,"count":1,)"
                    R"("ratio":1,"amount":2,"when":"2016-12-05T14:03:09+01:00"},)" +
                    rest),
         "2016-12-05T"},
        {"escapes undone, \\u kept",
         holderJson(nested + R"(,"ref":"a\"b\/c\u0041","raw":"x\ty",)"
                             R"("ServiceData":{})"),
         "u0041"},
        {"lists and text lists",
         holderJson(nested + "," + rest +
                    R"(,"items":[{"text":"i","flag":true,"count":1,"ratio":1,"amount":1}],)"
                    R"("names":["a","2016-12-05T14:03:09+01:00"],"maybe":{"text":"m","flag":true,)"
                    R"("count":1,"ratio":1,"amount":1}})"),
         "<ns1:names>a</ns1:names>"},
        {"repeated members: the last counts",
         holderJson(nested + "," + rest + R"(,"items":[{}],"items":[],"ref":"u9","nested":)" +
                    R"({"text":"again","flag":true,"count":1,"ratio":1,"amount":1})"),
         "again", false},
        {"map keeps its keys only, sorted, once",
         std::string("{\".QName\":\"") + kTickets +
             R"(.FileTicketsResponse","tickets":{"k2":"v","k1":[1],"k2":{}},"ServiceData":{}})",
         "uid=\"k1\""},
        {"the last .QName names the type",
         std::string("{\".QName\":\"") + kNs + ".Scalars\"," + nested + "," + rest +
             ",\".QName\":\"" + kNs + ".Holder\"}",
         "<ns1:Holder"},
        {"missing member", holderJson(nested + R"(,"ref":"u1","ServiceData":{})"),
         "raw is not a valid key in this JSONObject"},
        {"mistyped member",
         holderJson(R"("nested":{"text":"t","flag":true,"count":"3","ratio":0.5,"amount":1},)" +
                    rest),
         "count is not an integer value."},
        {"null member",
         holderJson(R"("nested":{"text":"t","flag":true,"count":3,"ratio":0.5,"amount":null},)" +
                    rest),
         "This elment is NULL."},
        {"list element not an object", holderJson(nested + "," + rest + R"(,"items":[1])"),
         "throws"},
        {"the text's fault before the binding's",
         holderJson(nested + R"(,"ref":"u1","ServiceData":{},"zz":[1 2])"), "Expecting a ']'"},
        {"nested too deeply", holderJson(nested + "," + rest + ",\"deep\":" + deepArrays(1100)),
         "The JSON document is nested too deeply."},
        {"malformed date", holderJson(nested + R"(,"ref":"2016-13-45T99:99:99+01:00","raw":"r"})"),
         "throws"},
        {"root not an object", "[{}]", "must be a JSONObject"},
        // XML
        {"children matched by local name, unknown ones skipped",
         holderXml(R"(<h:nested text="n" flag="true" count="2" ratio="1.5" amount="3" junk="j"/>)"
                   R"(<nestedX text="no"/><other><nested text="no"/></other><h:names>a</h:names>)"
                   R"(<names>b<z/>c</names><ServiceData/>)"),
         "text=\"n\""},
        {"absent attributes read as empty", holderXml("<nested/><ref/>"), "text=\"\""},
        {"document type declaration",
         "<!DOCTYPE Holder [<!NOTATION n SYSTEM \"x\">]>" + holderXml(""), "Document Type"},
        {"nested too deeply (XML)", holderXml(deepXml(5000)), "throws"},
        {"illegal character", holderXml(std::string("<nested text=\"a\x01\"/>")), "throws"},
    };
    return all;
}

TEST(DocumentReader, ReadsEveryQuirkAsTheTreePathDoes) {
    for (const Case& c : cases()) {
        SCOPED_TRACE(c.what);
        const std::string tree = ReadOutcome::ofNew(c.text, Path::Tree);
        EXPECT_EQ(ReadOutcome::ofNew(c.text, Path::Direct), tree);
        EXPECT_THAT(tree, testing::HasSubstr(c.shows));
        auto make = [] { return new Holder; };
        EXPECT_EQ(!c.intoCaller, ReadOutcome::ofInto(c.text, make, Path::Direct) !=
                                     ReadOutcome::ofInto(c.text, make, Path::Tree));
    }
}

// A user's subclass reads itself: its part of the document reaches its own parseJSON.
template <class Base>
class Counting : public Base {
public:
    void parseJSON(
        Corvane::Soa::Common::AutoPtr<Corvane::Soa::Internal::Json::JSONObject> json) override {
        ++reads;
        Base::parseJSON(json);
    }
    int reads = 0;
};

TEST(DocumentReader, HandsASelfReadingObjectItsOwnTree) {
    using Corvane::Schemas::Test::_2026_01::Fieldkinds::Scalars;
    const std::string text = holderJson(std::string(kNestedText) + "," + kRestText +
                                        R"(,"maybe":{"text":"m","flag":true,"count":1,)"
                                        R"("ratio":1,"amount":1})");
    Corvane::Soa::Common::AutoPtr<Counting<Holder>> root(new Counting<Holder>);
    DocumentReader::read(text, *root);
    EXPECT_EQ(root->reads, 1);
    EXPECT_EQ(root->getMaybe()->getText(), "m");

    Corvane::Soa::Common::AutoPtr<Holder> outer(new Holder);
    Corvane::Soa::Common::AutoPtr<Counting<Scalars>> inner(new Counting<Scalars>);
    outer->setMaybe(Corvane::Soa::Common::AutoPtr<Scalars>(inner.get()));
    DocumentReader::read(text, *outer);
    EXPECT_EQ(inner->reads, 1);
    EXPECT_EQ(inner->getText(), "m");
    EXPECT_EQ(outer->getRef()->getUid(), "u1");
}

TEST(DocumentReader, ReadsStreamsAndFilesAndNamesWhatItCannotRead) {
    std::istringstream in(holderJson(std::string(kNestedText) + "," + kRestText));
    const auto object = DocumentReader::readStream(in);
    EXPECT_EQ(object->getTypeName(), "Holder");
    EXPECT_THROW(DocumentReader::readFile("/nonexistent/doc.json"),
                 Corvane::Soa::Common::Exceptions::IOException);
    EXPECT_EQ(ReadOutcome::ofNew("{\".QName\":\"nowhere.Nothing\"}", Path::Direct),
              ReadOutcome::ofNew("{\".QName\":\"nowhere.Nothing\"}", Path::Tree));
    EXPECT_THAT(ReadOutcome::ofNew("<Nothing xmlns=\"nowhere\"/>", Path::Direct),
                testing::HasSubstr("No type is registered for the element 'Nothing'"));
}

TEST(DocumentReader, ReadsAReplyOrThrowsTheErrorItCarries) {
    const Corvane::Soa::Common::AutoPtr<Holder> reply(new Holder);
    EXPECT_THROW(
        DocumentReader::readReply(
            "<?xml version=\"1.0\"?><!-- x --><ns0:InternalServerException "
            "xmlns:ns0=\"urn:x\"><m code='1' level='3'>one</m></ns0:InternalServerException>",
            *reply),
        Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException);
    DocumentReader::readReply(holderXml("<nested text=\"n\"/>"), *reply);
    EXPECT_EQ(reply->getNested()->getText(), "n");
}

// Threads reading documents of different types at once share the registry, the identity table
// and the reader's own tables; each gets what one thread alone gets.
TEST(DocumentReader, ThreadsReadDocumentsOfDifferentTypesAtOnce) {
    std::vector<std::string> texts;
    std::vector<std::string> expected;
    for (const Case& c : cases()) {
        std::string outcome = ReadOutcome::ofNew(c.text, Path::Tree);
        if (outcome.rfind("throws", 0) != 0) {
            texts.push_back(c.text);
            expected.push_back(std::move(outcome));
        }
    }
    std::vector<std::string> got(texts.size());
    std::vector<std::thread> threads;
    threads.reserve(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 20; ++round) {
                got[i] = ReadOutcome::ofNew(texts[i], Path::Direct);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(got, expected);
}

}  // namespace
