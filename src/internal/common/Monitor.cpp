#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/Version.hpp>
#include <corvane/soa/internal/common/Monitor.hpp>
#include <corvane/soa/internal/common/ThreadProvider.hpp>

#include <dirent.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>

namespace Corvane::Soa::Internal::Common {

namespace {

// More pending lines than this are written at once, whatever the nesting.
constexpr std::size_t kMaxPendingLines = 1000;
// The clock counts nanoseconds.
constexpr std::int64_t kTicksPerSecond = 1000000000;

std::int64_t clockTicks() noexcept {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * kTicksPerSecond + now.tv_nsec;
}

// The kernel's id of the calling thread, asked once per thread.
unsigned long kernelThreadId() noexcept {
    thread_local const auto id = static_cast<unsigned long>(::gettid());
    return id;
}

template <class Number>
void appendDecimal(std::string& out, Number value) {
    std::array<char, 24> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    out.append(digits.data(), result.ptr);
}

bool isSet(const char* value) { return value != nullptr && *value != '\0'; }

// "<TEMP or TMP or .>/<program>_SOA<pid>.pjl"; the program's name is its executable's base name
// up to its last '.'.
std::string journalPath() {
    std::string directory = ".";
    if (const char* temp = std::getenv("TEMP"); isSet(temp)) {
        directory = temp;
    } else if (const char* tmp = std::getenv("TMP"); isSet(tmp)) {
        directory = tmp;
    }
    std::array<char, 256> module{};
    const ssize_t length = ::readlink("/proc/self/exe", module.data(), module.size() - 1);
    std::string program(module.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    program.erase(0, program.rfind('/') + 1);  // npos + 1 is 0: nothing to erase
    if (const std::size_t dot = program.rfind('.'); dot != std::string::npos) {
        program.erase(dot);
    }
    std::string path = directory + Monitor::PathDelimiter + program + "_SOA";
    appendDecimal(path, ::getpid());
    return path + ".pjl";
}

std::string header(bool singleThread) {
    std::string text = "0|HD|";
    appendDecimal(text, kTicksPerSecond);
    text += "|SOA-CPP|" + ::Corvane::Soa::Common::Version::getCorvaneVersionLabel();
    utsname system{};
    if (::uname(&system) == 0) {
        text = text + Monitor::Pipe + system.sysname + Monitor::Pipe + system.release;
    } else {
        text += "|||";
    }
    text += Monitor::Pipe + ::Corvane::Soa::Common::DateTime().toString("%Y-%m-%d %H:%M:%S");
    if (!singleThread) {
        text += "|UsesThreads";
    }
    return text;
}

}  // namespace

// Made when the library loads: the environment is read once, then.
Monitor Monitor::singletonMonitor;
std::atomic<ThreadProvider*> Monitor::threadProvider{nullptr};

ThreadProvider::~ThreadProvider() = default;

// Made while the library loads, where nothing could catch: a journal that cannot start (no
// memory for its header) stays off.
Monitor::Monitor() noexcept {
    const char* only = std::getenv("CV_JOURNAL_PERFORMANCE_ONLY");
    if (!isSet(only)) {
        return;
    }
    // The single-thread variable only has to be set: it is the first variable's value that
    // decides.
    if (std::getenv("CV_JOURNAL_PERFORMANCE_SINGLE_THREAD") != nullptr) {
        m_singleThread = std::strcmp(only, "TRUE") == 0 || std::strcmp(only, "true") == 0;
    }
    try {
        switchOn();
    } catch (...) {
        switchOff();
    }
}

Monitor::~Monitor() {
    std::unique_lock<std::mutex> guard(m_lock, std::defer_lock);
    if (!m_singleThread) {
        guard.lock();
    }
    switchOff();
}

void Monitor::enable(bool on) {
    Monitor& monitor = singletonMonitor;
    std::unique_lock<std::mutex> guard(monitor.m_lock, std::defer_lock);
    if (!monitor.m_singleThread) {
        guard.lock();
    }
    if (!on) {
        monitor.switchOff();
    } else if (!monitor.m_enabled.load(std::memory_order_relaxed)) {
        monitor.switchOn();
    }
}

std::string Monitor::dumpTimes() {
    if (!isEnabled()) {
        return {};
    }
    Monitor& monitor = singletonMonitor;
    std::unique_lock<std::mutex> guard(monitor.m_lock, std::defer_lock);
    if (!monitor.m_singleThread) {
        guard.lock();
    }
    return monitor.m_enabled.load(std::memory_order_relaxed) ? monitor.finalFlush() : std::string();
}

void Monitor::setThreadProvider(ThreadProvider* provider) noexcept {
    threadProvider.store(provider, std::memory_order_release);
}

void Monitor::add(Record kind, const std::string& name) {
    // The time and the thread are taken before waiting for the lock.
    const std::int64_t now = clockTicks();
    unsigned long thread = 0;
    if (!m_singleThread) {
        ThreadProvider* provider = threadProvider.load(std::memory_order_acquire);
        thread = provider != nullptr ? provider->getCurrentThreadId() : kernelThreadId();
    }
    std::unique_lock<std::mutex> guard(m_lock, std::defer_lock);
    if (!m_singleThread) {
        guard.lock();
    }
    if (!m_enabled.load(std::memory_order_relaxed)) {
        return;  // switched off since the caller looked
    }
    appendDecimal(m_entries, now - m_start);
    if (!m_singleThread) {
        m_entries += Pipe;
        appendDecimal(m_entries, thread);
    }
    switch (kind) {
        case Record::Enter:
            m_entries.append(EN).append(name);
            ++m_depth;
            break;
        case Record::Exit:
            m_entries += EX;
            --m_depth;
            break;
        case Record::CommandStart:
            m_entries.append(SC).append(name);
            ++m_depth;
            break;
        case Record::CommandEnd:
            m_entries.append(EC).append(name);
            --m_depth;
            break;
    }
    m_entries += '\n';
    ++m_entryCount;
    if (m_depth == 0 || m_entryCount > kMaxPendingLines) {
        flush();
    }
}

// Called with the lock held, as everything below.
void Monitor::switchOn() {
    m_start = clockTicks();
    m_entries = header(m_singleThread);
    m_entries += "\n\n";  // the header's line and the empty second line
    m_entryCount = 2;
    m_depth = 0;
    m_enabled.store(true, std::memory_order_relaxed);
}

void Monitor::switchOff() {
    m_enabled.store(false, std::memory_order_relaxed);
    m_entries.clear();
    m_entries.shrink_to_fit();
    m_entryCount = 0;
    if (m_file != nullptr) {
        std::fclose(m_file);
        m_file = nullptr;
    }
}

// Writes the pending lines, making the file first; when it cannot be made the journal stops.
bool Monitor::flush() {
    if (m_file == nullptr) {
        m_path = journalPath();
        m_file = std::fopen(m_path.c_str(), "w");
        if (m_file == nullptr) {
            switchOff();
            return false;
        }
    }
    std::fwrite(m_entries.data(), 1, m_entries.size(), m_file);
    std::fflush(m_file);
    m_entries.clear();
    m_entryCount = 0;
    return true;
}

std::string Monitor::finalFlush() {
    if (m_file == nullptr && m_entryCount == 2) {
        switchOff();  // nothing was recorded: no file
        return {};
    }
    appendDecimal(m_entries, clockTicks() - m_start);
    m_entries += "|TR\n";
    ++m_entryCount;
    if (!flush()) {
        return {};
    }
    std::string path = m_path;
    switchOff();
    return path;
}

std::string Monitor::executeCommand(const std::string& command) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    if (!pipe) {
        return {};
    }
    std::string output;
    std::array<char, 4096> chunk{};
    std::size_t got = 0;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), pipe.get())) > 0) {
        output.append(chunk.data(), got);
    }
    return output;
}

std::set<unsigned long> Monitor::collectAllPIDs() {
    constexpr std::size_t kMaxProcesses = 1000;
    std::set<unsigned long> ids;
    std::unique_ptr<DIR, int (*)(DIR*)> proc(::opendir("/proc"), ::closedir);
    if (!proc) {
        return ids;
    }
    std::size_t seen = 0;
    while (const dirent* entry = ::readdir(proc.get())) {
        unsigned long id = 0;
        const char* name = entry->d_name;
        const char* end = name + std::strlen(name);
        const auto [ptr, error] = std::from_chars(name, end, id);
        if (error == std::errc() && ptr == end && ptr != name) {
            ids.insert(id);
            if (++seen == kMaxProcesses) {
                break;
            }
        }
    }
    return ids;
}

}  // namespace Corvane::Soa::Internal::Common
