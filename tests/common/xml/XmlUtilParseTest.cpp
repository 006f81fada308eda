#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlUtil.hpp>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Exceptions::DomException;
using Corvane::Soa::Common::Xml::BaseObject;
using Corvane::Soa::Common::Xml::XMLNode;
using Corvane::Soa::Common::Xml::XmlUtil;

// Reads itself from a node the way a generated type does: attributes, then children by name.
class Session : public BaseObject {
public:
    Session() : BaseObject("http://corvane.com/Schemas/Core/2006-03/Session", "Session") {}

    void parse(const XMLNode& node) override {
        ++parses;
        element = node.getName();
        extension = node.getExtensionName();
        user = node.getAttr("user");
        for (const XMLNode* child : node.getChildren()) {
            if (child->getName() == "group") {
                groups.push_back(child->getText());
            }
        }
    }
    void getNamespaces(std::set<std::string>& namespaces) const override {
        namespaces.insert(getNamespace());
    }

    int parses = 0;
    std::string element;
    std::string extension;
    std::string user;
    std::vector<std::string> groups;

protected:
    BaseObject* reallyClone() const override { return new Session(*this); }
};

constexpr const char* kResponse =
    R"(<ns0:LoginResponse xmlns:ns0="urn:session" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" user="root">
  <ns0:session xsi:type="ns0:Session" user="jane"><group>dba</group><group>R&amp;D</group></ns0:session>
  <ns0:session user="joe"/>
</ns0:LoginResponse>)";

TEST(XmlUtilParseTest, HandsTheRootOrTheFirstNamedElementToTheTarget) {
    AutoPtr<Session> root(new Session);
    EXPECT_EQ(XmlUtil::parse(kResponse, root), "LoginResponse");
    EXPECT_EQ(root->parses, 1);
    EXPECT_EQ(root->element, "LoginResponse");
    EXPECT_EQ(root->user, "root");
    EXPECT_EQ(root->askRefCount(), 1);  // the caller's holder is the only one left

    AutoPtr<Session> session(new Session);
    EXPECT_EQ(XmlUtil::parse(kResponse, session, "session"), "session");
    EXPECT_EQ(session->extension, "Session");
    EXPECT_EQ(session->user, "jane");
    EXPECT_EQ(session->groups, (std::vector<std::string>{"dba", "R&D"}));

    try {
        XmlUtil::parse(kResponse, session, "missing");
        FAIL() << "no exception";
    } catch (const DomException& e) {
        EXPECT_EQ(e.getMessage(), "Element 'missing' was not found in the XML document.");
    }
    EXPECT_EQ(session->parses, 1);
}

// A request envelope carries its request as text in body/bodystring, or as elements in body.
TEST(XmlUtilParseTest, BodyOfARequestEnvelope) {
    const std::string envelope =
        R"(<ns0:RequestEnvelope xmlns:ns0="http://corvane.com/Schemas/Soa/2006-09/ClientContext">)"
        R"(<ns0:header><ns0:stringState name="a" value="b"/></ns0:header>)"
        R"(<ns0:body><ns0:bodystring><![CDATA[<Login user="amy"><group>eng</group></Login>]]>)"
        R"(</ns0:bodystring></ns0:body></ns0:RequestEnvelope>)";
    AutoPtr<Session> session(new Session);
    EXPECT_EQ(XmlUtil::parse(envelope, session, "body"), "Login");
    EXPECT_EQ(session->user, "amy");
    EXPECT_EQ(session->groups, (std::vector<std::string>{"eng"}));

    EXPECT_EQ(
        XmlUtil::parse("<Envelope><header/><body><Login user=\"ann\"/><Other/></body></Envelope>",
                       session, "body"),
        "Login");
    EXPECT_EQ(session->user, "ann");

    for (const char* missing : {"<Envelope><header/></Envelope>", "<Envelope><body/></Envelope>",
                                "<Envelope><x><body><a/></body></x></Envelope>"}) {
        try {
            XmlUtil::parse(missing, session, "body");
            ADD_FAILURE() << "no exception for " << missing;
        } catch (const DomException& e) {
            EXPECT_EQ(e.getMessage(), "Element 'body' was not found in the XML document.");
        }
    }
    EXPECT_EQ(session->parses, 2);
}

TEST(XmlUtilParseTest, FailuresReachTheCallerBeforeTheTarget) {
    AutoPtr<Session> session(new Session);
    EXPECT_THROW(XmlUtil::parse("<a><b></a>", session), DomException);
    EXPECT_THROW(XmlUtil::parse("<!DOCTYPE a><a/>", session, "a"), DomException);
    const std::string broken =
        "<Envelope><body><bodystring>&lt;open&gt;</bodystring></body></Envelope>";
    EXPECT_THROW(XmlUtil::parse(broken, session, "body"), DomException);
    EXPECT_EQ(session->parses, 0);
    EXPECT_EQ(session->askRefCount(), 1);
    // Without a target the text is only read.
    EXPECT_EQ(XmlUtil::parse("<only/>", AutoPtr<BaseObject>()), "only");
    EXPECT_THROW(XmlUtil::parse("<only>", AutoPtr<BaseObject>()), DomException);
}

}  // namespace
