#include <corvane/soa/internal/json/IndexOutOfRangeException.hpp>
#include <corvane/soa/internal/json/InvalidTypeException.hpp>
#include <corvane/soa/internal/json/JSONException.hpp>
#include <corvane/soa/internal/json/KeyNotFoundException.hpp>
#include <corvane/soa/internal/json/ParsingException.hpp>

#include <utility>

namespace Corvane::Soa::Internal::Json {

JSONException::JSONException() = default;
JSONException::JSONException(std::string message) : m_message(std::move(message)) {}
JSONException::JSONException(const JSONException& other) = default;
JSONException& JSONException::operator=(const JSONException& other) = default;
JSONException::~JSONException() = default;

std::string JSONException::getMessage() const { return m_message; }

const char* JSONException::what() const noexcept { return m_message.c_str(); }

// The derived exceptions differ only in their type (a class name, which parentheses would break).
// NOLINTBEGIN(bugprone-macro-parentheses)
#define CORVANE_SOA_JSON_EXCEPTION(Name)                                   \
    Name::Name() = default;                                                \
    Name::Name(std::string message) : JSONException(std::move(message)) {} \
    Name::Name(const Name& other) = default;                               \
    Name& Name::operator=(const Name& other) = default;                    \
    Name::~Name() = default;
// NOLINTEND(bugprone-macro-parentheses)

CORVANE_SOA_JSON_EXCEPTION(KeyNotFoundException)
CORVANE_SOA_JSON_EXCEPTION(InvalidTypeException)
CORVANE_SOA_JSON_EXCEPTION(IndexOutOfRangeException)
CORVANE_SOA_JSON_EXCEPTION(ParsingException)

#undef CORVANE_SOA_JSON_EXCEPTION

}  // namespace Corvane::Soa::Internal::Json
