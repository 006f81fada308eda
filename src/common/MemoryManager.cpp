#include <corvane/soa/common/DefaultMemoryAllocatorImpl.hpp>
#include <corvane/soa/common/MemoryManager.hpp>

#include <cinttypes>
#include <cstdio>
#include <new>

namespace Corvane::Soa::Common {

MemoryManager* MemoryManager::m_sMemoryManager = nullptr;

MemoryManager::MemoryManager(MemoryAllocator* allocator, bool tracking)
    : m_allocator(allocator != nullptr ? allocator : new DefaultMemoryAllocatorImpl),
      m_ownsAllocator(allocator == nullptr),
      m_info(tracking ? std::make_unique<MemoryInfo>() : nullptr) {}

MemoryManager::~MemoryManager() {
    if (m_ownsAllocator) {
        delete m_allocator;
    }
}

bool MemoryManager::initializeMemoryManager(MemoryAllocator* allocator, bool tracking) {
    if (m_sMemoryManager != nullptr) {
        return false;
    }
    m_sMemoryManager = new MemoryManager(allocator, tracking);
    return true;
}

void* MemoryManager::allocate(std::size_t size, const char* tag) {
    void* block = m_allocator->allocate(size);
    if (m_info) {
        m_info->currentSize += static_cast<double>(size) / 1000.0;
        if (size > m_info->largestRequest) {
            m_info->largestRequest = size;
        }
        if (m_info->currentSize > m_info->peakSize) {
            m_info->peakSize = m_info->currentSize;
        }
        m_table.emplace(block, MemObjectInfo(size, tag != nullptr ? tag : ""));
    }
    return block;
}

void MemoryManager::deallocate(void* p) {
    m_allocator->deallocate(p);
    if (m_info) {
        auto entry = m_table.find(p);
        if (entry != m_table.end()) {
            m_info->currentSize -= static_cast<double>(entry->second.size) / 1000.0;
            m_table.erase(entry);
        }
    }
}

void* MemoryManager::placementallocate(std::size_t /*size*/, void* p) noexcept { return p; }

void MemoryManager::placementdeallocate(void* /*p*/, void* /*q*/) noexcept {}

bool MemoryManager::getSoaMemoryInfo(MemoryInfo& out) const {
    if (!m_info) {
        return false;
    }
    out = *m_info;
    return true;
}

bool MemoryManager::dumptofile(const char* path) const {
    if (!m_info) {
        return true;
    }
    std::FILE* file = std::fopen(path, "w+");
    if (file == nullptr) {
        return false;
    }
    std::fprintf(file, "\n\n=============================================");
    std::fprintf(file, "\n Memory Info");
    std::fprintf(file, "\n=============================================");
    std::fprintf(file, "\nCurrent SOA CDM memory size : %f KB", m_info->currentSize);
    std::fprintf(file, "\nPeak CDM memory size : %f KB", m_info->peakSize);
    std::fprintf(file, "\nLargest Memory request : %" PRIu64 " bytes", m_info->largestRequest);
    std::fprintf(file, "\n\n=============================================");
    std::fprintf(file, "\n Memory Table");
    std::fprintf(file, "\n=============================================");
    for (const auto& [block, info] : m_table) {
        std::fprintf(file, "\n%s\t %p (%" PRIu64 ")", info.tag.c_str(), block, info.size);
    }
    return std::fclose(file) == 0;
}

std::string MemoryManager::getAllocatorID() const {
    return m_ownsAllocator ? "DefaultMemoryAllocatorImpl" : "MemoryAllocator";
}

void* MemoryManager::allocateObject(std::size_t size, const char* tag) {
    MemoryManager* manager = m_sMemoryManager;
    return manager != nullptr ? manager->allocate(size, tag) : ::operator new(size);
}

void MemoryManager::deallocateObject(void* p) noexcept {
    if (p == nullptr) {
        return;
    }
    MemoryManager* manager = m_sMemoryManager;
    if (manager != nullptr) {
        manager->deallocate(p);
    } else {
        ::operator delete(p);
    }
}

}  // namespace Corvane::Soa::Common
