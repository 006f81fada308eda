#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/common/xml/XmlUtil.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>

#include <stdexcept>
#include <vector>

namespace Corvane::Soa::Common::Xml {

// Two short texts: building them cannot run out of memory in any process that gets this far.
const std::string XmlUtil::sXmlContent = "XML";    // NOLINT(cert-err58-cpp)
const std::string XmlUtil::sJsonContent = "JSON";  // NOLINT(cert-err58-cpp)

namespace {
char firstCharacter(const std::string& text) {
    if (text.empty()) {
        throw std::out_of_range("invalid string position");
    }
    return text[0];
}

// The first element named `name` in document order, without recursion.
const XMLNode* findNode(const XMLNode& root, const std::string& name) {
    std::vector<const XMLNode*> stack{&root};
    while (!stack.empty()) {
        const XMLNode* node = stack.back();
        stack.pop_back();
        if (node->getName() == name) {
            return node;
        }
        const std::vector<XMLNode*>& children = node->getChildren();
        stack.insert(stack.end(), children.rbegin(), children.rend());
    }
    return nullptr;
}

[[noreturn]] void notFound(const std::string& name) {
    throw Exceptions::DomException("Element '" + name + "' was not found in the XML document.");
}

std::string handOver(const XMLNode& node, AutoPtr<BaseObject>& target) {
    if (!target.isNull()) {
        target->parse(node);
    }
    target.reset();
    return node.getName();
}

}  // namespace

bool XmlUtil::isXMML(const std::string& text) { return firstCharacter(text) != '{'; }

bool XmlUtil::isJSON(const std::string& text) { return firstCharacter(text) == '{'; }

std::string XmlUtil::parse(const std::string& text, AutoPtr<BaseObject> target) {
    SAXToNodeParser parser;
    return handOver(*parser.parseString(text), target);
}

std::string XmlUtil::parse(const std::string& text, AutoPtr<BaseObject> target,
                           const std::string& element) {
    SAXToNodeParser parser;
    const XMLNode& root = *parser.parseString(text);
    if (element != "body") {
        const XMLNode* node = findNode(root, element);
        if (node == nullptr) {
            notFound(element);
        }
        return handOver(*node, target);
    }
    const XMLNode* body = nullptr;
    for (const XMLNode* child : root.getChildren()) {
        if (child->getName() == "body") {
            body = child;
            break;
        }
    }
    if (body == nullptr || body->getChildren().empty()) {
        notFound(element);
    }
    const XMLNode* first = body->getChildren().front();
    if (first->getName() == "bodystring" && !first->getText().empty()) {
        SAXToNodeParser inner;
        return handOver(*inner.parseString(first->getText()), target);
    }
    return handOver(*first, target);
}

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

AutoPtr<Internal::Json::JSONObject> XmlUtil::parseJSON(const std::string& text) {
    Internal::Json::Parser parser;
    return parser.parse(text).dynamicCast<Internal::Json::JSONObject>();
}

}  // namespace Corvane::Soa::Common::Xml
