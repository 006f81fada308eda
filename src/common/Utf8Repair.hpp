#ifndef CORVANE_SOA_COMMON_UTF8REPAIR_HPP
#define CORVANE_SOA_COMMON_UTF8REPAIR_HPP

#include <string>
#include <string_view>

namespace Corvane::Soa::Common {

/// Whether `text` is UTF-8; when it is not, `repaired` gets the text with each malformed
/// sequence replaced by U+FFFD, counted as the Java platform's UTF-8 decoder counts them: the
/// longest start of a valid sequence is one replacement, except that an encoded surrogate
/// (three bytes ED A0..BF 80..BF) is one replacement, and an incomplete sequence at the end is
/// one. Valid text is not copied.
bool isUtf8OrRepair(std::string_view text, std::string& repaired);

}  // namespace Corvane::Soa::Common

#endif
