// Records in the performance journal what its arguments say, one step each, and prints what the
// steps report on one line: the journal's tests run it with the environment of each scenario
// (the journal reads its environment when the library loads).
//   on | off                   Monitor::enable(true / false)
//   en:NAME | ex | ex3         markStart(NAME), markEnd(""), markEnd("", "", 0)
//   sc:NAME | ec:NAME          commandStart / commandEnd
//   scoped:NAME                a ScopedMonitor made and destroyed
//   enters:N                   N nested enters
//   provider:ID                a thread provider that answers ID
//   lines                      "lines=" and the lines of the journal file so far ("none": no file)
//   dump                       "dump=" and what dumpTimes returns
//   threads:T:MS               T threads recording nested operations for MS milliseconds;
//                              "records=" and how many records they made
#include <corvane/soa/internal/common/Monitor.hpp>
#include <corvane/soa/internal/common/ScopedMonitor.hpp>
#include <corvane/soa/internal/common/ThreadProvider.hpp>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using ::Corvane::Soa::Internal::Common::Monitor;
using ::Corvane::Soa::Internal::Common::ScopedMonitor;

class FixedThread : public ::Corvane::Soa::Internal::Common::ThreadProvider {
public:
    explicit FixedThread(unsigned long id) : m_id(id) {}
    unsigned long getCurrentThreadId() override { return m_id; }

private:
    unsigned long m_id;
};

// The lines of the .pjl file in the directory the journal uses.
std::string journalLines() {
    std::string directory = ".";
    for (const char* variable : {"TMP", "TEMP"}) {
        if (const char* value = std::getenv(variable); value != nullptr && *value != '\0') {
            directory = value;
        }
    }
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
        if (entry.path().extension() == ".pjl") {
            std::ifstream file(entry.path());
            return std::to_string(std::count(std::istreambuf_iterator<char>(file),
                                             std::istreambuf_iterator<char>(), '\n'));
        }
    }
    return "none";
}

long recordForAWhile(int threads, int milliseconds) {
    std::atomic<long> records{0};
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    std::vector<std::thread> running;
    running.reserve(static_cast<std::size_t>(threads));
    for (int t = 0; t < threads; ++t) {
        running.emplace_back([&records, until] {
            long made = 0;
            while (std::chrono::steady_clock::now() < until) {
                ScopedMonitor outer("outer");
                {
                    ScopedMonitor inner("inner");
                    ScopedMonitor innermost("innermost");
                }
                made += 6;
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
            records += made;
        });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
    return records;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<FixedThread> providers;
    providers.reserve(static_cast<std::size_t>(argc));
    std::cout << "pid=" << ::getpid();
    for (int i = 1; i < argc; ++i) {
        const std::string step = argv[i];
        const std::string::size_type colon = step.find(':');
        const std::string verb = step.substr(0, colon);
        const std::string value = colon == std::string::npos ? "" : step.substr(colon + 1);
        if (verb == "on" || verb == "off") {
            Monitor::enable(verb == "on");
        } else if (verb == "en") {
            Monitor::markStart(value);
        } else if (verb == "ex") {
            Monitor::markEnd("");
        } else if (verb == "ex3") {
            Monitor::markEnd("", "", 0);
        } else if (verb == "sc") {
            Monitor::commandStart(value);
        } else if (verb == "ec") {
            Monitor::commandEnd(value);
        } else if (verb == "scoped") {
            const ScopedMonitor marked(value);
        } else if (verb == "enters") {
            for (int n = std::stoi(value); n > 0; --n) {
                Monitor::markStart("n");
            }
        } else if (verb == "provider") {
            providers.emplace_back(std::stoul(value));
            Monitor::setThreadProvider(&providers.back());
        } else if (verb == "lines") {
            std::cout << " lines=" << journalLines();
        } else if (verb == "dump") {
            std::cout << " dump=" << Monitor::dumpTimes();
        } else if (verb == "threads") {
            const std::string::size_type second = value.find(':');
            std::cout << " records="
                      << recordForAWhile(std::stoi(value.substr(0, second)),
                                         std::stoi(value.substr(second + 1)));
        } else {
            std::cerr << "unknown step " << step << '\n';
            return 2;
        }
    }
    std::cout << '\n';
    return 0;
}
