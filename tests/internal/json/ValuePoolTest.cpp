// Values come from a pool shared by the threads: values made on one thread and released on
// another keep their contents, and the memory they free is used again rather than piling up.
#include <corvane/soa/internal/json/IntegerValue.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
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

#include <cstddef>
#include <string>
#include <thread>
#include <vector>

namespace {

using Corvane::Soa::Common::AutoPtr;
using namespace Corvane::Soa::Internal::Json;

std::size_t heapInUse() { return mallinfo2().uordblks; }

// Values of three size classes, each holding its own index.
std::vector<AutoPtr<Value>> makeValues(int count) {
    std::vector<AutoPtr<Value>> values;
    for (int i = 0; i < count; ++i) {
        if (i % 3 == 0) {
            values.emplace_back(new IntegerValue(i));
        } else if (i % 3 == 1) {
            values.emplace_back(new StringValue(std::to_string(i)));
        } else {
            AutoPtr<JSONObject> object(new JSONObject);
            object->accumulate("i", i);
            values.emplace_back(object);
        }
    }
    return values;
}

// The number of values in `values` that no longer hold their index.
int faultsIn(const std::vector<AutoPtr<Value>>& values) {
    int faults = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Value& v = *values[i];
        const int index = static_cast<int>(i);
        switch (v.getType()) {
            case Value::INTEGER:
                faults += static_cast<const IntegerValue&>(v).getValue() != index;
                break;
            case Value::STRING:
                faults += static_cast<const StringValue&>(v).getValue() != std::to_string(index);
                break;
            case Value::OBJECT:
                faults += static_cast<const JSONObject&>(v).getInteger("i") != index;
                break;
            default:
                ++faults;
        }
    }
    return faults;
}

TEST(ValuePool, ValuesMadeOnOneThreadAreReleasedOnAnother) {
    std::size_t afterWarmUp = 0;
    for (int round = 0; round < 30; ++round) {
        // A thread of its own makes the values and ends; this thread checks and releases them,
        // and the next round's thread must be served from what was released.
        std::vector<AutoPtr<Value>> values;
        std::thread([&values] { values = makeValues(20000); }).join();
        ASSERT_EQ(faultsIn(values), 0) << "round " << round;
        values.clear();
        if (round == 2) {
            afterWarmUp = heapInUse();
        }
    }
    // One round holds over 1 MB of values; 27 more rounds that reused nothing would hold 27 times
    // as much.
    EXPECT_LT(heapInUse(), afterWarmUp + std::size_t{2} * 1000 * 1000);
}

TEST(ValuePool, ThreadsReleasingEachOthersValuesAtOnce) {
    constexpr int kThreads = 4;
    std::vector<std::vector<AutoPtr<Value>>> made;
    made.reserve(kThreads);
    for (int t = 0; t < kThreads; ++t) {
        made.push_back(makeValues(5000));
    }
    // Each thread releases another thread's share while making and checking values of its own.
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    std::vector<int> faults(kThreads, 0);
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&made, &faults, t] {
            std::vector<AutoPtr<Value>> theirs = std::move(made[(t + 1) % kThreads]);
            for (int round = 0; round < 5; ++round) {
                std::vector<AutoPtr<Value>> mine = makeValues(5000);
                theirs.clear();
                faults[t] += faultsIn(mine);
                theirs = std::move(mine);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(faults, std::vector<int>(kThreads, 0));
}

TEST(ValuePool, PartsOfOneDocumentReleasedOnSeveralThreads) {
    // The objects of one document share their keys' texts; a long string stays on the heap.
    constexpr int kThreads = 4;
    constexpr int kObjects = 4000;
    const std::string tail(3000, 'x');
    std::string text = "[";
    for (int i = 0; i < kObjects; ++i) {
        text += (i == 0 ? "{" : ",{") + std::string("\"a key longer than sixteen\":") +
                std::to_string(i) + ",\"s\":\"" + std::to_string(i) + "\\n" +
                (i % 1000 == 0 ? tail : "") + "\"}";
    }
    text += "]";
    std::vector<std::vector<AutoPtr<JSONObject>>> shares(kThreads);
    {
        Parser parser;
        const AutoPtr<JSONArray> all = parser.parse(text).dynamicCast<JSONArray>();
        for (int i = 0; i < kObjects; ++i) {
            shares[static_cast<std::size_t>(i % kThreads)].push_back(
                all->getJSONObject(static_cast<std::size_t>(i)));
        }
    }
    std::vector<int> faults(kThreads, 0);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&shares, &faults, &tail, t] {
            int i = t;
            for (const AutoPtr<JSONObject>& object : shares[static_cast<std::size_t>(t)]) {
                const std::string expected = std::to_string(i) + "\n" + (i % 1000 == 0 ? tail : "");
                faults[static_cast<std::size_t>(t)] +=
                    object->getInteger("a key longer than sixteen") != i ||
                    object->getString("s") != expected;
                i += kThreads;
            }
            shares[static_cast<std::size_t>(t)].clear();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(faults, std::vector<int>(kThreads, 0));
}

TEST(ValuePool, ArraysKeepTheirElementsAsTheyGrowFromPoolToHeapStorage) {
    // Element storage of up to 2048 bytes comes from the pool, larger from the heap.
    AutoPtr<JSONArray> array(new JSONArray);
    for (int i = 0; i < 300; ++i) {
        array->add(i);
        ASSERT_EQ(array->size(), static_cast<std::size_t>(i + 1));
        ASSERT_EQ(array->getInteger(0), 0);
        ASSERT_EQ(array->getInteger(i), i);
    }
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
