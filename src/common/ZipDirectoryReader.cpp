#include "common/ZipDirectoryReader.hpp"

#include "common/ZipBytes.hpp"

#include <corvane/soa/common/exceptions/IOException.hpp>

#include <zlib.h>

#include <algorithm>
#include <numeric>

namespace Corvane::Soa::Common {

using namespace ZipBytes;
using Exceptions::IOException;

namespace {

constexpr std::size_t kPieceSize = std::size_t{64} * 1024;
constexpr std::size_t kMaxComment = 0xffff;
constexpr std::uint16_t kZip64Field = 0x0001;
constexpr std::uint16_t kUnicodePathField = 0x7075;
constexpr std::uint16_t kUtf8Flag = 1U << 11U;
constexpr std::uint32_t kMissing32 = 0xffffffff;
constexpr std::uint16_t kMissing16 = 0xffff;
constexpr unsigned kUnixHost = 3;

bool isAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Whether `text` is well-formed UTF-8 (shortest forms, no surrogates, at most U+10FFFF).
bool isUtf8(const std::string& text) {
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const unsigned char* end = p + text.size();
    while (p < end) {
        const unsigned lead = *p++;
        std::size_t follow = 0;
        unsigned low = 0x80;
        unsigned high = 0xbf;
        if (lead < 0x80) {
            continue;
        } else if (lead >= 0xc2 && lead <= 0xdf) {
            follow = 1;
        } else if (lead >= 0xe0 && lead <= 0xef) {
            follow = 2;
            low = lead == 0xe0 ? 0xa0 : 0x80;
            high = lead == 0xed ? 0x9f : 0xbf;
        } else if (lead >= 0xf0 && lead <= 0xf4) {
            follow = 3;
            low = lead == 0xf0 ? 0x90 : 0x80;
            high = lead == 0xf4 ? 0x8f : 0xbf;
        } else {
            return false;
        }
        if (static_cast<std::size_t>(end - p) < follow || *p < low || *p > high) {
            return false;
        }
        for (++p; --follow > 0; ++p) {
            if (*p < 0x80 || *p > 0xbf) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace

void ZipDirectoryReader::fail(const std::string& what) const {
    throw IOException(m_file.getPath() + ": " + what);
}

void ZipDirectoryReader::read(std::vector<ZipEntry>& entries, std::vector<std::uint64_t>& bounds) {
    const EndRecord end = readEndRecord();
    if (end.directoryOffset > end.directoryLimit ||
        end.directorySize > end.directoryLimit - end.directoryOffset) {
        fail("the central directory (" + std::to_string(end.directorySize) + " bytes at offset " +
             std::to_string(end.directoryOffset) +
             ") does not fit before the end record: the archive is truncated or damaged");
    }
    if (end.entries > end.directorySize / kCentralHeaderSize) {
        fail("the central directory is too small for the " + std::to_string(end.entries) +
             " entries the end record declares: the archive is damaged");
    }
    m_position = end.directoryOffset;
    m_end = end.directoryOffset + end.directorySize;
    entries.clear();
    entries.reserve(static_cast<std::size_t>(end.entries));
    for (std::uint64_t i = 0; i < end.entries; ++i) {
        entries.push_back(readEntry(static_cast<std::size_t>(i)));
    }
    m_buffer = {};
    checkDisjoint(entries, end.directoryOffset, bounds);
}

ZipDirectoryReader::EndRecord ZipDirectoryReader::readEndRecord() {
    const std::uint64_t size = m_file.size();
    const std::size_t tailSize =
        static_cast<std::size_t>(std::min<std::uint64_t>(size, kEndRecordSize + kMaxComment));
    std::vector<unsigned char> tail(tailSize);
    m_file.readAt(size - tailSize, tail.data(), tailSize);
    // The last signature whose comment fits what follows it.
    std::size_t at = tailSize;
    for (std::size_t i = tailSize >= kEndRecordSize ? tailSize - kEndRecordSize + 1 : 0; i-- > 0;) {
        if (u32(&tail[i]) == kEndRecord && u16(&tail[i + 20]) <= tailSize - i - kEndRecordSize) {
            at = i;
            break;
        }
    }
    if (at == tailSize) {
        fail("no end of central directory record: not a zip archive, or a truncated one");
    }
    const unsigned char* record = &tail[at];
    const std::uint64_t endOffset = size - tailSize + at;
    if (u16(record + 4) != 0 || u16(record + 6) != 0 || u16(record + 8) != u16(record + 10)) {
        fail("the archive spans several disks; multi-disk archives cannot be read");
    }
    EndRecord end;
    end.entries = u16(record + 10);
    end.directorySize = u32(record + 12);
    end.directoryOffset = u32(record + 16);
    end.directoryLimit = endOffset;
    if (endOffset >= kZip64LocatorSize) {
        readZip64EndRecord(endOffset, end);
    }
    return end;
}

void ZipDirectoryReader::readZip64EndRecord(std::uint64_t endOffset, EndRecord& end) {
    unsigned char locator[kZip64LocatorSize];
    m_file.readAt(endOffset - kZip64LocatorSize, locator, sizeof locator);
    if (u32(locator) != kZip64Locator) {
        return;
    }
    if (u32(locator + 4) != 0 || u32(locator + 16) > 1) {
        fail("the archive spans several disks; multi-disk archives cannot be read");
    }
    const std::uint64_t recordOffset = u64(locator + 8);
    if (recordOffset > endOffset - kZip64LocatorSize ||
        endOffset - kZip64LocatorSize - recordOffset < kZip64EndRecordSize) {
        fail("the ZIP64 end record lies beyond its locator: the archive is damaged");
    }
    unsigned char record[kZip64EndRecordSize];
    m_file.readAt(recordOffset, record, sizeof record);
    if (u32(record) != kZip64EndRecord) {
        fail("no ZIP64 end record where its locator points: the archive is damaged");
    }
    if (u32(record + 16) != 0 || u32(record + 20) != 0 || u64(record + 24) != u64(record + 32)) {
        fail("the archive spans several disks; multi-disk archives cannot be read");
    }
    end.entries = u64(record + 32);
    end.directorySize = u64(record + 40);
    end.directoryOffset = u64(record + 48);
    end.directoryLimit = recordOffset;
}

const unsigned char* ZipDirectoryReader::take(std::size_t length) {
    if (length > m_end - m_position) {
        fail("the central directory ends inside a record: the archive is damaged");
    }
    if (m_position < m_bufferOffset || m_position + length > m_bufferOffset + m_buffer.size()) {
        const std::size_t piece = static_cast<std::size_t>(
            std::min<std::uint64_t>(std::max(length, kPieceSize), m_end - m_position));
        m_buffer.resize(piece);
        m_file.readAt(m_position, m_buffer.data(), piece);
        m_bufferOffset = m_position;
    }
    const unsigned char* bytes = &m_buffer[static_cast<std::size_t>(m_position - m_bufferOffset)];
    m_position += length;
    return bytes;
}

ZipEntry ZipDirectoryReader::readEntry(std::size_t index) {
    const unsigned char* header = take(kCentralHeaderSize);
    if (u32(header) != kCentralHeader) {
        fail("central directory record " + std::to_string(index + 1) +
             " has no signature: the archive is damaged");
    }
    ZipEntry::Record record;
    record.versionMadeBy = u16(header + 4);
    record.flags = u16(header + 8);
    record.method = u16(header + 10);
    record.dosTime = u16(header + 12);
    record.dosDate = u16(header + 14);
    record.crc32 = u32(header + 16);
    record.compressedSize = u32(header + 20);
    record.size = u32(header + 24);
    const std::size_t nameLength = u16(header + 28);
    const std::size_t extraLength = u16(header + 30);
    const std::size_t commentLength = u16(header + 32);
    std::uint32_t disk = u16(header + 34);
    record.externalAttributes = u32(header + 38);
    record.localHeaderOffset = u32(header + 42);

    // Name, extra field and comment follow the header; they fit the buffer together.
    const unsigned char* rest = take(nameLength + extraLength + commentLength);
    const std::string raw(reinterpret_cast<const char*>(rest), nameLength);
    const unsigned char* extra = rest + nameLength;
    bool zip64Read = false;
    for (std::size_t at = 0; at + 4 <= extraLength;) {
        const std::uint16_t id = u16(extra + at);
        const std::size_t length = u16(extra + at + 2);
        const unsigned char* data = extra + at + 4;
        const std::size_t available = std::min(length, extraLength - at - 4);
        if (id == kZip64Field && !zip64Read) {
            zip64Read = true;
            std::size_t used = 0;
            const auto next = [&](std::uint64_t& value) {
                if (used + 8 > available) {
                    fail(raw + ": its ZIP64 extra field is too short: the archive is damaged");
                }
                value = u64(data + used);
                used += 8;
            };
            if (record.size == kMissing32) {
                next(record.size);
            }
            if (record.compressedSize == kMissing32) {
                next(record.compressedSize);
            }
            if (record.localHeaderOffset == kMissing32) {
                next(record.localHeaderOffset);
            }
            if (disk == kMissing16 && used + 4 <= available) {
                disk = u32(data + used);
            }
        }
        at += 4 + length;
    }
    if (disk != 0) {
        fail(raw + ": the entry lies on another disk; multi-disk archives cannot be read");
    }
    return ZipEntry(entryName(raw, record, extra, extraLength), record);
}

std::string ZipDirectoryReader::entryName(const std::string& raw, const ZipEntry::Record& record,
                                          const unsigned char* extra, std::size_t extraLength) {
    if ((record.flags & kUtf8Flag) != 0 || isAscii(raw)) {
        return raw;
    }
    // Info-ZIP's Unicode path field: version 1, the CRC-32 of the name it stands for, the name.
    for (std::size_t at = 0; at + 4 <= extraLength;) {
        const std::size_t length = u16(extra + at + 2);
        if (u16(extra + at) == kUnicodePathField && length >= 5 && at + 4 + length <= extraLength &&
            extra[at + 4] == 1 &&
            u32(extra + at + 5) == crc32(0, reinterpret_cast<const Bytef*>(raw.data()),
                                         static_cast<uInt>(raw.size()))) {
            return std::string(reinterpret_cast<const char*>(extra + at + 9), length - 5);
        }
        at += 4 + length;
    }
    // Info-ZIP zip on Unix writes names in the system's character set, UTF-8 today, without
    // flagging them; unzip shows them unchanged. Names from other systems are code page 437.
    if ((record.versionMadeBy >> 8U) == kUnixHost && isUtf8(raw)) {
        return raw;
    }
    if (!m_codePage437) {
        m_codePage437 = std::make_unique<Xml::Utf8String>("IBM437");
    }
    std::string name;
    m_codePage437->encode(raw, name);
    return name;
}

void ZipDirectoryReader::checkDisjoint(const std::vector<ZipEntry>& entries,
                                       std::uint64_t directoryOffset,
                                       std::vector<std::uint64_t>& bounds) const {
    // Sorted by local header offset, each entry's header and data (at least a fixed header and
    // its compressed size) must end before the next entry's header, the last before the central
    // directory. Reading an entry checks the exact extent against the bound found here.
    std::vector<std::size_t> order(entries.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return entries[a].getRecord().localHeaderOffset < entries[b].getRecord().localHeaderOffset;
    });
    bounds.assign(entries.size(), directoryOffset);
    for (std::size_t i = 0; i < order.size(); ++i) {
        const ZipEntry& entry = entries[order[i]];
        const std::uint64_t offset = entry.getRecord().localHeaderOffset;
        const bool last = i + 1 == order.size();
        const std::uint64_t bound =
            last ? directoryOffset : entries[order[i + 1]].getRecord().localHeaderOffset;
        if (offset > bound || bound - offset < kLocalHeaderSize ||
            entry.getCompressedSize() > bound - offset - kLocalHeaderSize) {
            fail(entry.getName() + ": its data overlap " +
                 (last ? std::string("the central directory")
                       : "those of " + entries[order[i + 1]].getName()) +
                 "; archives with overlapping entries are refused");
        }
        bounds[order[i]] = bound;
    }
}

}  // namespace Corvane::Soa::Common
