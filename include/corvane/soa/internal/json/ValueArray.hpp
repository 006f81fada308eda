#ifndef CORVANE_SOA_INTERNAL_JSON_VALUEARRAY_HPP
#define CORVANE_SOA_INTERNAL_JSON_VALUEARRAY_HPP

#include <corvane/soa/internal/json/Value.hpp>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>
#include <stdexcept>
#include <utility>

namespace Corvane::Soa::Internal::Json {

/// The member and element storage of the containers: a growing array in the values' storage,
/// two thirds the size of a `std::vector` (a pointer and two 32-bit counts), for trees of many
/// small containers. `T` must be nothrow movable.
template <class T>
class ValueArray {
public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;
    using reverse_iterator = std::reverse_iterator<T*>;
    using const_reverse_iterator = std::reverse_iterator<const T*>;

    ValueArray() noexcept = default;
    ValueArray(const ValueArray&) = delete;
    ValueArray& operator=(const ValueArray&) = delete;
    ~ValueArray() {
        clear();
        Value::operator delete(m_data, m_capacity * sizeof(T));
    }

    bool empty() const noexcept { return m_size == 0; }
    std::size_t size() const noexcept { return m_size; }
    T* data() noexcept { return m_data; }
    const T* data() const noexcept { return m_data; }
    T* begin() noexcept { return m_data; }
    T* end() noexcept { return m_data + m_size; }
    const T* begin() const noexcept { return m_data; }
    const T* end() const noexcept { return m_data + m_size; }
    reverse_iterator rbegin() noexcept { return reverse_iterator(end()); }
    reverse_iterator rend() noexcept { return reverse_iterator(begin()); }
    T& operator[](std::size_t index) noexcept { return m_data[index]; }
    const T& operator[](std::size_t index) const noexcept { return m_data[index]; }
    const T& at(std::size_t index) const {
        if (index >= m_size) {
            throw std::out_of_range("ValueArray::at");
        }
        return m_data[index];
    }
    T& back() noexcept { return m_data[m_size - 1]; }
    const T& back() const noexcept { return m_data[m_size - 1]; }

    /// Room for exactly `count` elements when there is less.
    void reserve(std::size_t count) {
        if (count > m_capacity) {
            moveTo(count);
        }
    }

    template <class... Args>
    T& emplace_back(Args&&... args) {
        if (m_size == m_capacity) {
            moveTo(m_capacity == 0 ? 4 : 2 * std::size_t{m_capacity});
        }
        T* slot = new (m_data + m_size) T(std::forward<Args>(args)...);
        ++m_size;
        return *slot;
    }

    /// Puts a new element before `position`.
    template <class... Args>
    T* emplace(T* position, Args&&... args) {
        const auto index = static_cast<std::size_t>(position - m_data);
        T made(std::forward<Args>(args)...);
        emplace_back(std::move(made));
        T* moved = m_data + index;
        for (T* p = m_data + m_size - 1; p != moved; --p) {
            std::swap(*p, *(p - 1));
        }
        return moved;
    }

    void clear() noexcept {
        while (m_size != 0) {
            m_data[--m_size].~T();
        }
    }

private:
    void moveTo(std::size_t capacity) {
        T* data = static_cast<T*>(Value::operator new(capacity * sizeof(T)));
        for (std::uint32_t i = 0; i < m_size; ++i) {
            new (data + i) T(std::move(m_data[i]));
            m_data[i].~T();
        }
        Value::operator delete(m_data, m_capacity * sizeof(T));
        m_data = data;
        m_capacity = static_cast<std::uint32_t>(capacity);
    }

    T* m_data = nullptr;
    std::uint32_t m_size = 0;
    std::uint32_t m_capacity = 0;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
