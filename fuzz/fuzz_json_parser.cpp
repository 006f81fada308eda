// Any byte string given to the JSON parser yields a tree or one of its exceptions; a tree prints.
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/ParsingException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

using Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;
using namespace Corvane::Soa::Internal::Json;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        Parser parser;
        const auto root = parser.parse(text);
        std::ostringstream out;
        if (const auto object = root.dynamicCast<JSONObject>()) {
            object->serializeObject(out);
        } else if (const auto array = root.dynamicCast<JSONArray>()) {
            array->serializeDocument(out);
        }
    } catch (const ParsingException&) {
    } catch (const InternalServerException&) {
    }
    return 0;
}
