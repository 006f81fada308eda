#ifndef CORVANE_SOA_COMMON_RANDOMACCESSFILE_HPP
#define CORVANE_SOA_COMMON_RANDOMACCESSFILE_HPP

#include <corvane/soa/Export.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Corvane::Soa::Common {

/// A file opened read-only for positional reads: each read names its offset, so that a reader
/// reaches one part of a file without reading what comes before it, and several readers may share
/// one object. The size is taken when the file is opened.
///
/// Failures throw `Exceptions::IOException` with a message that names the file.
class CORVANE_SOA_API RandomAccessFile {
public:
    /// Opens `path`; throws when it cannot be opened or is not a regular file.
    explicit RandomAccessFile(const std::string& path);
    RandomAccessFile(RandomAccessFile&& other) noexcept;
    RandomAccessFile& operator=(RandomAccessFile&& other) noexcept;
    RandomAccessFile(const RandomAccessFile&) = delete;
    RandomAccessFile& operator=(const RandomAccessFile&) = delete;
    ~RandomAccessFile();

    const std::string& getPath() const noexcept { return m_path; }
    /// The size in bytes when the file was opened.
    std::uint64_t size() const noexcept { return m_size; }

    /// Reads `length` bytes at `offset` into `buffer`; throws when the file ends first or a read
    /// fails.
    void readAt(std::uint64_t offset, void* buffer, std::size_t length) const;
    /// Reads up to `length` bytes at `offset` into `buffer` and returns how many were read: fewer
    /// only at the end of the file.
    std::size_t readSomeAt(std::uint64_t offset, void* buffer, std::size_t length) const;

private:
    std::string m_path;
    int m_descriptor = -1;
    std::uint64_t m_size = 0;
};

}  // namespace Corvane::Soa::Common

#endif
