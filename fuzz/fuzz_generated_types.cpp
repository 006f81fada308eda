// Any byte string bound as XML or JSON to any registered type, built through the type
// registry, yields an object (written back in both forms, its clone writing the same XML) or
// one of the readers' own exceptions; nothing else.
#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/TypeRegistry.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/internal/json/JSONException.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace Xml = Corvane::Soa::Common::Xml;
namespace Json = Corvane::Soa::Internal::Json;
using Corvane::Soa::Common::AutoPtr;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    // The first two bytes pick the type; the rest is the document.
    static const std::vector<std::string> types = Xml::TypeRegistry::names();
    const std::size_t pick = (std::size_t{data[0]} << 8U | data[1]) % types.size();
    const AutoPtr<Xml::BaseObject> object = Xml::TypeRegistry::create(types[pick]);
    if (!object) {
        std::abort();
    }
    const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
    try {
        if (!text.empty() && text[0] == '{') {
            object->parseJSON(Json::Parser().parse(text).dynamicCast<Json::JSONObject>());
        } else {
            Xml::SAXToNodeParser parser;
            object->parse(*parser.parseString(text));
        }
    } catch (const Corvane::Soa::Common::Exceptions::DomException&) {
        return 0;
    } catch (const Json::JSONException&) {
        return 0;
    }
    // A clone writes the same document: copies take every field, those kept in a block too.
    const AutoPtr<Xml::BaseObject> copy(object->clone());
    const auto xmlOf = [](const Xml::BaseObject& bound) {
        Xml::XmlStream xml;
        bound.outputXML(xml);
        return xml.str();
    };
    if (xmlOf(*object) != xmlOf(*copy)) {
        std::abort();
    }
    std::ostringstream json;
    Xml::JsonStream stream(&json);
    object->writeJSON(&stream);
    return 0;
}
