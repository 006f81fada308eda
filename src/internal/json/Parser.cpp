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

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Corvane::Soa::Internal::Json {

using Common::AutoPtr;
using Common::DateTime;
using Common::Xml::Utf8String;

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isNumberByte(char c) {
    return isDigit(c) || c == '+' || c == '-' || c == '.' || c == 'e' || c == 'E';
}

// Members arrive in document order; the object keeps them sorted by key, and a repeated key keeps
// its last value.
void sortMembers(std::vector<JSONObject::Member>& members) {
    const auto byKey = [](const JSONObject::Member& a, const JSONObject::Member& b) {
        return a.first < b.first;
    };
    if (!std::is_sorted(members.begin(), members.end(), byKey)) {
        std::stable_sort(members.begin(), members.end(), byKey);
    }
    // Within a run of equal keys only the last survives.
    auto out = members.begin();
    for (auto it = members.begin(); it != members.end(); ++it) {
        auto next = std::next(it);
        if (next != members.end() && next->first == it->first) {
            continue;
        }
        if (out != it) {
            *out = std::move(*it);
        }
        ++out;
    }
    members.erase(out, members.end());
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
        bool previousWasBreak = false;
        while (m_cursor != m_end) {
            const char c = *m_cursor;
            if (c == ' ' || c == '\t') {
                ++m_character;
                previousWasBreak = false;
            } else if (c == '\n' || c == '\r') {
                m_character = 0;
                if (!previousWasBreak) {
                    ++m_line;
                }
                previousWasBreak = true;
            } else {
                return;
            }
            ++m_cursor;
        }
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

    Value::ValueType getValueType() const {
        if (m_cursor == m_end) {
            fail("Unkown value type. ");
        }
        const char c = *m_cursor;
        if (c == '{') {
            return Value::OBJECT;
        }
        if (c == '[') {
            return Value::ARRAY;
        }
        if (c == '"') {
            return looksLikeDate() ? Value::DATE : Value::STRING;
        }
        if (isDigit(c) || c == '-' || c == '+' || c == '.') {
            for (const char* p = m_cursor; p != m_end && isNumberByte(*p); ++p) {
                if (*p == '.' || *p == 'e' || *p == 'E') {
                    return Value::DOUBLE;
                }
            }
            return Value::INTEGER;
        }
        const std::size_t available = static_cast<std::size_t>(m_end - m_cursor);
        if (available >= 4) {
            if (std::memcmp(m_cursor, "null", 4) == 0) {
                return Value::NULL_VALUE;
            }
            if (std::memcmp(m_cursor, "true", 4) == 0 || std::memcmp(m_cursor, "fals", 4) == 0) {
                return Value::BOOLEAN;
            }
        }
        fail("Unkown value type. ");
    }

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

    std::string parseString() {
        validateToken('"');
        const char* begin = nullptr;
        const char* end = nullptr;
        const bool escaped = scanString(begin, end);
        consumeClosingQuote();
        if (m_transcode) {
            std::string local;
            m_transcoder.decode(std::string(begin, end), local);
            std::string out;
            Common::Xml::appendDecodedJson(out, local.data(), local.size());
            return out;
        }
        if (!escaped) {
            return std::string(begin, end);
        }
        std::string out;
        Common::Xml::appendDecodedJson(out, begin, static_cast<std::size_t>(end - begin));
        return out;
    }

    std::string getKey() {
        validateToken('"');
        const char* begin = nullptr;
        const char* end = nullptr;
        scanString(begin, end);
        consumeClosingQuote();
        std::string key(begin, end);
        validateToken(':');
        return key;
    }

    AutoPtr<Value> parseDate() {
        advance(1);
        const char* begin = nullptr;
        const char* end = nullptr;
        scanString(begin, end);
        consumeClosingQuote();
        return AutoPtr<Value>(new DateValue(DateTime(std::string(begin, end))));
    }

    // Integers keep strtol's value (the long range) and then the int's 32 bits.
    AutoPtr<Value> parseInteger() {
        const char* begin = m_cursor;
        const char* p = m_cursor;
        while (p != m_end && (isDigit(*p) || *p == '+' || *p == '-')) {
            ++p;
        }
        advance(static_cast<std::size_t>(p - begin));
        const std::string digits(begin, p);
        const long value = std::strtol(digits.c_str(), nullptr, 10);
        return AutoPtr<Value>(new IntegerValue(
            static_cast<int>(static_cast<std::uint32_t>(static_cast<unsigned long>(value)))));
    }

    AutoPtr<Value> parseDouble() {
        const char* begin = m_cursor;
        const char* p = m_cursor;
        while (p != m_end && isNumberByte(*p)) {
            ++p;
        }
        advance(static_cast<std::size_t>(p - begin));
        // from_chars reads what strtod reads, rounded the same, for text without a '+' in front;
        // strtod takes the rest, and the values beyond the double range.
        double value = 0.0;
        if (*begin != '+') {
            const auto result = std::from_chars(begin, p, value);
            if (result.ec == std::errc()) {
                return AutoPtr<Value>(new DoubleValue(value));
            }
        }
        const std::string text(begin, p);
        value = std::strtod(text.c_str(), nullptr);
        return AutoPtr<Value>(new DoubleValue(value));
    }

    AutoPtr<Value> parseBoolean() {
        const bool value = *m_cursor == 't';
        const auto available = static_cast<std::size_t>(m_end - m_cursor);
        const std::size_t length = value ? 4 : 5;
        advance(length < available ? length : available);
        return AutoPtr<Value>(new BooleanValue(value));
    }

    AutoPtr<Value> parseNull() {
        advance(4);
        return AutoPtr<Value>(new NullValue());
    }

    AutoPtr<Value> parseValue(Value::ValueType type) {
        switch (type) {
            case Value::OBJECT:
                return parseObject();
            case Value::ARRAY:
                return parseArray();
            case Value::DATE:
                return parseDate();
            case Value::STRING:
                return AutoPtr<Value>(new StringValue(parseString()));
            case Value::DOUBLE:
                return parseDouble();
            case Value::INTEGER:
                return parseInteger();
            case Value::BOOLEAN:
                return parseBoolean();
            default:
                return parseNull();
        }
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
        for (;;) {
            std::string key = getKey();
            trim();
            const Value::ValueType type = getValueType();
            AutoPtr<Value> value = parseValue(type);
            m_members.emplace_back(std::move(key), std::move(value));
            trim();
            if (!at(',')) {
                break;
            }
            advance(1);
        }
        validateToken('}');
        auto& members = object->m_members;
        members.reserve(m_members.size() - base);
        members.assign(std::make_move_iterator(m_members.begin() + static_cast<long>(base)),
                       std::make_move_iterator(m_members.end()));
        m_members.resize(base);
        sortMembers(members);
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
            const Value::ValueType type = getValueType();
            // The value first: a nested array uses the same stacks while it is read.
            AutoPtr<Value> value = parseValue(type);
            m_kinds.push_back(type);
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
    std::vector<JSONObject::Member> m_members;
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
