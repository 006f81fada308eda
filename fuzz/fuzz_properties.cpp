// Any byte string loads as a properties text or fails with an IOException; nothing else. What
// loads saves to a text that loads back into the same keys and values in the same order, and
// saving that gives the same text again. Every key is found with its value, and loading into an
// object that holds a key already ends as setting each loaded key in turn does.
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
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    Properties properties;
    try {
        properties.loadText(input);
    } catch (const IOException&) {
        return 0;
    }
    const std::string text = properties.toText();
    Properties reloaded;
    reloaded.loadText(text);
    if (reloaded != properties || reloaded.toText() != text) {
        std::abort();
    }
    Properties merged;
    Properties expected;
    merged.set("\x01", "held");
    expected.set("\x01", "held");
    merged.loadText(input);
    for (const auto& [key, value] : properties.entries()) {
        const std::string* found = properties.find(key);
        if (found == nullptr || *found != value) {
            std::abort();
        }
        expected.set(key, value);
    }
    if (merged != expected) {
        std::abort();
    }
    return 0;
}
