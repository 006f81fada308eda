#ifndef CORVANE_SOA_INTERNAL_JSON_INVALIDTYPEEXCEPTION_HPP
#define CORVANE_SOA_INTERNAL_JSON_INVALIDTYPEEXCEPTION_HPP

#include <corvane/soa/internal/json/JSONException.hpp>

namespace Corvane::Soa::Internal::Json {

/// A JSON value is not of the kind asked for, or is null.
class CORVANE_SOA_API InvalidTypeException : public JSONException {
public:
    InvalidTypeException();
    explicit InvalidTypeException(std::string message);
    InvalidTypeException(const InvalidTypeException& other);
    InvalidTypeException& operator=(const InvalidTypeException& other);
    ~InvalidTypeException() override;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
