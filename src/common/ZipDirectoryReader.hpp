#ifndef CORVANE_SOA_COMMON_ZIPDIRECTORYREADER_HPP
#define CORVANE_SOA_COMMON_ZIPDIRECTORYREADER_HPP

#include <corvane/soa/common/RandomAccessFile.hpp>
#include <corvane/soa/common/ZipEntry.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Corvane::Soa::Common {

/// Reads the central directory of a zip archive: finds the end record (and the ZIP64 end record
/// through its locator), reads each entry's record in pieces of bounded size, and checks that the
/// entries' data do not overlap each other or the central directory.
class ZipDirectoryReader {
public:
    explicit ZipDirectoryReader(const RandomAccessFile& file) : m_file(file) {}

    /// The entries, and for each the offset its local header and data must end before.
    void read(std::vector<ZipEntry>& entries, std::vector<std::uint64_t>& bounds);

private:
    struct EndRecord {
        std::uint64_t entries = 0;
        std::uint64_t directorySize = 0;
        std::uint64_t directoryOffset = 0;
        std::uint64_t directoryLimit = 0;  // where the records after the directory begin
    };

    EndRecord readEndRecord();
    void readZip64EndRecord(std::uint64_t endOffset, EndRecord& end);
    // The next `length` bytes of the central directory.
    const unsigned char* take(std::size_t length);
    ZipEntry readEntry(std::size_t index);
    std::string entryName(const std::string& raw, const ZipEntry::Record& record,
                          const unsigned char* extra, std::size_t extraLength);
    void checkDisjoint(const std::vector<ZipEntry>& entries, std::uint64_t directoryOffset,
                       std::vector<std::uint64_t>& bounds) const;
    [[noreturn]] void fail(const std::string& what) const;

    const RandomAccessFile& m_file;
    std::vector<unsigned char> m_buffer;
    std::uint64_t m_bufferOffset = 0;
    std::uint64_t m_position = 0;
    std::uint64_t m_end = 0;
    std::unique_ptr<Xml::Utf8String> m_codePage437;
};

}  // namespace Corvane::Soa::Common

#endif
