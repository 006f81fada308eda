#ifndef CORVANE_SOA_COMMON_XML_FIELDKIND_HPP
#define CORVANE_SOA_COMMON_XML_FIELDKIND_HPP

#include <cstdint>

namespace Corvane::Soa::Common::Xml {

/// What a field of a generated type holds, which decides how it travels in XML and JSON.
/// The first six are attributes in XML; the others are child elements.
enum class FieldKind : std::uint8_t {
    Text,           // std::string
    Boolean,        // bool
    Integer,        // int
    Float,          // float
    Double,         // double
    DateTime,       // ::Corvane::Soa::Common::DateTime
    Structure,      // AutoPtr<T> of a generated type, never null
    Reference,      // AutoPtr<ModelObject> of the Base schema, never null
    ServiceData,    // AutoPtr<ServiceData> of the Base schema, element "ServiceData"
    StructureList,  // std::vector<AutoPtr<T>>; a map when T is a map entry
    TextList,       // std::vector<std::string>
    TextElement,    // std::string written as a child element holding a CDATA section
};

/// Whether fields of `kind` are written as attributes of their object's start tag.
constexpr bool isAttributeKind(FieldKind kind) noexcept { return kind <= FieldKind::DateTime; }

}  // namespace Corvane::Soa::Common::Xml

#endif
