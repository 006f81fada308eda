#include <corvane/soa/common/MemoryManager.hpp>
#include <corvane/soa/internal/common/LogCorrelation.hpp>

#include <gtest/gtest.h>

#include "ProcessWide.hpp"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::Corvane::Soa::Common::MemoryManager;
using ::Corvane::Soa::Internal::Common::LogCorrelation;

// What a fresh thread's identifier starts with: the host name and the five-digit thread id.
std::string expectedBase() {
    std::array<char, 256> host{};
    ::gethostname(host.data(), host.size() - 1);
    std::array<char, 24> thread{};
    std::snprintf(thread.data(), thread.size(), "%05d", static_cast<int>(::gettid()));
    return std::string(host[0] != '\0' ? host.data() : "localhost") + "." + thread.data();
}

// Each case runs on a thread of its own, which starts with a fresh stack.
template <class Body>
void onFreshThread(Body body) {
    std::thread(body).join();
}

TEST(LogCorrelationTest, AThreadsStackStartsWithHostAndThreadAndFollowsPushAndPop) {
    onFreshThread([] {
        const std::string base = expectedBase();
        EXPECT_EQ(LogCorrelation::size(), 2);
        EXPECT_EQ(LogCorrelation::getId(), base);
        LogCorrelation::push("a");
        LogCorrelation::push("b");
        EXPECT_EQ(LogCorrelation::getId(), base + ".a.b");
        LogCorrelation::pop();
        EXPECT_EQ(LogCorrelation::getId(), base + ".a");
        EXPECT_EQ(LogCorrelation::size(), 3);
        LogCorrelation::clear();
        EXPECT_EQ(LogCorrelation::getId(), "");
        EXPECT_EQ(LogCorrelation::size(), 0);
        LogCorrelation::pop();  // nothing to pop: nothing happens
        EXPECT_EQ(LogCorrelation::size(), 0);
        LogCorrelation::push("only");
        EXPECT_EQ(LogCorrelation::getId(), "only");
    });
}

// Threads working at once each see their own stack only.
TEST(LogCorrelationTest, ThreadsKeepStacksOfTheirOwn) {
    std::vector<std::thread> threads;
    std::vector<int> faults(8, 0);
    for (std::size_t t = 0; t < faults.size(); ++t) {
        threads.emplace_back([t, &faults] {
            const std::string base = expectedBase();
            for (int round = 0; round < 2000; ++round) {
                LogCorrelation::push("t" + std::to_string(t));
                LogCorrelation::push(std::to_string(round));
                faults[t] += LogCorrelation::getId() !=
                             base + ".t" + std::to_string(t) + "." + std::to_string(round);
                LogCorrelation::pop();
                LogCorrelation::pop();
            }
            faults[t] += LogCorrelation::getId() != base;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(faults, std::vector<int>(faults.size(), 0));
}

// A thread's stack is allocated under "LogCorrelation" and freed when the thread ends.
TEST(LogCorrelationTest, AThreadsStackIsAccountedAndFreedWithTheThread) {
    REQUIRE_NO_GLOBAL_MANAGER();
    ASSERT_TRUE(MemoryManager::initializeMemoryManager(nullptr, true));
    const MemoryManager& manager = *MemoryManager::getMemoryManager();
    auto tagged = [&manager] {
        int count = 0;
        for (const auto& entry : manager.getObjectTable()) {
            count += entry.second.tag == "LogCorrelation";
        }
        return count;
    };
    int whileRunning = -1;
    onFreshThread([&] {
        LogCorrelation::push("x");
        whileRunning = tagged();
    });
    EXPECT_EQ(whileRunning, 1);
    EXPECT_EQ(tagged(), 0);
}

}  // namespace
