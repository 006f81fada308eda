#ifndef CVSOA_TESTS_SUPPORT_ZIPBUILDER_HPP
#define CVSOA_TESTS_SUPPORT_ZIPBUILDER_HPP

// Zip archives byte by byte, including the hostile ones no tool writes: wrong CRCs and sizes,
// overlapping entries, unsafe names. Deflated data are written as deflate's stored blocks.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct ZipBuilderEntry {
    std::string name;
    std::string data;  // the uncompressed bytes
    std::uint16_t method = 0;
    std::uint16_t flags = 0;
    std::uint16_t versionMadeBy = 3U << 8U | 20U;  // Unix
    std::uint32_t mode = 0100644;
    std::optional<std::uint32_t> crc{};    // instead of the data's
    std::optional<std::uint64_t> size{};   // declared instead of the data's
    std::optional<std::string> payload{};  // the bytes stored instead of those made from `data`
    int sharesHeaderOf = -1;               // the central record points at that entry's local header
};

inline std::uint32_t zipCrc32(const std::string& data) {
    std::uint32_t crc = 0xffffffffU;
    for (const char c : data) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1U) ^ (0xedb88320U & (0U - (crc & 1U)));
        }
    }
    return ~crc;
}

// `data` as one final stored block of raw deflate data (at most 65535 bytes).
inline std::string deflateStoredBlock(const std::string& data) {
    const auto n = static_cast<std::uint16_t>(data.size());
    const auto inverse = static_cast<std::uint16_t>(~n);
    std::string out{'\x01', static_cast<char>(n & 0xffU), static_cast<char>(n >> 8U),
                    static_cast<char>(inverse & 0xffU), static_cast<char>(inverse >> 8U)};
    return out + data;
}

inline void zipPut(std::string& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out += static_cast<char>((value >> (8U * static_cast<unsigned>(i))) & 0xffU);
    }
}

// The archive: local headers and data, the central directory, the end record. Dates are
// 2016-12-05 14:03:08.
inline std::string zipArchiveBytes(const std::vector<ZipBuilderEntry>& entries) {
    std::string out;
    std::string directory;
    std::vector<std::uint64_t> offsets;
    for (const ZipBuilderEntry& e : entries) {
        const std::string payload = e.payload       ? *e.payload
                                    : e.method == 8 ? deflateStoredBlock(e.data)
                                                    : e.data;
        const std::uint32_t crc = e.crc ? *e.crc : zipCrc32(e.data);
        const std::uint64_t size = e.size ? *e.size : e.data.size();
        const auto header = [&](std::string& to) {
            zipPut(to, 20, 2);  // version needed
            zipPut(to, e.flags, 2);
            zipPut(to, e.method, 2);
            zipPut(to, 14U << 11U | 3U << 5U | 4U, 2);              // 14:03:08
            zipPut(to, (2016U - 1980U) << 9U | 12U << 5U | 5U, 2);  // 2016-12-05
            zipPut(to, crc, 4);
            zipPut(to, payload.size(), 4);
            zipPut(to, size, 4);
            zipPut(to, e.name.size(), 2);
            zipPut(to, 0, 2);  // extra field
        };
        if (e.sharesHeaderOf >= 0) {
            offsets.push_back(offsets[static_cast<std::size_t>(e.sharesHeaderOf)]);
        } else {
            offsets.push_back(out.size());
            zipPut(out, 0x04034b50, 4);
            header(out);
            out += e.name + payload;
        }
        zipPut(directory, 0x02014b50, 4);
        zipPut(directory, e.versionMadeBy, 2);
        header(directory);
        zipPut(directory, 0, 2 + 2 + 2);  // comment, disk, internal attributes
        zipPut(directory, std::uint64_t{e.mode} << 16U, 4);
        zipPut(directory, offsets.back(), 4);
        directory += e.name;
    }
    const std::uint64_t directoryOffset = out.size();
    out += directory;
    zipPut(out, 0x06054b50, 4);
    zipPut(out, 0, 4);  // disks
    zipPut(out, entries.size(), 2);
    zipPut(out, entries.size(), 2);
    zipPut(out, directory.size(), 4);
    zipPut(out, directoryOffset, 4);
    zipPut(out, 0, 2);
    return out;
}

#endif
