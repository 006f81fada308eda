#ifndef CORVANE_SOA_COMMON_XML_JSONSTREAM_HPP
#define CORVANE_SOA_COMMON_XML_JSONSTREAM_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AccountedAllocation.hpp>

#include <ostream>
#include <string>

namespace Corvane::Soa::Common::Xml {

class Utf8String;

/// Streaming JSON writer through which every serialisable object writes its JSON form.
class CORVANE_SOA_API JsonStream {
public:
    explicit JsonStream(std::ostream* out);
    JsonStream(std::ostream* out, Utf8String* transcoder);
    JsonStream(const JsonStream&) = delete;
    JsonStream& operator=(const JsonStream&) = delete;
    ~JsonStream();

    /// Raw text, with no layout handling.
    JsonStream& operator<<(const char* text);
    JsonStream& operator<<(const std::string& text);

    Utf8String* getUtf8Transcoder() const noexcept { return m_transcoder; }

    CORVANE_SOA_ACCOUNTED_ALLOCATION("JsonStream")

private:
    std::ostream* m_out;
    Utf8String* m_transcoder = nullptr;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
