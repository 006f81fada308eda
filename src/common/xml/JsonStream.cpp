#include <corvane/soa/common/xml/JsonStream.hpp>

namespace Corvane::Soa::Common::Xml {

JsonStream::JsonStream(std::ostream* out) : m_out(out) {}

JsonStream::JsonStream(std::ostream* out, Utf8String* transcoder)
    : m_out(out), m_transcoder(transcoder) {}

JsonStream::~JsonStream() = default;

JsonStream& JsonStream::operator<<(const char* text) {
    *m_out << text;
    return *this;
}

JsonStream& JsonStream::operator<<(const std::string& text) {
    *m_out << text;
    return *this;
}

}  // namespace Corvane::Soa::Common::Xml
