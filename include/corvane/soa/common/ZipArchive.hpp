#ifndef CORVANE_SOA_COMMON_ZIPARCHIVE_HPP
#define CORVANE_SOA_COMMON_ZIPARCHIVE_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/RandomAccessFile.hpp>
#include <corvane/soa/common/ZipEntry.hpp>
#include <corvane/soa/common/ZipLimits.hpp>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace Corvane::Soa::Common {

/// A zip archive read from a `RandomAccessFile`: the entries of its central directory (found
/// from the end record, and the ZIP64 end record when there is one) and their data, stored or
/// deflated, read in bounded memory with the size and CRC-32 checked as the data stream.
///
/// Names are UTF-8 when the entry's flag bit 11 says so or an Info-ZIP Unicode path field
/// (0x7075) matching the name is present. Otherwise a name made on a Unix system that is valid
/// UTF-8 is kept as it is (Info-ZIP zip writes the system's UTF-8 names unflagged, and unzip shows
/// them so); any other name is read as code page 437.
///
/// Everything that fails throws `Exceptions::IOException` naming the archive and, for one
/// entry, the entry: "ARCHIVE: ENTRY: what is wrong". Opening refuses what is not a zip
/// archive, a truncated one, one that spans several disks, and one whose entries' data overlap
/// each other or the central directory (which is how small archives are made to expand to
/// enormous sizes). Reading an entry refuses encrypted data, methods other than stored and
/// deflated, data that grow past the declared size or past the `ZipLimits`, and a CRC-32 that
/// does not match.
///
/// An object may be read from several threads at once; each read keeps its own state.
class CORVANE_SOA_API ZipArchive {
public:
    explicit ZipArchive(RandomAccessFile file, ZipLimits limits = ZipLimits());
    /// Opens the file at `path` as an archive.
    explicit ZipArchive(const std::string& path, ZipLimits limits = ZipLimits());

    const std::string& getPath() const noexcept { return m_file.getPath(); }
    const ZipLimits& getLimits() const noexcept { return m_limits; }
    /// The entries in central directory order.
    const std::vector<ZipEntry>& getEntries() const noexcept { return m_entries; }
    /// The first entry named `name`, or null.
    const ZipEntry* find(const std::string& name) const noexcept;

    /// The data of `entry` (one of `getEntries()`).
    std::string read(const ZipEntry& entry) const;
    /// Writes the data of `entry` onto `out` piece by piece. What is written before a failure is
    /// detected (a CRC-32 mismatch shows only at the end) stays written.
    void read(const ZipEntry& entry, std::ostream& out) const;
    /// Reads `entry` through and throws what is wrong with it, if anything.
    void test(const ZipEntry& entry) const;
    /// Tests every entry; throws for the first that is wrong.
    void test() const;

    /// Writes every entry under `directory` (created when missing), directories included and
    /// symbolic-link entries left out.
    ///
    /// Every name is checked before anything is written: a name that is absolute, holds a ".."
    /// part, a backslash or a drive letter, or that is encrypted or of a method that cannot be
    /// read, refuses the whole archive. While writing, a path that would pass through a symbolic
    /// link is refused. Each file is written to a temporary name beside its target and renamed
    /// once its size and CRC-32 are checked, so that an entry that fails leaves nothing behind;
    /// the entries written before it stay.
    void extractAll(const std::string& directory) const;

private:
    friend class ZipEntryReader;
    // The offset one past the end of the space `entry`'s local header and data may use: the next
    // local header or the central directory.
    std::uint64_t dataBound(std::size_t index) const noexcept { return m_bounds[index]; }
    std::size_t indexOf(const ZipEntry& entry) const;

    RandomAccessFile m_file;
    ZipLimits m_limits;
    std::vector<ZipEntry> m_entries;
    std::vector<std::uint64_t> m_bounds;
};

}  // namespace Corvane::Soa::Common

#endif
