#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/internal/json/BooleanValue.hpp>
#include <corvane/soa/internal/json/DateValue.hpp>
#include <corvane/soa/internal/json/DoubleValue.hpp>
#include <corvane/soa/internal/json/IntegerValue.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/NullValue.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/ParsingException.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>

#include "common/xml/XmlTextAppend.hpp"

// Declares Corvane::Soa::Internal::Common, which hides Corvane::Soa::Common in this namespace
// from here on: the names of the latter are spelled in full below.
#include <corvane/soa/internal/common/LocalZone.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <tuple>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Corvane::Soa::Internal::Json {

using ::Corvane::Soa::Common::AutoPtr;
using ::Corvane::Soa::Common::DateTime;
using ::Corvane::Soa::Common::Xml::appendDecodedJson;
using ::Corvane::Soa::Common::Xml::Utf8String;

namespace {

using Internal::Common::LocalZone;
using Member = JSONObject::Member;

bool isDigit(char c) { return static_cast<unsigned char>(c - '0') < 10; }

bool isNumberByte(char c) {
    return isDigit(c) || c == '+' || c == '-' || c == '.' || c == 'e' || c == 'E';
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// The end of a run of ' ' starting at `p` (indentation, mostly).
const char* skipSpaces(const char* p, const char* end) {
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

// Members arrive in document order and the object keeps them sorted by key. Objects are
// small: insertion sort (stable, like the merge sort taken for large ones) is the quicker there.
void sortMembers(Member* first, Member* last) {
    constexpr std::ptrdiff_t kSmall = 16;
    if (last - first > kSmall) {
        std::stable_sort(first, last,
                         [](const Member& a, const Member& b) { return a.first < b.first; });
        return;
    }
    for (Member* it = first + 1; it < last; ++it) {
        if (!(it->first < (it - 1)->first)) {
            continue;
        }
        Member moving = std::move(*it);
        Member* hole = it;
        do {
            *hole = std::move(*(hole - 1));
            --hole;
        } while (hole != first && moving.first < (hole - 1)->first);
        *hole = std::move(moving);
    }
}

// Within a run of equal keys of sorted members only the last survives; returns how many are
// kept, at the front of the range.
std::size_t keepLastOfEqualKeys(Member* first, Member* last) {
    Member* out = first;
    for (Member* it = first; it != last; ++it) {
        if (it + 1 != last && (it + 1)->first == it->first) {
            continue;
        }
        if (out != it) {
            *out = std::move(*it);
        }
        ++out;
    }
    return static_cast<std::size_t>(out - first);
}

int twoDigits(const char* p) { return (p[0] - '0') * 10 + (p[1] - '0'); }

// Reads the usual wire text of a date, "yyyy-mm-ddThh:mm:ss+hh:mm", exactly as the text
// constructor of DateTime reads it, without its general scanning. Any other text, one the
// constructor refuses included, gives false and is left to the constructor.
bool readUsualDate(const char* p, std::size_t size, DateTime& out) {
    static constexpr char kShape[] = "dddd-dd-ddTdd:dd:dd+dd:dd";
    if (size != sizeof kShape - 1) {
        return false;
    }
    for (std::size_t i = 0; i < size; ++i) {
        const char want = kShape[i];
        const char c = p[i];
        if (want == 'd' ? !isDigit(c) : want == '+' ? (c != '+' && c != '-') : c != want) {
            return false;
        }
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
    DateTime value(year, month, day, hour, minute, second);
    const int offset = offsetHours * 60 + (offsetHours < 0 ? -offsetMinutes : offsetMinutes);
    const int diff = LocalZone::standardOffset() - offset;
    const int magnitude = diff < 0 ? -diff : diff;
    const DateTime shift(0, 0, 0, magnitude / 60, magnitude % 60, 0);
    value = diff < 0 ? value - shift : value + shift;
    if (LocalZone::isDaylight(value.year(), value.month(), value.day(), value.hour(),
                              value.minute(), value.second())) {
        const int daylight = LocalZone::daylightOffset() - LocalZone::standardOffset();
        value = value + DateTime(0, 0, 0, daylight / 60, daylight % 60, 0);
    }
    out = value;
    return true;
}

}  // namespace

// One reading of one text: the cursor with its line and character counters, and the stacks on
// which open containers collect their members before they are handed over in one piece.
class Parser::Reader {
public:
    Reader(const std::string& text, Utf8String& transcoder)
        : m_cursor(text.data()),
          m_end(text.data() + text.size()),
          m_transcoder(transcoder),
          m_transcode(!transcoder.isLocalUtf8()) {}

    AutoPtr<Value> parseDocument() {
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
    [[noreturn]] void fail(const char* text) const {
        std::string message(text);
        message.append("Line ").append(std::to_string(m_line));
        message.append(" character ").append(std::to_string(m_character)).append(".\n");
        throw ParsingException(message);
    }

    void advance(std::size_t count) {
        m_cursor += count;
        m_character += static_cast<int>(count);
    }

    // Skips blanks, tabs and line breaks. A run of line breaks, blank lines included, counts as
    // one line, and the character count starts again after it.
    void trim() {
        const char* p = m_cursor;
        if (p == m_end || !isBlank(*p)) {
            return;
        }
        int line = m_line;
        int character = m_character;
        bool previousWasBreak = false;
        while (p != m_end) {
            const char c = *p;
            if (c == ' ') {
                const char* run = skipSpaces(p + 1, m_end);
                character += static_cast<int>(run - p);
                p = run;
                previousWasBreak = false;
                continue;
            }
            if (c == '\t') {
                ++character;
                previousWasBreak = false;
            } else if (c == '\n' || c == '\r') {
                character = 0;
                if (!previousWasBreak) {
                    ++line;
                }
                previousWasBreak = true;
            } else {
                break;
            }
            ++p;
        }
        m_cursor = p;
        m_line = line;
        m_character = character;
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
            if (kShape[i] == 'd' ? !isDigit(c) : c != kShape[i]) {
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
    std::string parseString() {
        advance(1);
        const char* begin = nullptr;
        const char* end = nullptr;
        const bool escaped = scanString(begin, end);
        consumeClosingQuote();
        if (m_transcode) {
            std::string local;
            m_transcoder.decode(std::string(begin, end), local);
            std::string out;
            appendDecodedJson(out, local.data(), local.size());
            return out;
        }
        if (!escaped) {
            return std::string(begin, end);
        }
        std::string out;
        appendDecodedJson(out, begin, static_cast<std::size_t>(end - begin));
        return out;
    }

    // The cursor is on the opening quote of a date-shaped string.
    AutoPtr<Value> parseDate() {
        advance(1);
        const char* begin = nullptr;
        const char* end = nullptr;
        scanString(begin, end);
        consumeClosingQuote();
        DateTime value(0, 0, 0, 0, 0, 0);
        if (!readUsualDate(begin, static_cast<std::size_t>(end - begin), value)) {
            value = DateTime(std::string(begin, end));
        }
        return AutoPtr<Value>(new DateValue(value, value.toString()));
    }

    // A run of number bytes; with a '.' or an exponent it is a double, otherwise an integer.
    AutoPtr<Value> parseNumber(Value::ValueType& kind) {
        const char* begin = m_cursor;
        const char* p = m_cursor;
        bool fractional = false;
        for (; p != m_end && isNumberByte(*p); ++p) {
            fractional = fractional || *p == '.' || *p == 'e' || *p == 'E';
        }
        advance(static_cast<std::size_t>(p - begin));
        if (fractional) {
            kind = Value::DOUBLE;
            return AutoPtr<Value>(new DoubleValue(readDouble(begin, p)));
        }
        kind = Value::INTEGER;
        return AutoPtr<Value>(new IntegerValue(readInteger(begin, p)));
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
        for (; p != end && isDigit(*p); ++p) {
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
    AutoPtr<Value> parseValue(Value::ValueType& kind) {
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
                return AutoPtr<Value>(new StringValue(parseString()));
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
                return AutoPtr<Value>(new NullValue());
            }
            if (std::memcmp(m_cursor, "true", 4) == 0 || std::memcmp(m_cursor, "fals", 4) == 0) {
                const bool value = c == 't';
                const std::size_t length = value ? 4 : 5;
                advance(length < available ? length : available);
                kind = Value::BOOLEAN;
                return AutoPtr<Value>(new BooleanValue(value));
            }
        }
        fail("Unkown value type. ");
    }

    void enter() {
        if (++m_depth > kMaxDepth) {
            fail("The JSON document is nested too deeply. ");
        }
    }

    AutoPtr<JSONObject> parseObject() {
        validateToken('{');
        enter();
        AutoPtr<JSONObject> object(new JSONObject);
        trim();
        if (at('}')) {
            advance(1);
            --m_depth;
            return object;
        }
        const std::size_t base = m_members.size();
        // Whether the keys so far came in strictly increasing order: then there is nothing to
        // sort and no repeated key.
        bool ordered = true;
        for (;;) {
            validateToken('"');
            const char* keyBegin = nullptr;
            const char* keyEnd = nullptr;
            scanString(keyBegin, keyEnd);
            consumeClosingQuote();
            validateToken(':');
            trim();
            Value::ValueType kind = Value::UNDETERMINED;
            // The value first: a nested object uses the same stack while it is read. The key is
            // kept exactly as written, a view of the text until then.
            AutoPtr<Value> value = parseValue(kind);
            m_members.emplace_back(std::piecewise_construct,
                                   std::forward_as_tuple(keyBegin, keyEnd),
                                   std::forward_as_tuple(std::move(value)));
            if (ordered && m_members.size() - base > 1) {
                ordered = m_members[m_members.size() - 2].first < m_members.back().first;
            }
            trim();
            if (!at(',')) {
                break;
            }
            advance(1);
        }
        validateToken('}');
        Member* first = m_members.data() + base;
        Member* last = m_members.data() + m_members.size();
        std::size_t kept = m_members.size() - base;
        if (!ordered) {
            sortMembers(first, last);
            kept = keepLastOfEqualKeys(first, last);
        }
        auto& members = object->m_members;
        members.reserve(kept);
        members.assign(std::make_move_iterator(first), std::make_move_iterator(first + kept));
        m_members.resize(base);
        --m_depth;
        return object;
    }

    AutoPtr<JSONArray> parseArray() {
        validateToken('[');
        enter();
        AutoPtr<JSONArray> array(new JSONArray);
        trim();
        if (at(']')) {
            advance(1);
            --m_depth;
            return array;
        }
        const std::size_t base = m_values.size();
        for (;;) {
            trim();
            Value::ValueType kind = Value::UNDETERMINED;
            // The value first: a nested array uses the same stacks while it is read.
            AutoPtr<Value> value = parseValue(kind);
            m_kinds.push_back(kind);
            m_values.push_back(std::move(value));
            trim();
            if (!at(',')) {
                break;
            }
            advance(1);
        }
        validateToken(']');
        const auto first = static_cast<long>(base);
        array->m_kinds.assign(m_kinds.begin() + first, m_kinds.end());
        array->m_values.assign(std::make_move_iterator(m_values.begin() + first),
                               std::make_move_iterator(m_values.end()));
        m_kinds.resize(base);
        m_values.resize(base);
        --m_depth;
        return array;
    }

    const char* m_cursor;
    const char* m_end;
    int m_line = 1;
    int m_character = 0;
    Utf8String& m_transcoder;
    bool m_transcode;
    int m_depth = 0;
    // Members and elements of the open containers, innermost last.
    std::vector<Member> m_members;
    std::vector<Value::ValueType> m_kinds;
    std::vector<AutoPtr<Value>> m_values;
};

Parser::Parser() : m_transcoder(std::make_unique<Utf8String>()) {}

Parser::~Parser() = default;

AutoPtr<Value> Parser::parse(const std::string& text) {
    Reader reader(text, *m_transcoder);
    return reader.parseDocument();
}

}  // namespace Corvane::Soa::Internal::Json
