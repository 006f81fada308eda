#ifndef CORVANE_SOA_COMMON_EXCEPTIONS_SIGNATUREEXCEPTION_HPP
#define CORVANE_SOA_COMMON_EXCEPTIONS_SIGNATUREEXCEPTION_HPP

#include <corvane/soa/Export.hpp>

#include <exception>
#include <string>

namespace Corvane::Soa::Common::Exceptions {

/// A key, certificate or signature that cannot be read or used: not PEM, a wrong passphrase, a
/// key of a kind that cannot sign, a signature that is not base64 text. The message names the
/// file and what is wrong with it. (A signature that is well formed but does not match is not
/// an error: verifying it gives false.)
class CORVANE_SOA_API SignatureException : public std::exception {
public:
    explicit SignatureException(std::string message);
    SignatureException(const SignatureException& other);
    SignatureException& operator=(const SignatureException& other);
    ~SignatureException() override;

    const std::string& getMessage() const noexcept { return m_message; }
    const char* what() const noexcept override;

private:
    std::string m_message;
};

}  // namespace Corvane::Soa::Common::Exceptions

#endif
