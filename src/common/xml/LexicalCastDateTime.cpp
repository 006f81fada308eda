// The date conversions of lexical_cast: the wire text form of DateTime.
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>

namespace Corvane::Soa::Common::Xml {

template <>
std::string lexical_cast<std::string, DateTime>(const DateTime& value) {
    return value.toString();
}

template <>
DateTime lexical_cast<DateTime, std::string>(const std::string& text) {
    return DateTime(text);
}

}  // namespace Corvane::Soa::Common::Xml
