#ifndef CORVANE_SOA_INTERNAL_COMMON_MONITOR_HPP
#define CORVANE_SOA_INTERNAL_COMMON_MONITOR_HPP

#include <corvane/soa/Export.hpp>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <set>
#include <string>

namespace Corvane::Soa::Internal::Common {

class ThreadProvider;

/// The performance journal: when named operations and service commands start and end, with a
/// monotonic clock in nanoseconds, written as lines of text to `<program>_SOA<pid>.pjl` in the
/// directory named by TEMP, else TMP, else the working directory.
///
/// There is one journal per process, made when the library loads. It is on when the variable
/// "CV_JOURNAL_PERFORMANCE_ONLY" is set and not empty at that moment; it then records without
/// thread ids when "CV_JOURNAL_PERFORMANCE_SINGLE_THREAD" is set and the first variable is
/// exactly "true" or "TRUE" (the second variable's own value is not read). Programs may also
/// switch it with `enable`.
///
/// Records are buffered and written when the outermost operation ends or more than 1000 lines
/// are pending; `dumpTimes` writes the trailer and closes the file. Any thread may record: the
/// buffer and the file are guarded by one mutex, except in single-thread mode where the caller
/// guarantees one thread. While the journal is off, each call is one predictable branch.
///
/// The file: a header "0|HD|<ticks per second>|SOA-CPP|<version label>|<system>|<release>|
/// <local date and time>" (then "|UsesThreads" unless single-threaded), an empty line, then one
/// record a line: "<ticks>[|<thread>]|EN|<name>", "...|EX", "...|SC|<command>",
/// "...|EC|<command>", and last "<ticks>|TR". Ticks count from the moment the journal was
/// switched on.
class CORVANE_SOA_API Monitor {
public:
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;
    Monitor(Monitor&&) = delete;
    Monitor& operator=(Monitor&&) = delete;
    ~Monitor();

    /// On: starts a new journal unless one is running (the file is made at the first write).
    /// Off: closes the file without writing what is pending, and drops it.
    static void enable(bool on);
    /// Whether records are being made.
    static bool isEnabled() noexcept {
        return singletonMonitor.m_enabled.load(::std::memory_order_relaxed);
    }

    /// An enter record for `name`.
    static void markStart(const ::std::string& name) {
        if (isEnabled()) {
            singletonMonitor.add(Record::Enter, name);
        }
    }
    /// An exit record; the exit names no operation, so `name` is not written.
    static void markEnd(const ::std::string& name) {
        if (isEnabled()) {
            singletonMonitor.add(Record::Exit, name);
        }
    }
    /// An exit record; none of the arguments is written.
    static void markEnd(const ::std::string& name, const ::std::string& name2, int value) {
        static_cast<void>(name2);
        static_cast<void>(value);
        markEnd(name);
    }
    /// A command start record.
    static void commandStart(const ::std::string& name) {
        if (isEnabled()) {
            singletonMonitor.add(Record::CommandStart, name);
        }
    }
    /// A command end record.
    static void commandEnd(const ::std::string& name) {
        if (isEnabled()) {
            singletonMonitor.add(Record::CommandEnd, name);
        }
    }

    /// Writes what is pending and the trailer, closes the file and switches the journal off.
    /// Returns the path of the journal written; the empty text when nothing was recorded (no
    /// file is then made), when the file cannot be written, or when the journal is off.
    static ::std::string dumpTimes();

    /// The source of the thread ids written from now on; null for the kernel's thread id.
    static void setThreadProvider(ThreadProvider* provider) noexcept;

    // The texts records are made of.
    static constexpr const char* PathDelimiter = "/";
    static constexpr const char* Empty = "";
    static constexpr const char* Pipe = "|";
    static constexpr const char* EN = "|EN|";
    static constexpr const char* EX = "|EX";
    static constexpr const char* SC = "|SC|";
    static constexpr const char* EC = "|EC|";

private:
    enum class Record { Enter, Exit, CommandStart, CommandEnd };

    Monitor() noexcept;

    void add(Record kind, const ::std::string& name);
    void switchOn();
    void switchOff();
    bool flush();
    ::std::string finalFlush();

    /// Runs a shell command and returns what it printed; the empty text when it cannot start.
    static ::std::string executeCommand(const ::std::string& command);
    /// The ids of the machine's processes (at most 1000).
    static ::std::set<unsigned long> collectAllPIDs();

    ::std::atomic<bool> m_enabled{false};
    bool m_singleThread = false;
    // The pending lines, each ended by "\n", and how many there are.
    ::std::string m_entries;
    ::std::size_t m_entryCount = 0;
    ::std::int64_t m_start = 0;
    ::std::int32_t m_depth = 0;
    ::std::FILE* m_file = nullptr;
    ::std::string m_path;
    ::std::mutex m_lock;

    static Monitor singletonMonitor;
    static ::std::atomic<ThreadProvider*> threadProvider;
};

}  // namespace Corvane::Soa::Internal::Common

#endif
