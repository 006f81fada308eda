#ifndef CORVANE_SOA_SRC_COMMON_XML_XMLTEXTAPPEND_HPP
#define CORVANE_SOA_SRC_COMMON_XML_XMLTEXTAPPEND_HPP

// Escaping and unescaping that write into a caller's buffer, for the writers and readers inside
// the library. Not part of the exported interface.

#include <cstddef>
#include <string>

namespace Corvane::Soa::Common::Xml {

/// Appends to `out` exactly what `toJsonString` returns for the `size` bytes at `text` (the
/// same escapes, the same double-byte lead-byte rule), without building a string of its own.
void appendJsonString(std::string& out, const char* text, std::size_t size);

/// Writes at `out` exactly what `toJsonString` returns for the `size` bytes at `text` and returns
/// the end of what it wrote. `out` must have room for `2 * size` bytes: every replacement is two
/// bytes long.
char* escapeJsonInto(char* out, const char* text, std::size_t size);

/// Appends to `out` exactly what `decodeJson` returns for the `size` bytes at `text`.
void appendDecodedJson(std::string& out, const char* text, std::size_t size);

}  // namespace Corvane::Soa::Common::Xml

#endif
