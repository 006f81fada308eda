#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include <gtest/gtest.h>

#include "LoopbackListener.hpp"

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
constexpr const char* kTooDeep = "The XML document is nested too deeply.";
constexpr const char* kOddLocations = "schemaLocation does not contain namespace-location pairs";

// The text of a failure of a parse from a string: its place, then what is wrong.
std::string fatal(int line, int column, const std::string& message) {
    return "Fatal Error: parsing: From-String: line " + std::to_string(line) + ", char " +
           std::to_string(column) + "\nMessage: " + message + "\n";
}

bool startsWith(const std::string& text, const std::string& head) {
    return text.rfind(head, 0) == 0;
}

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
        std::string message;
    } cases[] = {
        {"<a><b></a>",
         "Fatal Error: parsing: From-String: line 1, char 9\n"
         "Message: expected end of tag 'b'\n"},
        {"<a>\n  <b x='1' x='2'/>\n</a>",
         fatal(2, 19, "attribute 'x' is already specified for element 'b'")},
        {"", fatal(1, 1, "invalid document structure")},
        {"<a>&undefined;</a>", fatal(1, 15, "entity 'undefined' not found")},
        {std::string("<r>\0</r>", 8),
         fatal(1, 4, "input ended before all started tags were ended; last tag started is 'r'")},
        {"<?xml version=\"1.0 \"?><r/>", fatal(1, 23, "'1.0 ' is not a valid XML version")},
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
        std::string message;
    } cases[] = {
        {"<a " + xsi + "xsi:schemaLocation='urn:a http://127.0.0.1:9/a.xsd'/>", "(parsed)"},
        {"<a " + xsi + "xsi:schemaLocation=''/>", "(parsed)"},
        {"<a " + xsi + "xsi:schemaLocation='  a \n b  '/>", "(parsed)"},
        {"<a " + xsi + "xsi:schemaLocation='a&#9;b'/>", "(parsed)"},
        {"<a " + xsi + "xsi:noNamespaceSchemaLocation='a b c'/>", "(parsed)"},
        {"<a schemaLocation='odd'/>", "(parsed)"},
        {"<a " + xsi + "><b xmlns:xsi='urn:other' xsi:schemaLocation='odd'/></a>", "(parsed)"},
        {"<a " + xsi + "xsi:schemaLocation='odd'/>", fatal(1, 84, kOddLocations)},
        // A character that is not XML white space does not separate words.
        {"<a " + xsi + "xsi:schemaLocation='a&#xA0;b'/>", fatal(1, 89, kOddLocations)},
        // Any prefix of the namespace, at any depth; a tab is white space too.
        {"<a xmlns:i='http://www.w3.org/2001/XMLSchema-instance'>\n <b>\n  <c "
         "i:schemaLocation='a\tb c'></c></b></a>",
         fatal(3, 31, kOddLocations)},
        // The attributes of an element are checked before its depth.
        {"<a " + xsi + ">" + opened(1023) + "<a xsi:schemaLocation='odd'>",
         fatal(1, 3156, kOddLocations)},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(failureOf(c.xml), c.message) << c.xml;
    }
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

TEST(SAXToNodeParserTest, NeverFetchesWhatADocumentNames) {
    LoopbackListener server;
    ASSERT_NE(server.port(), 0) << "cannot listen on the loopback interface";
    // The listener answers a plain client: the check below would see a fetch.
    const int probe = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = LoopbackListener::loopback(server.port());
    ASSERT_EQ(::connect(probe, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(probe);
    EXPECT_EQ(server.connections(), 1);

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
              std::string(kTooDeep) + "\n" + fatal(1, 3076, "more than 1024 levels of elements"));
    EXPECT_TRUE(startsWith(failureOf(nested(100000)), kTooDeep));
    // Unclosed levels are refused the same way.
    EXPECT_TRUE(startsWith(failureOf(opened(5000)), kTooDeep));
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
    EXPECT_EQ(root->getText(), rootText + "\ntail");
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
        for (const XMLNode* child : item->getChildren()) {
            ASSERT_EQ(child->getParent(), item);
            ASSERT_TRUE(child->getChildren().empty());
        }
        const XMLNode* v = item->getChildren()[0];
        ASSERT_EQ(v->getName() + v->getText(),
                  "v" + std::string(static_cast<std::size_t>(i % 50), 'x') + n);
        ASSERT_EQ(item->getChildren()[1]->getName() + item->getChildren()[1]->getText(), "w");
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
    parser.parseString("<first/>");
    EXPECT_THROW(parser.parseString("<r>" + body + "<broken></r>"), DomException);
    EXPECT_EQ(parser.getRootNode(), nullptr);
    EXPECT_THROW(parser.getRoot(), DomException);
    std::string deep = "<r>" + body;
    for (int i = 0; i < 1100; ++i) {
        deep += "<d>";
    }
    EXPECT_TRUE(startsWith(failureOf(deep), kTooDeep));
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
    std::string expected = "The XML document containes one or more invalid character codes:\n ";
    for (int i = 1; i <= 200; ++i) {
        expected += "0x2 at line 1 char " + std::to_string(i) + "\n";
    }
    EXPECT_EQ(report, expected);
}

}  // namespace
