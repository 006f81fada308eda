#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>

namespace Corvane::Soa::Common::Xml {

std::string toXmlString(const std::string& text, Utf8String* transcoder) {
    std::string escaped = toXmlString(text);
    if (transcoder == nullptr) {
        return escaped;
    }
    std::string utf8;
    transcoder->encode(escaped, utf8);
    return utf8;
}

std::string toJsonString(const std::string& text, Utf8String* transcoder) {
    std::string escaped = toJsonString(text);
    if (transcoder == nullptr) {
        return escaped;
    }
    std::string utf8;
    transcoder->encode(escaped, utf8);
    return utf8;
}

}  // namespace Corvane::Soa::Common::Xml
