#ifndef CORVANE_SOA_COMMON_COUNTED_HPP
#define CORVANE_SOA_COMMON_COUNTED_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AccountedAllocation.hpp>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Corvane::Soa::Common {

template <class>
class AutoPtr;

/// Base of shared objects outside the data-type hierarchy, counted atomically so that holders
/// on several threads may share one object.
///
/// A copy starts with the count of the object it was copied from, and copy assignment overwrites
/// the target's count with the source's: callers that copy counted objects rely on it.
class CORVANE_SOA_API Counted {
public:
    Counted() noexcept = default;
    Counted(const Counted& other) noexcept : m_count(other.m_count.load()) {}
    Counted& operator=(const Counted& other) noexcept {
        m_count.store(other.m_count.load());
        return *this;
    }
    virtual ~Counted();

    long getCount() const noexcept { return m_count.load(); }

    // Allocation goes through the memory manager, when one is installed, under "Counted".
    CORVANE_SOA_ACCOUNTED_ALLOCATION("Counted")

private:
    template <class>
    friend class AutoPtr;

    void ref() noexcept;
    void unref() noexcept;

    std::atomic<std::int32_t> m_count{0};
};

}  // namespace Corvane::Soa::Common

#endif
