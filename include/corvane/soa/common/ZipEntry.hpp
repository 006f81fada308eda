#ifndef CORVANE_SOA_COMMON_ZIPENTRY_HPP
#define CORVANE_SOA_COMMON_ZIPENTRY_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/DateTime.hpp>

#include <cstdint>
#include <string>
#include <utility>

namespace Corvane::Soa::Common {

/// One entry of a zip archive as its central directory describes it.
class CORVANE_SOA_API ZipEntry {
public:
    /// Compression methods: the two that can be read.
    static constexpr std::uint16_t kStored = 0;
    static constexpr std::uint16_t kDeflated = 8;

    /// The fields of a central directory record that the reader keeps, with the ZIP64 values
    /// already in place of the 32-bit ones.
    struct Record {
        std::uint16_t versionMadeBy = 0;
        std::uint16_t flags = 0;
        std::uint16_t method = 0;
        std::uint16_t dosTime = 0;
        std::uint16_t dosDate = 0;
        std::uint32_t crc32 = 0;
        std::uint64_t compressedSize = 0;
        std::uint64_t size = 0;
        std::uint64_t localHeaderOffset = 0;
        std::uint32_t externalAttributes = 0;
    };

    ZipEntry(std::string name, const Record& record) : m_name(std::move(name)), m_record(record) {}

    /// The name in UTF-8, with '/' between its parts.
    const std::string& getName() const noexcept { return m_name; }
    /// Uncompressed size in bytes.
    std::uint64_t getSize() const noexcept { return m_record.size; }
    std::uint64_t getCompressedSize() const noexcept { return m_record.compressedSize; }
    std::uint32_t getCrc32() const noexcept { return m_record.crc32; }
    /// The compression method number (`kStored`, `kDeflated`, or one that cannot be read).
    std::uint16_t getMethod() const noexcept { return m_record.method; }
    /// The modification time, in local time as the archive keeps it (two-second steps).
    DateTime getModificationTime() const;
    /// Whether the name ends with '/'.
    bool isDirectory() const noexcept { return !m_name.empty() && m_name.back() == '/'; }
    /// Whether general-purpose flag bit 0 marks the data as encrypted.
    bool isEncrypted() const noexcept { return (m_record.flags & 1U) != 0; }
    /// Whether the entry was made on a Unix system from a symbolic link (its target is the data).
    bool isSymbolicLink() const noexcept;
    /// The Unix permission bits, when the entry was made on a Unix system; 0 otherwise.
    unsigned getUnixMode() const noexcept;
    const Record& getRecord() const noexcept { return m_record; }

private:
    std::string m_name;
    Record m_record;
};

}  // namespace Corvane::Soa::Common

#endif
