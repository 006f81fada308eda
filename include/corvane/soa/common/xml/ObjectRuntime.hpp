#ifndef CORVANE_SOA_COMMON_XML_OBJECTRUNTIME_HPP
#define CORVANE_SOA_COMMON_XML_OBJECTRUNTIME_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AutoPtr.hpp>

#include <set>
#include <string>

namespace Corvane::Soa::Internal::Json {
class JSONObject;
class Value;
}  // namespace Corvane::Soa::Internal::Json

namespace Corvane::Soa::Common::Xml {

class BaseObject;
class JsonStream;
class XMLNode;
class XmlStream;
struct TypeDescriptor;

/// The operations of every generated type, done once for all of them by walking the type's
/// descriptor: each generated override calls the routine of its name with its descriptor.
/// The wire form of each field kind is decided here and nowhere else.
class CORVANE_SOA_API ObjectRuntime {
public:
    static void outputXML(const BaseObject& object, const TypeDescriptor& type, XmlStream& stream,
                          const std::string& elementName);
    static void parse(BaseObject& object, const TypeDescriptor& type, const XMLNode& node);
    static void getNamespaces(const BaseObject& object, const TypeDescriptor& type,
                              std::set<std::string>& namespaces);
    static void writeJSON(const BaseObject& object, const TypeDescriptor& type, JsonStream* stream);
    /// Reads the fields and empties `json`.
    static void parseJSON(BaseObject& object, const TypeDescriptor& type,
                          AutoPtr<::Corvane::Soa::Internal::Json::JSONObject>& json);

    // The map-entry protocol of a type whose fields are `key` and `value`.
    static bool isJsonMapKeyReferenceType(const TypeDescriptor& type);
    static void writeJSONKey(const BaseObject& object, const TypeDescriptor& type,
                             JsonStream* stream);
    static void writeJSONValue(const BaseObject& object, const TypeDescriptor& type,
                               JsonStream* stream);
    /// Reads the key only: the value of an entry that arrives as JSON stays empty.
    static void parseSimpleJSONMapEntry(BaseObject& object, const TypeDescriptor& type,
                                        const std::string& key);
    static void parseComplexJSONMapKey(BaseObject& object, const TypeDescriptor& type,
                                       const AutoPtr<::Corvane::Soa::Internal::Json::Value>& key);
    static void parseComplexJSONMapValue(
        BaseObject& object, const TypeDescriptor& type,
        const AutoPtr<::Corvane::Soa::Internal::Json::Value>& value);
};

}  // namespace Corvane::Soa::Common::Xml

#endif
