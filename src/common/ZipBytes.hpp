#ifndef CORVANE_SOA_COMMON_ZIPBYTES_HPP
#define CORVANE_SOA_COMMON_ZIPBYTES_HPP

// Little-endian fields of zip records, and the record signatures.

#include <cstddef>
#include <cstdint>

namespace Corvane::Soa::Common::ZipBytes {

constexpr std::uint32_t kLocalHeader = 0x04034b50;
constexpr std::uint32_t kCentralHeader = 0x02014b50;
constexpr std::uint32_t kEndRecord = 0x06054b50;
constexpr std::uint32_t kZip64EndRecord = 0x06064b50;
constexpr std::uint32_t kZip64Locator = 0x07064b50;

constexpr std::size_t kLocalHeaderSize = 30;
constexpr std::size_t kCentralHeaderSize = 46;
constexpr std::size_t kEndRecordSize = 22;
constexpr std::size_t kZip64EndRecordSize = 56;
constexpr std::size_t kZip64LocatorSize = 20;

inline std::uint16_t u16(const unsigned char* p) noexcept {
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8U));
}

inline std::uint32_t u32(const unsigned char* p) noexcept {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8U) |
           (static_cast<std::uint32_t>(p[2]) << 16U) | (static_cast<std::uint32_t>(p[3]) << 24U);
}

inline std::uint64_t u64(const unsigned char* p) noexcept {
    return static_cast<std::uint64_t>(u32(p)) | (static_cast<std::uint64_t>(u32(p + 4)) << 32U);
}

}  // namespace Corvane::Soa::Common::ZipBytes

#endif
