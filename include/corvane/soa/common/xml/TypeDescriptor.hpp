#ifndef CORVANE_SOA_COMMON_XML_TYPEDESCRIPTOR_HPP
#define CORVANE_SOA_COMMON_XML_TYPEDESCRIPTOR_HPP

#include <corvane/soa/common/xml/FieldDescriptor.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Corvane::Soa::Common::Xml {

class BaseObject;

/// The static description of a generated type: its identity texts, which all its objects
/// share, its fields in declaration order, and how to make one.
struct TypeDescriptor {
    /// The namespace URI, shared by the types of one schema.
    const std::string* namespaceUri;
    /// The local name of the type.
    std::string name;
    /// The namespace URI, ".", the name: what `getQaulifiedName()` gives and JSON's ".QName".
    std::string qualifiedName;
    /// The full C++ name, e.g. "Corvane::Schemas::Core::_2006_03::Session::LoginInput".
    std::string className;
    const FieldDescriptor* fields;
    std::size_t fieldCount;
    /// Whether the fields are exactly `key` and `value`: a list of such entries is a map.
    bool mapEntry;
    /// A new default-constructed object (count 0), allocated by the type's `operator new`.
    BaseObject* (*create)();
    /// The indices of `fields` in the byte-wise order of their names (the order of a JSON
    /// object's members), so that a reader matches fields to members in one pass; or null.
    const unsigned short* byName = nullptr;
    /// The number that `BaseObject::identify` gives the namespace URI and name: what every
    /// object of the type keeps of its identity.
    std::uint32_t identity = 0;

    const FieldDescriptor* begin() const noexcept { return fields; }
    const FieldDescriptor* end() const noexcept { return fields + fieldCount; }
};

}  // namespace Corvane::Soa::Common::Xml

#endif
