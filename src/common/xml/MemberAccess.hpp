#ifndef CORVANE_SOA_SRC_COMMON_XML_MEMBERACCESS_HPP
#define CORVANE_SOA_SRC_COMMON_XML_MEMBERACCESS_HPP

// A generated object's members reached through its field descriptors: the object runtime's tree
// path and the direct XML and JSON binders share these. Not part of the exported interface.

#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/FieldDescriptor.hpp>

#include <string>
#include <string_view>

namespace Corvane::Soa::Common::Xml::MemberAccess {

/// A member for reading.
template <class T>
const T& at(const FieldDescriptor& field, const BaseObject& object) {
    return *static_cast<const T*>(field.member(object, false));
}

/// A member for writing: one that lives in the type's field block makes the block.
template <class T>
T& store(const FieldDescriptor& field, BaseObject& object) {
    return *static_cast<T*>(field.member(object, true));
}

/// The object a structure or reference field holds.
inline BaseObject& held(const FieldDescriptor& field, const BaseObject& object) {
    return *static_cast<BaseObject*>(field.member(object, false));
}

/// Whether an optional field is set; a field without a presence flag always is.
inline bool isSet(const FieldDescriptor& field, const BaseObject& object) {
    return field.flag == nullptr || *static_cast<const bool*>(field.flag(object, false));
}

inline void markSet(const FieldDescriptor& field, BaseObject& object) {
    if (field.flag != nullptr) {
        *static_cast<bool*>(field.flag(object, true)) = true;
    }
}

/// Copies `text` into `to`. A string that must grow is made afresh at the text's exact size:
/// growing in place rounds the capacity up (short texts to twice the inline buffer), memory a
/// bound document would hold for nothing.
inline void assignText(std::string& to, std::string_view text) {
    if (text.size() > to.capacity()) {
        to = std::string(text);
    } else {
        to.assign(text.data(), text.size());
    }
}

}  // namespace Corvane::Soa::Common::Xml::MemberAccess

#endif
