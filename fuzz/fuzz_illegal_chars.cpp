// The illegal-character scan reports exactly when it finds something.
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using Corvane::Soa::Common::Xml::SAXToNodeParser;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string report;
    const bool clean = SAXToNodeParser::checkForIllegalXMLchars(text, report);
    if (clean != report.empty()) {
        std::abort();
    }
    return 0;
}
