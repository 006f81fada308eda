#ifndef CORVANE_SOA_COMMON_XML_FIELDACCESS_HPP
#define CORVANE_SOA_COMMON_XML_FIELDACCESS_HPP

#include <corvane/soa/common/xml/BaseObject.hpp>

namespace Corvane::Soa::Common::Xml {

/// Makes the accessors of `FieldDescriptor` from member pointers, e.g.
/// `FieldAccess::member<&LoginInput::m_username>`.
struct FieldAccess {
    template <class C, class M>
    static C classOf(M C::*);

    /// The member's own address.
    template <auto Member>
    static void* member(const BaseObject& object) {
        using C = decltype(classOf(Member));
        return const_cast<void*>(
            static_cast<const void*>(&(static_cast<const C&>(object).*Member)));
    }

    /// The object that an `AutoPtr` member holds, as a `BaseObject*`.
    template <auto Member>
    static void* object(const BaseObject& object) {
        using C = decltype(classOf(Member));
        BaseObject* held = (static_cast<const C&>(object).*Member).get();
        return held;
    }
};

}  // namespace Corvane::Soa::Common::Xml

#endif
