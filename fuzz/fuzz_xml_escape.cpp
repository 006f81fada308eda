// Escaping then decoding gives back any byte string; decoding arbitrary text stays in bounds.

#include <corvane/soa/common/xml/XmlText.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    namespace Xml = Corvane::Soa::Common::Xml;
    const std::string text(reinterpret_cast<const char*>(data), size);

    const std::string escaped = Xml::toXmlString(text);
    if (Xml::decodeXml(escaped) != text) {
        std::fprintf(stderr, "decodeXml(toXmlString(s)) != s for %zu input bytes\n", size);
        std::abort();
    }
    static_cast<void>(Xml::decodeXml(text));
    return 0;
}
