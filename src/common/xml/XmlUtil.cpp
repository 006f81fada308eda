#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/common/xml/XmlUtil.hpp>

#include <stdexcept>

namespace Corvane::Soa::Common::Xml {

const std::string XmlUtil::sXmlContent = "XML";
const std::string XmlUtil::sJsonContent = "JSON";

namespace {
char firstCharacter(const std::string& text) {
    if (text.empty()) {
        throw std::out_of_range("invalid string position");
    }
    return text[0];
}
}  // namespace

bool XmlUtil::isXMML(const std::string& text) { return firstCharacter(text) != '{'; }

bool XmlUtil::isJSON(const std::string& text) { return firstCharacter(text) == '{'; }

void XmlUtil::serialize(const std::string& contentType, AutoPtr<BaseObject> object,
                        std::ostream* out) {
    if (object.isNull() || out == nullptr) {
        return;
    }
    if (contentType == sXmlContent) {
        XmlStream stream(out);
        object->outputXML(stream);
    } else {
        JsonStream stream(out);
        object->writeJSON(&stream);
    }
    object.reset();
}

}  // namespace Corvane::Soa::Common::Xml
