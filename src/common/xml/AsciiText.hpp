#ifndef CORVANE_SOA_SRC_COMMON_XML_ASCIITEXT_HPP
#define CORVANE_SOA_SRC_COMMON_XML_ASCIITEXT_HPP

// What the XML reader does to every text it is handed, a block at a time: measuring a
// zero-terminated UTF-16 text, narrowing UTF-16 that is ASCII (the bulk of any document) to
// bytes, and telling the layout between elements (white space only) from content. Not part of
// the exported interface.

#include <cstddef>
#include <cstdint>
#include <string>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Corvane::Soa::Common::Xml {

#if defined(__SSE2__) && (defined(__GNUC__) || defined(__clang__))
#define CORVANE_SOA_WHOLE_BLOCK_READS __attribute__((no_sanitize_address, no_sanitize_thread))
#endif

class AsciiText {
public:
    /// The number of units before the terminating zero of `text`.
#if defined(CORVANE_SOA_WHOLE_BLOCK_READS)
    // Reads whole aligned 16-byte blocks, as the C library's strlen does: a block that holds a
    // unit of the text lies within the same page, so reading the rest of it cannot fault, but
    // the address and thread sanitizers would see the bytes after the end.
    CORVANE_SOA_WHOLE_BLOCK_READS
#endif
    static std::size_t length(const char16_t* text) noexcept {
#if defined(CORVANE_SOA_WHOLE_BLOCK_READS)
        const auto address = reinterpret_cast<std::uintptr_t>(text);
        if (address % sizeof(char16_t) == 0) {
            const std::uintptr_t first = address & ~std::uintptr_t{kBlockBytes - 1};
            const __m128i zero = _mm_setzero_si128();
            auto block = reinterpret_cast<const __m128i*>(first);
            // Zero units before the text, in its first block, do not count.
            unsigned found = static_cast<unsigned>(
                                 _mm_movemask_epi8(_mm_cmpeq_epi16(_mm_load_si128(block), zero))) &
                             (0xFFFFU << (address - first));
            while (found == 0) {
                ++block;
                found = static_cast<unsigned>(
                    _mm_movemask_epi8(_mm_cmpeq_epi16(_mm_load_si128(block), zero)));
            }
            const auto end = reinterpret_cast<std::uintptr_t>(block) +
                             static_cast<unsigned>(__builtin_ctz(found));
            return (end - address) / sizeof(char16_t);
        }
#endif
        return std::char_traits<char16_t>::length(text);
    }

    /// Writes the `length` units at `units` as bytes at `out` and returns whether they were all
    /// ASCII; when they were not, what `out` holds is of no use. Writes exactly `length` bytes.
    static bool narrow(const char16_t* units, std::size_t length, char* out) noexcept {
#if defined(__SSE2__)
        if (length >= kBlockUnits) {
            __m128i seen = _mm_setzero_si128();
            std::size_t i = 0;
            for (; i + kBlockUnits < length; i += kBlockUnits) {
                seen = _mm_or_si128(seen, narrowBlock(units + i, out + i));
            }
            // The last block ends at the end, overlapping the one before when the length is no
            // multiple of the block.
            const std::size_t last = length - kBlockUnits;
            seen = _mm_or_si128(seen, narrowBlock(units + last, out + last));
            const __m128i outside = _mm_and_si128(seen, _mm_set1_epi16(static_cast<short>(0xFF80)));
            return _mm_movemask_epi8(_mm_cmpeq_epi16(outside, _mm_setzero_si128())) == 0xFFFF;
        }
#endif
        unsigned seen = 0;
        for (std::size_t i = 0; i < length; ++i) {
            seen |= units[i];
            out[i] = static_cast<char>(units[i]);
        }
        return seen < 0x80;
    }

    /// Whether the `size` bytes at `text` are white space only (blank, tab, line feed, carriage
    /// return).
    static bool isLayout(const char* text, std::size_t size) noexcept {
        std::size_t i = 0;
#if defined(__SSE2__)
        for (; i + kBlockBytes <= size; i += kBlockBytes) {
            const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
            const __m128i blank =
                _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8(' ')),
                                          _mm_cmpeq_epi8(block, _mm_set1_epi8('\n'))),
                             _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('\t')),
                                          _mm_cmpeq_epi8(block, _mm_set1_epi8('\r'))));
            if (_mm_movemask_epi8(blank) != 0xFFFF) {
                return false;
            }
        }
#endif
        for (; i < size; ++i) {
            const char c = text[i];
            if (c != ' ' && c != '\n' && c != '\t' && c != '\r') {
                return false;
            }
        }
        return true;
    }

private:
#if defined(__SSE2__)
    static constexpr std::size_t kBlockUnits = 8;
    static constexpr std::size_t kBlockBytes = 16;

    // Narrows eight units to eight bytes and returns the units, for the ASCII test.
    static __m128i narrowBlock(const char16_t* units, char* out) noexcept {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(block, block));
        return block;
    }
#endif
};

}  // namespace Corvane::Soa::Common::Xml

#endif
