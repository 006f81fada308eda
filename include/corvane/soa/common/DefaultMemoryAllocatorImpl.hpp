#ifndef CORVANE_SOA_COMMON_DEFAULTMEMORYALLOCATORIMPL_HPP
#define CORVANE_SOA_COMMON_DEFAULTMEMORYALLOCATORIMPL_HPP

#include <corvane/soa/common/MemoryAllocator.hpp>

namespace Corvane::Soa::Common {

/// The allocator a memory manager makes for itself when given none: the global heap.
class CORVANE_SOA_API DefaultMemoryAllocatorImpl : public MemoryAllocator {
public:
    void* allocate(std::size_t size) override;
    void deallocate(void* p) override;
};

}  // namespace Corvane::Soa::Common

#endif
