// The one place that knows how a policy looks as XML on the way out. It writes exactly what the
// schema-side ObjectPropertyPolicy, ObjectType and Property types write through their outputXML,
// so that those types can take its place without a byte of a saved file changing.
#include "internal/common/PolicyDocumentWriter.hpp"

#include <corvane/soa/common/ObjectPropertyPolicy.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/internal/common/PolicyMarshaller.hpp>

#include <string>

namespace Corvane::Soa::Internal::Common {

namespace {

using ::Corvane::Soa::Common::Xml::XmlStream;

// The flag attributes of one element: those of its modifiers that are flags, in flag order.
template <class Modifiers>
void writeFlags(XmlStream& stream, const Modifiers& modifiers) {
    if (modifiers.empty()) {
        return;
    }
    static const std::string on = "1";
    static const std::string off = "0";
    for (const std::string& flag : PolicyMarshaller::flags()) {
        const auto found = modifiers.find(flag);
        if (found != modifiers.end()) {
            const bool value = found->second == "1" || found->second == "true";
            stream.writeAttribute(flag, value ? on : off);
        }
    }
}

}  // namespace

void writePolicyDocument(const ::Corvane::Soa::Common::ObjectPropertyPolicy& policy,
                         XmlStream& stream) {
    const std::string ns = PolicyMarshaller::kNamespace;
    const std::string root = "ObjectPropertyPolicy";
    if (stream.isRootElement()) {
        stream.addNamespaces({ns});
    }
    stream.writeOpenElement(ns, root);
    writeFlags(stream, policy.getModifiers());
    stream.writeOpenElementClose(ns, false);

    const std::string prefix = stream.getNamespacePrefix(ns) + ":";
    const std::string objectType = prefix + "ObjectType";
    const std::string property = prefix + "Property";
    for (const auto& type : policy.getTypes()) {
        stream.writeOpenElement(ns, objectType);
        stream.writeAttribute("name", ::Corvane::Soa::Common::Xml::toXmlString(
                                          type.getName(), stream.getUtf8Transcoder()));
        writeFlags(stream, type.getModifiers());
        stream.writeOpenElementClose(ns, false);
        for (const auto& each : type.getProperties()) {
            stream.writeOpenElement(ns, property);
            stream.writeAttribute("name", ::Corvane::Soa::Common::Xml::toXmlString(
                                              each.getName(), stream.getUtf8Transcoder()));
            writeFlags(stream, each.getModifiers());
            stream.writeOpenElementClose(ns, true);
        }
        stream.writeCloseElement(ns, objectType);
    }
    stream.writeCloseElement(ns, root);
}

}  // namespace Corvane::Soa::Internal::Common
