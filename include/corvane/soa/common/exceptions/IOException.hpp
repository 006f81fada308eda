#ifndef CORVANE_SOA_COMMON_EXCEPTIONS_IOEXCEPTION_HPP
#define CORVANE_SOA_COMMON_EXCEPTIONS_IOEXCEPTION_HPP

#include <corvane/soa/Export.hpp>

#include <exception>
#include <string>

namespace Corvane::Soa::Common::Exceptions {

/// A file that cannot be opened, read or written.
class CORVANE_SOA_API IOException : public std::exception {
public:
    explicit IOException(std::string message);
    IOException(const IOException& other);
    IOException& operator=(const IOException& other);
    ~IOException() override;

    const std::string& getMessage() const noexcept { return m_message; }
    const char* what() const noexcept override;

private:
    std::string m_message;
};

}  // namespace Corvane::Soa::Common::Exceptions

#endif
