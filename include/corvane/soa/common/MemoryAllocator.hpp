#ifndef CORVANE_SOA_COMMON_MEMORYALLOCATOR_HPP
#define CORVANE_SOA_COMMON_MEMORYALLOCATOR_HPP

#include <corvane/soa/Export.hpp>

#include <cstddef>

namespace Corvane::Soa::Common {

/// Where the memory manager gets its blocks from. Install your own with
/// `MemoryManager::initializeMemoryManager` before the library allocates anything.
class CORVANE_SOA_API MemoryAllocator {
public:
    MemoryAllocator() = default;
    MemoryAllocator(const MemoryAllocator&) = delete;
    MemoryAllocator& operator=(const MemoryAllocator&) = delete;
    virtual ~MemoryAllocator();

    /// A block of at least `size` bytes; throws `std::bad_alloc` when there is none.
    virtual void* allocate(std::size_t size) = 0;
    /// Frees a block returned by `allocate`; null is ignored.
    virtual void deallocate(void* p) = 0;
};

}  // namespace Corvane::Soa::Common

#endif
