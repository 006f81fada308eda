#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/internal/json/Parser.hpp>

#include "internal/json/JsonScanner.hpp"
#include "internal/json/TreeBuilder.hpp"

namespace Corvane::Soa::Internal::Json {

Parser::Parser() : m_transcoder(std::make_unique<::Corvane::Soa::Common::Xml::Utf8String>()) {}

Parser::~Parser() = default;

::Corvane::Soa::Common::AutoPtr<Value> Parser::parse(const std::string& text) {
    TreeBuilder builder;
    JsonScanner<TreeBuilder> scanner(text.data(), text.size(), *m_transcoder, builder);
    return scanner.parseDocument();
}

}  // namespace Corvane::Soa::Internal::Json
