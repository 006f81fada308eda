#ifndef CORVANE_SOA_COMMON_XML_XMLTEXT_HPP
#define CORVANE_SOA_COMMON_XML_XMLTEXT_HPP

#include <corvane/soa/Export.hpp>

#include <cstddef>
#include <string>

namespace Corvane::Soa::Common::Xml {

class Utf8String;

/// Escapes text for element content and attribute values: tab, line feed, form feed, carriage
/// return, '"', '%', '&', '\'', '<' and '>' become character or entity references.
CORVANE_SOA_API std::string toXmlString(const std::string& text);

/// `toXmlString`, then, when `transcoder` is not null, the escaped text converted from the local
/// code page to UTF-8 with `transcoder->encode`.
CORVANE_SOA_API std::string toXmlString(const std::string& text, Utf8String* transcoder);

/// Undoes `toXmlString` (and the other spellings of the same references) in one pass. Any other
/// '&' is kept as it stands.
CORVANE_SOA_API std::string decodeXml(const std::string& text);

/// Escapes text for a JSON string: '"', '\\', '/', backspace, form feed, line feed, carriage
/// return and tab get a backslash escape; other bytes, control bytes included, pass unchanged.
/// In a double-byte local code page the byte after a lead byte is never examined.
CORVANE_SOA_API std::string toJsonString(const std::string& text);

/// `toJsonString`, then, when `transcoder` is not null, the escaped text converted from the
/// local code page to UTF-8 with `transcoder->encode`.
CORVANE_SOA_API std::string toJsonString(const std::string& text, Utf8String* transcoder);

/// Undoes the eight backslash escapes that `toJsonString` writes; any other backslash, "\u"
/// included, is kept with the byte after it.
CORVANE_SOA_API std::string decodeJson(const std::string& text);

/// The namespace URI bound to the prefix of the document's root element (the default
/// namespace when the name has none), or the empty string.
CORVANE_SOA_API std::string getRootNamespace(const std::string& xml);

/// The position of the '<' of the first start tag (or, when `closing` is true, end tag) whose
/// local name is `name`, whatever its prefix; `std::string::npos` when there is none.
CORVANE_SOA_API std::size_t findElement(const std::string& xml, const std::string& name,
                                        bool closing);

/// Whether the byte opens a double-byte character of the default local code page: the
/// Japanese pages (Shift_JIS and its relatives) and the traditional Chinese pages (Big5 and its
/// relatives); never for any other page.
CORVANE_SOA_API bool isFirstOfMultibyte(const char& byte);

/// Sets the default local code page (a converter name such as "Shift_JIS"): the page of every
/// `Utf8String` made without one (`Utf8String::setDefaultEncoding` is the same setting) and of
/// the lead-byte rule above.
CORVANE_SOA_API void setDefaultCharacterEncoding(const std::string& codePage);

/// The default local code page; empty until set.
CORVANE_SOA_API const std::string& getDefaultCharacterEncoding();

}  // namespace Corvane::Soa::Common::Xml

#endif
