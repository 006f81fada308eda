#include <corvane/soa/common/exceptions/SignatureException.hpp>

#include <utility>

namespace Corvane::Soa::Common::Exceptions {

SignatureException::SignatureException(std::string message) : m_message(std::move(message)) {}
SignatureException::SignatureException(const SignatureException& other) = default;
SignatureException& SignatureException::operator=(const SignatureException& other) = default;
SignatureException::~SignatureException() = default;
const char* SignatureException::what() const noexcept { return m_message.c_str(); }

}  // namespace Corvane::Soa::Common::Exceptions
