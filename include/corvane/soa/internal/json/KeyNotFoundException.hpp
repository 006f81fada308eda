#ifndef CORVANE_SOA_INTERNAL_JSON_KEYNOTFOUNDEXCEPTION_HPP
#define CORVANE_SOA_INTERNAL_JSON_KEYNOTFOUNDEXCEPTION_HPP

#include <corvane/soa/internal/json/JSONException.hpp>

namespace Corvane::Soa::Internal::Json {

/// A JSON object has no member of the key asked for.
class CORVANE_SOA_API KeyNotFoundException : public JSONException {
public:
    KeyNotFoundException();
    explicit KeyNotFoundException(std::string message);
    KeyNotFoundException(const KeyNotFoundException& other);
    KeyNotFoundException& operator=(const KeyNotFoundException& other);
    ~KeyNotFoundException() override;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
