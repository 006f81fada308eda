#ifndef CORVANE_SOA_COMMON_XML_FIELDDESCRIPTOR_HPP
#define CORVANE_SOA_COMMON_XML_FIELDDESCRIPTOR_HPP

#include <corvane/soa/common/xml/FieldKind.hpp>

#include <string>

namespace Corvane::Soa::Common::Xml {

class BaseObject;
struct ListAccess;
struct TypeDescriptor;

/// One field of a generated type, as the runtime walks it. The accessors are made with
/// `FieldAccess` from the member pointers of the type.
struct FieldDescriptor {
    /// The member's address in `object`; for the kinds that hold an `AutoPtr` (structure,
    /// reference, service data), the address of the object it holds, as a `BaseObject*`.
    /// `forWriting` says whether the caller writes through it: a member that lives in the
    /// type's `FieldBlock` is then made, and otherwise read from the empty block, which must not
    /// be written.
    using Access = void* (*)(const BaseObject& object, bool forWriting);
    using TypeOf = const TypeDescriptor& (*)();

    /// Attribute name, element name and JSON key ("ServiceData" for the service data).
    std::string name;
    FieldKind kind;
    Access member;
    /// The `bool` presence flag of an optional field, or null: an optional attribute is
    /// written only when set, an optional child element only in XML and only when set.
    Access flag = nullptr;
    /// The list operations of a list of structures, else null.
    const ListAccess* list = nullptr;
    /// The type of a structure, reference, service data or list element, else null.
    TypeOf type = nullptr;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
