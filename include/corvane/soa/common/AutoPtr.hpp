#ifndef CORVANE_SOA_COMMON_AUTOPTR_HPP
#define CORVANE_SOA_COMMON_AUTOPTR_HPP

#include <cstddef>
#include <type_traits>
#include <utility>

namespace Corvane::Soa::Common {

/// Intrusive smart pointer over a reference-counted object.
///
/// Holds one raw pointer (null allowed) and calls the pointee's own `ref()` and `unref()`:
/// `BaseObject` and the JSON `Value` count plainly, `Counted` atomically. The pointer owns no
/// count of its own; the holder that brings the count to zero destroys the object.
template <class T>
class AutoPtr {
public:
    AutoPtr() noexcept = default;
    AutoPtr(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)

    /// Takes a holder's share of `p` (which may be null).
    AutoPtr(T* p) : m_p(p) {  // NOLINT(google-explicit-constructor)
        if (m_p != nullptr) {
            m_p->ref();
        }
    }

    AutoPtr(const AutoPtr& other) : AutoPtr(other.m_p) {}
    AutoPtr(AutoPtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}

    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    AutoPtr(const AutoPtr<U>& other) : AutoPtr(static_cast<T*>(other.m_p)) {}  // NOLINT

    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    AutoPtr(AutoPtr<U>&& other) noexcept  // NOLINT(google-explicit-constructor)
        : m_p(std::exchange(other.m_p, nullptr)) {}

    ~AutoPtr() {
        if (m_p != nullptr) {
            m_p->unref();
        }
    }

    AutoPtr& operator=(const AutoPtr& other) {
        if (this != &other) {
            AutoPtr(other).swap(*this);
        }
        return *this;
    }
    AutoPtr& operator=(AutoPtr&& other) noexcept {
        AutoPtr(std::move(other)).swap(*this);
        return *this;
    }
    AutoPtr& operator=(T* p) {
        AutoPtr(p).swap(*this);
        return *this;
    }
    AutoPtr& operator=(std::nullptr_t) {
        reset();
        return *this;
    }

    T* get() const noexcept { return m_p; }
    T* operator->() const noexcept { return m_p; }
    T& operator*() const noexcept { return *m_p; }
    explicit operator bool() const noexcept { return m_p != nullptr; }
    bool isNull() const noexcept { return m_p == nullptr; }

    /// Releases the held object (if any) and becomes null.
    void reset() { AutoPtr().swap(*this); }
    void reset(T* p) { AutoPtr(p).swap(*this); }

    void swap(AutoPtr& other) noexcept { std::swap(m_p, other.m_p); }

    /// A new holder of the same object viewed as `U`, or a null one when it is not a `U`.
    template <class U>
    AutoPtr<U> dynamicCast() const {
        return AutoPtr<U>(dynamic_cast<U*>(m_p));
    }

private:
    template <class>
    friend class AutoPtr;

    T* m_p = nullptr;
};

template <class T, class U>
bool operator==(const AutoPtr<T>& a, const AutoPtr<U>& b) noexcept {
    return a.get() == b.get();
}
template <class T, class U>
bool operator!=(const AutoPtr<T>& a, const AutoPtr<U>& b) noexcept {
    return a.get() != b.get();
}
template <class T>
bool operator==(const AutoPtr<T>& a, std::nullptr_t) noexcept {
    return a.isNull();
}
template <class T>
bool operator!=(const AutoPtr<T>& a, std::nullptr_t) noexcept {
    return !a.isNull();
}
template <class T>
bool operator<(const AutoPtr<T>& a, const AutoPtr<T>& b) noexcept {
    return a.get() < b.get();
}

}  // namespace Corvane::Soa::Common

#endif
