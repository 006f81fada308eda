#ifndef CORVANE_SOA_COMMON_XML_XMLUTIL_HPP
#define CORVANE_SOA_COMMON_XML_XMLUTIL_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AutoPtr.hpp>

#include <ostream>
#include <string>

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

    /// Writes `object` to `out`: as XML when `contentType` is exactly `sXmlContent`, as JSON for
    /// any other word.
    static void serialize(const std::string& contentType, AutoPtr<BaseObject> object,
                          std::ostream* out);
};

}  // namespace Corvane::Soa::Common::Xml

#endif
