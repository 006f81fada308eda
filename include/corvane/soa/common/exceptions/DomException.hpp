#ifndef CORVANE_SOA_COMMON_EXCEPTIONS_DOMEXCEPTION_HPP
#define CORVANE_SOA_COMMON_EXCEPTIONS_DOMEXCEPTION_HPP

#include <corvane/soa/Export.hpp>

#include <exception>
#include <string>

namespace Corvane::Soa::Common::Exceptions {

/// XML that cannot be read, or a policy file in the wrong format.
class CORVANE_SOA_API DomException : public std::exception {
public:
    explicit DomException(std::string message);
    DomException(const DomException& other);
    DomException& operator=(const DomException& other);
    ~DomException() override;

    const std::string& getMessage() const noexcept { return m_message; }
    const char* what() const noexcept override;

private:
    std::string m_message;
};

}  // namespace Corvane::Soa::Common::Exceptions

#endif
