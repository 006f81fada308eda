#ifndef CORVANE_SOA_INTERNAL_COMMON_LOGCORRELATION_HPP
#define CORVANE_SOA_INTERNAL_COMMON_LOGCORRELATION_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AccountedAllocation.hpp>

#include <atomic>
#include <string>
#include <vector>

namespace Corvane::Soa::Internal::Common {

/// The log correlation identifier of the calling thread: a stack of parts joined with ".", which
/// ties together the log lines and requests of one piece of work. Callers push a part when they
/// enter a unit of work and pop it when they leave.
///
/// Each thread has a stack of its own, made at its first use and freed when the thread ends;
/// it starts with the host name ("localhost" when there is none) and the thread id written with
/// at least five digits, "build7.04711". No operation locks.
class CORVANE_SOA_API LogCorrelation {
public:
    /// Appends a part (which may be a reference to a part of the stack itself).
    static void push(const ::std::string& part);
    /// Removes the last part; nothing on an empty stack. The process's first `pop` looks the
    /// host name up again when the bottom part is still "localhost".
    static void pop();
    /// The parts joined with "."; the empty text for an empty stack.
    static ::std::string getId();
    /// Removes every part, the host name and thread id included.
    static void clear();
    static int size();

    LogCorrelation(const LogCorrelation&) = delete;
    LogCorrelation& operator=(const LogCorrelation&) = delete;
    LogCorrelation(LogCorrelation&&) = delete;
    LogCorrelation& operator=(LogCorrelation&&) = delete;
    ~LogCorrelation();

    // Each thread's object goes through the memory manager, when one is installed.
    CORVANE_SOA_ACCOUNTED_ALLOCATION("LogCorrelation")

private:
    LogCorrelation();
    static LogCorrelation& getCurrent();

    ::std::vector<::std::string> m_parts;

    // Whether the host name is still to be confirmed by the process's first `pop`.
    static ::std::atomic<bool> hostNamePending;
};

}  // namespace Corvane::Soa::Internal::Common

#endif
