#include <corvane/soa/common/ZipArchive.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include "common/ZipDirectoryReader.hpp"
#include "common/ZipEntryReader.hpp"
#include "common/ZipExtractor.hpp"

#include <memory>
#include <ostream>
#include <utility>

namespace Corvane::Soa::Common {

namespace {

// Output taken from an entry at a time when it goes to a stream or nowhere.
constexpr std::size_t kPieceSize = std::size_t{256} * 1024;

}  // namespace

ZipArchive::ZipArchive(RandomAccessFile file, ZipLimits limits)
    : m_file(std::move(file)), m_limits(limits) {
    ZipDirectoryReader(m_file).read(m_entries, m_bounds);
}

ZipArchive::ZipArchive(const std::string& path, ZipLimits limits)
    : ZipArchive(RandomAccessFile(path), limits) {}

const ZipEntry* ZipArchive::find(const std::string& name) const noexcept {
    for (const ZipEntry& entry : m_entries) {
        if (entry.getName() == name) {
            return &entry;
        }
    }
    return nullptr;
}

std::size_t ZipArchive::indexOf(const ZipEntry& entry) const {
    if (m_entries.empty() || &entry < m_entries.data() ||
        &entry >= m_entries.data() + m_entries.size()) {
        throw Exceptions::IOException(getPath() + ": " + entry.getName() +
                                      ": not an entry of this archive");
    }
    return static_cast<std::size_t>(&entry - m_entries.data());
}

std::string ZipArchive::read(const ZipEntry& entry) const {
    ZipEntryReader reader(*this, entry);
    // The size is within the limits, and the data may not grow past it.
    std::string data(static_cast<std::size_t>(entry.getSize()), '\0');
    std::size_t done = 0;
    while (done < data.size()) {
        const std::size_t got = reader.read(&data[done], data.size() - done);
        if (got == 0) {
            break;
        }
        done += got;
    }
    char probe = 0;
    reader.read(&probe, 1);  // throws when the data go on, or checks the CRC at their end
    return data;
}

void ZipArchive::read(const ZipEntry& entry, std::ostream& out) const {
    ZipEntryReader reader(*this, entry);
    const std::unique_ptr<char[]> buffer(new char[kPieceSize]);
    for (std::size_t got = 0; (got = reader.read(buffer.get(), kPieceSize)) > 0;) {
        if (!out.write(buffer.get(), static_cast<std::streamsize>(got))) {
            reader.fail("cannot write the data to the output stream");
        }
    }
}

void ZipArchive::test(const ZipEntry& entry) const {
    ZipEntryReader reader(*this, entry);
    const std::unique_ptr<char[]> buffer(new char[kPieceSize]);
    while (reader.read(buffer.get(), kPieceSize) > 0) {
    }
}

void ZipArchive::test() const {
    for (const ZipEntry& entry : m_entries) {
        test(entry);
    }
}

void ZipArchive::extractAll(const std::string& directory) const {
    ZipExtractor(*this, directory).extractAll();
}

}  // namespace Corvane::Soa::Common
