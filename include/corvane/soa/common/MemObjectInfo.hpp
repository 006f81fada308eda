#ifndef CORVANE_SOA_COMMON_MEMOBJECTINFO_HPP
#define CORVANE_SOA_COMMON_MEMOBJECTINFO_HPP

#include <cstdint>
#include <string>
#include <utility>

namespace Corvane::Soa::Common {

/// One live block in the memory manager's table: its size in bytes and its owner's tag.
struct MemObjectInfo {
    MemObjectInfo() = default;
    MemObjectInfo(std::uint64_t bytes, std::string owner) : size(bytes), tag(std::move(owner)) {}

    std::uint64_t size = 0;
    std::string tag;
};

}  // namespace Corvane::Soa::Common

#endif
