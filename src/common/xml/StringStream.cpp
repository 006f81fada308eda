#include <corvane/soa/common/xml/StringStream.hpp>

namespace Corvane::Soa::Common::Xml {

StringStream::StringStream() : std::ostream(nullptr) { rdbuf(&m_buffer); }

StringStream::~StringStream() = default;

StringStream::Buffer::int_type StringStream::Buffer::overflow(int_type c) {
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        text.push_back(traits_type::to_char_type(c));
    }
    return traits_type::not_eof(c);
}

std::streamsize StringStream::Buffer::xsputn(const char* s, std::streamsize n) {
    text.append(s, static_cast<std::size_t>(n));
    return n;
}

}  // namespace Corvane::Soa::Common::Xml
