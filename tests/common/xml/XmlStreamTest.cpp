#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>

#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

namespace {

using Corvane::Soa::Common::Xml::Utf8String;
using Corvane::Soa::Common::Xml::XmlStream;
using Attributes = std::vector<XmlStream::NameValuePair>;

// A buffer that takes nothing: every write to it fails.
class RefusingBuffer : public std::streambuf {
protected:
    int_type overflow(int_type /*c*/) override { return traits_type::eof(); }
    std::streamsize xsputn(const char* /*s*/, std::streamsize /*n*/) override { return 0; }
};

// A buffer whose put area holds eight bytes, emptied into `text` when full: pieces of text
// straddle its end at every offset.
class SmallBuffer : public std::streambuf {
public:
    SmallBuffer() { setp(m_area, m_area + sizeof m_area); }
    std::string all() const { return text + std::string(pbase(), pptr()); }

protected:
    int_type overflow(int_type c) override {
        text.append(pbase(), pptr());
        setp(m_area, m_area + sizeof m_area);
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            *pptr() = traits_type::to_char_type(c);
            pbump(1);
        }
        return traits_type::not_eof(c);
    }

private:
    std::string text;
    char m_area[8];
};

// --- namespace table ---------------------------------------------------------------------------

TEST(XmlStreamNamespaces, PrefixesAreNumberedInOrderOfAddition) {
    XmlStream xml;
    EXPECT_TRUE(xml.addNamespace("urn:b"));
    EXPECT_TRUE(xml.addNamespace("urn:a"));
    EXPECT_FALSE(xml.addNamespace("urn:b"));  // a repeat uses up no number
    EXPECT_TRUE(xml.addNamespace("urn:c"));
    // A set is taken in ascending order, skipping known URIs.
    xml.addNamespaces({"urn:z", "urn:c", "urn:m"});

    EXPECT_EQ(xml.getNamespacePrefix("urn:b"), "ns0");
    EXPECT_EQ(xml.getNamespacePrefix("urn:a"), "ns1");
    EXPECT_EQ(xml.getNamespacePrefix("urn:c"), "ns2");
    EXPECT_EQ(xml.getNamespacePrefix("urn:m"), "ns3");
    EXPECT_EQ(xml.getNamespacePrefix("urn:z"), "ns4");
    EXPECT_EQ(xml.getNamespacePrefix("urn:unknown"), "");
}

// --- element starts and ends -------------------------------------------------------------------

TEST(XmlStreamElements, OnlyTheRootDeclaresNamespacesAllInAscendingUriOrder) {
    XmlStream xml;
    xml.addNamespace("urn:b");
    xml.addNamespace("urn:a");
    EXPECT_TRUE(xml.isRootElement());
    xml.writeOpenElement("urn:b", "Root");
    EXPECT_FALSE(xml.isRootElement());
    xml.writeOpenElementClose("Root", false);
    xml.addNamespace("urn:late");  // too late to be declared
    xml.writeOpenElement("urn:a", "Child");
    xml.writeOpenElementClose("Child", true);
    xml.writeOpenElement("urn:late", "Other");
    EXPECT_EQ(xml.str(),
              "\n<ns0:Root xmlns:ns1=\"urn:a\" xmlns:ns0=\"urn:b\">\n<ns1:Child/>\n<ns2:Other");
    EXPECT_FALSE(xml.isRootElement());
}

// A name with ':' is taken as it stands, a name in an unknown namespace has no prefix. Attribute
// values are written as given, not escaped; the name given to close a start tag is not used.
TEST(XmlStreamElements, PrefixRuleAttributesAndTagClosings) {
    XmlStream xml;
    xml.addNamespace("urn:a");
    xml.writeOpenElement("urn:a", "x:y", Attributes{{"id", "7"}, {"note", "a&amp;b"}});
    xml.writeOpenElement("urn:other", "Bare", Attributes{});
    xml.writeOpenElement("urn:a", "Open");
    xml.writeAttribute("raw", "<as given>");
    xml.writeAttribute("n", "");
    xml.writeOpenElementClose("ignored", true);
    xml.writeOpenElement("urn:a", "Next");
    xml.writeOpenElementClose("ignored", false);
    xml.writeCloseElement("urn:a", "Next");
    xml.writeCloseElement("urn:other", "Bare");
    xml.writeCloseElement("urn:a", "x:y");
    EXPECT_EQ(xml.str(),
              "\n<x:y xmlns:ns0=\"urn:a\" id=\"7\" note=\"a&amp;b\">"
              "\n<Bare>"
              "\n<ns0:Open raw=\"<as given>\" n=\"\"/>"
              "\n<ns0:Next></ns0:Next></Bare></x:y>");
}

// --- value elements ----------------------------------------------------------------------------

TEST(XmlStreamValues, ValueElementsHaveNoPrefixNoLineBreakAndNoEscaping) {
    XmlStream xml;
    xml.addNamespace("urn:a");
    xml.writeStringElement("name", "x &lt; y");
    xml.writeStringElement("empty", "");
    xml.writeBooleanElement("t", true);
    xml.writeBooleanElement("f", false);
    xml.writeIntegerElement("i", -42);
    xml.writeIntegerElement("min", INT_MIN);
    xml.writeDoubleElement("d", 0.1);
    xml.writeDoubleElement("h", -2.5);
    xml.writeFloatElement("s", 0.1f);
    xml.writeFloatElement("g", 1.5f);
    EXPECT_EQ(xml.str(),
              "<name>x &lt; y</name><empty></empty><t>1</t><f>0</f><i>-42</i>"
              "<min>-2147483648</min><d>0.10000000000000001</d><h>-2.5</h>"
              "<s>0.10000000149011612</s><g>1.5</g>");
    EXPECT_TRUE(xml.isRootElement());  // value elements are not element starts
}

// --- raw text and output targets ---------------------------------------------------------------

TEST(XmlStreamOutput, InsertionWritesTextUnchangedAndChains) {
    XmlStream xml;
    const std::string text = "<b>&</b>";
    XmlStream& same = xml << "<?xml version=\"1.0\"?>" << text << "";
    EXPECT_EQ(&same, &xml);
    EXPECT_EQ(xml.str(), "<?xml version=\"1.0\"?><b>&</b>");
}

TEST(XmlStreamOutput, OwnedBufferIsReadByBothFormsOfStr) {
    XmlStream xml;
    EXPECT_EQ(xml.str(), "");
    xml.writeOpenElement("", "a");
    std::string out = "previous";
    xml.str(out);
    EXPECT_EQ(out, "\n<a");
    EXPECT_EQ(xml.getUtf8Transcoder(), nullptr);
}

TEST(XmlStreamOutput, CallersStreamGetsTheTextAndStrStaysEmpty) {
    std::ostringstream out;
    out << "before|";
    Utf8String transcoder("UTF-8");
    XmlStream xml(&out, &transcoder);
    EXPECT_EQ(xml.getUtf8Transcoder(), &transcoder);
    xml.addNamespace("urn:a");
    xml.writeOpenElement("urn:a", "Root");
    xml.writeOpenElementClose("Root", false);
    out << "|between|";  // text the caller writes itself stays in order
    xml.writeIntegerElement("n", 3);
    xml.writeCloseElement("urn:a", "Root");

    EXPECT_EQ(out.str(), "before|\n<ns0:Root xmlns:ns0=\"urn:a\">|between|<n>3</n></ns0:Root>");
    EXPECT_EQ(xml.str(), "");
    std::string copy = "untouched?";
    xml.str(copy);
    EXPECT_EQ(copy, "");
    EXPECT_TRUE(out.good());
}

TEST(XmlStreamOutput, WholeDocument) {
    const std::string session = "http://corvane.com/Schemas/Core/2006-03/Session";
    const std::string base = "http://corvane.com/Schemas/Soa/2006-03/Base";
    std::ostringstream out;
    XmlStream xml(&out);
    xml << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    xml.addNamespace(session);
    xml.addNamespace(base);
    xml.writeOpenElement(session, "LoginInput", Attributes{{"locale", "en_US"}});
    xml.writeStringElement("user", "j&amp;d");
    xml.writeBooleanElement("remember", false);
    xml.writeOpenElement(base, "Context");
    xml.writeAttribute("id", "c1");
    xml.writeOpenElementClose("Context", false);
    xml.writeIntegerElement("timeout", 30);
    xml.writeCloseElement(base, "Context");
    xml.writeOpenElement(session, "Empty");
    xml.writeOpenElementClose("Empty", true);
    xml.writeCloseElement(session, "LoginInput");

    EXPECT_EQ(out.str(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<ns0:LoginInput xmlns:ns0=\"http://corvane.com/Schemas/Core/2006-03/Session\""
              " xmlns:ns1=\"http://corvane.com/Schemas/Soa/2006-03/Base\" locale=\"en_US\">"
              "<user>j&amp;d</user><remember>0</remember>\n"
              "<ns1:Context id=\"c1\"><timeout>30</timeout></ns1:Context>\n"
              "<ns0:Empty/></ns0:LoginInput>");
}

TEST(XmlStreamOutput, SameBytesWhateverRoomTheOutputBufferHas) {
    const auto write = [](std::ostream& out) {
        XmlStream xml(&out);
        xml.addNamespace("urn:a");
        for (int i = 0; i < 20; ++i) {
            xml.writeOpenElement("urn:a", "item");
            xml.writeAttribute("id", std::string(static_cast<std::size_t>(i), 'x'));
            xml.writeAttribute("kind", "R&amp;D");
            xml.writeOpenElementClose("item", i % 2 == 0);
            if (i % 2 != 0) {
                xml << "text " << std::to_string(i);
                xml.writeCloseElement("urn:a", "item");
            }
        }
    };
    std::ostringstream roomy;
    write(roomy);
    SmallBuffer small;
    std::ostream tight(&small);
    write(tight);
    EXPECT_TRUE(tight.good());
    EXPECT_EQ(small.all(), roomy.str());
}

// --- failing output streams --------------------------------------------------------------------

TEST(XmlStreamOutput, FailuresStayInTheCallersStream) {
    std::ostringstream failed;
    failed.setstate(std::ios_base::failbit);
    XmlStream onFailed(&failed);
    onFailed.writeOpenElement("", "a");
    onFailed << "text";
    EXPECT_TRUE(failed.bad());
    EXPECT_EQ(failed.str(), "");

    RefusingBuffer refusing;
    std::ostream full(&refusing);
    XmlStream onFull(&full);
    onFull.writeStringElement("a", "b");
    EXPECT_TRUE(full.bad());
    onFull.writeCloseElement("", "a");  // keeps going without effect
    onFull.writeOpenElementClose("a", true);

    std::ostream unbuffered(nullptr);
    XmlStream onNothing(&unbuffered);
    onNothing.writeOpenElement("urn:a", "x");
    onNothing << std::string("y");
    EXPECT_TRUE(unbuffered.bad());
}

}  // namespace
