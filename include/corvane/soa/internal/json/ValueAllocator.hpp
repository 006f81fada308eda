#ifndef CORVANE_SOA_INTERNAL_JSON_VALUEALLOCATOR_HPP
#define CORVANE_SOA_INTERNAL_JSON_VALUEALLOCATOR_HPP

#include <corvane/soa/internal/json/Value.hpp>

#include <cstddef>

namespace Corvane::Soa::Internal::Json {

/// A standard allocator drawing from the same storage as values: the element and member arrays
/// of containers then cost no heap call either. Requests of more than 2048 bytes go to the global
/// heap. All instances are interchangeable.
template <class T>
class ValueAllocator {
public:
    using value_type = T;

    ValueAllocator() noexcept = default;
    template <class U>
    ValueAllocator(const ValueAllocator<U>& /*other*/) noexcept {}  // NOLINT

    T* allocate(std::size_t count) {
        return static_cast<T*>(Value::operator new(count * sizeof(T)));
    }
    void deallocate(T* block, std::size_t count) noexcept {
        Value::operator delete(block, count * sizeof(T));
    }

    template <class U>
    bool operator==(const ValueAllocator<U>& /*other*/) const noexcept {
        return true;
    }
    template <class U>
    bool operator!=(const ValueAllocator<U>& /*other*/) const noexcept {
        return false;
    }
};

}  // namespace Corvane::Soa::Internal::Json

#endif
