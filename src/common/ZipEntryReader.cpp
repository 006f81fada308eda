#include "common/ZipEntryReader.hpp"

#include "common/ZipBytes.hpp"

#include <corvane/soa/common/exceptions/IOException.hpp>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

namespace Corvane::Soa::Common {

using namespace ZipBytes;

namespace {

// Compressed bytes read from the file at once.
constexpr std::size_t kInputSize = std::size_t{256} * 1024;
// Output asked of zlib and crc32 in one call, which take `unsigned` lengths.
constexpr std::size_t kMaxPiece = std::size_t{1} << 30U;

std::string hex32(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "%08x", value);
    return text;
}

[[noreturn]] void refuse(const ZipArchive& archive, const ZipEntry& entry,
                         const std::string& what) {
    throw Exceptions::IOException(archive.getPath() + ": " + entry.getName() + ": " + what);
}

// Whether `size` is more than `ratio` times `compressed`, without overflow.
bool beyondRatio(std::uint64_t size, std::uint64_t compressed, std::uint64_t ratio) {
    if (compressed == 0) {
        return size > 0;
    }
    const std::uint64_t quotient = size / compressed;
    return quotient > ratio || (quotient == ratio && size % compressed != 0);
}

}  // namespace

void ZipEntryReader::check(const ZipArchive& archive, const ZipEntry& entry) {
    const ZipLimits& limits = archive.getLimits();
    if (entry.isEncrypted()) {
        refuse(archive, entry, "the entry is encrypted; encrypted entries cannot be read");
    }
    if (entry.getMethod() != ZipEntry::kStored && entry.getMethod() != ZipEntry::kDeflated) {
        refuse(archive, entry,
               "the entry uses compression method " + std::to_string(entry.getMethod()) +
                   "; only stored (0) and deflated (8) entries can be read");
    }
    if (entry.getMethod() == ZipEntry::kStored && entry.getSize() != entry.getCompressedSize()) {
        refuse(archive, entry,
               "the entry is stored, but declares " + std::to_string(entry.getSize()) +
                   " bytes in " + std::to_string(entry.getCompressedSize()));
    }
    if (entry.getSize() > limits.getMaxEntrySize()) {
        refuse(archive, entry,
               "the entry declares " + std::to_string(entry.getSize()) +
                   " bytes, more than the limit of " + std::to_string(limits.getMaxEntrySize()) +
                   " bytes an entry");
    }
    if (entry.getSize() > limits.getRatioAllowance() &&
        beyondRatio(entry.getSize(), entry.getCompressedSize(), limits.getMaxRatio())) {
        refuse(archive, entry,
               "the entry expands " + std::to_string(entry.getCompressedSize()) + " bytes to " +
                   std::to_string(entry.getSize()) + ", beyond the limit of " +
                   std::to_string(limits.getMaxRatio()) + " to 1");
    }
}

ZipEntryReader::ZipEntryReader(const ZipArchive& archive, const ZipEntry& entry)
    : m_archive(archive), m_entry(entry) {
    check(archive, entry);
    const RandomAccessFile& file = archive.m_file;
    const std::uint64_t offset = entry.getRecord().localHeaderOffset;
    const std::uint64_t bound = archive.dataBound(archive.indexOf(entry));
    // One read takes the local header and, for a small entry, all of its data.
    m_inputSize = static_cast<std::size_t>(std::min<std::uint64_t>(
        bound - offset, std::max<std::uint64_t>(kInputSize, kLocalHeaderSize + 1024)));
    m_input.reset(new unsigned char[m_inputSize]);
    std::size_t got = file.readSomeAt(offset, m_input.get(), m_inputSize);
    if (got < kLocalHeaderSize || u32(m_input.get()) != kLocalHeader) {
        fail("no local header at offset " + std::to_string(offset) + ": the archive is damaged");
    }
    const std::size_t headerSize =
        kLocalHeaderSize + u16(m_input.get() + 26) + std::size_t{u16(m_input.get() + 28)};
    if (headerSize > bound - offset || entry.getCompressedSize() > bound - offset - headerSize) {
        fail(
            "the entry's data overlap the next entry or the central directory; archives with "
            "overlapping entries are refused");
    }
    const std::uint64_t dataStart = offset + headerSize;
    const std::size_t inBuffer = got > headerSize
                                     ? static_cast<std::size_t>(std::min<std::uint64_t>(
                                           got - headerSize, entry.getCompressedSize()))
                                     : 0;
    m_bufferedAt = headerSize;
    m_buffered = inBuffer;
    m_position = dataStart + inBuffer;
    m_remaining = entry.getCompressedSize() - inBuffer;
    if (entry.getMethod() == ZipEntry::kDeflated) {
        if (inflateInit2(&m_stream, -MAX_WBITS) != Z_OK) {
            fail("cannot start inflating: out of memory");
        }
        m_inflating = true;
        m_stream.next_in = m_input.get() + headerSize;
        m_stream.avail_in = static_cast<uInt>(inBuffer);
    }
}

ZipEntryReader::~ZipEntryReader() {
    if (m_inflating) {
        inflateEnd(&m_stream);
    }
}

void ZipEntryReader::fail(const std::string& what) const { refuse(m_archive, m_entry, what); }

std::size_t ZipEntryReader::read(char* out, std::size_t capacity) {
    if (m_finished) {
        return 0;
    }
    capacity = std::min(capacity, kMaxPiece);
    const std::size_t produced =
        m_inflating ? readDeflated(out, capacity) : readStored(out, capacity);
    if (produced == 0 && capacity > 0) {
        finish();
    }
    return produced;
}

std::size_t ZipEntryReader::readStored(char* out, std::size_t capacity) {
    std::size_t done = 0;
    if (m_buffered > 0) {
        done = std::min(m_buffered, capacity);
        std::memcpy(out, m_input.get() + m_bufferedAt, done);
        m_bufferedAt += done;
        m_buffered -= done;
    }
    const std::size_t direct =
        static_cast<std::size_t>(std::min<std::uint64_t>(capacity - done, m_remaining));
    if (direct > 0) {
        if (m_archive.m_file.readSomeAt(m_position, out + done, direct) != direct) {
            fail("the file ends inside the entry's data: the archive is truncated");
        }
        m_position += direct;
        m_remaining -= direct;
        done += direct;
    }
    count(out, done);
    return done;
}

void ZipEntryReader::refill() {
    const std::size_t piece =
        static_cast<std::size_t>(std::min<std::uint64_t>(m_inputSize, m_remaining));
    if (m_archive.m_file.readSomeAt(m_position, m_input.get(), piece) != piece) {
        fail("the file ends inside the entry's data: the archive is truncated");
    }
    m_position += piece;
    m_remaining -= piece;
    m_stream.next_in = m_input.get();
    m_stream.avail_in = static_cast<uInt>(piece);
}

std::size_t ZipEntryReader::readDeflated(char* out, std::size_t capacity) {
    if (m_streamEnded) {
        return 0;
    }
    m_stream.next_out = reinterpret_cast<Bytef*>(out);
    m_stream.avail_out = static_cast<uInt>(capacity);
    while (m_stream.avail_out > 0) {
        if (m_stream.avail_in == 0 && m_remaining > 0) {
            refill();
        }
        const int status = inflate(&m_stream, Z_NO_FLUSH);
        if (status == Z_STREAM_END) {
            m_streamEnded = true;
            break;
        }
        if (status == Z_BUF_ERROR && m_stream.avail_in == 0 && m_remaining == 0) {
            fail("the deflated data end before their last block: the entry is truncated");
        }
        if (status != Z_OK && status != Z_BUF_ERROR) {
            fail(std::string("the deflated data are damaged (") +
                 (m_stream.msg != nullptr ? m_stream.msg : "zlib error " + std::to_string(status)) +
                 ")");
        }
    }
    const std::size_t produced = capacity - m_stream.avail_out;
    count(out, produced);
    return produced;
}

void ZipEntryReader::count(const char* data, std::size_t length) {
    m_produced += length;
    if (m_produced > m_entry.getSize()) {
        fail("the data grow past the declared size of " + std::to_string(m_entry.getSize()) +
             " bytes");
    }
    m_crc = static_cast<std::uint32_t>(
        crc32(m_crc, reinterpret_cast<const Bytef*>(data), static_cast<uInt>(length)));
}

void ZipEntryReader::finish() {
    m_finished = true;
    if (m_produced != m_entry.getSize()) {
        fail("the data end after " + std::to_string(m_produced) + " bytes, short of the declared " +
             std::to_string(m_entry.getSize()));
    }
    if (m_crc != m_entry.getCrc32()) {
        fail("CRC-32 mismatch: the archive says " + hex32(m_entry.getCrc32()) + ", the data give " +
             hex32(m_crc));
    }
}

}  // namespace Corvane::Soa::Common
