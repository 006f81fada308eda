#ifndef CORVANE_SOA_SRC_COMMON_XML_BLOCKARENA_HPP
#define CORVANE_SOA_SRC_COMMON_XML_BLOCKARENA_HPP

// The memory of the trees that the XML reader builds. Not part of the exported interface.

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

namespace Corvane::Soa::Common::Xml {

// Memory handed out in order from blocks that grow, and given back all at once.
class BlockArena {
public:
    BlockArena() = default;
    BlockArena(const BlockArena&) = delete;
    BlockArena& operator=(const BlockArena&) = delete;
    ~BlockArena() {
        for (const Block& block : m_blocks) {
            ::operator delete(block.data);
        }
    }

    // Room for `bytes`, aligned as operator new aligns.
    void* allocate(std::size_t bytes) {
        bytes = (bytes + kAlignment - 1) & ~(kAlignment - 1);
        if (bytes > m_left) {
            grow(bytes);
        }
        unsigned char* const at = m_next;
        m_next += bytes;
        m_left -= bytes;
        return at;
    }

    // Forgets everything handed out. The first block stays for the next tree, so that small
    // documents read one after another allocate nothing here.
    void clear() noexcept {
        for (std::size_t i = 1; i < m_blocks.size(); ++i) {
            ::operator delete(m_blocks[i].data);
        }
        if (!m_blocks.empty()) {
            m_blocks.resize(1);
            m_next = m_blocks[0].data;
            m_left = m_blocks[0].size;
        }
    }

private:
    static constexpr std::size_t kAlignment = alignof(std::max_align_t);
    static constexpr std::size_t kFirstBlock = std::size_t{4} * 1024;
    static constexpr std::size_t kLargestBlock = std::size_t{1024} * 1024;

    struct Block {
        unsigned char* data;
        std::size_t size;
    };

    void grow(std::size_t bytes) {
        std::size_t size =
            m_blocks.empty() ? kFirstBlock : std::min(2 * m_blocks.back().size, kLargestBlock);
        size = std::max(size, bytes);
        m_blocks.reserve(m_blocks.size() + 1);
        auto* const data = static_cast<unsigned char*>(::operator new(size));
        m_blocks.push_back({data, size});
        m_next = data;
        m_left = size;
    }

    std::vector<Block> m_blocks;
    unsigned char* m_next = nullptr;
    std::size_t m_left = 0;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
