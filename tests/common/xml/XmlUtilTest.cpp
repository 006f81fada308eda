#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/common/xml/XmlUtil.hpp>

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Xml::BaseObject;
using Corvane::Soa::Common::Xml::JsonStream;
using Corvane::Soa::Common::Xml::XmlStream;
using Corvane::Soa::Common::Xml::XmlUtil;

// Writes a fixed text in each form and records what it saw and when it goes.
class Probe : public BaseObject {
public:
    explicit Probe(int* destroyed) : BaseObject("urn:probe", "Probe"), m_destroyed(destroyed) {}
    ~Probe() override { ++*m_destroyed; }

    using BaseObject::outputXML;
    void outputXML(XmlStream& stream) const override {
        countWhileWriting = askRefCount();
        outputXMLBase(stream, "Probe", nullptr);
        stream.writeOpenElementClose("Probe", false);
        stream.writeStringElement("v", "1");
        stream.writeCloseElement(getNamespace(), "Probe");
    }
    void writeJSON(JsonStream* stream) const override {
        countWhileWriting = askRefCount();
        *stream << "{\"v\":1}";
    }
    void getNamespaces(std::set<std::string>& namespaces) const override {
        namespaces.insert(getNamespace());
    }

    mutable int countWhileWriting = 0;

protected:
    BaseObject* reallyClone() const override { return new Probe(*this); }

private:
    int* m_destroyed;
};

const char kProbeXml[] = "\n<ns0:Probe xmlns:ns0=\"urn:probe\"><v>1</v></ns0:Probe>";
const char kProbeJson[] = "{\"v\":1}";

TEST(XmlUtilContent, FirstCharacterDecides) {
    EXPECT_TRUE(XmlUtil::isJSON("{\"a\":1}"));
    EXPECT_FALSE(XmlUtil::isXMML("{\"a\":1}"));
    EXPECT_TRUE(XmlUtil::isJSON("{"));
    for (const std::string text : {"<a/>", " {\"a\":1}", "[1]", "x"}) {
        EXPECT_TRUE(XmlUtil::isXMML(text)) << text;
        EXPECT_FALSE(XmlUtil::isJSON(text)) << text;
    }
    EXPECT_EQ(XmlUtil::sXmlContent, "XML");
    EXPECT_EQ(XmlUtil::sJsonContent, "JSON");
}

TEST(XmlUtilContent, EmptyTextIsOutOfRange) {
    for (const auto test : {&XmlUtil::isXMML, &XmlUtil::isJSON}) {
        try {
            test(std::string());
            ADD_FAILURE() << "no exception";
        } catch (const std::out_of_range& e) {
            EXPECT_STREQ(e.what(), "invalid string position");
        }
    }
}

// "XML" exactly writes XML, every other word JSON. serialize holds the object while writing and
// releases it after: an object handed over is destroyed.
TEST(XmlUtilSerialize, ContentWordChoosesTheFormAndTheObjectIsReleased) {
    for (const std::string word : {"XML", "JSON", "xml", "Xml", "XML ", "", "text/xml"}) {
        SCOPED_TRACE('"' + word + '"');
        const std::string expected = word == "XML" ? kProbeXml : kProbeJson;
        int destroyed = 0;
        std::ostringstream out;
        AutoPtr<Probe> probe(new Probe(&destroyed));
        XmlUtil::serialize(word, probe, &out);
        EXPECT_EQ(out.str(), expected);
        EXPECT_EQ(probe->countWhileWriting, 2);  // the caller's hold and serialize's own
        EXPECT_EQ(probe->askRefCount(), 1);
        EXPECT_EQ(destroyed, 0);

        out.str("");
        XmlUtil::serialize(word, std::move(probe), &out);
        EXPECT_EQ(destroyed, 1);
        EXPECT_EQ(out.str(), expected);
    }
}

}  // namespace
