#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <unicode/ucnv.h>
#include <unicode/utypes.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Corvane::Soa::Common::Xml {

using Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;

namespace {

[[noreturn]] void fail(const std::string& message) {
    throw InternalServerException(message, Utf8String::kConversionErrorCode,
                                  Utf8String::kConversionErrorLevel);
}

// The converter's name followed by its aliases: "NAME (ALIAS, ALIAS)".
std::string describe(const UConverter* converter) {
    UErrorCode status = U_ZERO_ERROR;
    const char* name = ucnv_getName(converter, &status);
    if (U_FAILURE(status) || name == nullptr) {
        return "(unknown converter)";
    }
    std::string text = name;
    text += " (";
    const uint16_t count = ucnv_countAliases(name, &status);
    for (uint16_t i = 0; i < count && U_SUCCESS(status); ++i) {
        const char* alias = ucnv_getAlias(name, i, &status);
        if (U_SUCCESS(status) && alias != nullptr) {
            if (i != 0) {
                text += ", ";
            }
            text += alias;
        }
    }
    text += ")";
    return text;
}

// Turns an ICU failure into an exception. A full buffer only means that the next piece
// follows, and warnings are no failures.
void handleError(const UConverter* converter, UErrorCode status, bool toUnicode) {
    if (status == U_BUFFER_OVERFLOW_ERROR || U_SUCCESS(status)) {
        return;
    }
    const std::string names = describe(converter);
    std::string message = toUnicode ? "An error occured converting " + names + " to Unicode."
                                    : "An error occured converting Unicode to " + names + ".";
    message += u_errorName(status);
    fail(message);
}

// Bytes that are not a character of the source page stop the conversion with an error rather
// than passing on as U+FFFD: a text that cannot be read is reported, not silently altered.
void stopOnIllegalInput(UConverter* converter) {
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
}

// Turns every 0x1A byte into '?'.
void replaceOneAIn(char* bytes, std::size_t length) {
    char* const end = bytes + length;
    for (char* p = static_cast<char*>(std::memchr(bytes, 0x1A, length)); p != nullptr;
         p = static_cast<char*>(std::memchr(p + 1, 0x1A, static_cast<std::size_t>(end - p - 1)))) {
        *p = '?';
    }
}

// UTF-16 to UTF-8 without ICU, for the common case of a UTF-8 local page. One pass: the units
// are encoded a chunk at a time into a buffer on the stack, which is appended to `out`, so that
// `out` is neither zero-filled first nor grown piece by piece. Runs of ASCII, the bulk of any
// XML document (markup, white space, names, numbers), are narrowed eight units at a time. An
// unpaired surrogate becomes U+FFFD, as ICU's UTF-8 converter writes it.
//
// A 0x1A byte can only come from the unit U+001A: every byte of a multi-byte sequence has its
// high bit set. Replacing 0x1A bytes in what was appended is the same as replacing the unit.
constexpr std::size_t kChunkUnits = 256;

inline bool isHighSurrogate(unsigned u) { return u >= 0xD800 && u <= 0xDBFF; }
inline bool isLowSurrogate(unsigned u) { return u >= 0xDC00 && u <= 0xDFFF; }

template <class Unit>
void appendUtf8(const Unit* units, std::size_t length, std::string& out, bool replaceHexOneA) {
    static_assert(sizeof(Unit) == 2, "UTF-16 units");
    // Three bytes at most for each unit of a chunk, and one more when the chunk ends with the
    // first half of a surrogate pair (whose four bytes then stand for two units).
    unsigned char buffer[kChunkUnits * 3 + 1];
    const std::size_t start = out.size();
    if (length > out.capacity() - start) {
        // One byte a unit at least; the string still grows geometrically.
        out.reserve(std::max(start + length, 2 * out.capacity()));
    }
    std::size_t i = 0;
    while (i < length) {
        const std::size_t end = std::min(length, i + kChunkUnits);
        unsigned char* o = buffer;
        while (i < end) {
#if defined(__SSE2__)
            const __m128i nonAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
            const __m128i zero = _mm_setzero_si128();
            for (; i + 8 <= end; i += 8, o += 8) {
                const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + i));
                if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(block, nonAscii), zero)) !=
                    0xFFFF) {
                    break;
                }
                _mm_storel_epi64(reinterpret_cast<__m128i*>(o), _mm_packus_epi16(block, zero));
            }
#else
            for (; i + 4 <= end; i += 4, o += 4) {
                std::uint64_t block;
                std::memcpy(&block, units + i, sizeof block);
                if ((block & 0xFF80FF80FF80FF80ULL) != 0) {
                    break;
                }
                o[0] = static_cast<unsigned char>(units[i]);
                o[1] = static_cast<unsigned char>(units[i + 1]);
                o[2] = static_cast<unsigned char>(units[i + 2]);
                o[3] = static_cast<unsigned char>(units[i + 3]);
            }
#endif
            for (; i < end && units[i] < 0x80; ++i) {
                *o++ = static_cast<unsigned char>(units[i]);
            }
            // The other units, up to the next ASCII one.
            for (; i < end && units[i] >= 0x80; ++i) {
                unsigned u = units[i];
                if (u < 0x800) {
                    *o++ = static_cast<unsigned char>(0xC0 | (u >> 6));
                    *o++ = static_cast<unsigned char>(0x80 | (u & 0x3F));
                } else if (isHighSurrogate(u) && i + 1 < length && isLowSurrogate(units[i + 1])) {
                    const unsigned code = 0x10000 + ((u - 0xD800) << 10) + (units[++i] - 0xDC00);
                    *o++ = static_cast<unsigned char>(0xF0 | (code >> 18));
                    *o++ = static_cast<unsigned char>(0x80 | ((code >> 12) & 0x3F));
                    *o++ = static_cast<unsigned char>(0x80 | ((code >> 6) & 0x3F));
                    *o++ = static_cast<unsigned char>(0x80 | (code & 0x3F));
                } else {
                    if (isHighSurrogate(u) || isLowSurrogate(u)) {
                        u = 0xFFFD;
                    }
                    *o++ = static_cast<unsigned char>(0xE0 | (u >> 12));
                    *o++ = static_cast<unsigned char>(0x80 | ((u >> 6) & 0x3F));
                    *o++ = static_cast<unsigned char>(0x80 | (u & 0x3F));
                }
            }
        }
        out.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(o - buffer));
    }
    if (replaceHexOneA && out.size() > start) {
        replaceOneAIn(&out[start], out.size() - start);
    }
}

template <class Unit>
std::size_t zeroTerminatedLength(const Unit* units) {
    std::size_t length = 0;
    if (units != nullptr) {
        while (units[length] != 0) {
            ++length;
        }
    }
    return length;
}

}  // namespace

Utf8String::Utf8String() { initialize(std::string()); }

Utf8String::Utf8String(const std::string& codePage) { initialize(codePage); }

Utf8String::~Utf8String() {
    if (m_local != nullptr) {
        ucnv_close(m_local);
    }
    if (m_utf8 != nullptr) {
        ucnv_close(m_utf8);
    }
}

// The default lives with the free function of XmlText, which also decides the lead-byte rule of
// `isFirstOfMultibyte` from it: one setting for both.
void Utf8String::setDefaultEncoding(const std::string& codePage) {
    setDefaultCharacterEncoding(codePage);
}

const std::string& Utf8String::getDefaultEncoding() { return getDefaultCharacterEncoding(); }

void Utf8String::initialize(std::string codePage) {
    if (codePage.empty()) {
        codePage = getDefaultCharacterEncoding();
    }
    if (codePage.empty()) {
        codePage = ucnv_getDefaultName();
    }
    m_codePage = codePage;
    std::string normalised;
    m_localIsUtf8 = isUtf8(codePage, normalised);

    m_unicodeBuffer.reset(new char16_t[sUnicodeBufferSize + 1]);
    m_localBuffer.reset(new char[sLocalBufferSize + 1]);

    UErrorCode status = U_ZERO_ERROR;
    // Every spelling of UTF-8 opens the one converter.
    m_local = ucnv_open(m_localIsUtf8 ? "UTF-8" : codePage.c_str(), &status);
    if (U_FAILURE(status)) {
        m_local = nullptr;
        fail("Error opening local (" + codePage + ") converter " + u_errorName(status));
    }
    stopOnIllegalInput(m_local);
    status = U_ZERO_ERROR;
    m_utf8 = ucnv_open("UTF-8", &status);
    if (U_FAILURE(status)) {
        m_utf8 = nullptr;
        ucnv_close(m_local);
        m_local = nullptr;
        fail(std::string("Error opening UTF-8 converter ") + u_errorName(status));
    }
    stopOnIllegalInput(m_utf8);
}

// Letter case is ignored too: "utf-8" is as common as "UTF-8".
bool Utf8String::isUtf8(const std::string& name, std::string& normalised) {
    normalised.clear();
    normalised.reserve(name.size());
    for (const char c : name) {
        if (c != ' ' && c != '-' && c != '_') {
            normalised.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
        }
    }
    return normalised == sUTF8;
}

void Utf8String::replaceOneA(char* bytes, std::size_t length) { replaceOneAIn(bytes, length); }

void Utf8String::encode(const std::string& local, std::string& utf8) {
    if (m_localIsUtf8) {
        utf8 += local;
        return;
    }
    convert(m_local, m_utf8, local.data(), local.size(), utf8);
}

void Utf8String::decode(const std::string& utf8, std::string& local) {
    if (m_localIsUtf8) {
        local += utf8;
        return;
    }
    convert(m_utf8, m_local, utf8.data(), utf8.size(), local);
}

void Utf8String::decode(const unsigned short* utf16, std::string& local, bool replaceHexOneA) {
    const std::size_t length = zeroTerminatedLength(utf16);
    if (m_localIsUtf8) {
        appendUtf8(utf16, length, local, replaceHexOneA);
        return;
    }
    // ICU reads the units as char16_t; both are 16-bit unsigned integers.
    const auto* units = reinterpret_cast<const char16_t*>(utf16);
    decode(units, length, local, replaceHexOneA);
}

void Utf8String::decode(const char16_t* utf16, std::string& local, bool replaceHexOneA) {
    decode(utf16, zeroTerminatedLength(utf16), local, replaceHexOneA);
}

void Utf8String::decode(const char16_t* utf16, std::size_t length, std::string& local,
                        bool replaceHexOneA) {
    if (m_localIsUtf8) {
        appendUtf8(utf16, length, local, replaceHexOneA);
        return;
    }
    ucnv_resetFromUnicode(m_local);
    fromUnicode(m_local, utf16, utf16 + length, true, replaceHexOneA, local);
}

// ICU's own two-converter loop: it pivots through the UTF-16 buffer, carrying both converters'
// state from piece to piece, and from UTF-8 into a multibyte page it converts directly, without
// the pivot. Only the output goes in pieces, one byte buffer at a time.
void Utf8String::convert(UConverter* from, UConverter* to, const char* bytes, std::size_t length,
                         std::string& out) {
    out.reserve(out.size() + length);
    const char* source = bytes;
    const char* const end = bytes + length;
    char16_t* const pivot = m_unicodeBuffer.get();
    char16_t* pivotSource = pivot;
    char16_t* pivotTarget = pivot;
    char* const buffer = m_localBuffer.get();
    bool first = true;
    for (;;) {
        char* target = buffer;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_convertEx(to, from, &target, buffer + sLocalBufferSize, &source, end, pivot,
                       &pivotSource, &pivotTarget, pivot + sUnicodeBufferSize,
                       static_cast<UBool>(first), static_cast<UBool>(true), &status);
        first = false;
        out.append(buffer, static_cast<std::size_t>(target - buffer));
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            continue;  // the output buffer was full: the next piece follows
        }
        if (U_FAILURE(status)) {
            // Bytes the source page cannot read stop its converter; a character that the
            // target page cannot write is left in the target's.
            UChar unwritable[8];
            int8_t count = static_cast<int8_t>(sizeof unwritable / sizeof unwritable[0]);
            UErrorCode ignored = U_ZERO_ERROR;
            ucnv_getInvalidUChars(to, unwritable, &count, &ignored);
            const bool toUnicode = U_FAILURE(ignored) || count == 0;
            handleError(toUnicode ? from : to, status, toUnicode);
        }
        return;
    }
}

void Utf8String::fromUnicode(UConverter* to, const char16_t* begin, const char16_t* end, bool flush,
                             bool replaceHexOneA, std::string& out) {
    char* const buffer = m_localBuffer.get();
    const char16_t* source = begin;
    bool more = false;
    do {
        char* target = buffer;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_fromUnicode(to, &target, buffer + sLocalBufferSize, &source, end, nullptr,
                         static_cast<UBool>(flush), &status);
        handleError(to, status, false);
        more = status == U_BUFFER_OVERFLOW_ERROR;
        const auto produced = static_cast<std::size_t>(target - buffer);
        if (replaceHexOneA) {
            replaceOneA(buffer, produced);
        }
        out.append(buffer, produced);
    } while (more);
}

}  // namespace Corvane::Soa::Common::Xml
