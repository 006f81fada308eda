#ifndef CORVANE_SOA_COMMON_XML_XMLUTIL_HPP
#define CORVANE_SOA_COMMON_XML_XMLUTIL_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AutoPtr.hpp>

#include <ostream>
#include <string>

namespace Corvane::Soa::Internal::Json {
class JSONObject;
}  // namespace Corvane::Soa::Internal::Json

namespace Corvane::Soa::Common::Xml {

class BaseObject;

/// Chooses between the XML and the JSON wire form by a content-type word and drives writing.
class CORVANE_SOA_API XmlUtil {
public:
    static const std::string sXmlContent;   // "XML"
    static const std::string sJsonContent;  // "JSON"

    /// True when the text does not start with '{'. Throws `std::out_of_range` on empty text.
    static bool isXMML(const std::string& text);
    /// True when the text starts with '{'. Throws `std::out_of_range` on empty text.
    static bool isJSON(const std::string& text);

    /// Reads the XML text with `SAXToNodeParser` and hands the root element to
    /// `target->parse(const XMLNode&)`. Returns the local name of that element (so a caller can
    /// tell which document it was given); the target may be null, and then the text is only
    /// read. The target is released afterwards. Parse failures throw `DomException`.
    static std::string parse(const std::string& text, AutoPtr<BaseObject> target);

    /// Reads JSON text into a tree (see `::Corvane::Soa::Internal::Json::Parser`); the root object,
    /// or null when the root is an array. Throws `ParsingException` on malformed text.
    static AutoPtr<::Corvane::Soa::Internal::Json::JSONObject> parseJSON(const std::string& text);
    /// As above, but hands over the first element (in document order, the root included)
    /// whose local name is `element`. The word "body" names the envelope's body element, a
    /// child of the root called "body": when it holds a "bodystring" element with text, that
    /// text (the serialised inner document) is read in turn and its root handed over;
    /// otherwise the body's first child element is. Returns the local name of the element
    /// handed over; throws `DomException` with "Element 'NAME' was not found in the XML
    /// document." when there is none.
    static std::string parse(const std::string& text, AutoPtr<BaseObject> target,
                             const std::string& element);

    /// Writes `object` to `out`: as XML when `contentType` is exactly `sXmlContent`, as JSON for
    /// any other word.
    static void serialize(const std::string& contentType, AutoPtr<BaseObject> object,
                          std::ostream* out);
};

}  // namespace Corvane::Soa::Common::Xml

#endif
