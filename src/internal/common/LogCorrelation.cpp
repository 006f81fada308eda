#include <corvane/soa/internal/common/LogCorrelation.hpp>

#include <unistd.h>

#include <array>
#include <cstdio>
#include <memory>

namespace Corvane::Soa::Internal::Common {

namespace {

// The machine's name, or "localhost" while it has none.
std::string hostName() {
    std::array<char, 256> name{};
    if (::gethostname(name.data(), name.size() - 1) != 0) {
        name[0] = '\0';
    }
    return name[0] != '\0' ? std::string(name.data()) : std::string("localhost");
}

// The calling thread's id with at least five digits.
std::string threadPart() {
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "%05d", static_cast<int>(::gettid()));
    return text.data();
}

}  // namespace

std::atomic<bool> LogCorrelation::hostNamePending{true};

LogCorrelation::LogCorrelation() : m_parts{hostName(), threadPart()} {}

LogCorrelation::~LogCorrelation() = default;

// Each thread's stack is its own: no map shared between threads, nothing to lock, and the
// object goes when its thread ends.
LogCorrelation& LogCorrelation::getCurrent() {
    thread_local std::unique_ptr<LogCorrelation> current;
    if (!current) {
        current.reset(new LogCorrelation);
    }
    return *current;
}

void LogCorrelation::push(const std::string& part) {
    std::vector<std::string>& parts = getCurrent().m_parts;
    std::string copy = part;  // `part` may be an element that growing the stack moves
    parts.push_back(std::move(copy));
}

void LogCorrelation::pop() {
    std::vector<std::string>& parts = getCurrent().m_parts;
    // Host names may not be known early in a process: the first pop looks again.
    if (hostNamePending.load(std::memory_order_relaxed) && hostNamePending.exchange(false) &&
        !parts.empty() && parts.front() == "localhost") {
        parts.front() = hostName();
    }
    if (!parts.empty()) {
        parts.pop_back();
    }
}

std::string LogCorrelation::getId() {
    const std::vector<std::string>& parts = getCurrent().m_parts;
    std::string id;
    for (const std::string& part : parts) {
        if (&part != &parts.front()) {
            id += '.';
        }
        id += part;
    }
    return id;
}

void LogCorrelation::clear() { getCurrent().m_parts.clear(); }

int LogCorrelation::size() { return static_cast<int>(getCurrent().m_parts.size()); }

}  // namespace Corvane::Soa::Internal::Common
