#ifndef CORVANE_SOA_COMMON_ZIPENTRYREADER_HPP
#define CORVANE_SOA_COMMON_ZIPENTRYREADER_HPP

#include <corvane/soa/common/ZipArchive.hpp>

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Corvane::Soa::Common {

/// Streams the data of one entry: reads its local header, then gives the data piece by piece,
/// inflating deflated data with zlib's raw inflate, counting the bytes and computing the CRC-32
/// as they pass; the last read checks both against the central directory.
class ZipEntryReader {
public:
    /// Checks what can be known without reading the data (see `check`), then reads the local
    /// header.
    ZipEntryReader(const ZipArchive& archive, const ZipEntry& entry);
    ZipEntryReader(const ZipEntryReader&) = delete;
    ZipEntryReader& operator=(const ZipEntryReader&) = delete;
    ~ZipEntryReader();

    /// Throws when `entry` is encrypted, of a method that cannot be read, or declares a size
    /// beyond the archive's limits.
    static void check(const ZipArchive& archive, const ZipEntry& entry);

    /// Up to `capacity` bytes of data into `out`; 0 at the end, once the size and CRC-32 are
    /// checked.
    std::size_t read(char* out, std::size_t capacity);

    /// Throws "ARCHIVE: ENTRY: what".
    [[noreturn]] void fail(const std::string& what) const;

private:
    std::size_t readStored(char* out, std::size_t capacity);
    std::size_t readDeflated(char* out, std::size_t capacity);
    void refill();
    void count(const char* data, std::size_t length);
    void finish();

    const ZipArchive& m_archive;
    const ZipEntry& m_entry;
    std::unique_ptr<unsigned char[]> m_input;
    std::size_t m_inputSize = 0;
    // The stored bytes still in `m_input`, for stored data.
    std::size_t m_buffered = 0;
    std::size_t m_bufferedAt = 0;
    std::uint64_t m_position = 0;   // of the next compressed byte not yet read from the file
    std::uint64_t m_remaining = 0;  // compressed bytes not yet read from the file
    std::uint64_t m_produced = 0;
    std::uint32_t m_crc = 0;
    z_stream m_stream{};
    bool m_inflating = false;
    bool m_streamEnded = false;
    bool m_finished = false;
};

}  // namespace Corvane::Soa::Common

#endif
