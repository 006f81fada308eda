#ifndef CORVANE_SOA_INTERNAL_JSON_PARSINGEXCEPTION_HPP
#define CORVANE_SOA_INTERNAL_JSON_PARSINGEXCEPTION_HPP

#include <corvane/soa/internal/json/JSONException.hpp>

namespace Corvane::Soa::Internal::Json {

/// JSON text that cannot be read; the message ends with the line and character.
class CORVANE_SOA_API ParsingException : public JSONException {
public:
    ParsingException();
    explicit ParsingException(std::string message);
    ParsingException(const ParsingException& other);
    ParsingException& operator=(const ParsingException& other);
    ~ParsingException() override;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
