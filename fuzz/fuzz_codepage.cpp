// Arbitrary bytes converted to and from the double-byte pages either convert or raise the
// conversion exception.
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

using Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;
using Corvane::Soa::Common::Xml::Utf8String;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Utf8String shiftJis("Shift_JIS");
    static Utf8String big5("Big5");
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (Utf8String* converter : {&shiftJis, &big5}) {
        try {
            std::string utf8;
            converter->encode(text, utf8);
        } catch (const InternalServerException&) {
        }
        try {
            std::string local;
            converter->decode(text, local);
        } catch (const InternalServerException&) {
        }
    }
    return 0;
}
