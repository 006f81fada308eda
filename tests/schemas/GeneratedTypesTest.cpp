// The named types of the library's own schemas, as the generator makes them: exact documents
// in both forms, and what reading them back gives.
#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/MemoryManager.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/TypeRegistry.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/schemas.hpp>

#include "ProcessWide.hpp"
#include "WireForms.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Xml::BaseObject;
using Corvane::Soa::Common::Xml::TypeRegistry;
namespace Base = Corvane::Schemas::Soa::_2006_03::Base;
namespace Session = Corvane::Schemas::Core::_2006_03::Session;
namespace Files = Corvane::Schemas::Core::_2006_03::Filemanagement;
namespace InternalFiles = Corvane::Schemas::Internal::Core::_2008_06::Filemanagement;
namespace Session11 = Corvane::Schemas::Core::_2011_06::Session;
namespace Context = Corvane::Schemas::Soa::_2006_09::Clientcontext;

using WireForms::fromJson;
using WireForms::fromXml;
using WireForms::jsonOf;
using WireForms::xmlOf;

AutoPtr<Files::TicketMap> ticket(const std::string& uid, const std::string& value) {
    AutoPtr<Files::TicketMap> entry(new Files::TicketMap);
    entry->getKey()->setUid(uid);
    entry->setValue(value);
    return entry;
}

const char* const kSessionUri = "http://corvane.com/Schemas/Core/2006-03/Session";
const char* const kFilesUri = "http://corvane.com/Schemas/Core/2006-03/FileManagement";

TEST(GeneratedTypes, EmptyLoginInputIsOneElementWithFiveAttributesInOrder) {
    const Session::LoginInput login;
    EXPECT_EQ(xmlOf(login), "\n<ns0:LoginInput xmlns:ns0=\"" + std::string(kSessionUri) +
                                "\" sessionDiscriminator=\"\" password=\"\" group=\"\" role=\"\" "
                                "username=\"\"/>");
    EXPECT_EQ(jsonOf(login),
              "{\n\".QName\":\"http:\\/\\/corvane.com\\/Schemas\\/Core\\/2006-03\\/"
              "Session.LoginInput\",\n\"sessionDiscriminator\":\"\",\n"
              "\"password\":\"\",\n\"group\":\"\",\n\"role\":\"\",\n"
              "\"username\":\"\"\n}");
    EXPECT_EQ(login.getQaulifiedName(), std::string(kSessionUri) + ".LoginInput");
}

TEST(GeneratedTypes, VersionsAreDistinctTypesWithTheirOwnFields) {
    Session11::LoginInput login;
    login.getCredentials()->setUser("ann");
    EXPECT_EQ(xmlOf(login),
              "\n<ns0:LoginInput xmlns:ns0=\"http://corvane.com/Schemas/Core/2011-06/Session\">"
              "\n<ns0:credentials user=\"ann\" password=\"\" group=\"\" role=\"\" locale=\"\" "
              "descrimator=\"\"/></ns0:LoginInput>");
    EXPECT_NE(login.getNamespace(), Session::LoginInput().getNamespace());
    // The three versions of LoginInput: their own classes, namespaces and fields.
    const Corvane::Soa::Common::Xml::TypeDescriptor* versions[] = {
        &Session::LoginInput::typeDescriptor(),
        &Corvane::Schemas::Core::_2008_06::Session::LoginInput::typeDescriptor(),
        &Session11::LoginInput::typeDescriptor()};
    EXPECT_EQ(versions[0]->fieldCount, 5U);
    EXPECT_EQ(versions[1]->fieldCount, 6U);
    EXPECT_EQ(versions[2]->fieldCount, 1U);
    EXPECT_NE(*versions[0]->namespaceUri, *versions[1]->namespaceUri);
    EXPECT_NE(versions[0]->className, versions[1]->className);
}

TEST(GeneratedTypes, FileTicketsResponseBothWays) {
    Files::FileTicketsResponse response;
    response.addTickets(ticket("u1", "t&1"));
    response.addTickets(ticket("u2", "t2"));
    const std::string xml =
        "\n<ns0:FileTicketsResponse xmlns:ns0=\"" + std::string(kFilesUri) +
        "\" xmlns:ns1=\"http://corvane.com/Schemas/Soa/2006-03/Base\">"
        "\n<ns0:tickets value=\"t&amp;1\">\n<ns0:key uid=\"u1\"></ns0:key></ns0:tickets>"
        "\n<ns0:tickets value=\"t2\">\n<ns0:key uid=\"u2\"></ns0:key></ns0:tickets>"
        "\n<ns1:ServiceData></ns1:ServiceData></ns0:FileTicketsResponse>";
    const std::string json =
        "{\n\".QName\":\"http:\\/\\/corvane.com\\/Schemas\\/Core\\/2006-03\\/FileManagement."
        "FileTicketsResponse\",\n\"tickets\":\n{\n\"u1\":\"t&1\",\n\"u2\":\"t2\"\n},\n"
        "\"ServiceData\":\n{\n}\n}";
    EXPECT_EQ(xmlOf(response), xml);
    EXPECT_EQ(jsonOf(response), json);

    const auto fromXmlText = fromXml<Files::FileTicketsResponse>(xml);
    ASSERT_EQ(fromXmlText->getTickets().size(), 2U);
    EXPECT_EQ(fromXmlText->getTickets()[0]->getKey()->getUid(), "u1");
    EXPECT_EQ(fromXmlText->getTickets()[0]->getValue(), "t&1");
    EXPECT_EQ(xmlOf(*fromXmlText), xml);
    // A map entry read from JSON gets its key only: the ticket text stays empty.
    const auto fromJsonText = fromJson<Files::FileTicketsResponse>(json);
    ASSERT_EQ(fromJsonText->getTickets().size(), 2U);
    EXPECT_EQ(fromJsonText->getTickets()[1]->getKey()->getUid(), "u2");
    EXPECT_EQ(fromJsonText->getTickets()[1]->getValue(), "");
}

TEST(GeneratedTypes, TextKeyedTicketMapWithAListValue) {
    AutoPtr<InternalFiles::TicketMap> entry(new InternalFiles::TicketMap);
    entry->setKey("ds1");
    AutoPtr<InternalFiles::FileInfoTicket> file(new InternalFiles::FileInfoTicket);
    file->setFileName("a.txt");
    file->setTicket("t");
    entry->addValue(file);
    EXPECT_TRUE(entry->isJsonMapEntry());
    EXPECT_FALSE(entry->isJsonMapKeyReferenceType());
    EXPECT_TRUE(Files::TicketMap().isJsonMapKeyReferenceType());
    InternalFiles::FileTicketsResponse response;
    response.addTickets(entry);
    const std::string xml = xmlOf(response);
    EXPECT_NE(xml.find("\n<ns0:tickets key=\"ds1\">\n<ns0:value fileName=\"a.txt\" ticket=\"t\"/>"
                       "</ns0:tickets>"),
              std::string::npos)
        << xml;
    const std::string json = jsonOf(response);
    EXPECT_NE(
        json.find("\"tickets\":\n{\n\"ds1\":[\n{\n\"fileName\":\"a.txt\",\n\"ticket\":\"t\"\n}"
                  "\n]\n}"),
        std::string::npos)
        << json;
    EXPECT_EQ(xmlOf(*fromXml<InternalFiles::FileTicketsResponse>(xml)), xml);
    const auto back = fromJson<InternalFiles::FileTicketsResponse>(json);
    ASSERT_EQ(back->getTickets().size(), 1U);
    EXPECT_EQ(back->getTickets()[0]->getKey(), "ds1");
    EXPECT_TRUE(back->getTickets()[0]->getValue().empty());
}

TEST(GeneratedTypes, ResponsesWriteServiceDataAndTextLists) {
    Session::GetAvailableServicesResponse services;
    services.addServiceNames("a");
    services.addServiceNames("b<");
    EXPECT_EQ(xmlOf(services),
              "\n<ns0:GetAvailableServicesResponse xmlns:ns0=\"" + std::string(kSessionUri) +
                  "\" xmlns:ns1=\"http://corvane.com/Schemas/Soa/2006-03/Base\"><ns0:serviceNames>a"
                  "</ns0:serviceNames><ns0:serviceNames>b&lt;</ns0:serviceNames>\n"
                  "<ns1:ServiceData></ns1:ServiceData></ns0:GetAvailableServicesResponse>");
    EXPECT_NE(jsonOf(services).find("\"serviceNames\":[\"a\",\"b<\"],"), std::string::npos);
    const Session::GetGroupMembershipResponse empty;
    EXPECT_NE(xmlOf(empty).find(">\n<ns1:ServiceData></ns1:ServiceData></ns0:GetGroup"),
              std::string::npos);
    Session::LoginResponse login;
    login.getUser()->setUid("usr");
    login.getServiceData()->addCreated("c1");
    const auto back = fromXml<Session::LoginResponse>(xmlOf(login));
    EXPECT_EQ(back->getUser()->getUid(), "usr");
    EXPECT_EQ(back->getServiceData()->getCreated(), std::vector<std::string>{"c1"});
}

TEST(GeneratedTypes, ModelObjectWritesItsSetAttributesInOrder) {
    Base::ModelObject object;
    object.setType("Item");
    object.setIsHistorical(false);
    object.setObjectID("o");
    object.setUid("x");
    EXPECT_EQ(xmlOf(object),
              "\n<ns0:ModelObject xmlns:ns0=\"http://corvane.com/Schemas/Soa/2006-03/Base\" "
              "objectID=\"o\" uid=\"x\" type=\"Item\" isHistorical=\"0\"></ns0:ModelObject>");
}

// A model object keeps its optional attributes and lists in a block made on first write: a
// reference that carries its uid alone is one allocation; copies do not share the block.
TEST(GeneratedTypes, ModelObjectMakesItsOptionalBlockOnFirstWrite) {
    REQUIRE_NO_GLOBAL_MANAGER();
    ASSERT_TRUE(Corvane::Soa::Common::MemoryManager::initializeMemoryManager(nullptr, true));
    const auto& manager = *Corvane::Soa::Common::MemoryManager::getMemoryManager();
    const auto blocks = [&manager] {
        int count = 0;
        for (const auto& entry : manager.getObjectTable()) {
            count += entry.second.tag == "Corvane::Schemas::Soa::_2006_03::Base::ModelObject";
        }
        return count;
    };
    const std::string ns = "http://corvane.com/Schemas/Soa/2006-03/Base";
    const auto bare = fromXml<Base::ModelObject>("<ModelObject xmlns='" + ns + "' uid='u'/>");
    const Base::ModelObject& reference = *bare;
    EXPECT_TRUE(reference.getProperties().empty());
    EXPECT_FALSE(reference.getIsTypeSet());
    EXPECT_EQ(blocks(), 1);
    const auto typed =
        fromXml<Base::ModelObject>("<ModelObject xmlns='" + ns + "' uid='u' type='Item'/>");
    EXPECT_EQ(blocks(), 3);

    Base::ModelObject copy(*typed);
    copy.setType("Other");
    copy.setIsTypeSet(false);
    EXPECT_EQ(typed->getType(), "Item");
    EXPECT_TRUE(typed->getIsTypeSet());
    copy = *bare;
    EXPECT_EQ(copy.getType(), "");
    EXPECT_EQ(xmlOf(copy), xmlOf(*bare));
}

TEST(GeneratedTypes, RequestEnvelopeHeaderFlagAndCDataBody) {
    Context::RequestEnvelope envelope;
    envelope.getBody()->setBodystring("<a x='1'>&amp; ]]> é</a>");
    const std::string ns = "http://corvane.com/Schemas/Soa/2006-09/ClientContext";
    const std::string body =
        "\n<ns0:body>\n<ns0:bodystring><![CDATA[<a x='1'>&amp; ]]> é</a>]]>"
        "</ns0:bodystring></ns0:body></ns0:RequestEnvelope>";
    // A header object exists from the start, but is written only once set.
    EXPECT_EQ(xmlOf(envelope), "\n<ns0:RequestEnvelope xmlns:ns0=\"" + ns + "\">" + body);

    AutoPtr<Context::RequestHeader> header(new Context::RequestHeader);
    AutoPtr<Context::NameBooleanValue> flag(new Context::NameBooleanValue);
    flag->setName("n");
    flag->setValue(true);
    header->addBooleanState(flag);
    envelope.setHeader(header);
    EXPECT_EQ(xmlOf(envelope), "\n<ns0:RequestEnvelope xmlns:ns0=\"" + ns +
                                   "\">\n<ns0:header>\n<ns0:booleanState name=\"n\" value=\"1\"/>"
                                   "</ns0:header>" +
                                   body);
    EXPECT_NE(jsonOf(envelope).find("\"header\":\n{\n\"booleanState\":\n[\n{\n\"name\":\"n\",\n"
                                    "\"value\":true\n}\n]\n},\n\"body\":\n{\n\"bodystring\":"),
              std::string::npos);
    envelope.setIsHeaderSet(false);
    EXPECT_EQ(xmlOf(envelope), "\n<ns0:RequestEnvelope xmlns:ns0=\"" + ns + "\">" + body);
    envelope.setHeader(AutoPtr<Context::RequestHeader>());
    EXPECT_TRUE(envelope.getIsHeaderSet());
}

TEST(GeneratedTypes, RegistryBuildsEveryTypeByEitherName) {
    const AutoPtr<BaseObject> byParts = TypeRegistry::create(std::string(kFilesUri), "TicketMap");
    ASSERT_TRUE(byParts);
    EXPECT_EQ(byParts->getQaulifiedName(), std::string(kFilesUri) + ".TicketMap");
    EXPECT_TRUE(byParts.dynamicCast<Files::TicketMap>());
    const AutoPtr<BaseObject> byQName =
        TypeRegistry::create(std::string(kSessionUri) + ".LoginInput");
    EXPECT_TRUE(byQName.dynamicCast<Session::LoginInput>());
    EXPECT_FALSE(TypeRegistry::create(std::string(kSessionUri), "Nothing"));
    EXPECT_FALSE(TypeRegistry::create("LoginInput"));
    const auto names = TypeRegistry::names();
    EXPECT_NE(std::find(names.begin(), names.end(),
                        "http://corvane.com/Schemas/Soa/2006-09/ClientContext.RequestEnvelope"),
              names.end());
}

}  // namespace
