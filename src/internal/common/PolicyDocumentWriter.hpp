#ifndef CORVANE_SOA_SRC_INTERNAL_COMMON_POLICYDOCUMENTWRITER_HPP
#define CORVANE_SOA_SRC_INTERNAL_COMMON_POLICYDOCUMENTWRITER_HPP

namespace Corvane::Soa::Common {
class ObjectPropertyPolicy;
}  // namespace Corvane::Soa::Common

namespace Corvane::Soa::Common::Xml {
class XmlStream;
}  // namespace Corvane::Soa::Common::Xml

namespace Corvane::Soa::Internal::Common {

/// Writes `policy` as the root element of `stream`'s document, in the form the schema-side
/// policy types write themselves: the root "ObjectPropertyPolicy" declaring the policy namespace,
/// then each type as a prefixed "ObjectType" with its prefixed "Property" elements, each element
/// with "name" first and then its flag modifiers in the order of `PolicyMarshaller::flags()`.
/// Every start tag begins a line; "ObjectType" always has an end tag, "Property" never.
void writePolicyDocument(const ::Corvane::Soa::Common::ObjectPropertyPolicy& policy,
                         ::Corvane::Soa::Common::Xml::XmlStream& stream);

}  // namespace Corvane::Soa::Internal::Common

#endif
