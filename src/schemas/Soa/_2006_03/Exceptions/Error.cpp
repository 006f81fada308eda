#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/Error.hpp>

#include <utility>

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {

Error::Error() : BaseObject(kNamespaceUri, "Error") {}

Error::Error(std::string message, int code, int level)
    : BaseObject(kNamespaceUri, "Error"),
      m_message(std::move(message)),
      m_code(code),
      m_level(level) {}

Error::Error(const Error& other) = default;
Error& Error::operator=(const Error& other) = default;
Error::~Error() = default;

Corvane::Soa::Common::Xml::BaseObject* Error::reallyClone() const { return new Error(*this); }

}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions
