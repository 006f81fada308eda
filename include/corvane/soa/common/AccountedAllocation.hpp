#ifndef CORVANE_SOA_COMMON_ACCOUNTEDALLOCATION_HPP
#define CORVANE_SOA_COMMON_ACCOUNTEDALLOCATION_HPP

#include <corvane/soa/common/MemoryManager.hpp>

#include <cstddef>

/// Declares the class-level allocation functions of a library class inside its body: every
/// plain, array and placement form goes through the memory manager under `tag` when one is
/// installed, and to the global heap otherwise.
#define CORVANE_SOA_ACCOUNTED_ALLOCATION(tag)                                         \
    static void* operator new(std::size_t size) {                                     \
        return ::Corvane::Soa::Common::MemoryManager::allocateObject(size, tag);      \
    }                                                                                 \
    static void* operator new[](std::size_t size) {                                   \
        return ::Corvane::Soa::Common::MemoryManager::allocateObject(size, tag);      \
    }                                                                                 \
    static void* operator new(std::size_t size, void* place) noexcept {               \
        return ::Corvane::Soa::Common::MemoryManager::placementallocate(size, place); \
    }                                                                                 \
    static void* operator new[](std::size_t size, void* place) noexcept {             \
        return ::Corvane::Soa::Common::MemoryManager::placementallocate(size, place); \
    }                                                                                 \
    static void operator delete(void* p) noexcept {                                   \
        ::Corvane::Soa::Common::MemoryManager::deallocateObject(p);                   \
    }                                                                                 \
    static void operator delete[](void* p) noexcept {                                 \
        ::Corvane::Soa::Common::MemoryManager::deallocateObject(p);                   \
    }                                                                                 \
    static void operator delete(void* p, void* place) noexcept {                      \
        ::Corvane::Soa::Common::MemoryManager::placementdeallocate(p, place);         \
    }                                                                                 \
    static void operator delete[](void* p, void* place) noexcept {                    \
        ::Corvane::Soa::Common::MemoryManager::placementdeallocate(p, place);         \
    }

#endif
