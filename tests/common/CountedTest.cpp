#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/Counted.hpp>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Counted;

class Resource : public Counted {
public:
    explicit Resource(int* destroyed = nullptr) : m_destroyed(destroyed) {}
    ~Resource() override {
        if (m_destroyed != nullptr) {
            ++*m_destroyed;
        }
    }

private:
    int* m_destroyed;
};

TEST(Counted, LastHolderDeletesThroughTheVirtualDestructor) {
    int destroyed = 0;
    Resource* resource = new Resource(&destroyed);
    EXPECT_EQ(resource->getCount(), 0);
    AutoPtr<Counted> holder(resource);
    AutoPtr<Resource> back = holder.dynamicCast<Resource>();
    EXPECT_EQ(back.get(), resource);
    EXPECT_EQ(resource->getCount(), 2);
    holder.reset();
    EXPECT_EQ(resource->getCount(), 1);
    EXPECT_EQ(destroyed, 0);
    back.reset();
    EXPECT_EQ(destroyed, 1);
}

TEST(Counted, CopyKeepsTheSourceCountAndAssignmentOverwrites) {
    AutoPtr<Resource> holder(new Resource);
    AutoPtr<Resource> second(holder);  // NOLINT(performance-unnecessary-copy-initialization)

    // The base part alone is copied, as a copy constructor of a derived class would.
    const Counted copy(*holder);  // NOLINT(cppcoreguidelines-slicing)
    EXPECT_EQ(copy.getCount(), 2);

    Resource target;
    target = *holder;
    EXPECT_EQ(target.getCount(), 2);
    EXPECT_EQ(holder->getCount(), 2);
}

TEST(Counted, HoldersOnSeveralThreadsKeepAnExactCount) {
    int destroyed = 0;
    AutoPtr<Resource> holder(new Resource(&destroyed));
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([holder] {
            for (int i = 0; i < 20000; ++i) {
                AutoPtr<Counted> copy(holder);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(holder->getCount(), 1);
    holder.reset();
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
