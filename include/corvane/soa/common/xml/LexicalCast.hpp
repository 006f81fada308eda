#ifndef CORVANE_SOA_COMMON_XML_LEXICALCAST_HPP
#define CORVANE_SOA_COMMON_XML_LEXICALCAST_HPP

#include <corvane/soa/Export.hpp>

#include <string>

namespace Corvane::Soa::Common {
class DateTime;
}  // namespace Corvane::Soa::Common

namespace Corvane::Soa::Common::Xml {

/// The one conversion between the scalar kinds and their text, for both wire forms.
///
/// Dates use the wire text of `DateTime` (include DateTime.hpp to call those two). Only the
/// specialisations declared below exist. Number texts always use the "C" conventions (a '.' decimal
/// point, no grouping); floating-point numbers are written with 17 significant digits in the
/// shorter of fixed and scientific notation. Parsing never throws: text that is not an int gives
/// -2147483648, unknown boolean text gives false, and the floating-point parsers take whatever
/// prefix is a number (0 when none).
template <class To, class From>
To lexical_cast(const From&);

template <>
CORVANE_SOA_API std::string lexical_cast<std::string, int>(const int& value);
template <>
CORVANE_SOA_API std::string lexical_cast<std::string, double>(const double& value);
template <>
CORVANE_SOA_API std::string lexical_cast<std::string, float>(const float& value);
template <>
CORVANE_SOA_API std::string lexical_cast<std::string, bool>(const bool& value);
template <>
CORVANE_SOA_API std::string lexical_cast<std::string, std::string>(const std::string& value);
template <>
CORVANE_SOA_API std::string lexical_cast<std::string, DateTime>(const DateTime& value);
template <>
CORVANE_SOA_API DateTime lexical_cast<DateTime, std::string>(const std::string& text);
template <>
CORVANE_SOA_API bool lexical_cast<bool, std::string>(const std::string& text);
template <>
CORVANE_SOA_API int lexical_cast<int, std::string>(const std::string& text);
template <>
CORVANE_SOA_API double lexical_cast<double, std::string>(const std::string& text);
template <>
CORVANE_SOA_API float lexical_cast<float, std::string>(const std::string& text);

}  // namespace Corvane::Soa::Common::Xml

#endif
