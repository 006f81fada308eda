#ifndef CORVANE_SOA_SRC_INTERNAL_JSON_JSONSCANNER_HPP
#define CORVANE_SOA_SRC_INTERNAL_JSON_JSONSCANNER_HPP

// The lexical half of the JSON reader: it walks the text and hands each token to a handler,
// which either builds the value tree (the parser) or binds the values into typed objects. Both
// see the same tokens in the same order and the same failures with the same texts. Not part of
// the exported interface.

#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/ParsingException.hpp>
#include <corvane/soa/internal/json/Value.hpp>

#include "common/xml/XmlTextAppend.hpp"
#include "internal/common/LocalZone.hpp"

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Corvane::Soa::Internal::Json {

namespace JsonText {

inline bool isDigit(char c) { return static_cast<unsigned char>(c - '0') < 10; }

inline bool isNumberByte(char c) {
    return isDigit(c) || c == '+' || c == '-' || c == '.' || c == 'e' || c == 'E';
}

// The end of a run of ' ' starting at `p` (indentation, mostly).
inline const char* skipSpaces(const char* p, const char* end) {
#if defined(__SSE2__)
    const __m128i space = _mm_set1_epi8(' ');
    while (end - p >= 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, space)));
        if (mask != 0xFFFFU) {
            return p + __builtin_ctz(~mask);
        }
        p += 16;
    }
#endif
    while (p != end && *p == ' ') {
        ++p;
    }
    return p;
}

// Unescapes the raw text of a string: \" \\ \/ \b \f \n \r \t become the byte they name; any
// other escape, \u included, stays as written, and so does a lone backslash at the end.
// Unescaping never lengthens the text: `out` needs room for the raw text; returns the length.
inline std::size_t unescapeInto(char* out, const char* p, const char* end) {
    char* o = out;
    while (p != end) {
        const auto* backslash =
            static_cast<const char*>(std::memchr(p, '\\', static_cast<std::size_t>(end - p)));
        if (backslash == nullptr) {
            std::memcpy(o, p, static_cast<std::size_t>(end - p));
            o += end - p;
            break;
        }
        std::memcpy(o, p, static_cast<std::size_t>(backslash - p));
        o += backslash - p;
        if (backslash + 1 == end) {
            *o++ = '\\';
            break;
        }
        const char c = backslash[1];
        switch (c) {
            case '"':
            case '\\':
            case '/':
                *o++ = c;
                break;
            case 'b':
                *o++ = '\b';
                break;
            case 'f':
                *o++ = '\f';
                break;
            case 'n':
                *o++ = '\n';
                break;
            case 'r':
                *o++ = '\r';
                break;
            case 't':
                *o++ = '\t';
                break;
            default:
                *o++ = '\\';
                *o++ = c;
                break;
        }
        p = backslash + 2;
    }
    return static_cast<std::size_t>(o - out);
}

inline std::string unescape(const char* p, const char* end) {
    std::string out(static_cast<std::size_t>(end - p), '\0');
    out.resize(unescapeInto(out.data(), p, end));
    return out;
}

inline int twoDigits(const char* p) { return (p[0] - '0') * 10 + (p[1] - '0'); }

// Moves a date by whole minutes as ::Corvane::Soa::Common::DateTime's arithmetic with an amount of
// hours and minutes does. A move that stays within a day of an ordinary date (day 1 to 28, hour
// below 24) changes the time of day only, and is made so here.
inline void shiftByMinutes(::Corvane::Soa::Common::DateTime& value, int minutes) {
    constexpr int kMinutesPerDay = 24 * 60;
    const int moved = value.hour() * 60 + value.minute() + minutes;
    if (value.day() >= 1 && value.day() <= 28 && value.hour() >= 0 && value.hour() < 24 &&
        value.minute() >= 0 && value.minute() < 60 && value.second() >= 0 && value.second() < 60 &&
        moved >= 0 && moved < kMinutesPerDay) {
        value = ::Corvane::Soa::Common::DateTime(value.year(), value.month(), value.day(),
                                                 moved / 60, moved % 60, value.second());
        return;
    }
    const int magnitude = minutes < 0 ? -minutes : minutes;
    const ::Corvane::Soa::Common::DateTime amount(0, 0, 0, magnitude / 60, magnitude % 60, 0);
    value = minutes < 0 ? value - amount : value + amount;
}

// Reads the usual wire text of a date, "yyyy-mm-ddThh:mm:ss+hh:mm", exactly as the text
// constructor of ::Corvane::Soa::Common::DateTime reads it, without its general scanning. Any other
// text, one the constructor refuses included, gives false and is left to the constructor.
inline bool readUsualDate(const char* p, std::size_t size, ::Corvane::Soa::Common::DateTime& out) {
    // dddd-dd-ddThh:mm:ss+hh:mm
    if (size != 25) {
        return false;
    }
    static constexpr int kDigits[] = {0,  1,  2,  3,  5,  6,  8,  9,  11,
                                      12, 14, 15, 17, 18, 20, 21, 23, 24};
    for (const int i : kDigits) {
        if (!isDigit(p[i])) {
            return false;
        }
    }
    if (p[4] != '-' || p[7] != '-' || p[10] != 'T' || p[13] != ':' || p[16] != ':' ||
        (p[19] != '+' && p[19] != '-') || p[22] != ':') {
        return false;
    }
    // The null date is the null date whatever its offset.
    static constexpr char kNullDate[] = "0001-01-01T00:00:00";
    if (std::memcmp(p, kNullDate, sizeof kNullDate - 1) == 0) {
        return false;
    }
    const int year = twoDigits(p) * 100 + twoDigits(p + 2);
    const int month = twoDigits(p + 5);
    const int day = twoDigits(p + 8);
    const int hour = twoDigits(p + 11);
    const int minute = twoDigits(p + 14);
    const int second = twoDigits(p + 17);
    const int offsetHours = p[19] == '-' ? -twoDigits(p + 20) : twoDigits(p + 20);
    const int offsetMinutes = twoDigits(p + 23);
    if (year < 1 || month < 1 || month > 12 || day < 1 || day > 31 || hour > 24 || minute > 59 ||
        second > 59 || offsetHours < -24 || offsetHours > 24 || offsetMinutes > 59) {
        return false;
    }
    // To local time: by the difference between the local standard offset and the text's (whose
    // sign is that of its hours), then by the daylight saving in force at the result.
    ::Corvane::Soa::Common::DateTime value(year, month, day, hour, minute, second);
    const int offset = offsetHours * 60 + (offsetHours < 0 ? -offsetMinutes : offsetMinutes);
    shiftByMinutes(value, ::Corvane::Soa::Internal::Common::LocalZone::standardOffset() - offset);
    const bool daylight = ::Corvane::Soa::Internal::Common::LocalZone::isDaylight(
        value.year(), value.month(), value.day(), value.hour(), value.minute(), value.second());
    if (daylight) {
        shiftByMinutes(value, ::Corvane::Soa::Internal::Common::LocalZone::daylightOffset() -
                                  ::Corvane::Soa::Internal::Common::LocalZone::standardOffset());
    }
    out = value;
    return true;
}

}  // namespace JsonText

/// Reads one JSON text and reports its tokens to a `Handler`:
///
///     using Result = ...;                      // what a value gives
///     Object beginObject();                    // after '{'
///     void key(Object&, const char* text, std::size_t length);  // raw, as written
///     void member(Object&, Result&& value);
///     Result endObject(Object&);               // after '}'
///     Array beginArray();
///     void element(Array&, Value::ValueType kind, Result&& value);
///     Result endArray(Array&);
///     Result string(const char* begin, const char* end, bool escaped);
///     Result date(const DateTime&);
///     Result integer(int); Result real(double); Result boolean(bool); Result null();
///
/// A string's bytes are UTF-8 with its escapes as written when `escaped`; when the local code
/// page is not UTF-8 they are already converted and unescaped. Errors throw `ParsingException`
/// at the first fault, the message ending in "Line L character C.\n".
template <class Handler>
class JsonScanner {
public:
    using Result = typename Handler::Result;

    JsonScanner(const char* text, std::size_t size,
                ::Corvane::Soa::Common::Xml::Utf8String& transcoder, Handler& handler)
        : m_cursor(text),
          m_end(text + size),
          m_lineStart(text),
          m_transcoder(transcoder),
          m_transcode(!transcoder.isLocalUtf8()),
          m_handler(handler) {}

    JsonScanner(const JsonScanner&) = delete;
    JsonScanner& operator=(const JsonScanner&) = delete;
    ~JsonScanner() = default;

    /// Reads the document, whose root must be an object or an array.
    Result parseDocument() {
        trim();
        if (m_cursor != m_end && *m_cursor == '{') {
            return parseObject();
        }
        if (m_cursor != m_end && *m_cursor == '[') {
            return parseArray();
        }
        throw ParsingException(
            "The root of a JSON document must be a JSONObject {}, or a JSONArray, [].\n");
    }

private:
    // Every byte read counts as a character of its line, line breaks inside strings included;
    // only a run of line breaks between tokens starts a new line.
    [[noreturn]] void fail(const char* text) const {
        std::string message(text);
        message.append("Line ").append(std::to_string(m_line));
        message.append(" character ")
            .append(std::to_string(static_cast<int>(m_cursor - m_lineStart)))
            .append(".\n");
        throw ParsingException(message);
    }

    void advance(std::size_t count) { m_cursor += count; }

    // Skips blanks, tabs and line breaks. A run of line breaks, blank lines included, counts as
    // one line, and the character count starts again after it.
    void trim() {
        const char* p = m_cursor;
        // Blanks, tabs and line breaks are all at or below ' '.
        if (p == m_end || static_cast<unsigned char>(*p) > ' ') {
            return;
        }
        // One blank between tokens, the most common case.
        if (*p == ' ' && m_end - p >= 2 && static_cast<unsigned char>(p[1]) > ' ') {
            m_cursor = p + 1;
            return;
        }
        bool previousWasBreak = false;
        while (p != m_end) {
            const char c = *p;
            if (c == ' ') {
                p = JsonText::skipSpaces(p + 1, m_end);
                previousWasBreak = false;
                continue;
            }
            if (c == '\t') {
                previousWasBreak = false;
            } else if (c == '\n' || c == '\r') {
                if (!previousWasBreak) {
                    ++m_line;
                }
                m_lineStart = p + 1;
                previousWasBreak = true;
            } else {
                break;
            }
            ++p;
        }
        m_cursor = p;
    }

    void validateToken(char expected) {
        trim();
        if (m_cursor == m_end || *m_cursor != expected) {
            const char text[] = {'E', 'x', 'p', 'e',  'c',      't',  'i', 'n', 'g',
                                 ' ', 'a', ' ', '\'', expected, '\'', '.', ' ', '\0'};
            fail(text);
        }
        advance(1);
    }

    bool at(char c) const { return m_cursor != m_end && *m_cursor == c; }

    // dddd-dd-ddT right after the quote.
    bool looksLikeDate() const {
        static constexpr char kShape[] = "dddd-dd-ddT";
        if (m_end - m_cursor < 12) {
            return false;
        }
        for (int i = 0; i < 11; ++i) {
            const char c = m_cursor[1 + i];
            if (kShape[i] == 'd' ? !JsonText::isDigit(c) : c != kShape[i]) {
                return false;
            }
        }
        return true;
    }

    // The raw bytes up to the first quote not preceded by a backslash; a backslash and the byte
    // after it are taken as they are. Leaves the cursor on the closing quote (or at the end) and
    // tells whether a backslash was seen.
    bool scanString(const char*& begin, const char*& end) {
        begin = m_cursor;
        bool escaped = false;
        const char* p = m_cursor;
        for (;;) {
#if defined(__SSE2__)
            const __m128i quote = _mm_set1_epi8('"');
            const __m128i backslash = _mm_set1_epi8('\\');
            while (m_end - p >= 16) {
                const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
                const auto mask = static_cast<unsigned>(_mm_movemask_epi8(
                    _mm_or_si128(_mm_cmpeq_epi8(block, quote), _mm_cmpeq_epi8(block, backslash))));
                if (mask != 0) {
                    p += __builtin_ctz(mask);
                    break;
                }
                p += 16;
            }
#endif
            while (p != m_end && *p != '"' && *p != '\\') {
                ++p;
            }
            if (p == m_end || *p == '"') {
                break;
            }
            escaped = true;
            p += (m_end - p >= 2) ? 2 : 1;
        }
        end = p;
        advance(static_cast<std::size_t>(p - m_cursor));
        return escaped;
    }

    void consumeClosingQuote() {
        if (m_cursor == m_end) {
            fail("Expecting a closing quote. ");
        }
        advance(1);
    }

    // The cursor is on the opening quote.
    Result parseString() {
        advance(1);
        const char* begin = nullptr;
        const char* end = nullptr;
        const bool escaped = scanString(begin, end);
        consumeClosingQuote();
        if (m_transcode) {
            m_raw.assign(begin, end);
            m_local.clear();
            m_transcoder.decode(m_raw, m_local);
            m_decoded.clear();
            ::Corvane::Soa::Common::Xml::appendDecodedJson(m_decoded, m_local.data(),
                                                           m_local.size());
            return m_handler.string(m_decoded.data(), m_decoded.data() + m_decoded.size(), false);
        }
        return m_handler.string(begin, end, escaped);
    }

    // The cursor is on the opening quote of a date-shaped string.
    Result parseDate() {
        advance(1);
        const char* begin = nullptr;
        const char* end = nullptr;
        scanString(begin, end);
        consumeClosingQuote();
        ::Corvane::Soa::Common::DateTime value(0, 0, 0, 0, 0, 0);
        if (!JsonText::readUsualDate(begin, static_cast<std::size_t>(end - begin), value)) {
            value = ::Corvane::Soa::Common::DateTime(std::string(begin, end));
        }
        return m_handler.date(value);
    }

    // A run of number bytes; with a '.' or an exponent it is a double, otherwise an integer.
    Result parseNumber(Value::ValueType& kind) {
        const char* begin = m_cursor;
        // The usual numbers are read in the pass that finds them: an optional '-' and at most 18
        // digits, or at most 15 digits with a '.' among them. Such a double is the digits as an
        // integer over a power of ten, both exact doubles, rounded once by the division as strtod
        // rounds the text.
        {
            static constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                      1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
            const char* q = begin;
            const bool negative = q != m_end && *q == '-';
            q += negative ? 1 : 0;
            const char* digits = q;
            std::uint64_t magnitude = 0;
            while (q != m_end && JsonText::isDigit(*q) && q - digits < 18) {
                magnitude = magnitude * 10 + static_cast<std::uint64_t>(*q - '0');
                ++q;
            }
            if (q == m_end || !JsonText::isNumberByte(*q)) {
                advance(static_cast<std::size_t>(q - begin));
                kind = Value::INTEGER;
                const std::uint64_t value = negative ? (~magnitude + 1) : magnitude;
                return m_handler.integer(static_cast<int>(static_cast<std::uint32_t>(value)));
            }
            const auto whole = q - digits;
            if (*q == '.' && whole > 0 && whole < 16) {
                const char* fraction = ++q;
                while (q != m_end && JsonText::isDigit(*q) && (q - fraction) + whole < 15) {
                    magnitude = magnitude * 10 + static_cast<std::uint64_t>(*q - '0');
                    ++q;
                }
                if (q != fraction && (q == m_end || !JsonText::isNumberByte(*q))) {
                    advance(static_cast<std::size_t>(q - begin));
                    kind = Value::DOUBLE;
                    const double value =
                        static_cast<double>(magnitude) / kPowersOfTen[q - fraction];
                    return m_handler.real(negative ? -value : value);
                }
            }
        }
        const char* p = begin;
        bool fractional = false;
        for (; p != m_end && JsonText::isNumberByte(*p); ++p) {
            fractional = fractional || *p == '.' || *p == 'e' || *p == 'E';
        }
        advance(static_cast<std::size_t>(p - begin));
        if (fractional) {
            kind = Value::DOUBLE;
            return m_handler.real(readDouble(begin, p));
        }
        kind = Value::INTEGER;
        return m_handler.integer(readInteger(begin, p));
    }

    // What strtol reads from the run (digits and signs only): an optional sign and the digits
    // after it, saturated at the long range; then the int keeps the low 32 bits.
    static int readInteger(const char* p, const char* end) {
        bool negative = false;
        if (*p == '+' || *p == '-') {
            negative = *p == '-';
            ++p;
        }
        constexpr std::uint64_t kLimit = static_cast<std::uint64_t>(LONG_MAX) + 1;
        std::uint64_t magnitude = 0;
        for (; p != end && JsonText::isDigit(*p); ++p) {
            const auto digit = static_cast<std::uint64_t>(*p - '0');
            magnitude = magnitude > (kLimit - digit) / 10 ? kLimit : magnitude * 10 + digit;
        }
        if (!negative && magnitude == kLimit) {
            magnitude = kLimit - 1;
        }
        const std::uint64_t value = negative ? (~magnitude + 1) : magnitude;
        return static_cast<int>(static_cast<std::uint32_t>(value));
    }

    static double readDouble(const char* begin, const char* end) {
        // from_chars reads what strtod reads, rounded the same, for text without a '+' in front;
        // strtod takes the rest, and the values beyond the double range.
        double value = 0.0;
        if (*begin != '+') {
            const auto result = std::from_chars(begin, end, value);
            if (result.ec == std::errc()) {
                return value;
            }
        }
        const std::string text(begin, end);
        return std::strtod(text.c_str(), nullptr);
    }

    // The value at the cursor, its kind decided by its first bytes.
    Result parseValue(Value::ValueType& kind) {
        if (m_cursor == m_end) {
            fail("Unkown value type. ");
        }
        const char c = *m_cursor;
        switch (c) {
            case '{':
                kind = Value::OBJECT;
                return parseObject();
            case '[':
                kind = Value::ARRAY;
                return parseArray();
            case '"':
                if (looksLikeDate()) {
                    kind = Value::DATE;
                    return parseDate();
                }
                kind = Value::STRING;
                return parseString();
            case '0':
            case '1':
            case '2':
            case '3':
            case '4':
            case '5':
            case '6':
            case '7':
            case '8':
            case '9':
            case '-':
            case '+':
            case '.':
                return parseNumber(kind);
            default:
                break;
        }
        const auto available = static_cast<std::size_t>(m_end - m_cursor);
        if (available >= 4) {
            if (std::memcmp(m_cursor, "null", 4) == 0) {
                advance(4);
                kind = Value::NULL_VALUE;
                return m_handler.null();
            }
            if (std::memcmp(m_cursor, "true", 4) == 0 || std::memcmp(m_cursor, "fals", 4) == 0) {
                const bool value = c == 't';
                const std::size_t length = value ? 4 : 5;
                advance(length < available ? length : available);
                kind = Value::BOOLEAN;
                return m_handler.boolean(value);
            }
        }
        fail("Unkown value type. ");
    }

    void enter() {
        if (++m_depth > Parser::kMaxDepth) {
            fail("The JSON document is nested too deeply. ");
        }
    }

    Result parseObject() {
        validateToken('{');
        enter();
        typename Handler::Object object = m_handler.beginObject();
        trim();
        if (at('}')) {
            advance(1);
            --m_depth;
            return m_handler.endObject(object);
        }
        for (;;) {
            validateToken('"');
            const char* keyBegin = nullptr;
            const char* keyEnd = nullptr;
            scanString(keyBegin, keyEnd);
            consumeClosingQuote();
            // Usually the colon follows the key.
            if (at(':')) {
                advance(1);
            } else {
                validateToken(':');
            }
            trim();
            m_handler.key(object, keyBegin, static_cast<std::size_t>(keyEnd - keyBegin));
            Value::ValueType kind = Value::UNDETERMINED;
            m_handler.member(object, parseValue(kind));
            trim();
            if (!at(',')) {
                break;
            }
            advance(1);
        }
        validateToken('}');
        --m_depth;
        return m_handler.endObject(object);
    }

    Result parseArray() {
        validateToken('[');
        enter();
        typename Handler::Array array = m_handler.beginArray();
        trim();
        if (at(']')) {
            advance(1);
            --m_depth;
            return m_handler.endArray(array);
        }
        for (;;) {
            trim();
            Value::ValueType kind = Value::UNDETERMINED;
            Result value = parseValue(kind);
            m_handler.element(array, kind, std::move(value));
            trim();
            if (!at(',')) {
                break;
            }
            advance(1);
        }
        validateToken(']');
        --m_depth;
        return m_handler.endArray(array);
    }

    const char* m_cursor;
    const char* m_end;
    const char* m_lineStart;
    int m_line = 1;
    ::Corvane::Soa::Common::Xml::Utf8String& m_transcoder;
    bool m_transcode;
    Handler& m_handler;
    int m_depth = 0;
    // A string's raw text, its local form and that form unescaped, when strings are transcoded.
    std::string m_raw;
    std::string m_local;
    std::string m_decoded;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
