#ifndef CORVANE_SOA_COMMON_MEMORYMANAGER_HPP
#define CORVANE_SOA_COMMON_MEMORYMANAGER_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/MemObjectInfo.hpp>
#include <corvane/soa/common/MemoryInfo.hpp>

#include <cstddef>
#include <map>
#include <memory>
#include <string>

namespace Corvane::Soa::Common {

class MemoryAllocator;

/// Routes the library's own allocations to one allocator and, when tracking, keeps the current
/// and peak size, the largest request and a table of live blocks by owner tag.
///
/// The process-wide instance is made by `initializeMemoryManager` and lives until the process
/// ends. Nothing is locked: install it before other threads allocate through it.
class CORVANE_SOA_API MemoryManager {
public:
    /// A manager over `allocator` (null: a `DefaultMemoryAllocatorImpl` it owns).
    MemoryManager(MemoryAllocator* allocator, bool tracking);
    MemoryManager(const MemoryManager&) = delete;
    MemoryManager& operator=(const MemoryManager&) = delete;
    virtual ~MemoryManager();

    /// Installs the process-wide manager; false (and no change) when one already exists.
    static bool initializeMemoryManager(MemoryAllocator* allocator, bool tracking);
    /// The process-wide manager, or null when none is installed.
    static MemoryManager* getMemoryManager() noexcept { return m_sMemoryManager; }

    void* allocate(std::size_t size, const char* tag = nullptr);
    void deallocate(void* p);
    static void* placementallocate(std::size_t size, void* p) noexcept;
    static void placementdeallocate(void* p, void* q) noexcept;

    /// Copies the figures into `out`; false when tracking is off.
    bool getSoaMemoryInfo(MemoryInfo& out) const;
    /// Writes the report to `path`; true without writing when tracking is off, false when the
    /// file cannot be opened.
    bool dumptofile(const char* path) const;
    virtual std::string getAllocatorID() const;

    /// The table of live blocks (empty when tracking is off), in address order.
    const std::map<const void*, MemObjectInfo>& getObjectTable() const noexcept { return m_table; }

    /// Allocation for the library's classes: through the installed manager under `tag`, or
    /// from the global heap when there is none.
    static void* allocateObject(std::size_t size, const char* tag);
    static void deallocateObject(void* p) noexcept;

private:
    MemoryAllocator* m_allocator;
    bool m_ownsAllocator;
    std::unique_ptr<MemoryInfo> m_info;
    std::map<const void*, MemObjectInfo> m_table;

    static MemoryManager* m_sMemoryManager;
};

}  // namespace Corvane::Soa::Common

#endif
