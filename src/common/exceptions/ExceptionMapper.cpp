#include <corvane/soa/common/exceptions/ExceptionMapper.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ConnectionException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidCredentialsException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidUserException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ProtocolException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ServiceException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

#include <vector>

namespace Corvane::Soa::Common::Exceptions {

namespace {

using ::Corvane::Schemas::Soa::_2006_03::Exceptions::ConnectionException;
using ::Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;
using ::Corvane::Schemas::Soa::_2006_03::Exceptions::InvalidCredentialsException;
using ::Corvane::Schemas::Soa::_2006_03::Exceptions::InvalidUserException;
using ::Corvane::Schemas::Soa::_2006_03::Exceptions::ProtocolException;
using ::Corvane::Schemas::Soa::_2006_03::Exceptions::ServiceException;
using ::Corvane::Schemas::Soa::_2006_03::Exceptions::SoaException;
using ::Corvane::Soa::Common::Xml::lexical_cast;
using ::Corvane::Soa::Common::Xml::toXmlString;
using ::Corvane::Soa::Common::Xml::XMLNode;

// The pieces of a written error document.
constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr const char* kSchemaPrefixes =
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"";
constexpr const char* kUidOpener = " uid=\"";
constexpr const char* kClientIdOpener = " clientId=\"";
constexpr const char* kMessageOpener = "<messages xsi:type=\"xsd:string\"";
constexpr const char* kCodeOpener = " code=\"";
constexpr const char* kLevelOpener = " level=\"";
constexpr const char* kMessageCloser = "</messages>\n";
constexpr const char* kCodeElementOpener = "<code xsi:type=\"xsd:int\">";
constexpr const char* kLevelElementOpener = "<level xsi:type=\"xsd:int\">";
constexpr const char* kResponseOpener = "<cvresponse xsi:type=\"xsd:string\">";
constexpr const char* kResponseCloser = "</cvresponse>\n";

constexpr const char* kUnexpectedInResponse = "Unexected xml document inside CvResponse.\n";

int intAttribute(const XMLNode& node, const char* name) {
    return node.existsAttr(name) ? lexical_cast<int>(node.getAttr(name)) : 0;
}

const XMLNode* childAt(const XMLNode& node, std::size_t index) {
    const std::vector<XMLNode*>& children = node.getChildren();
    return index < children.size() ? children[index] : nullptr;
}

// The message, code and level of one child element; all empty or 0 when there is no child.
struct ChildError {
    explicit ChildError(const XMLNode* child)
        : message(child != nullptr ? child->getText() : std::string()),
          code(child != nullptr ? intAttribute(*child, "code") : 0),
          level(child != nullptr ? intAttribute(*child, "level") : 0) {}

    std::string message;
    int code;
    int level;
};

// A document built from its first child alone.
template <class Exception>
[[noreturn]] void throwFromFirstChild(const XMLNode& root) {
    const ChildError first(childAt(root, 0));
    throw Exception(first.message, first.code, first.level);
}

[[noreturn]] void throwInvalidUser(const XMLNode& root) {
    const XMLNode* code = childAt(root, 0);
    const XMLNode* level = childAt(root, 1);
    const XMLNode* message = childAt(root, 2);
    const XMLNode* response = childAt(root, 3);
    throw InvalidUserException(code != nullptr ? lexical_cast<int>(code->getText()) : 0,
                               level != nullptr ? lexical_cast<int>(level->getText()) : 0,
                               message != nullptr ? message->getText() : std::string(),
                               response != nullptr ? response->getText() : std::string());
}

[[noreturn]] void throwInternalServer(const XMLNode& root) {
    const std::vector<XMLNode*>& children = root.getChildren();
    InternalServerException e = [&] {
        const ChildError first(childAt(root, 0));
        return InternalServerException(first.message, first.code, first.level);
    }();
    for (std::size_t i = 1; i < children.size(); ++i) {
        const XMLNode& child = *children[i];
        e.addMessage(child.getText(), intAttribute(child, "code"), intAttribute(child, "level"));
    }
    throw e;
}

[[noreturn]] void throwService(const XMLNode& root) {
    ServiceException e;
    for (const XMLNode* child : root.getChildren()) {
        e.addError(child->getText(), intAttribute(*child, "code"), intAttribute(*child, "level"));
    }
    if (root.existsAttr("uid")) {
        e.setUid(root.getAttr("uid"));
    }
    if (root.existsAttr("clientId")) {
        e.setClientId(root.getAttr("clientId"));
    }
    throw e;
}

// The legacy "CvResponse": returns for a "CvCorbaResponse", throws for anything else.
void dispatchLegacyResponse(const XMLNode& root) {
    const XMLNode* body = childAt(root, 0);
    if (body != nullptr && body->getName() == "CvCorbaResponse") {
        return;
    }
    if (body == nullptr || body->getName() != "CvError") {
        throw InternalServerException(kUnexpectedInResponse, 0, 0);
    }
    std::string text;
    int code = 0;
    int level = 0;
    bool first = true;
    for (const XMLNode* value : body->getChildren()) {
        if (value->getName() != "CvErrorValue") {
            continue;
        }
        if (first) {
            code = intAttribute(*value, "code");
            level = intAttribute(*value, "level");
        } else {
            text += '\n';
        }
        first = false;
        text += value->getAttr("message");
    }
    throw InternalServerException(text, code, level);
}

// The six kinds, and any other exception.
enum class Kind {
    InvalidCredentials,
    InvalidUser,
    Protocol,
    Connection,
    InternalServer,
    Service,
    Other
};

Kind kindOf(const SoaException& e) {
    if (dynamic_cast<const InvalidCredentialsException*>(&e) != nullptr) {
        return Kind::InvalidCredentials;
    }
    if (dynamic_cast<const InvalidUserException*>(&e) != nullptr) {
        return Kind::InvalidUser;
    }
    if (dynamic_cast<const ProtocolException*>(&e) != nullptr) {
        return Kind::Protocol;
    }
    if (dynamic_cast<const ConnectionException*>(&e) != nullptr) {
        return Kind::Connection;
    }
    if (dynamic_cast<const InternalServerException*>(&e) != nullptr) {
        return Kind::InternalServer;
    }
    if (dynamic_cast<const ServiceException*>(&e) != nullptr) {
        return Kind::Service;
    }
    return Kind::Other;
}

// Collects the document in a buffer and hands the stream large pieces: a stream written one
// token at a time costs several times as much.
class Sink {
public:
    explicit Sink(std::ostream& out) : m_out(out) {}
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    ~Sink() = default;

    Sink& operator<<(const char* text) { return append(text); }
    Sink& operator<<(const std::string& text) { return append(text); }
    Sink& operator<<(char c) {
        m_buffer += c;
        return *this;
    }
    Sink& operator<<(int value) { return append(lexical_cast<std::string>(value)); }

    void flush() {
        m_out.write(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
        m_buffer.clear();
    }

private:
    static constexpr std::size_t kChunk = std::size_t{64} * 1024;

    template <class Text>
    Sink& append(const Text& text) {
        m_buffer += text;
        if (m_buffer.size() >= kChunk) {
            flush();
        }
        return *this;
    }

    std::ostream& m_out;
    std::string m_buffer;
};

void writeMessage(Sink& out, const std::string& message, int code, int level) {
    out << kMessageOpener << kCodeOpener << code << '"' << kLevelOpener << level << "\">"
        << toXmlString(message) << kMessageCloser;
}

}  // namespace

void ExceptionMapper::parseExceptionString(const std::string& xml) {
    ::Corvane::Soa::Common::Xml::SAXToNodeParser parser;
    parser.parseString(xml);
    parseExceptionString(parser.getRootNode());
}

void ExceptionMapper::parseExceptionString(const XMLNode* root) {
    if (root == nullptr) {
        return;
    }
    const std::string& name = root->getName();
    if (name == invalidUserExceptionNamespace) {
        throwInvalidUser(*root);
    }
    if (name == invalidCredentialsExceptionNamespace) {
        throwFromFirstChild<InvalidCredentialsException>(*root);
    }
    if (name == internalServerExceptionNamespace) {
        throwInternalServer(*root);
    }
    if (name == connectionExceptionNamespace) {
        throwFromFirstChild<ConnectionException>(*root);
    }
    if (name == protocolExceptionNamespace) {
        throwFromFirstChild<ProtocolException>(*root);
    }
    if (name == serviceExceptionNamespace) {
        throwService(*root);
    }
    if (name == "CvResponse") {
        dispatchLegacyResponse(*root);
    }
}

void ExceptionMapper::throwSoaException(SoaException& e) {
    switch (kindOf(e)) {
        case Kind::InvalidCredentials:
            throw dynamic_cast<InvalidCredentialsException&>(e);
        case Kind::InvalidUser:
            throw dynamic_cast<InvalidUserException&>(e);
        case Kind::Protocol:
            throw ProtocolException(e.getMessage(), e.getCode(), e.getLevel());
        case Kind::Connection:
            throw ConnectionException(e.getMessage(), e.getCode(), e.getLevel());
        case Kind::InternalServer:
            throw dynamic_cast<InternalServerException&>(e);
        case Kind::Service:
            throw dynamic_cast<ServiceException&>(e);
        case Kind::Other:
            break;
    }
    throw InternalServerException(e.getMessage(), e.getCode(), e.getLevel());
}

void ExceptionMapper::writeSoaException(SoaException& e, std::ostream& out) {
    writeSoaException(getTargetNameSpace(e), e, out);
}

void ExceptionMapper::writeSoaException(const std::string& nameSpace, SoaException& e,
                                        std::ostream& out) {
    const Kind kind = kindOf(e);
    const char* name = internalServerExceptionNamespace;
    switch (kind) {
        case Kind::InvalidCredentials:
            name = invalidCredentialsExceptionNamespace;
            break;
        case Kind::InvalidUser:
            name = invalidUserExceptionNamespace;
            break;
        case Kind::Protocol:
            name = protocolExceptionNamespace;
            break;
        case Kind::Connection:
            name = connectionExceptionNamespace;
            break;
        case Kind::Service:
            name = serviceExceptionNamespace;
            break;
        case Kind::InternalServer:
        case Kind::Other:
            break;
    }
    const std::string element = nameSpace.empty() ? std::string(name) : "ns0:" + std::string(name);

    Sink document(out);
    document << kDeclaration << '<' << element;
    if (!nameSpace.empty()) {
        document << " xmlns:ns0=\"" << toXmlString(nameSpace) << '"';
    }
    document << kSchemaPrefixes;
    if (kind == Kind::Service) {
        const auto& service = dynamic_cast<const ServiceException&>(e);
        if (!service.getUid().empty()) {
            document << kUidOpener << toXmlString(service.getUid()) << '"';
        }
        if (!service.getClientId().empty()) {
            document << kClientIdOpener << toXmlString(service.getClientId()) << '"';
        }
    }
    document << ">\n";

    if (kind == Kind::InvalidUser) {
        document << kCodeElementOpener << e.getCode() << "</code>\n";
        document << kLevelElementOpener << e.getLevel() << "</level>\n";
        document << kMessageOpener << '>' << toXmlString(e.getMessage()) << kMessageCloser;
        document << kResponseOpener
                 << toXmlString(dynamic_cast<const InvalidUserException&>(e).getCvResponse())
                 << kResponseCloser;
    } else {
        const bool firstOnly =
            kind == Kind::InvalidCredentials || kind == Kind::Protocol || kind == Kind::Connection;
        for (const auto& error : e.getErrors()) {
            writeMessage(document, error->getMessage(), error->getCode(), error->getLevel());
            if (firstOnly) {
                break;
            }
        }
    }
    document << "</" << element << ">\n";
    document.flush();
}

std::string ExceptionMapper::getTargetNameSpace(const SoaException& e) { return e.getNamespace(); }

}  // namespace Corvane::Soa::Common::Exceptions
