#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Corvane::Soa::Common::Exceptions::DomException;
using Corvane::Soa::Common::Xml::SAXToNodeParser;
using Corvane::Soa::Common::Xml::XMLNode;

constexpr const char* kDtdMessage = "Document Type Defintions are not permited in XML documents.";

// The message of the DomException that parsing `xml` throws, or "(parsed)".
std::string failureOf(const std::string& xml) {
    SAXToNodeParser parser;
    try {
        parser.parseString(xml);
    } catch (const DomException& e) {
        EXPECT_EQ(parser.getRootNode(), nullptr) << "a failed parse leaves no tree";
        return e.getMessage();
    }
    return "(parsed)";
}

// The message of the DomException that `parse` throws, or "(parsed)".
template <class Parse>
std::string thrownBy(Parse parse) {
    try {
        parse();
    } catch (const DomException& e) {
        return e.getMessage();
    }
    return "(parsed)";
}

// `depth` start tags of elements "a", each inside the one before.
std::string opened(int depth) {
    std::string xml;
    xml.reserve(static_cast<std::size_t>(depth) * 3);
    for (int i = 0; i < depth; ++i) {
        xml += "<a>";
    }
    return xml;
}

std::string nested(int depth) {
    std::string xml = opened(depth);
    for (int i = 0; i < depth; ++i) {
        xml += "</a>";
    }
    return xml;
}

TEST(SAXToNodeParserTest, BuildsTheElementTree) {
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString(R"(<?xml version="1.0"?>
<ns0:Response xmlns:ns0="urn:session" xmlns:ns1="urn:base" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" version="2">
  <ns0:item id="1" ns1:kind="a" xml:lang="en">first</ns0:item>
  <item id="2" xsi:type="ns1:Derived"/>
  <item xsi:type="Plain"/>
</ns0:Response>)");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root, parser.getRootNode());
    EXPECT_EQ(root, &parser.getRoot());
    EXPECT_EQ(root->getName(), "Response");
    EXPECT_EQ(root->getParent(), nullptr);
    // Namespace declarations are not attributes.
    EXPECT_EQ(root->attrs(), (XMLNode::Attributes{{"version", "2"}}));

    const std::vector<XMLNode*>& items = root->getChildren();
    ASSERT_EQ(items.size(), 3U);
    for (const XMLNode* item : items) {
        EXPECT_EQ(item->getName(), "item");
        EXPECT_EQ(item->getParent(), root);
    }
    EXPECT_EQ(items[0]->getText(), "first");
    EXPECT_EQ(items[0]->attrs(),
              (XMLNode::Attributes{{"id", "1"}, {"ns1:kind", "a"}, {"xml:lang", "en"}}));
    EXPECT_EQ(items[0]->getExtensionName(), "");
    // The xsi type names the extension, without its prefix, and is no attribute.
    EXPECT_EQ(items[1]->getExtensionName(), "Derived");
    EXPECT_EQ(items[1]->attrs(), (XMLNode::Attributes{{"id", "2"}}));
    EXPECT_EQ(items[2]->getExtensionName(), "Plain");
    EXPECT_TRUE(items[2]->attrs().empty());

    EXPECT_EQ(items[0]->getAttr("id"), "1");
    EXPECT_EQ(items[0]->getAttr("kind"), "");
    EXPECT_TRUE(items[0]->existsAttr("ns1:kind"));
    EXPECT_FALSE(items[0]->existsAttr("missing"));
}

// A "type" attribute of another namespace is an ordinary attribute.
TEST(SAXToNodeParserTest, OnlyTheSchemaInstanceTypeIsTheExtension) {
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString(
        R"(<r xmlns:x="http://www.w3.org/2001/XMLSchema" x:type="x:int" type="t:Other"/>)");
    EXPECT_EQ(root->getExtensionName(), "");
    EXPECT_EQ(root->getAttr("x:type"), "x:int");
    EXPECT_EQ(root->getAttr("type"), "t:Other");
}

// The parser delivers text in pieces (around references, CDATA sections and child elements);
// the node keeps them all, in order.
TEST(SAXToNodeParserTest, ConcatenatesTextPieces) {
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString(
        "<r>a &amp; b<![CDATA[ <c> ]]>&#x6771;&#20140;<child>inner</child>tail&lt;</r>");
    EXPECT_EQ(root->getText(),
              "a & b <c> \xe6\x9d\xb1\xe4\xba\xac"
              "tail<");
    ASSERT_EQ(root->getChildren().size(), 1U);
    EXPECT_EQ(root->getChildren()[0]->getText(), "inner");

    // ASCII pieces after one that is not, and values of both kinds.
    root = parser.parseString("<r k='caf\xc3\xa9 &amp; b' j='ab'>\xc3\xa9&amp;x<c/>y</r>");
    EXPECT_EQ(root->getText(), "\xc3\xa9&xy");
    EXPECT_EQ(root->attrs(), (XMLNode::Attributes{{"j", "ab"}, {"k", "caf\xc3\xa9 & b"}}));

    const std::string big(100000, 'x');
    root = parser.parseString("<r>" + big + "&amp;" + big + "</r>");
    EXPECT_EQ(root->getText(), big + "&" + big);
}

TEST(SAXToNodeParserTest, ConvertsTextToTheRequestedCodePage) {
    const std::string xml =
        "<\xe6\x9d\xb1 k=\"\xe4\xba\xac\">\xe6\x9d\xb1\xe4\xba\xac</\xe6\x9d\xb1>";
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString(xml, "Shift_JIS");
    EXPECT_EQ(parser.getEncodingName(), "Shift_JIS");
    EXPECT_EQ(root->getName(), "\x93\x8c");
    EXPECT_EQ(root->getAttr("k"), "\x8b\x9e");
    EXPECT_EQ(root->getText(), "\x93\x8c\x8b\x9e");
    // The page stays for the next parse.
    EXPECT_EQ(parser.parseString(xml)->getText(), "\x93\x8c\x8b\x9e");
    EXPECT_EQ(parser.parseString(xml, "UTF-8")->getText(), "\xe6\x9d\xb1\xe4\xba\xac");

    // A document in another encoding is read by its declaration.
    const std::string latin = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r>caf\xe9</r>";
    EXPECT_EQ(parser.parseString(latin)->getText(), "caf\xc3\xa9");
}

TEST(SAXToNodeParserTest, SubstitutionByteBecomesQuestionMarkOnRequest) {
    const std::string xml = "<r>a\xe6\x9d\xb1</r>";
    SAXToNodeParser parser;
    EXPECT_EQ(parser.parseString(xml, "windows-1252")->getText(), "a\x1a");
    SAXToNodeParser::replaceHexOneA(true);
    EXPECT_EQ(parser.parseString(xml)->getText(), "a?");
    SAXToNodeParser::replaceHexOneA(false);
    EXPECT_EQ(parser.parseString(xml)->getText(), "a\x1a");
}

TEST(SAXToNodeParserTest, TextEndsAtTheFirstZeroByte) {
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString(std::string("<r>x</r>\0<not parsed", 20));
    EXPECT_EQ(root->getText(), "x");
}

// Every failure of a text names its place, then what is wrong. The version of the XML
// declaration is checked as the grammar has it.
TEST(SAXToNodeParserTest, FatalErrorLayout) {
    const struct {
        std::string xml;
        const char* message;
    } cases[] = {
        {"<a><b></a>",
         "Fatal Error: parsing: From-String: line 1, char 9\n"
         "Message: expected end of tag 'b'\n"},
        {"<a>\n  <b x='1' x='2'/>\n</a>",
         "Fatal Error: parsing: From-String: line 2, char 19\n"
         "Message: attribute 'x' is already specified for element 'b'\n"},
        {"",
         "Fatal Error: parsing: From-String: line 1, char 1\n"
         "Message: invalid document structure\n"},
        {"<a>&undefined;</a>",
         "Fatal Error: parsing: From-String: line 1, char 15\n"
         "Message: entity 'undefined' not found\n"},
        {std::string("<r>\0</r>", 8),
         "Fatal Error: parsing: From-String: line 1, char 4\n"
         "Message: input ended before all started tags were ended; last tag started is 'r'\n"},
        {"<?xml version=\"1.0 \"?><r/>",
         "Fatal Error: parsing: From-String: line 1, char 23\n"
         "Message: '1.0 ' is not a valid XML version\n"},
        {"<?xml version='1.1'?><r>\n<a/></r>", "(parsed)"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(failureOf(c.xml), c.message) << c.xml;
    }
}

// An xsi:schemaLocation must list namespace-location pairs: its value, as the attribute holds
// it, splits at white space into an even number of words. Nothing that it names is loaded.
TEST(SAXToNodeParserTest, SchemaLocationsListPairs) {
    const std::string xsi = "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' ";
    const struct {
        std::string xml;
        const char* message;
    } cases[] = {
        {"<a " + xsi + "xsi:schemaLocation='urn:a http://127.0.0.1:9/a.xsd'/>", "(parsed)"},
        {"<a " + xsi + "xsi:schemaLocation=''/>", "(parsed)"},
        {"<a " + xsi + "xsi:schemaLocation='  a \n b  '/>", "(parsed)"},
        {"<a " + xsi + "xsi:schemaLocation='a&#9;b'/>", "(parsed)"},
        {"<a " + xsi + "xsi:noNamespaceSchemaLocation='a b c'/>", "(parsed)"},
        {"<a schemaLocation='odd'/>", "(parsed)"},
        {"<a " + xsi + "><b xmlns:xsi='urn:other' xsi:schemaLocation='odd'/></a>", "(parsed)"},
        {"<a " + xsi + "xsi:schemaLocation='odd'/>",
         "Fatal Error: parsing: From-String: line 1, char 84\n"
         "Message: schemaLocation does not contain namespace-location pairs\n"},
        // A character that is not XML white space does not separate words.
        {"<a " + xsi + "xsi:schemaLocation='a&#xA0;b'/>",
         "Fatal Error: parsing: From-String: line 1, char 89\n"
         "Message: schemaLocation does not contain namespace-location pairs\n"},
        // Any prefix of the namespace, at any depth; a tab is white space too.
        {"<a xmlns:i='http://www.w3.org/2001/XMLSchema-instance'>\n <b>\n  <c "
         "i:schemaLocation='a\tb c'></c></b></a>",
         "Fatal Error: parsing: From-String: line 3, char 31\n"
         "Message: schemaLocation does not contain namespace-location pairs\n"},
        // The attributes of an element are checked before its depth.
        {"<a " + xsi + ">" + opened(1023) + "<a xsi:schemaLocation='odd'>",
         "Fatal Error: parsing: From-String: line 1, char 3156\n"
         "Message: schemaLocation does not contain namespace-location pairs\n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(failureOf(c.xml), c.message) << c.xml;
    }
}

TEST(SAXToNodeParserTest, NothingIsKeptFromAFailedParse) {
    SAXToNodeParser parser;
    parser.parseString("<first/>");
    EXPECT_THROW(parser.parseString("<second><open></second>"), DomException);
    EXPECT_EQ(parser.getRootNode(), nullptr);
    EXPECT_THROW(parser.getRoot(), DomException);
    EXPECT_EQ(parser.parseString("<third/>")->getName(), "third");
}

TEST(SAXToNodeParserTest, ParsesStreams) {
    SAXToNodeParser parser;
    std::istringstream in("<r a='1'>" + std::string(200000, 'y') + "</r>");
    XMLNode* root = parser.parseStream(&in);
    EXPECT_EQ(root->getAttr("a"), "1");
    EXPECT_EQ(root->getText().size(), 200000U);

    std::istringstream sjis("<r>\xe6\x9d\xb1</r>");
    EXPECT_EQ(parser.parseStream(&sjis, "Shift_JIS")->getText(), "\x93\x8c");

    std::istringstream broken("<r>\n<s></r>");
    EXPECT_EQ(thrownBy([&] { parser.parseStream(&broken); }),
              "Fatal Error: parsing: From-std::istream: line 2, char 6\n"
              "Message: expected end of tag 's'\n");
    EXPECT_EQ(thrownBy([&] { parser.parseStream(nullptr); }),
              "XML Document 'From std::istream' does not exist.\n");
}

TEST(SAXToNodeParserTest, ParsesFiles) {
    const std::string path = ::testing::TempDir() + "/SAXToNodeParserTest-file.xml";
    {
        std::ofstream out(path, std::ios::binary);
        out << "<r>\n<s>\xe6\x9d\xb1</s>\n</r>";
    }
    SAXToNodeParser parser;
    EXPECT_EQ(parser.parseFile(path)->getChildren().at(0)->getText(), "\xe6\x9d\xb1");
    EXPECT_EQ(parser.parseFile(path, "EUC-JP")->getChildren().at(0)->getText(), "\xc5\xec");
    {
        std::ofstream out(path, std::ios::binary);
        out << "<r>\n<s></r>";
    }
    EXPECT_EQ(
        thrownBy([&] { parser.parseFile(path); }),
        "Fatal Error: parsing: " + path + ": line 2, char 6\nMessage: expected end of tag 's'\n");
    std::remove(path.c_str());
    EXPECT_EQ(thrownBy([&] { parser.parseFile(path); }),
              "XML Document '" + path + "' does not exist.\n");
}

TEST(SAXToNodeParserTest, RefusesEveryDocumentTypeDeclaration) {
    const char* documents[] = {
        "<!DOCTYPE r><r/>", "<?xml version='1.0'?><!-- c --><!DOCTYPE other ><r/>",
        "<?xml version='1.0'?>\n<!DOCTYPE r [<!ELEMENT r (#PCDATA)>]><r/>",
        "<!DOCTYPE r [<!NOTATION gif SYSTEM 'image/gif'>]><r/>",
        "<!DOCTYPE r [<!NOTATION gif SYSTEM 'g'><!ENTITY pic SYSTEM 'p.gif' NDATA gif>]><r/>",
        "<!DOCTYPE r [<!ENTITY e 'text'>]><r>&e;</r>", "<!DOCTYPE r SYSTEM 'local-file.dtd'><r/>",
        // Entity expansion (a billion laughs) never starts.
        "<!DOCTYPE r [<!ENTITY a 'lollollollollollollollollollol'>"
        "<!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'><!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'>"
        "<!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;'><!ENTITY e '&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;'>"
        "<!ENTITY f '&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;'><!ENTITY g '&f;&f;&f;&f;&f;&f;&f;&f;&f;&f;'>"
        "<!ENTITY h '&g;&g;&g;&g;&g;&g;&g;&g;&g;&g;'><!ENTITY i '&h;&h;&h;&h;&h;&h;&h;&h;&h;&h;'>"
        "]><r>&i;</r>",
        // Refused before the subset is read, even when the subset is broken.
        "<!DOCTYPE r [<!ELEMENT oops"};
    for (const char* xml : documents) {
        EXPECT_EQ(failureOf(xml), kDtdMessage) << xml;
    }
}

// A server on a loopback port, to see whether the parser ever connects to it. It answers
// every connection at once, from a thread of its own, so that a fetch completes (and is
// counted) rather than leaving the parser waiting.
class LoopbackListener {
public:
    LoopbackListener() {
        m_socket = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = 0;
        if (m_socket < 0 ||
            ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(m_socket, 16) != 0) {
            return;
        }
        socklen_t length = sizeof address;
        ::getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length);
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { serve(); });
    }
    ~LoopbackListener() {
        m_stop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
        if (m_socket >= 0) {
            ::close(m_socket);
        }
    }
    LoopbackListener(const LoopbackListener&) = delete;
    LoopbackListener& operator=(const LoopbackListener&) = delete;

    int port() const { return m_port; }
    std::string url(const std::string& file) const {
        return "http://127.0.0.1:" + std::to_string(m_port) + "/" + file;
    }
    // The connections since the last call.
    int connections() {
        // A connection made during a parse has been accepted by the time the parse returns;
        // one more round of the server loop makes sure it has been counted.
        const int seen = m_rounds.load();
        while (m_rounds.load() < seen + 2) {
            std::this_thread::yield();
        }
        return m_connections.exchange(0);
    }

private:
    void serve() {
        while (!m_stop) {
            pollfd waiting{m_socket, POLLIN, 0};
            if (::poll(&waiting, 1, 10) > 0) {
                const int client = ::accept(m_socket, nullptr, nullptr);
                if (client >= 0) {
                    ++m_connections;
                    const char reply[] =
                        "HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n<!ENTITY x 'x'>";
                    [[maybe_unused]] const auto sent = ::send(client, reply, sizeof reply - 1, 0);
                    ::close(client);
                }
            }
            ++m_rounds;
        }
    }

    int m_socket = -1;
    int m_port = 0;
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_connections{0};
    std::atomic<int> m_rounds{0};
    std::thread m_thread;
};

TEST(SAXToNodeParserTest, NeverFetchesWhatADocumentNames) {
    LoopbackListener server;
    ASSERT_NE(server.port(), 0) << "cannot listen on the loopback interface";
    // The listener answers a plain client: the check below would see a fetch.
    {
        const int probe = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(server.port()));
        ASSERT_EQ(::connect(probe, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        ::close(probe);
        EXPECT_EQ(server.connections(), 1);
    }

    const std::string refused[] = {
        "<!DOCTYPE r SYSTEM '" + server.url("external.dtd") + "'><r/>",
        "<!DOCTYPE r PUBLIC '-//X//DTD X//EN' '" + server.url("public.dtd") + "'><r/>",
        "<!DOCTYPE r [<!ENTITY e SYSTEM '" + server.url("entity.xml") + "'>]><r>&e;</r>",
        "<!DOCTYPE r [<!ENTITY % p SYSTEM '" + server.url("parameter.dtd") + "'> %p;]><r/>",
        "<!DOCTYPE r [<!NOTATION n SYSTEM '" + server.url("n") + "'><!ENTITY u SYSTEM '" +
            server.url("u") + "' NDATA n><!ATTLIST r a ENTITY #IMPLIED>]><r a='u'/>",
    };
    for (const std::string& xml : refused) {
        EXPECT_EQ(failureOf(xml), kDtdMessage) << xml;
        EXPECT_EQ(server.connections(), 0) << xml;
    }
    // Schema hints and inclusions are attributes like any other.
    const std::string parsed[] = {
        "<r xmlns='urn:x' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
        "xsi:schemaLocation='urn:x " +
            server.url("schema.xsd") + "'/>",
        "<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
        "xsi:noNamespaceSchemaLocation='" +
            server.url("schema.xsd") + "'/>",
        "<r xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include href='" +
            server.url("included.xml") + "'/></r>",
    };
    for (const std::string& xml : parsed) {
        EXPECT_EQ(failureOf(xml), "(parsed)") << xml;
        EXPECT_EQ(server.connections(), 0) << xml;
    }
}

TEST(SAXToNodeParserTest, ElementsDeeperThan1024LevelsAreRefused) {
    SAXToNodeParser parser;
    const XMLNode* node = parser.parseString(nested(1024));
    int depth = 1;
    while (!node->getChildren().empty()) {
        node = node->getChildren()[0];
        ++depth;
    }
    EXPECT_EQ(depth, 1024);

    // The 1025th start tag begins at char 3073 and is read up to its end.
    EXPECT_EQ(failureOf(nested(1025)),
              "The XML document is nested too deeply.\n"
              "Fatal Error: parsing: From-String: line 1, char 3076\n"
              "Message: more than 1024 levels of elements\n");
    const std::string deepest = failureOf(nested(100000));
    EXPECT_EQ(deepest.rfind("The XML document is nested too deeply.", 0), 0U) << deepest;
    // Unclosed levels are refused the same way.
    EXPECT_EQ(failureOf(opened(5000)).rfind("The XML document is nested too deeply.", 0), 0U);
}

// A document far larger than the batches in which the tree is built: every node, attribute
// and text is where it belongs, whatever batch its element began or ended in.
TEST(SAXToNodeParserTest, LargeDocumentsBuildTheSameTreeInEveryPart) {
    const int kItems = 6000;
    std::string xml =
        "<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:p='urn:p'>head";
    for (int i = 0; i < kItems; ++i) {
        const std::string n = std::to_string(i);
        xml.append("\n  <item id='").append(n).append("' p:note='n\xc3\xa9").append(n);
        xml.append("' xsi:type='p:T").append(n).append("'>before<v>");
        xml.append(static_cast<std::size_t>(i % 50), 'x').append(n);
        xml.append("</v>\xe6\x9d\xb1<w/>after").append(n).append("</item>");
    }
    xml += "\ntail</r>";

    SAXToNodeParser parser;
    XMLNode* root = parser.parseString(xml);
    ASSERT_EQ(root->getChildren().size(), static_cast<std::size_t>(kItems));
    std::string rootText = "head";
    for (int i = 0; i < kItems; ++i) {
        rootText += "\n  ";
    }
    rootText += "\ntail";
    EXPECT_EQ(root->getText(), rootText);
    for (int i = 0; i < kItems; ++i) {
        const std::string n = std::to_string(i);
        const XMLNode* item = root->getChildren()[static_cast<std::size_t>(i)];
        ASSERT_EQ(item->getName(), "item");
        ASSERT_EQ(item->getParent(), root);
        ASSERT_EQ(item->attrs(), (XMLNode::Attributes{{"id", n}, {"p:note", "n\xc3\xa9" + n}}));
        ASSERT_EQ(item->getExtensionName(), "T" + n);
        ASSERT_EQ(item->getText(),
                  "before\xe6\x9d\xb1"
                  "after" +
                      n);
        ASSERT_EQ(item->getChildren().size(), 2U);
        const XMLNode* v = item->getChildren()[0];
        ASSERT_EQ(v->getName(), "v");
        ASSERT_EQ(v->getParent(), item);
        ASSERT_EQ(v->getText(), std::string(static_cast<std::size_t>(i % 50), 'x') + n);
        ASSERT_TRUE(v->getChildren().empty());
        const XMLNode* w = item->getChildren()[1];
        ASSERT_EQ(w->getName(), "w");
        ASSERT_EQ(w->getText(), "");
        ASSERT_EQ(w->getParent(), item);
    }
}

// Long texts, given in one piece or grown from many, between and inside child elements.
TEST(SAXToNodeParserTest, LongTextsBetweenChildren) {
    const std::string big(70000, 'b');
    std::string pieces;
    for (int i = 0; i < 3000; ++i) {
        pieces += "p&amp;" + std::to_string(i);
    }
    std::string piecesText;
    for (int i = 0; i < 3000; ++i) {
        piecesText += "p&" + std::to_string(i);
    }
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString("<r>\n small<c>" + big + "</c>" + big + "<d>in" + pieces +
                                       "<e/>" + big + "</d>" + pieces + "\xc3\xa9</r>");
    EXPECT_EQ(root->getText(), "\n small" + big + piecesText + "\xc3\xa9");
    ASSERT_EQ(root->getChildren().size(), 2U);
    EXPECT_EQ(root->getChildren()[0]->getText(), big);
    const XMLNode* d = root->getChildren()[1];
    EXPECT_EQ(d->getText(), "in" + piecesText + big);
    ASSERT_EQ(d->getChildren().size(), 1U);
    EXPECT_EQ(d->getChildren()[0]->getText(), "");
}

// A failure after much of the tree has been built leaves nothing, and the parser reads the
// next document as if it were its first.
TEST(SAXToNodeParserTest, LateFailuresLeaveNoTree) {
    std::string body;
    for (int i = 0; i < 20000; ++i) {
        body += "<a k='" + std::to_string(i) + "'>text</a>";
    }
    SAXToNodeParser parser;
    EXPECT_THROW(parser.parseString("<r>" + body + "<broken></r>"), DomException);
    EXPECT_EQ(parser.getRootNode(), nullptr);
    std::string deep = "<r>" + body;
    for (int i = 0; i < 1100; ++i) {
        deep += "<d>";
    }
    EXPECT_EQ(failureOf(deep).rfind("The XML document is nested too deeply.", 0), 0U);
    XMLNode* root = parser.parseString("<r>" + body + "</r>");
    ASSERT_EQ(root->getChildren().size(), 20000U);
    EXPECT_EQ(root->getChildren().back()->getAttr("k"), "19999");
}

// Two attribute names that convert to the same local name: the last one in the document stays.
TEST(SAXToNodeParserTest, TheLastOfAttributesWithOneLocalNameStays) {
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString("<r a\xe6\x9d\xb1='first' a\xe4\xba\xac='second' b='3'/>",
                                       "windows-1252");
    EXPECT_EQ(root->attrs(), (XMLNode::Attributes{{"a\x1a", "second"}, {"b", "3"}}));
}

TEST(SAXToNodeParserTest, WideTreesAreDestroyed) {
    auto* root = new XMLNode("root");
    for (int i = 0; i < 1000; ++i) {
        XMLNode* child = root->addChild(new XMLNode("c"));
        for (int j = 0; j < 100; ++j) {
            child->addChild(new XMLNode("g"));
        }
    }
    delete root;
}

TEST(SAXToNodeParserTest, DeepTreesAreDestroyedWithoutRecursion) {
    auto* root = new XMLNode("root");
    XMLNode* node = root;
    for (int i = 0; i < 300000; ++i) {
        node = node->addChild(new XMLNode("a"));
        node->addChild(new XMLNode("leaf"));
    }
    delete root;
}

// Xerces is brought up on first use; several threads may make that first use together.
TEST(SAXToNodeParserTest, FirstUseFromSeveralThreads) {
    std::vector<std::thread> threads;
    std::vector<std::string> names(8);
    for (std::size_t i = 0; i < names.size(); ++i) {
        threads.emplace_back([i, &names] {
            SAXToNodeParser parser;
            names[i] = parser.parseString("<t" + std::to_string(i) + "/>")->getName();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(names[i], "t" + std::to_string(i));
    }
}

TEST(SAXToNodeParserTest, OutputPrintsTheSubtree) {
    SAXToNodeParser parser;
    XMLNode* root = parser.parseString(
        "<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' b='2' a='1'>\n"
        "  <c xsi:type='p:T'>text</c>\n  <d><e/></d>\n</r>");
    std::ostringstream out;
    root->output(out, "> ");
    EXPECT_EQ(out.str(),
              "> r a=\"1\" b=\"2\"\n"
              ">   c [T] = \"text\"\n"
              ">   d\n"
              ">     e\n");
}

TEST(SAXToNodeParserTest, ReportsIllegalCharacters) {
    std::string report = "stale";
    EXPECT_TRUE(SAXToNodeParser::checkForIllegalXMLchars("<a>\r\nok ~</a>\n", report));
    EXPECT_EQ(report, "");

    // Control bytes, tab included; every byte of a multibyte character, sign-extended; DEL.
    // A carriage return and line feed end one line; a lone carriage return ends one too.
    EXPECT_FALSE(
        SAXToNodeParser::checkForIllegalXMLchars("<a>\x01\tb\r\n\xc3\xa9\x7f\rx\x1f</a>", report));
    EXPECT_EQ(report,
              "The XML document containes one or more invalid character codes:\n "
              "0x1 at line 1 char 4\n"
              "0x9 at line 1 char 5\n"
              "0xFFFFFFC3 at line 2 char 1\n"
              "0xFFFFFFA9 at line 2 char 2\n"
              "0x7F at line 2 char 3\n"
              "0x1F at line 3 char 2\n");

    // At most 200 are listed.
    EXPECT_FALSE(SAXToNodeParser::checkForIllegalXMLchars(std::string(250, '\x02'), report));
    const std::string header = "The XML document containes one or more invalid character codes:\n ";
    std::string expected = header;
    for (int i = 1; i <= 200; ++i) {
        expected += "0x2 at line 1 char " + std::to_string(i) + "\n";
    }
    EXPECT_EQ(report, expected);
}

}  // namespace
