#ifndef CORVANE_SOA_COMMON_XML_FIELDBLOCK_HPP
#define CORVANE_SOA_COMMON_XML_FIELDBLOCK_HPP

#include <utility>

namespace Corvane::Soa::Common::Xml {

/// The seldom-set fields of a generated type (its optional attributes with their presence
/// flags, and its lists), kept in a `Block` of their own that is made on the first write. An
/// object that carries none of them, such as a model object reference with its uid alone,
/// holds one pointer in their place. Reading before the block exists reads an empty block:
/// default values, unset flags, empty lists.
///
/// Copies are deep, like the members the block replaces; the block is allocated through the
/// `Block`'s own class `operator new`, so that it is accounted with its object.
template <class Block>
class FieldBlock {
public:
    FieldBlock() noexcept = default;
    FieldBlock(const FieldBlock& other)
        : m_block(other.m_block != nullptr ? new Block(*other.m_block) : nullptr) {}
    FieldBlock& operator=(const FieldBlock& other) {
        if (this != &other) {
            FieldBlock copy(other);
            std::swap(m_block, copy.m_block);
        }
        return *this;
    }
    ~FieldBlock() { delete m_block; }

    /// The block, or the empty block when none was made.
    const Block& get() const { return m_block != nullptr ? *m_block : empty(); }
    /// The block, made now if it was not.
    Block& edit() {
        if (m_block == nullptr) {
            m_block = new Block();
        }
        return *m_block;
    }
    /// Whether a block was made.
    bool made() const noexcept { return m_block != nullptr; }

private:
    static const Block& empty() {
        static const Block block{};
        return block;
    }

    Block* m_block = nullptr;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
