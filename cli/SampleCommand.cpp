#include "CommandRegistry.hpp"

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/MemoryManager.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/common/xml/XmlUtil.hpp>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace cvsoa {

namespace Xml = Corvane::Soa::Common::Xml;
using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::MemoryManager;

namespace {

constexpr const char* kSessionNs = "http://corvane.com/Schemas/Core/2006-03/Session";
constexpr const char* kTypesNs = "http://corvane.com/Schemas/Core/2006-03/Types";

// A credentials structure of another namespace, written as a child of the request.
class Credentials : public Xml::BaseObject {
public:
    Credentials() : BaseObject(kTypesNs, "Credentials") {}

    void outputXML(Xml::XmlStream& stream, const std::string& elementName) const override {
        outputXMLBase(stream, elementName, nullptr);
        stream.writeAttribute("user", Xml::toXmlString(user));
        stream.writeAttribute("group", Xml::toXmlString(group));
        stream.writeOpenElementClose(elementName, true);
    }
    void getNamespaces(std::set<std::string>& namespaces) const override {
        namespaces.insert(getNamespace());
    }

    std::string user = "jane.doe";
    std::string group = "R&D <north>";

protected:
    BaseObject* reallyClone() const override { return new Credentials(*this); }
};

// A small login request: a structure member of another namespace and a few value elements.
class LoginRequest : public Xml::BaseObject {
public:
    LoginRequest() : BaseObject(kSessionNs, "LoginInput"), m_credentials(new Credentials) {}

    void outputXML(Xml::XmlStream& stream) const override { outputXML(stream, "LoginInput"); }
    void outputXML(Xml::XmlStream& stream, const std::string& elementName) const override {
        outputXMLBase(stream, elementName, nullptr);
        stream.writeAttribute("locale", "en_US");
        stream.writeOpenElementClose(elementName, false);
        m_credentials->outputXML(stream, "credentials");
        stream.writeStringElement("discriminator", Xml::toXmlString("100% \"sample\""));
        stream.writeIntegerElement("retries", 3);
        stream.writeBooleanElement("keepAlive", true);
        stream.writeDoubleElement("timeout", 0.1);
        stream.writeCloseElement(getNamespace(), elementName);
    }
    void getNamespaces(std::set<std::string>& namespaces) const override {
        namespaces.insert(getNamespace());
        m_credentials->getNamespaces(namespaces);
    }

protected:
    BaseObject* reallyClone() const override { return new LoginRequest(*this); }

private:
    AutoPtr<Credentials> m_credentials;
};

struct SampleOptions {
    std::string memoryReport;
};

}  // namespace

namespace {

void addSampleCommand(CLI::App& app) {
    auto options = std::make_shared<SampleOptions>();
    CLI::App* command =
        app.add_subcommand("sample", "Write a sample login request document as XML");
    command->add_option("--memory-report", options->memoryReport,
                        "track the library's allocations and write the memory report here");
    command->callback([options] {
        if (!options->memoryReport.empty()) {
            MemoryManager::initializeMemoryManager(nullptr, true);
        }
        {
            AutoPtr<LoginRequest> request(new LoginRequest);
            std::cout << R"(<?xml version="1.0" encoding="UTF-8"?>)";
            Xml::XmlUtil::serialize(Xml::XmlUtil::sXmlContent, request, &std::cout);
            std::cout << '\n';
            if (!options->memoryReport.empty()) {
                MemoryManager::getMemoryManager()->dumptofile(options->memoryReport.c_str());
            }
        }
    });
}

const CommandRegistration registration(10, addSampleCommand);

}  // namespace

}  // namespace cvsoa
