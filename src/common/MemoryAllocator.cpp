#include <corvane/soa/common/DefaultMemoryAllocatorImpl.hpp>
#include <corvane/soa/common/MemoryAllocator.hpp>

#include <new>

namespace Corvane::Soa::Common {

MemoryAllocator::~MemoryAllocator() = default;

void* DefaultMemoryAllocatorImpl::allocate(std::size_t size) { return ::operator new(size); }

void DefaultMemoryAllocatorImpl::deallocate(void* p) { ::operator delete(p); }

}  // namespace Corvane::Soa::Common
