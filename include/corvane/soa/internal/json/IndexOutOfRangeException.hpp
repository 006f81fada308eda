#ifndef CORVANE_SOA_INTERNAL_JSON_INDEXOUTOFRANGEEXCEPTION_HPP
#define CORVANE_SOA_INTERNAL_JSON_INDEXOUTOFRANGEEXCEPTION_HPP

#include <corvane/soa/internal/json/JSONException.hpp>

namespace Corvane::Soa::Internal::Json {

/// An index beyond the end of a JSON array.
class CORVANE_SOA_API IndexOutOfRangeException : public JSONException {
public:
    IndexOutOfRangeException();
    explicit IndexOutOfRangeException(std::string message);
    IndexOutOfRangeException(const IndexOutOfRangeException& other);
    IndexOutOfRangeException& operator=(const IndexOutOfRangeException& other);
    ~IndexOutOfRangeException() override;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
