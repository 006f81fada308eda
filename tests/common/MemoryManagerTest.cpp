#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/Counted.hpp>
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/MemoryAllocator.hpp>
#include <corvane/soa/common/MemoryManager.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>

#include <gtest/gtest.h>
#include <unistd.h>

#include "ProcessWide.hpp"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Counted;
using Corvane::Soa::Common::MemoryAllocator;
using Corvane::Soa::Common::MemoryInfo;
using Corvane::Soa::Common::MemoryManager;
using Corvane::Soa::Common::Xml::BaseObject;

// Hands out heap blocks and records every call.
class RecordingAllocator : public MemoryAllocator {
public:
    void* allocate(std::size_t size) override {
        allocated.emplace_back(::operator new(size), size);
        return allocated.back().first;
    }
    void deallocate(void* p) override {
        freed.push_back(p);
        ::operator delete(p);
    }
    std::vector<std::pair<void*, std::size_t>> allocated;
    std::vector<void*> freed;
};

class Record : public BaseObject {
public:
    Record() : BaseObject("urn:test", "Record") {}
    void getNamespaces(std::set<std::string>& ns) const override { ns.insert(getNamespace()); }

protected:
    BaseObject* reallyClone() const override { return new Record(*this); }
};

class Handle : public Counted {};

MemoryInfo figures(const MemoryManager& manager) {
    MemoryInfo info;
    EXPECT_TRUE(manager.getSoaMemoryInfo(info));
    return info;
}

// Unique per process: other builds may run the same tests at the same time.
std::string tempPath(const char* name) {
    return ::testing::TempDir() + "cvsoa-" + std::to_string(::getpid()) + "-" + name;
}

TEST(MemoryManager, TracksCurrentPeakAndLargestRequest) {
    MemoryManager manager(nullptr, true);
    EXPECT_EQ(figures(manager).peakSize, 0.0);

    void* first = manager.allocate(1500, "first");
    void* second = manager.allocate(500);
    MemoryInfo info = figures(manager);
    EXPECT_EQ(info.currentSize, 2.0);
    EXPECT_EQ(info.peakSize, 2.0);
    EXPECT_EQ(info.largestRequest, 1500u);
    EXPECT_EQ(manager.getObjectTable().at(first).tag, "first");
    EXPECT_EQ(manager.getObjectTable().at(second).tag, "");

    manager.deallocate(first);
    manager.deallocate(::operator new(64));  // never allocated through the manager
    info = figures(manager);
    EXPECT_EQ(info.currentSize, 0.5);
    EXPECT_EQ(info.peakSize, 2.0);
    EXPECT_EQ(info.largestRequest, 1500u);
    EXPECT_EQ(manager.getObjectTable().size(), 1u);
    manager.deallocate(second);
}

TEST(MemoryManager, ForwardsToACustomAllocatorItDoesNotOwn) {
    RecordingAllocator allocator;
    {
        MemoryManager manager(&allocator, false);
        void* block = manager.allocate(64, "x");
        ASSERT_EQ(allocator.allocated.size(), 1u);
        EXPECT_EQ(allocator.allocated[0], std::make_pair(block, std::size_t{64}));
        manager.deallocate(block);
        EXPECT_EQ(allocator.freed, std::vector<void*>{block});
    }
    // The manager has not deleted the allocator it was given.
    allocator.deallocate(allocator.allocate(8));

    char place[16];
    EXPECT_EQ(MemoryManager::placementallocate(sizeof place, place), place);
}

TEST(MemoryManager, ReportListsFiguresAndEveryBlockInAddressOrder) {
    MemoryManager manager(nullptr, true);
    std::vector<std::pair<void*, std::string>> blocks;
    const std::pair<const char*, unsigned> requests[] = {
        {"BaseObject", 1500}, {nullptr, 500}, {"Counted", 20}, {"BaseObject", 7}};
    for (const auto& [tag, size] : requests) {
        char line[256];
        void* block = manager.allocate(size, tag);
        std::snprintf(line, sizeof line, "\n%s\t %p (%u)", tag != nullptr ? tag : "", block, size);
        blocks.emplace_back(block, line);
    }
    manager.deallocate(blocks.back().first);
    blocks.pop_back();
    std::sort(blocks.begin(), blocks.end(),
              [](const auto& a, const auto& b) { return std::less<void*>()(a.first, b.first); });

    std::string expected =
        "\n\n============================================="
        "\n Memory Info"
        "\n============================================="
        "\nCurrent SOA CDM memory size : 2.020000 KB"
        "\nPeak CDM memory size : 2.027000 KB"
        "\nLargest Memory request : 1500 bytes"
        "\n\n============================================="
        "\n Memory Table"
        "\n=============================================";
    for (const auto& block : blocks) {
        expected += block.second;
    }

    const std::string path = tempPath("memory-report.txt");
    std::ofstream(path) << std::string(4000, '#');  // an older, longer file is replaced whole
    ASSERT_TRUE(manager.dumptofile(path.c_str()));
    std::ostringstream written;
    written << std::ifstream(path).rdbuf();
    EXPECT_EQ(written.str(), expected);
    std::remove(path.c_str());
    EXPECT_FALSE(manager.dumptofile("/nonexistent-cvsoa-dir/sub/report.txt"));

    for (const auto& block : blocks) {
        manager.deallocate(block.first);
    }
}

TEST(MemoryManager, WithoutTrackingKeepsNoFiguresAndWritesNoReport) {
    MemoryManager manager(nullptr, false);
    void* block = manager.allocate(1000, "tag");
    MemoryInfo info;
    EXPECT_FALSE(manager.getSoaMemoryInfo(info));
    EXPECT_TRUE(manager.getObjectTable().empty());
    manager.deallocate(block);

    const std::string path = tempPath("untracked-report.txt");
    EXPECT_TRUE(manager.dumptofile(path.c_str()));
    EXPECT_FALSE(std::ifstream(path).good());
}

// The tests below install the process-wide manager; ctest runs each in a process of its own.
TEST(MemoryManagerGlobal, SecondInitializationChangesNothing) {
    REQUIRE_NO_GLOBAL_MANAGER();
    static RecordingAllocator allocator;  // outlives the manager, which is never destroyed
    ASSERT_TRUE(MemoryManager::initializeMemoryManager(&allocator, true));
    MemoryManager* installed = MemoryManager::getMemoryManager();
    ASSERT_NE(installed, nullptr);

    EXPECT_FALSE(MemoryManager::initializeMemoryManager(nullptr, false));
    EXPECT_EQ(MemoryManager::getMemoryManager(), installed);

    void* block = installed->allocate(40, "probe");
    EXPECT_EQ(allocator.allocated.back().first, block);
    EXPECT_EQ(installed->getObjectTable().at(block).tag, "probe");  // still tracking
    installed->deallocate(block);
}

TEST(MemoryManagerGlobal, LibraryObjectsAreTaggedByTheirBaseClass) {
    REQUIRE_NO_GLOBAL_MANAGER();
    ASSERT_TRUE(MemoryManager::initializeMemoryManager(nullptr, true));
    const MemoryManager& manager = *MemoryManager::getMemoryManager();
    const auto& table = manager.getObjectTable();
    const std::size_t blocksBefore = table.size();
    const double sizeBefore = figures(manager).currentSize;
    {
        AutoPtr<Record> record(new Record);
        AutoPtr<Handle> handle(new Handle);
        AutoPtr<BaseObject> clone(record->clone());
        const std::unique_ptr<Corvane::Soa::Common::DateTime> date(
            new Corvane::Soa::Common::DateTime(2016, 12, 5, 14, 3, 9));
        ASSERT_EQ(table.size(), blocksBefore + 4);
        EXPECT_EQ(table.at(record.get()).tag, "BaseObject");
        EXPECT_EQ(table.at(record.get()).size, sizeof(Record));
        EXPECT_EQ(table.at(clone.get()).tag, "BaseObject");
        EXPECT_EQ(table.at(handle.get()).tag, "Counted");
        EXPECT_EQ(table.at(handle.get()).size, sizeof(Handle));
        EXPECT_EQ(table.at(date.get()).tag, "DateTime");
        EXPECT_EQ(table.at(date.get()).size, sizeof(Corvane::Soa::Common::DateTime));
    }
    // Released objects leave the table and the figures (sums of thousandths: not exact).
    EXPECT_EQ(table.size(), blocksBefore);
    EXPECT_NEAR(figures(manager).currentSize, sizeBefore, 1e-9);
}

}  // namespace
