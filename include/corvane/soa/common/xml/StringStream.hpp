#ifndef CORVANE_SOA_COMMON_XML_STRINGSTREAM_HPP
#define CORVANE_SOA_COMMON_XML_STRINGSTREAM_HPP

#include <corvane/soa/Export.hpp>

#include <ostream>
#include <streambuf>
#include <string>

namespace Corvane::Soa::Common::Xml {

/// An output stream that appends to a string it owns. Writes of whole pieces go straight into
/// the string (no per-character virtual calls), which makes it the cheapest target for the
/// writers.
class CORVANE_SOA_API StringStream : public std::ostream {
public:
    StringStream();
    StringStream(const StringStream&) = delete;
    StringStream& operator=(const StringStream&) = delete;
    ~StringStream() override;

    const std::string& str() const noexcept { return m_buffer.text; }
    void str(std::string& out) const { out = m_buffer.text; }
    void clear() { m_buffer.text.clear(); }

private:
    class Buffer : public std::streambuf {
    public:
        std::string text;

    protected:
        int_type overflow(int_type c) override;
        std::streamsize xsputn(const char* s, std::streamsize n) override;
    };

    Buffer m_buffer;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
