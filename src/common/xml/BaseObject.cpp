#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>

#include <mutex>
#include <unordered_set>

namespace Corvane::Soa::Common::Xml {

namespace {

// One copy of each identity text given as a `const char*`, kept for the life of the process:
// objects of hand-written types share it instead of copying it. The table is never destroyed,
// so that objects that outlive static destruction keep valid texts.
const std::string* shared(const char* text) {
    static std::mutex* const lock = new std::mutex;
    static auto* const texts = new std::unordered_set<std::string>;
    const std::lock_guard<std::mutex> guard(*lock);
    return &*texts->emplace(text).first;
}

const std::string kEmpty;

const std::string* unknown() {
    static const std::string text = "Unknown";
    return &text;
}

}  // namespace

BaseObject::BaseObject() : m_namespace(&kEmpty), m_typeName(&kEmpty) {}

BaseObject::BaseObject(const char* ns) : m_namespace(shared(ns)), m_typeName(unknown()) {}

BaseObject::BaseObject(const char* ns, const char* typeName)
    : m_namespace(shared(ns)), m_typeName(shared(typeName)) {}

// A copy carries the source's count over, as holders of copied objects expect.
BaseObject::BaseObject(const BaseObject& other) = default;

BaseObject& BaseObject::operator=(const BaseObject& other) {
    if (this != &other) {
        m_namespace = other.m_namespace;
        m_typeName = other.m_typeName;
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
    name.reserve(m_namespace->size() + 1 + m_typeName->size());
    name.append(*m_namespace).append(1, '.').append(*m_typeName);
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
    stream.writeOpenElement(*m_namespace, elementName);
    return root;
}

}  // namespace Corvane::Soa::Common::Xml
