#ifndef CORVANE_SOA_COMMON_ZIPLIMITS_HPP
#define CORVANE_SOA_COMMON_ZIPLIMITS_HPP

#include <corvane/soa/Export.hpp>

#include <cstdint>

namespace Corvane::Soa::Common {

/// How much a `ZipArchive` lets one entry expand to: at most `getMaxEntrySize()` bytes, and,
/// beyond its first `getRatioAllowance()` bytes, at most `getMaxRatio()` times its compressed
/// size. An entry whose declared size breaks a limit is refused before it is read; since no
/// entry may grow past its declared size, the limits also bound what is written.
class CORVANE_SOA_API ZipLimits {
public:
    static constexpr std::uint64_t kDefaultMaxEntrySize = std::uint64_t{1} << 30;
    static constexpr std::uint64_t kDefaultMaxRatio = 1000;
    static constexpr std::uint64_t kDefaultRatioAllowance = std::uint64_t{1} << 20;

    ZipLimits& setMaxEntrySize(std::uint64_t bytes) noexcept {
        m_maxEntrySize = bytes;
        return *this;
    }
    ZipLimits& setMaxRatio(std::uint64_t ratio) noexcept {
        m_maxRatio = ratio;
        return *this;
    }
    ZipLimits& setRatioAllowance(std::uint64_t bytes) noexcept {
        m_ratioAllowance = bytes;
        return *this;
    }

    std::uint64_t getMaxEntrySize() const noexcept { return m_maxEntrySize; }
    std::uint64_t getMaxRatio() const noexcept { return m_maxRatio; }
    std::uint64_t getRatioAllowance() const noexcept { return m_ratioAllowance; }

private:
    std::uint64_t m_maxEntrySize = kDefaultMaxEntrySize;
    std::uint64_t m_maxRatio = kDefaultMaxRatio;
    std::uint64_t m_ratioAllowance = kDefaultRatioAllowance;
};

}  // namespace Corvane::Soa::Common

#endif
