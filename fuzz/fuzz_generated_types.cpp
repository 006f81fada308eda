// Any byte string bound as XML or JSON to one of the generated response and envelope types,
// built through the type registry, yields an object (written back in both forms) or one of the
// readers' own exceptions; nothing else.
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

namespace Xml = Corvane::Soa::Common::Xml;
namespace Json = Corvane::Soa::Internal::Json;
using Corvane::Soa::Common::AutoPtr;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    static const char* const types[] = {
        "http://corvane.com/Schemas/Core/2006-03/Session.LoginResponse",
        "http://corvane.com/Schemas/Core/2006-03/FileManagement.FileTicketsResponse",
        "http://corvane.com/Schemas/Soa/2006-09/ClientContext.RequestEnvelope",
    };
    // The first byte picks the type; the rest is the document.
    const AutoPtr<Xml::BaseObject> object = Xml::TypeRegistry::create(types[data[0] % 3]);
    if (!object) {
        std::abort();
    }
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
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
    Xml::XmlStream xml;
    object->outputXML(xml);
    std::ostringstream json;
    Xml::JsonStream stream(&json);
    object->writeJSON(&stream);
    return 0;
}
