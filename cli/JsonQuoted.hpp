#ifndef CVSOA_CLI_JSONQUOTED_HPP
#define CVSOA_CLI_JSONQUOTED_HPP

#include <string>
#include <string_view>

namespace cvsoa {

/// A JSON string literal, quotes included: quotes, backslashes and every control byte escaped
/// ("\n", "\r" and "\t" by name, the others as "\u00XX"); every other byte as it is.
std::string jsonQuoted(std::string_view text);

}  // namespace cvsoa

#endif
