#ifndef CORVANE_SOA_COMMON_MEMORYINFO_HPP
#define CORVANE_SOA_COMMON_MEMORYINFO_HPP

#include <cstdint>

namespace Corvane::Soa::Common {

/// The figures kept by a tracking memory manager. Sizes are in kilobytes of 1000 bytes.
struct MemoryInfo {
    double currentSize = 0.0;
    double peakSize = 0.0;
    std::uint64_t largestRequest = 0;  // bytes
};

}  // namespace Corvane::Soa::Common

#endif
