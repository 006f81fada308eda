// The XML and JSON forms of the exception types. Their classes are part of the runtime, which
// the generator itself is built from, so they cannot call the descriptors that cvsoa-gen
// makes from their schema directly: they find them in the type registry, where the
// library's generated code puts them.
#include <corvane/soa/common/xml/ObjectRuntime.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/common/xml/TypeRegistry.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/Error.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

#include <stdexcept>

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Xml::BaseObject;
using Corvane::Soa::Common::Xml::JsonStream;
using Corvane::Soa::Common::Xml::ObjectRuntime;
using Corvane::Soa::Common::Xml::TypeDescriptor;
using Corvane::Soa::Common::Xml::TypeRegistry;
using Corvane::Soa::Common::Xml::XMLNode;
using Corvane::Soa::Common::Xml::XmlStream;
using Corvane::Soa::Internal::Json::JSONObject;

const TypeDescriptor& typeOf(const BaseObject& object) {
    const TypeDescriptor* type = TypeRegistry::find(object.getNamespace(), object.getTypeName());
    if (type == nullptr) {
        throw std::logic_error("the type " + object.getQaulifiedName() +
                               " is not registered: link the library's generated code");
    }
    return *type;
}

}  // namespace

// The same operations for Error and for SoaException, which serves every exception type.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define CORVANE_SOA_REGISTERED_WIRE_FORMS(Class)                                                 \
    void Class::outputXML(XmlStream& stream) const { outputXML(stream, getTypeName()); }         \
    void Class::outputXML(XmlStream& stream, const std::string& elementName) const {             \
        ObjectRuntime::outputXML(*this, typeOf(*this), stream, elementName);                     \
    }                                                                                            \
    void Class::parse(const XMLNode& node) { ObjectRuntime::parse(*this, typeOf(*this), node); } \
    void Class::getNamespaces(std::set<std::string>& namespaces) const {                         \
        ObjectRuntime::getNamespaces(*this, typeOf(*this), namespaces);                          \
    }                                                                                            \
    void Class::writeJSON(JsonStream* stream) const {                                            \
        ObjectRuntime::writeJSON(*this, typeOf(*this), stream);                                  \
    }                                                                                            \
    void Class::parseJSON(AutoPtr<JSONObject> json) {                                            \
        ObjectRuntime::parseJSON(*this, typeOf(*this), json);                                    \
    }
// NOLINTEND(bugprone-macro-parentheses)

CORVANE_SOA_REGISTERED_WIRE_FORMS(Error)
CORVANE_SOA_REGISTERED_WIRE_FORMS(SoaException)

#undef CORVANE_SOA_REGISTERED_WIRE_FORMS

}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions
