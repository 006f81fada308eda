#ifndef CORVANE_SOA_INTERNAL_JSON_PARSER_HPP
#define CORVANE_SOA_INTERNAL_JSON_PARSER_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/internal/json/Value.hpp>

#include <memory>
#include <string>

namespace Corvane::Soa::Common::Xml {
class Utf8String;
}  // namespace Corvane::Soa::Common::Xml

namespace Corvane::Soa::Internal::Json {

/// Reads JSON text into a tree of values. The root must be an object or an array. Strings that
/// have the shape of a date (dddd-dd-ddT...) become dates; strings are converted from UTF-8 to
/// the local code page and unescaped; keys are kept exactly as written.
///
/// Errors throw `ParsingException` at the first fault, the message ending in
/// "Line L character C.\n"; a malformed date throws the date exception. Nesting deeper than 1024
/// levels is refused.
class CORVANE_SOA_API Parser {
public:
    Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;
    ~Parser();

    ::Corvane::Soa::Common::AutoPtr<Value> parse(const std::string& text);

    /// The deepest nesting of objects and arrays that is accepted.
    static constexpr int kMaxDepth = 1024;

    /// The handler of the library's scanner that builds the tree; the library's own.
    class TreeBuilder;

private:
    // Turns the UTF-8 text of strings into the local code page (a copy when that is UTF-8).
    std::unique_ptr<::Corvane::Soa::Common::Xml::Utf8String> m_transcoder;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
