// Any byte string loads as a properties text or fails with an IOException; nothing else. What
// loads saves to a text that loads back into the same keys and values in the same order, and
// saving that gives the same text again.
#include <corvane/soa/common/Properties.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

using Corvane::Soa::Common::Properties;
using Corvane::Soa::Common::Exceptions::IOException;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Properties properties;
    try {
        properties.loadText(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const IOException&) {
        return 0;
    }
    const std::string text = properties.toText();
    Properties reloaded;
    reloaded.loadText(text);
    if (reloaded != properties || reloaded.toText() != text) {
        std::abort();
    }
    return 0;
}
