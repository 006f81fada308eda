#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>

#include "XmlTextAppend.hpp"

#include <charconv>
#include <cstring>

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
    const auto wanted = static_cast<std::streamsize>(length);
    if (buffer == nullptr || !m_out->good() || buffer->sputn(text, wanted) != wanted) {
        m_out->setstate(std::ios_base::badbit);
    }
}

void JsonStream::flush() {
    write(m_buffer.data(), m_buffer.size());
    m_buffer.clear();
}

JsonStream& JsonStream::operator<<(const char* text) {
    if (text != nullptr) {
        write(text, std::strlen(text));
    }
    return *this;
}

JsonStream& JsonStream::operator<<(const std::string& text) {
    write(text);
    return *this;
}

// ---- layout ----

void JsonStream::separator() {
    if (m_needComma) {
        m_buffer.push_back(',');
    }
    if (!m_atStart && m_started) {
        m_buffer.push_back('\n');
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

void JsonStream::writeIndentIf(bool on) {
    if (on) {
        m_buffer.append(m_indent);
    }
}

// ---- pieces of text ----

void JsonStream::writeEscaped(const std::string& value) {
    writeEscaped(value.data(), value.size());
}

void JsonStream::writeEscaped(const char* value, std::size_t length) {
    if (m_transcoder == nullptr) {
        appendJsonString(m_buffer, value, length);
        return;
    }
    m_escaped.clear();
    appendJsonString(m_escaped, value, length);
    try {
        m_transcoder->encode(m_escaped, m_buffer);
    } catch (...) {
        m_buffer.clear();  // the failed operation leaves no text behind
        throw;
    }
}

void JsonStream::writeQuotedName(const std::string& name) {
    m_buffer.push_back('"');
    m_buffer.append(name).append("\":", 2);
}

void JsonStream::writeNumber(int value) {
    char text[16];
    const auto result = std::to_chars(text, text + sizeof text, value);
    m_buffer.append(text, result.ptr);
}

// The text of lexical_cast<std::string>(double) (17 significant digits, the shorter of fixed
// and scientific notation), formatted on the stack instead of in a string of its own. Floats
// are widened first, as there.
void JsonStream::writeNumber(double value) {
    char text[32];
    const auto result =
        std::to_chars(text, text + sizeof text, value, std::chars_format::general, 17);
    m_buffer.append(text, result.ptr);
}

void JsonStream::writeDate(const DateTime& value) {
    m_buffer.push_back('"');
    m_buffer.append(lexical_cast<std::string>(value));
    m_buffer.push_back('"');
}

// ---- objects, arrays, maps ----

void JsonStream::writeObjectOpen() {
    separator();
    m_buffer.append(m_indent).push_back('{');
    m_needComma = false;
    m_atStart = false;
    raiseLevel();
    flush();
}

void JsonStream::writeObjectOpen(const std::string& qualifiedName) {
    separator();
    m_buffer.append(m_indent).push_back('{');
    m_needComma = false;
    raiseLevel();
    if (m_atStart) {
        m_atStart = false;
        separator();
        m_buffer.append(m_indent).append("\".QName\":\"", 10);
        writeEscaped(qualifiedName);
        m_buffer.push_back('"');
    }
    flush();
}

void JsonStream::writeObjectClose() {
    lowerLevel();
    m_buffer.push_back('\n');
    m_buffer.append(m_indent).push_back('}');
    m_needComma = true;
    flush();
}

void JsonStream::writeArrayOpen() {
    separator();
    m_buffer.append(m_indent).push_back('[');
    m_needComma = false;
    m_atStart = false;
    raiseLevel();
    flush();
}

void JsonStream::writeArrayClose() {
    lowerLevel();
    m_buffer.push_back('\n');
    m_buffer.append(m_indent).push_back(']');
    m_needComma = true;
    flush();
}

void JsonStream::writeMapOpen() {
    separator();
    m_buffer.append(m_indent).push_back('[');
    m_needComma = false;
    m_atStart = false;
    raiseLevel();
    flush();
}

// Opens with a brace, while writeMapClose closes with a bracket: readers of this output expect
// exactly that pair.
void JsonStream::writeMapOpen(const std::string& key) {
    separator();
    m_buffer.append(m_indent).push_back('"');
    m_buffer.append(key).append("\":\n", 3).append(m_indent).push_back('{');
    m_needComma = false;
    raiseLevel();
    flush();
}

void JsonStream::writeMapClose() { writeArrayClose(); }

// ---- keys and values ----

void JsonStream::writeKey(const std::string& key) {
    separator();
    writeIndentIf(m_indentOn);
    writeQuotedName(key);
    m_needComma = false;
    flush();
}

void JsonStream::writeKey(int key) {
    separator();
    writeIndentIf(m_indentOn);
    m_buffer.push_back('"');
    writeNumber(key);
    m_buffer.append("\":", 2);
    m_needComma = false;
    flush();
}

void JsonStream::writeValue(const std::string& value) {
    separator();
    writeIndentIf(m_indentOn);
    m_buffer.push_back('"');
    writeEscaped(value);
    m_buffer.push_back('"');
    flush();
}

void JsonStream::writeValue(const char* value) {
    separator();
    writeIndentIf(m_indentOn);
    m_buffer.push_back('"');
    if (value != nullptr) {
        writeEscaped(value, std::strlen(value));
    }
    m_buffer.push_back('"');
    flush();
}

void JsonStream::writeEncodedValue(const std::string& value) {
    separator();
    writeIndentIf(m_indentOn);
    m_buffer.push_back('"');
    m_buffer.append(value).push_back('"');
    flush();
}

void JsonStream::writeValue(bool value) {
    separator();
    writeIndentIf(m_indentOn);
    m_buffer.append(boolText(value));
    flush();
}

void JsonStream::writeValue(int value) {
    separator();
    writeIndentIf(m_indentOn);
    writeNumber(value);
    flush();
}

void JsonStream::writeValue(float value) { writeValue(static_cast<double>(value)); }

void JsonStream::writeValue(double value) {
    separator();
    writeIndentIf(m_indentOn);
    writeNumber(value);
    flush();
}

void JsonStream::writeValue(const DateTime& value) {
    separator();
    writeIndentIf(m_indentOn);
    writeDate(value);
    flush();
}

// The object's own first token (its opening brace) writes the separator; one written here as
// well would put a second comma and line feed in front of it.
void JsonStream::writeValue(const BaseObject& value) { value.writeJSON(this); }

// ---- attributes: "name":value, nothing at all when absent ----

void JsonStream::writeAttribute(const std::string& name, const std::string& value, bool present) {
    if (!present) {
        return;
    }
    separator();
    m_buffer.append(m_indent);
    writeQuotedName(name);
    m_buffer.push_back('"');
    writeEscaped(value);
    m_buffer.push_back('"');
    flush();
}

void JsonStream::writeAttribute(const std::string& name, const char* value, bool present) {
    if (!present) {
        return;
    }
    separator();
    m_buffer.append(m_indent);
    writeQuotedName(name);
    m_buffer.push_back('"');
    if (value != nullptr) {
        writeEscaped(value, std::strlen(value));
    }
    m_buffer.push_back('"');
    flush();
}

void JsonStream::writeAttribute(const std::string& name, bool value, bool present) {
    if (!present) {
        return;
    }
    separator();
    m_buffer.append(m_indent);
    writeQuotedName(name);
    m_buffer.append(boolText(value));
    flush();
}

void JsonStream::writeAttribute(const std::string& name, int value, bool present) {
    if (!present) {
        return;
    }
    separator();
    m_buffer.append(m_indent);
    writeQuotedName(name);
    writeNumber(value);
    flush();
}

void JsonStream::writeAttribute(const std::string& name, float value, bool present) {
    writeAttribute(name, static_cast<double>(value), present);
}

void JsonStream::writeAttribute(const std::string& name, double value, bool present) {
    if (!present) {
        return;
    }
    separator();
    m_buffer.append(m_indent);
    writeQuotedName(name);
    writeNumber(value);
    flush();
}

void JsonStream::writeAttribute(const std::string& name, const DateTime& value, bool present) {
    if (!present) {
        return;
    }
    separator();
    m_buffer.append(m_indent);
    writeQuotedName(name);
    writeDate(value);
    flush();
}

void JsonStream::writeEncodedAttribute(const std::string& name, const std::string& value) {
    separator();
    m_buffer.append(m_indent);
    writeQuotedName(name);
    m_buffer.push_back('"');
    m_buffer.append(value).push_back('"');
    flush();
}

// ---- one-member objects on one line ----

void JsonStream::writeObject(const std::string& name, const std::string& value, bool present) {
    if (!present) {
        return;
    }
    separator();
    m_buffer.append(m_indent).append("{\"", 2).append(name).append("\":\"", 3).append(value);
    m_buffer.append("\"}", 2);
    flush();
}

void JsonStream::writeObject(const std::string& name, const char* value, bool present) {
    if (!present) {
        return;
    }
    separator();
    m_buffer.append(m_indent).append("{\"", 2).append(name).append("\":\"", 3);
    if (value != nullptr) {
        m_buffer.append(value);
    }
    m_buffer.append("\"}", 2);
    flush();
}

void JsonStream::writeObject(const std::string& name, bool value, bool present) {
    if (!present) {
        return;
    }
    separator();
    m_buffer.append(m_indent).append("{\"", 2).append(name).append("\":", 2);
    m_buffer.append(boolText(value)).push_back('}');
    flush();
}

void JsonStream::writeCommaAndLineFeed() {
    separator();
    flush();
}

// ---- collections ----

// "name":, a line feed, then the bracket one level in; the items follow a level deeper. The
// text is handed over before the items write themselves.
void JsonStream::writeFrameOpen(const std::string& name, char bracket) {
    separator();
    m_buffer.append(m_indent).push_back('"');
    m_buffer.append(name).append("\":\n", 3).append(m_indent).push_back(bracket);
    m_needComma = false;
    raiseLevel();
    flush();
}

void JsonStream::writeFrameClose(char bracket) {
    lowerLevel();
    m_buffer.push_back('\n');
    m_buffer.append(m_indent).push_back(bracket);
    flush();
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
    separator();
    m_buffer.append(m_indent);
    writeQuotedName(name);
    m_buffer.push_back('[');
    bool first = true;
    for (const std::string& value : values) {
        m_buffer.append(first ? "\"" : ",\"", first ? 1 : 2);
        first = false;
        if (escape) {
            writeEscaped(value);
        } else {
            m_buffer.append(value);
        }
        m_buffer.push_back('"');
    }
    m_buffer.push_back(']');
    flush();
}

void JsonStream::writeEncodedVector(const std::vector<std::string>& values,
                                    const std::string& name) {
    writeStringVector(values, name, false);
}

void JsonStream::writeVector(const std::vector<std::string>& values, const std::string& name) {
    writeStringVector(values, name, true);
}

}  // namespace Corvane::Soa::Common::Xml
