#ifndef CORVANE_SOA_INTERNAL_COMMON_THREADPROVIDER_HPP
#define CORVANE_SOA_INTERNAL_COMMON_THREADPROVIDER_HPP

#include <corvane/soa/Export.hpp>

namespace Corvane::Soa::Internal::Common {

/// Where the performance journal takes the thread ids of its records from, for programs that
/// number their threads themselves (`Monitor::setThreadProvider`). Without one, the journal
/// writes the kernel's thread id.
class CORVANE_SOA_API ThreadProvider {
public:
    /// The calling thread's id, as the journal writes it. Kept first: it is the first virtual
    /// operation of the interface.
    virtual unsigned long getCurrentThreadId() = 0;

    virtual ~ThreadProvider();

protected:
    ThreadProvider() = default;
    ThreadProvider(const ThreadProvider&) = default;
    ThreadProvider& operator=(const ThreadProvider&) = default;
};

}  // namespace Corvane::Soa::Internal::Common

#endif
