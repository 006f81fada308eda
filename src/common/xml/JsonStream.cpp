#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>

#include "XmlTextAppend.hpp"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstring>
#include <streambuf>

namespace Corvane::Soa::Common::Xml {

namespace {

constexpr std::size_t kIndentLevels = 18;

std::vector<std::string> makeIndents(std::size_t tabSize) {
    std::vector<std::string> indents;
    indents.reserve(kIndentLevels);
    const std::string unit(tabSize, ' ');
    indents.emplace_back();
    for (std::size_t level = 1; level < kIndentLevels; ++level) {
        indents.push_back(indents.back() + unit);
    }
    return indents;
}

// The process-wide indent table, entry k holding k units of blanks. Its first build (no blanks)
// happens on first use and is thread-safe; rebuilding it through setTabSize is not, so callers
// that change the tab size do it before streams are written from other threads.
std::vector<std::string>& sIndents() {
    static std::vector<std::string> indents = makeIndents(0);
    return indents;
}

const char* boolText(bool value) { return value ? "true" : "false"; }

// The put area of any stream buffer, reached as sputc reaches it. An operation writes its text
// straight into the room left there and makes it part of the stream's content only at its end
// (`pbump`); text past the put pointer is not yet written, so a failed operation leaves none.
struct PutArea : std::streambuf {
    static char* next(std::streambuf* buffer) { return (buffer->*&PutArea::pptr)(); }
    static char* end(std::streambuf* buffer) { return (buffer->*&PutArea::epptr)(); }
    static void advance(std::streambuf* buffer, std::size_t length) {
        (buffer->*&PutArea::pbump)(static_cast<int>(length));
    }
};

// Below this much room the operation is assembled in the stream's own buffer instead.
constexpr std::ptrdiff_t kLeastDirectRoom = 64;

}  // namespace

JsonStream::JsonStream(std::ostream* out) : JsonStream(out, nullptr) {}

JsonStream::JsonStream(std::ostream* out, Utf8String* transcoder)
    : m_indent(sIndents().front()), m_out(out), m_transcoder(transcoder) {}

JsonStream::~JsonStream() = default;

void JsonStream::setTabSize(std::size_t size) { sIndents() = makeIndents(size); }

// The stream's buffer is called directly: a formatted insertion builds a sentry each time.
void JsonStream::write(const char* text, std::size_t length) {
    if (m_out == nullptr || length == 0) {
        return;
    }
    std::streambuf* buffer = m_out->rdbuf();
    if (buffer == nullptr || !m_out->good()) {
        m_out->setstate(std::ios_base::badbit);
        return;
    }
    const auto wanted = static_cast<std::streamsize>(length);
    if (buffer->sputn(text, wanted) != wanted) {
        m_out->setstate(std::ios_base::badbit);
    }
}

// Starts an operation: its text goes into the output's put area when there is room, else into
// `m_buffer`.
void JsonStream::begin() {
    std::streambuf* buffer = m_out != nullptr && m_out->good() ? m_out->rdbuf() : nullptr;
    if (buffer != nullptr) {
        char* const next = PutArea::next(buffer);
        const std::ptrdiff_t room = std::min<std::ptrdiff_t>(PutArea::end(buffer) - next, INT_MAX);
        if (next != nullptr && room >= kLeastDirectRoom) {
            m_direct = buffer;
            m_next = next;
            m_limit = next + room;
            return;
        }
    }
    m_direct = nullptr;
    m_next = m_buffer.data();
    m_limit = m_next + m_buffer.size();
}

// Ends an operation: its text becomes part of the output in one piece.
void JsonStream::commit() {
    if (m_direct != nullptr) {
        PutArea::advance(m_direct, static_cast<std::size_t>(m_next - PutArea::next(m_direct)));
        return;
    }
    char* const begin = m_buffer.data();
    write(begin, static_cast<std::size_t>(m_next - begin));
}

JsonStream& JsonStream::operator<<(const char* text) {
    if (text != nullptr) {
        write(text, std::strlen(text));
    }
    return *this;
}

JsonStream& JsonStream::operator<<(const std::string& text) {
    write(text.data(), text.size());
    return *this;
}

// ---- the operation's text ----

void JsonStream::reserve(std::size_t size) {
    if (static_cast<std::size_t>(m_limit - m_next) < size) {
        grow(size);
    }
}

// More room than is left: an operation under way in the put area moves what it has written so
// far to `m_buffer` and goes on there.
void JsonStream::grow(std::size_t size) {
    std::streambuf* const direct = m_direct;
    const auto used = static_cast<std::size_t>(
        m_next - (direct != nullptr ? PutArea::next(direct) : m_buffer.data()));
    if (m_buffer.size() < used + size) {
        m_buffer.resize(std::max(2 * m_buffer.size(), used + size));
    }
    if (direct != nullptr) {
        std::memcpy(m_buffer.data(), PutArea::next(direct), used);
        m_direct = nullptr;
    }
    m_next = m_buffer.data() + used;
    m_limit = m_buffer.data() + m_buffer.size();
}

void JsonStream::put(char c) {
    reserve(1);
    *m_next++ = c;
}

void JsonStream::put(const char* text, std::size_t length) {
    if (length != 0) {
        reserve(length);
        std::memcpy(m_next, text, length);
        m_next += length;
    }
}

// ---- layout ----

void JsonStream::separator() {
    reserve(2);
    if (m_needComma) {
        *m_next++ = ',';
    }
    if (!m_atStart && m_started) {
        *m_next++ = '\n';
    }
    m_needComma = true;
    m_started = true;
}

void JsonStream::raiseLevel() {
    const std::vector<std::string>& indents = sIndents();
    if (static_cast<std::size_t>(m_level) + 1 < indents.size()) {
        ++m_level;
    }
    m_indent = indents[static_cast<std::size_t>(m_level)];
}

void JsonStream::lowerLevel() {
    if (m_level > 0) {
        --m_level;
    }
    m_indent = sIndents()[static_cast<std::size_t>(m_level)];
}

// ---- pieces of text ----

void JsonStream::putEscaped(const char* value, std::size_t length) {
    if (m_transcoder == nullptr) {
        reserve(2 * length);
        m_next = escapeJsonInto(m_next, value, length);
        return;
    }
    m_escaped.clear();
    appendJsonString(m_escaped, value, length);
    m_transcoded.clear();
    m_transcoder->encode(m_escaped, m_transcoded);  // a failure leaves the operation unwritten
    put(m_transcoded);
}

void JsonStream::putQuotedName(const std::string& name) {
    reserve(name.size() + 3);
    *m_next++ = '"';
    std::memcpy(m_next, name.data(), name.size());
    m_next += name.size();
    *m_next++ = '"';
    *m_next++ = ':';
}

void JsonStream::putNumber(int value) {
    reserve(16);
    m_next = std::to_chars(m_next, m_limit, value).ptr;
}

// The text of lexical_cast<std::string>(double) (17 significant digits, the shorter of fixed
// and scientific notation), formatted in place. Floats are widened first, as there.
void JsonStream::putNumber(double value) {
    reserve(32);
    m_next = std::to_chars(m_next, m_limit, value, std::chars_format::general, 17).ptr;
}

// The wire text, as lexical_cast writes it, made in a buffer the stream keeps.
void JsonStream::putDate(const DateTime& value) {
    m_dateText.clear();
    value.appendTo(m_dateText);
    put('"');
    put(m_dateText);
    put('"');
}

// ---- objects, arrays, maps ----

// An unnamed object, array or map: the separator, the indent and the bracket, one level in.
void JsonStream::writeOpen(char bracket) {
    begin();
    separator();
    putIndent();
    put(bracket);
    m_needComma = false;
    m_atStart = false;
    raiseLevel();
    commit();
}

// One level out, then the closing bracket on a line of its own; a comma is due after it.
void JsonStream::writeClose(char bracket) {
    writeFrameClose(bracket);
    m_needComma = true;
}

void JsonStream::writeObjectOpen() { writeOpen('{'); }

void JsonStream::writeObjectOpen(const std::string& qualifiedName) {
    begin();
    separator();
    putIndent();
    put('{');
    m_needComma = false;
    raiseLevel();
    if (m_atStart) {
        m_atStart = false;
        separator();
        putIndent();
        put("\".QName\":\"", 10);
        putEscaped(qualifiedName.data(), qualifiedName.size());
        put('"');
    }
    commit();
}

void JsonStream::writeObjectClose() { writeClose('}'); }

void JsonStream::writeArrayOpen() { writeOpen('['); }

void JsonStream::writeArrayClose() { writeClose(']'); }

void JsonStream::writeMapOpen() { writeOpen('['); }

// Opens with a brace, while writeMapClose closes with a bracket: readers of this output expect
// exactly that pair.
void JsonStream::writeMapOpen(const std::string& key) {
    begin();
    separator();
    putIndent();
    put('"');
    put(key);
    put("\":\n", 3);
    putIndent();
    put('{');
    m_needComma = false;
    raiseLevel();
    commit();
}

void JsonStream::writeMapClose() { writeClose(']'); }

// ---- keys and values ----

void JsonStream::writeKey(const std::string& key) {
    begin();
    separator();
    if (m_indentOn) {
        putIndent();
    }
    putQuotedName(key);
    m_needComma = false;
    commit();
}

void JsonStream::writeKey(int key) {
    begin();
    separator();
    if (m_indentOn) {
        putIndent();
    }
    put('"');
    putNumber(key);
    put("\":", 2);
    m_needComma = false;
    commit();
}

void JsonStream::writeValue(const std::string& value) {
    writeQuotedValue(value.data(), value.size());
}

void JsonStream::writeValue(const char* value) {
    writeQuotedValue(value, value != nullptr ? std::strlen(value) : 0);
}

void JsonStream::writeQuotedValue(const char* value, std::size_t length) {
    begin();
    separator();
    if (m_indentOn) {
        putIndent();
    }
    put('"');
    putEscaped(value, length);
    put('"');
    commit();
}

void JsonStream::writeEncodedValue(const std::string& value) {
    begin();
    separator();
    if (m_indentOn) {
        putIndent();
    }
    put('"');
    put(value);
    put('"');
    commit();
}

void JsonStream::writeValue(bool value) {
    begin();
    separator();
    if (m_indentOn) {
        putIndent();
    }
    put(boolText(value), value ? 4 : 5);
    commit();
}

void JsonStream::writeValue(int value) {
    begin();
    separator();
    if (m_indentOn) {
        putIndent();
    }
    putNumber(value);
    commit();
}

void JsonStream::writeValue(float value) { writeValue(static_cast<double>(value)); }

void JsonStream::writeValue(double value) {
    begin();
    separator();
    if (m_indentOn) {
        putIndent();
    }
    putNumber(value);
    commit();
}

void JsonStream::writeValue(const DateTime& value) {
    begin();
    separator();
    if (m_indentOn) {
        putIndent();
    }
    putDate(value);
    commit();
}

// The object's own first token (its opening brace) writes the separator; one written here as
// well would put a second comma and line feed in front of it.
void JsonStream::writeValue(const BaseObject& value) { value.writeJSON(this); }

// ---- attributes: "name":value, nothing at all when absent ----

// The separator, the indent (always, whatever indentOn says) and "name":.
void JsonStream::beginAttribute(const std::string& name) {
    begin();
    separator();
    putIndent();
    putQuotedName(name);
}

void JsonStream::writeAttribute(const std::string& name, const std::string& value, bool present) {
    if (present) {
        writeQuotedAttribute(name, value.data(), value.size());
    }
}

void JsonStream::writeAttribute(const std::string& name, const char* value, bool present) {
    if (present) {
        writeQuotedAttribute(name, value, value != nullptr ? std::strlen(value) : 0);
    }
}

void JsonStream::writeQuotedAttribute(const std::string& name, const char* value,
                                      std::size_t length) {
    beginAttribute(name);
    put('"');
    putEscaped(value, length);
    put('"');
    commit();
}

void JsonStream::writeAttribute(const std::string& name, bool value, bool present) {
    if (!present) {
        return;
    }
    beginAttribute(name);
    put(boolText(value), value ? 4 : 5);
    commit();
}

void JsonStream::writeAttribute(const std::string& name, int value, bool present) {
    if (!present) {
        return;
    }
    beginAttribute(name);
    putNumber(value);
    commit();
}

void JsonStream::writeAttribute(const std::string& name, float value, bool present) {
    writeAttribute(name, static_cast<double>(value), present);
}

void JsonStream::writeAttribute(const std::string& name, double value, bool present) {
    if (!present) {
        return;
    }
    beginAttribute(name);
    putNumber(value);
    commit();
}

void JsonStream::writeAttribute(const std::string& name, const DateTime& value, bool present) {
    if (!present) {
        return;
    }
    beginAttribute(name);
    putDate(value);
    commit();
}

void JsonStream::writeEncodedAttribute(const std::string& name, const std::string& value) {
    beginAttribute(name);
    put('"');
    put(value);
    put('"');
    commit();
}

// ---- one-member objects on one line ----

void JsonStream::writeObject(const std::string& name, const std::string& value, bool present) {
    if (present) {
        writeTextObject(name, value.data(), value.size());
    }
}

void JsonStream::writeObject(const std::string& name, const char* value, bool present) {
    if (present) {
        writeTextObject(name, value, value != nullptr ? std::strlen(value) : 0);
    }
}

void JsonStream::writeTextObject(const std::string& name, const char* value, std::size_t length) {
    begin();
    separator();
    putIndent();
    put("{\"", 2);
    put(name);
    put("\":\"", 3);
    put(value, length);
    put("\"}", 2);
    commit();
}

void JsonStream::writeObject(const std::string& name, bool value, bool present) {
    if (!present) {
        return;
    }
    begin();
    separator();
    putIndent();
    put("{\"", 2);
    put(name);
    put("\":", 2);
    put(boolText(value), value ? 4 : 5);
    put('}');
    commit();
}

void JsonStream::writeCommaAndLineFeed() {
    begin();
    separator();
    commit();
}

// ---- collections ----

// "name":, a line feed, then the bracket one level in; the items follow a level deeper. The
// text is handed over before the items write themselves.
void JsonStream::writeFrameOpen(const std::string& name, char bracket) {
    begin();
    separator();
    putIndent();
    put('"');
    put(name);
    put("\":\n", 3);
    putIndent();
    put(bracket);
    m_needComma = false;
    raiseLevel();
    commit();
}

void JsonStream::writeFrameClose(char bracket) {
    begin();
    lowerLevel();
    put('\n');
    putIndent();
    put(bracket);
    commit();
}

void JsonStream::writeVector(const std::vector<BaseObject*>& items, const std::string& name) {
    if (items.empty()) {
        return;
    }
    if (items.front() != nullptr && items.front()->isJsonMapEntry()) {
        writeVectorMap(items, name);
        return;
    }
    writeFrameOpen(name, '[');
    for (const BaseObject* item : items) {
        if (item != nullptr) {
            item->writeJSON(this);
            m_needComma = true;
        }
    }
    writeFrameClose(']');
}

void JsonStream::writeVectorMap(const std::vector<BaseObject*>& items, const std::string& name) {
    if (items.empty()) {
        return;
    }
    writeFrameOpen(name, '{');
    for (const BaseObject* entry : items) {
        if (entry == nullptr) {
            continue;
        }
        entry->writeJSONKey(this);
        write(":", 1);
        // The value follows the colon directly: no comma, no line feed, no indent.
        m_needComma = false;
        m_started = false;
        m_indentOn = false;
        entry->writeJSONValue(this);
        m_indentOn = true;
        m_needComma = true;
    }
    writeFrameClose('}');
}

void JsonStream::writeMap(const std::vector<BaseObject*>& items, const std::string& name) {
    if (items.empty()) {
        return;
    }
    writeFrameOpen(name, '{');
    for (const BaseObject* entry : items) {
        if (entry != nullptr) {
            entry->writeJSON(this);
            m_needComma = true;
        }
    }
    writeFrameClose('}');
}

// "name":["a","b"] on one line. The array is a member like any other: the token after it is
// separated by a comma and a line feed, as after a value.
void JsonStream::writeStringVector(const std::vector<std::string>& values, const std::string& name,
                                   bool escape) {
    if (values.empty()) {
        return;
    }
    beginAttribute(name);
    put('[');
    bool first = true;
    for (const std::string& value : values) {
        put(first ? "\"" : ",\"", first ? 1 : 2);
        first = false;
        if (escape) {
            putEscaped(value.data(), value.size());
        } else {
            put(value);
        }
        put('"');
    }
    put(']');
    commit();
}

void JsonStream::writeEncodedVector(const std::vector<std::string>& values,
                                    const std::string& name) {
    writeStringVector(values, name, false);
}

void JsonStream::writeVector(const std::vector<std::string>& values, const std::string& name) {
    writeStringVector(values, name, true);
}

}  // namespace Corvane::Soa::Common::Xml
