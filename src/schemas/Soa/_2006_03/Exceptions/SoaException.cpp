#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ConnectionException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidCredentialsException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidUserException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ProtocolException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ServiceException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {

using Corvane::Soa::Common::Xml::BaseObject;
SoaException::SoaException() : SoaException("SoaException") {}

SoaException::SoaException(const char* typeName) : BaseObject(kNamespaceUri, typeName) {}

SoaException::SoaException(const char* typeName, const std::string& message, int code, int level)
    : SoaException(typeName) {
    addError(message, code, level);
}

SoaException::SoaException(const SoaException& other) = default;
SoaException& SoaException::operator=(const SoaException& other) = default;
SoaException::~SoaException() = default;

void SoaException::addError(const std::string& message, int code, int level) {
    m_errors.emplace_back(new Error(message, code, level));
}

std::string SoaException::getMessage() const {
    return m_errors.empty() ? std::string() : m_errors.front()->getMessage();
}

int SoaException::getCode() const { return m_errors.empty() ? 0 : m_errors.front()->getCode(); }

int SoaException::getLevel() const { return m_errors.empty() ? 0 : m_errors.front()->getLevel(); }

const char* SoaException::what() const noexcept {
    return m_errors.empty() ? "" : m_errors.front()->getMessage().c_str();
}

BaseObject* SoaException::reallyClone() const { return new SoaException(*this); }

// The exceptions built from one message, code and level differ only in their type (a class
// name, which parentheses would break).
// NOLINTBEGIN(bugprone-macro-parentheses)
#define CORVANE_SOA_MESSAGE_EXCEPTION(Name)                     \
    Name::Name() : SoaException(#Name) {}                       \
    Name::Name(const std::string& message, int code, int level) \
        : SoaException(#Name, message, code, level) {}          \
    Name::Name(const Name& other) = default;                    \
    Name& Name::operator=(const Name& other) = default;         \
    Name::~Name() = default;                                    \
    BaseObject* Name::reallyClone() const { return new Name(*this); }
// NOLINTEND(bugprone-macro-parentheses)

CORVANE_SOA_MESSAGE_EXCEPTION(InternalServerException)
CORVANE_SOA_MESSAGE_EXCEPTION(InvalidCredentialsException)
CORVANE_SOA_MESSAGE_EXCEPTION(ConnectionException)
CORVANE_SOA_MESSAGE_EXCEPTION(ProtocolException)

#undef CORVANE_SOA_MESSAGE_EXCEPTION

InvalidUserException::InvalidUserException() : SoaException("InvalidUserException") {}

InvalidUserException::InvalidUserException(int code, int level, const std::string& message,
                                           const std::string& response)
    : SoaException("InvalidUserException", message, code, level), m_cvResponse(response) {}

InvalidUserException::InvalidUserException(const InvalidUserException& other) = default;
InvalidUserException& InvalidUserException::operator=(const InvalidUserException& other) = default;
InvalidUserException::~InvalidUserException() = default;

BaseObject* InvalidUserException::reallyClone() const { return new InvalidUserException(*this); }

ServiceException::ServiceException() : SoaException("ServiceException") {}
ServiceException::ServiceException(const ServiceException& other) = default;
ServiceException& ServiceException::operator=(const ServiceException& other) = default;
ServiceException::~ServiceException() = default;

BaseObject* ServiceException::reallyClone() const { return new ServiceException(*this); }

}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions
