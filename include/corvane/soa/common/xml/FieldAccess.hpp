#ifndef CORVANE_SOA_COMMON_XML_FIELDACCESS_HPP
#define CORVANE_SOA_COMMON_XML_FIELDACCESS_HPP

#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/FieldBlock.hpp>

namespace Corvane::Soa::Common::Xml {

/// Makes the accessors of `FieldDescriptor` from member pointers, e.g.
/// `FieldAccess::member<&LoginInput::m_username>`. An accessor is asked whether the caller is
/// about to write: only a field kept in a `FieldBlock` cares, since writing makes its block.
struct FieldAccess {
    template <class C, class M>
    static C classOf(M C::*);

    /// The member's own address.
    template <auto Member>
    static void* member(const BaseObject& object, bool /*forWriting*/) {
        using C = decltype(classOf(Member));
        return const_cast<void*>(
            static_cast<const void*>(&(static_cast<const C&>(object).*Member)));
    }

    /// The object that an `AutoPtr` member holds, as a `BaseObject*`.
    template <auto Member>
    static void* object(const BaseObject& object, bool /*forWriting*/) {
        using C = decltype(classOf(Member));
        BaseObject* held = (static_cast<const C&>(object).*Member).get();
        return held;
    }

    /// A member of the block that `Block` (a `FieldBlock` member) holds, e.g.
    /// `FieldAccess::inBlock<&ModelObject::m_block, &ModelObject::Block::m_objectID>`. For
    /// reading, the empty block's member when no block was made; for writing, the block is made.
    template <auto Block, auto Member>
    static void* inBlock(const BaseObject& object, bool forWriting) {
        using C = decltype(classOf(Block));
        auto& block = const_cast<C&>(static_cast<const C&>(object)).*Block;
        if (forWriting) {
            return &(block.edit().*Member);
        }
        return const_cast<void*>(static_cast<const void*>(&(block.get().*Member)));
    }
};

}  // namespace Corvane::Soa::Common::Xml

#endif
