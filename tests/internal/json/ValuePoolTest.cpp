// Values come from a pool shared by the threads: values made on one thread and released on
// another keep their contents, and the memory they free is used again rather than piling up.
#include <corvane/soa/internal/json/IntegerValue.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>

#include <gtest/gtest.h>
#include <malloc.h>

#if defined(__SANITIZE_ADDRESS__)
#define CVSOA_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define CVSOA_TEST_ASAN 1
#endif
#endif
#if defined(CVSOA_TEST_ASAN)
#include <sanitizer/asan_interface.h>
#endif

#include <string>
#include <thread>
#include <vector>

namespace {

using Corvane::Soa::Common::AutoPtr;
using namespace Corvane::Soa::Internal::Json;

std::size_t heapInUse() { return mallinfo2().uordblks; }

// Values of several size classes, each holding its own index.
std::vector<AutoPtr<Value>> makeValues(int count) {
    std::vector<AutoPtr<Value>> values;
    values.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        switch (i % 3) {
            case 0:
                values.emplace_back(new IntegerValue(i));
                break;
            case 1:
                values.emplace_back(new StringValue(std::to_string(i)));
                break;
            default: {
                AutoPtr<JSONObject> object(new JSONObject);
                object->accumulate("i", i);
                values.emplace_back(object);
                break;
            }
        }
    }
    return values;
}

bool holdsItsIndex(const Value& value, int i) {
    switch (value.getType()) {
        case Value::INTEGER:
            return static_cast<const IntegerValue&>(value).getValue() == i;
        case Value::STRING:
            return static_cast<const StringValue&>(value).getValue() == std::to_string(i);
        case Value::OBJECT:
            return static_cast<const JSONObject&>(value).getInteger("i") == i;
        default:
            return false;
    }
}

TEST(ValuePool, ValuesMadeOnOneThreadAreReleasedOnAnother) {
    constexpr int kCount = 20000;
    std::size_t afterWarmUp = 0;
    for (int round = 0; round < 30; ++round) {
        // A thread of its own makes the values and ends; this thread checks and releases them,
        // and the next round's thread must be served from what was released.
        std::vector<AutoPtr<Value>> values;
        std::thread maker([&values] { values = makeValues(kCount); });
        maker.join();
        for (int i = 0; i < kCount; ++i) {
            ASSERT_TRUE(holdsItsIndex(*values[static_cast<std::size_t>(i)], i)) << i;
        }
        values.clear();
        if (round == 2) {
            afterWarmUp = heapInUse();
        }
    }
    // One round holds over 1 MB of values; 27 more rounds that reused nothing would hold 27 times
    // as much.
    EXPECT_LT(heapInUse(), afterWarmUp + 2 * 1000 * 1000);
}

TEST(ValuePool, ThreadsReleasingEachOthersValuesAtOnce) {
    constexpr int kThreads = 4;
    constexpr int kCount = 5000;
    std::vector<std::vector<AutoPtr<Value>>> made(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        made[static_cast<std::size_t>(i)] = makeValues(kCount);
    }
    // Each thread releases another thread's share while making and checking values of its own.
    std::vector<std::thread> threads;
    std::vector<int> faults(kThreads, 0);
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&made, &faults, t] {
            std::vector<AutoPtr<Value>> theirs =
                std::move(made[static_cast<std::size_t>((t + 1) % kThreads)]);
            for (int round = 0; round < 5; ++round) {
                std::vector<AutoPtr<Value>> mine = makeValues(kCount);
                theirs.clear();
                for (int i = 0; i < kCount; ++i) {
                    if (!holdsItsIndex(*mine[static_cast<std::size_t>(i)], i)) {
                        ++faults[static_cast<std::size_t>(t)];
                    }
                }
                theirs = std::move(mine);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(faults, std::vector<int>(kThreads, 0));
}

TEST(ValuePool, SmallArraysAndLargeOnesKeepTheirElements) {
    // Element storage of up to 512 bytes comes from the pool, larger from the heap; growing an
    // array moves it from one to the other.
    AutoPtr<JSONArray> array(new JSONArray);
    for (int i = 0; i < 100; ++i) {
        array->add(i);
        ASSERT_EQ(array->size(), static_cast<std::size_t>(i + 1));
        ASSERT_EQ(array->getInteger(0), 0);
        ASSERT_EQ(array->getInteger(static_cast<std::size_t>(i)), i);
    }
    EXPECT_EQ(array->getValueType(99), Value::INTEGER);
}

#if defined(CVSOA_TEST_ASAN)
TEST(ValuePool, UnderTheSanitizerEachValueIsAHeapBlockOfItsOwn) {
    auto* value = new IntegerValue(7);
    EXPECT_EQ(__asan_address_is_poisoned(value), 0);
    delete value;
    EXPECT_NE(__asan_address_is_poisoned(value), 0);
    EXPECT_DEATH(Value::operator delete(value, sizeof(IntegerValue)), "double-free");
}
#endif

}  // namespace
