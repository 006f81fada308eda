// Any byte string reads as some version number; comparing it is total and consistent.
#include <corvane/soa/common/Version.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using Corvane::Soa::Common::Version;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const Version version(text);
    const Version label(Version::getCorvaneVersionLabel());
    const int relations =
        (version < label ? 1 : 0) + (version == label ? 1 : 0) + (version > label ? 1 : 0);
    if (relations != 1) {
        std::abort();
    }
    return 0;
}
