#ifndef CORVANE_SOA_INTERNAL_COMMON_SCOPEDMONITOR_HPP
#define CORVANE_SOA_INTERNAL_COMMON_SCOPEDMONITOR_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/internal/common/Monitor.hpp>

#include <string>

namespace Corvane::Soa::Internal::Common {

/// Marks an operation in the performance journal for as long as it lives: an enter record when
/// made, an exit record when destroyed.
///
///     { ScopedMonitor marked("Session::login"); ... }
///
/// With the journal off it costs a test of one flag each way; the name is kept only while the
/// journal records.
class CORVANE_SOA_API ScopedMonitor {
public:
    explicit ScopedMonitor(const ::std::string& name) {
        if (::Corvane::Soa::Internal::Common::Monitor::isEnabled()) {
            m_name = name;
            ::Corvane::Soa::Internal::Common::Monitor::markStart(m_name);
        }
    }
    ~ScopedMonitor() { ::Corvane::Soa::Internal::Common::Monitor::markEnd(m_name); }

    ScopedMonitor(const ScopedMonitor&) = delete;
    ScopedMonitor& operator=(const ScopedMonitor&) = delete;
    ScopedMonitor(ScopedMonitor&&) = delete;
    ScopedMonitor& operator=(ScopedMonitor&&) = delete;

private:
    ::std::string m_name;
};

}  // namespace Corvane::Soa::Internal::Common

#endif
