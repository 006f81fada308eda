#ifndef CORVANE_SOA_COMMON_GLOBALALLOCATION_HPP
#define CORVANE_SOA_COMMON_GLOBALALLOCATION_HPP

#include <cstddef>
#include <new>

/// Declares the class-level allocation functions of a library class inside its body, every
/// plain, array and placement form forwarding to the global allocator: for the classes that
/// keep their own allocation functions without accounting them.
#define CORVANE_SOA_GLOBAL_ALLOCATION                                                         \
    static void* operator new(std::size_t size) { return ::operator new(size); }              \
    static void* operator new[](std::size_t size) { return ::operator new[](size); }          \
    static void* operator new(std::size_t /*size*/, void* place) noexcept { return place; }   \
    static void* operator new[](std::size_t /*size*/, void* place) noexcept { return place; } \
    static void operator delete(void* p) noexcept { ::operator delete(p); }                   \
    static void operator delete[](void* p) noexcept { ::operator delete[](p); }               \
    static void operator delete(void* /*p*/, void* /*place*/) noexcept {}                     \
    static void operator delete[](void* /*p*/, void* /*place*/) noexcept {}

#endif
