#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>

#include "common/xml/TypeIdentities.hpp"

namespace Corvane::Soa::Common::Xml {

// Every bound element pays for its base: on 64-bit targets it is the virtual table pointer and
// two 32-bit words, so that small generated types fit the heap's 64-byte blocks.
static_assert(sizeof(void*) != 8 || sizeof(BaseObject) == 16, "the base is two words");

BaseObject::BaseObject() = default;

BaseObject::BaseObject(const char* ns) : m_identity(TypeIdentities::intern(ns, "Unknown")) {}

BaseObject::BaseObject(const char* ns, const char* typeName)
    : m_identity(TypeIdentities::intern(ns, typeName)) {}

std::uint32_t BaseObject::identify(const std::string& ns, const std::string& typeName) {
    return TypeIdentities::intern(ns, typeName);
}

const std::string& BaseObject::getNamespace() const noexcept {
    return TypeIdentities::at(m_identity).ns;
}

const std::string& BaseObject::getTypeName() const noexcept {
    return TypeIdentities::at(m_identity).typeName;
}

// A copy carries the source's count over, as holders of copied objects expect.
BaseObject::BaseObject(const BaseObject& other) = default;

BaseObject& BaseObject::operator=(const BaseObject& other) {
    if (this != &other) {
        m_identity = other.m_identity;
    }
    return *this;
}
BaseObject::~BaseObject() = default;

void BaseObject::outputXML(XmlStream& stream, const std::string& elementName) const {
    stream << "<" << elementName << "></" << elementName << ">\n";
}

void BaseObject::outputXML(XmlStream& stream) const { outputXML(stream, "EmptyXml"); }

void BaseObject::parse(const XMLNode& /*node*/) {}

void BaseObject::writeJSON(JsonStream* stream) const { *stream << "{ \"EMPTY\"=\"EMPTY\" }\n"; }

void BaseObject::parseJSON(const std::string& /*name*/,
                           AutoPtr<Internal::Json::JSONObject> /*object*/) {}

void BaseObject::parseJSON(AutoPtr<Internal::Json::JSONObject> /*object*/) {}

void BaseObject::parseSimpleJSONMapEntry(const std::string& /*key*/,
                                         AutoPtr<Internal::Json::JSONObject> /*object*/) {}

void BaseObject::parseComplexJSONMapKey(AutoPtr<Internal::Json::Value> /*key*/) {}

void BaseObject::parseComplexJSONMapValue(AutoPtr<Internal::Json::Value> /*value*/) {}

bool BaseObject::isJsonMapEntry() const { return false; }

bool BaseObject::isJsonMapKeyReferenceType() const { return false; }

void BaseObject::writeJSONKey(JsonStream* /*stream*/) const {}

void BaseObject::writeJSONValue(JsonStream* /*stream*/) const {}

BaseObject* BaseObject::clone() const {
    BaseObject* copy = reallyClone();
    copy->m_refCount = 0;
    return copy;
}

std::string BaseObject::getQaulifiedName() const {
    std::string name;
    const TypeIdentities::Identity& identity = TypeIdentities::at(m_identity);
    name.reserve(identity.ns.size() + 1 + identity.typeName.size());
    name.append(identity.ns).append(1, '.').append(identity.typeName);
    return name;
}

bool BaseObject::outputXMLBase(XmlStream& stream, const std::string& elementName,
                               const char* /*ignored*/) const {
    const bool root = stream.isRootElement();
    if (root) {
        std::set<std::string> namespaces;
        getNamespaces(namespaces);
        stream.addNamespaces(namespaces);
    }
    stream.writeOpenElement(getNamespace(), elementName);
    return root;
}

}  // namespace Corvane::Soa::Common::Xml
