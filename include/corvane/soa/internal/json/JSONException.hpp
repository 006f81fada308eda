#ifndef CORVANE_SOA_INTERNAL_JSON_JSONEXCEPTION_HPP
#define CORVANE_SOA_INTERNAL_JSON_JSONEXCEPTION_HPP

#include <corvane/soa/Export.hpp>

#include <exception>
#include <string>

namespace Corvane::Soa::Internal::Json {

/// Root of the JSON exceptions: a message.
class CORVANE_SOA_API JSONException : public std::exception {
public:
    JSONException();
    explicit JSONException(std::string message);
    JSONException(const JSONException& other);
    JSONException& operator=(const JSONException& other);
    ~JSONException() override;

    virtual std::string getMessage() const;
    const char* what() const noexcept override;

private:
    std::string m_message;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
