// Any byte string given to the date reader either yields a value that writes itself back and
// survives arithmetic, or raises the date exception; nothing else may happen.
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

using Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;
using Corvane::Soa::Common::DateTime;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const DateTime date(text);
        const std::string wire = date.toString();
        const DateTime again(wire);
        (void)(date + again);
        (void)(date - again);
        (void)(date < again);
        (void)date.toString("%Y-%m-%d %H:%M:%S %j %a");
        (void)date.timeZoneOffset();
    } catch (const InternalServerException&) {
    }
    return 0;
}
