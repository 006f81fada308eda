#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <utility>

namespace Corvane::Soa::Common::Exceptions {

// Name is a class name, which parentheses would break.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define CORVANE_SOA_TEXT_EXCEPTION(Name)                               \
    Name::Name(std::string message) : m_message(std::move(message)) {} \
    Name::Name(const Name& other) = default;                           \
    Name& Name::operator=(const Name& other) = default;                \
    Name::~Name() = default;                                           \
    const char* Name::what() const noexcept { return m_message.c_str(); }
// NOLINTEND(bugprone-macro-parentheses)

CORVANE_SOA_TEXT_EXCEPTION(DomException)
CORVANE_SOA_TEXT_EXCEPTION(IOException)

#undef CORVANE_SOA_TEXT_EXCEPTION

}  // namespace Corvane::Soa::Common::Exceptions
