#ifndef CORVANE_SOA_COMMON_XML_JSONSTREAM_HPP
#define CORVANE_SOA_COMMON_XML_JSONSTREAM_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AccountedAllocation.hpp>

#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace Corvane::Soa::Common {
class DateTime;
}  // namespace Corvane::Soa::Common

namespace Corvane::Soa::Common::Xml {

class BaseObject;
class Utf8String;

/// Streaming JSON writer through which every serialisable object writes its JSON form. It builds
/// no tree: callers open, write and close in document order, and the stream decides the commas,
/// line feeds and indentation.
///
/// Every token-writing operation first writes the separator: "," when a comma is due, then a line
/// feed unless nothing has been opened yet. Indentation follows a process-wide table of 18 levels
/// (`setTabSize`, 0 blanks per level unless set); deeper nesting keeps the deepest indent.
/// `writeMapOpen(key)` opens with "{" while `writeMapClose()` closes with "]": callers rely on it.
class CORVANE_SOA_API JsonStream {
public:
    explicit JsonStream(std::ostream* out);
    JsonStream(std::ostream* out, Utf8String* transcoder);
    JsonStream(const JsonStream&) = delete;
    JsonStream& operator=(const JsonStream&) = delete;
    ~JsonStream();

    /// Rebuilds the shared indent table with `size` blanks per level.
    static void setTabSize(std::size_t size);

    Utf8String* getUtf8Transcoder() const noexcept { return m_transcoder; }
    /// True until the first object, array or map has been opened (`writeObjectOpen`,
    /// `writeArrayOpen`, `writeMapOpen()`); until then no token is preceded by a line feed. A
    /// keyed `writeMapOpen(key)` and the collection writers leave it true.
    bool isEmpty() const noexcept { return m_atStart; }

    /// Raw text, with no layout handling.
    JsonStream& operator<<(const char* text);
    JsonStream& operator<<(const std::string& text);

    void writeObjectOpen();
    /// Opens an object; the first object of the stream also carries ".QName".
    void writeObjectOpen(const std::string& qualifiedName);
    void writeObjectClose();
    void writeArrayOpen();
    void writeArrayClose();
    void writeMapOpen();
    void writeMapOpen(const std::string& key);
    void writeMapClose();

    void writeKey(const std::string& key);
    void writeKey(int key);

    void writeValue(const std::string& value);
    void writeValue(const char* value);
    void writeEncodedValue(const std::string& value);
    void writeValue(bool value);
    void writeValue(int value);
    void writeValue(float value);
    void writeValue(double value);
    void writeValue(const DateTime& value);
    /// The object's own `writeJSON(this)`; its first token writes the separator.
    void writeValue(const BaseObject& value);

    void writeAttribute(const std::string& name, const std::string& value, bool present);
    void writeAttribute(const std::string& name, const char* value, bool present);
    void writeAttribute(const std::string& name, bool value, bool present);
    void writeAttribute(const std::string& name, int value, bool present);
    void writeAttribute(const std::string& name, float value, bool present);
    void writeAttribute(const std::string& name, double value, bool present);
    void writeAttribute(const std::string& name, const DateTime& value, bool present);
    void writeEncodedAttribute(const std::string& name, const std::string& value);

    /// A one-member object on one line: {"name":"value"}.
    void writeObject(const std::string& name, const std::string& value, bool present);
    void writeObject(const std::string& name, const char* value, bool present);
    /// A one-member object on one line: {"name":true}.
    void writeObject(const std::string& name, bool value, bool present);

    /// Only the separator.
    void writeCommaAndLineFeed();

    /// "name": [ items ] — or, when the items are map entries, `writeVectorMap`.
    void writeVector(const std::vector<BaseObject*>& items, const std::string& name);
    /// "name": { key:value, ... } from map entries.
    void writeVectorMap(const std::vector<BaseObject*>& items, const std::string& name);
    /// "name": { entries each written whole }.
    void writeMap(const std::vector<BaseObject*>& items, const std::string& name);
    /// "name":["a","b"] on one line, values unescaped. The next token is separated from it like
    /// from any value.
    void writeEncodedVector(const std::vector<std::string>& values, const std::string& name);
    /// "name":["a","b"] on one line, values escaped.
    void writeVector(const std::vector<std::string>& values, const std::string& name);

    CORVANE_SOA_ACCOUNTED_ALLOCATION("JsonStream")

private:
    // Every operation writes its text through the raw cursor `m_next`: straight into the output
    // stream's put area when there is room, else into `m_buffer`. It becomes part of the output
    // in one piece at the operation's end (`commit`), so that text written to the same
    // std::ostream between two operations stays in order and a failed operation leaves nothing
    // behind.
    void begin();
    void commit();
    void separator();
    void raiseLevel();
    void lowerLevel();
    void reserve(std::size_t size);
    void grow(std::size_t size);
    void put(char c);
    void put(const char* text, std::size_t length);
    void put(const std::string& text) { put(text.data(), text.size()); }
    void putIndent() { put(m_indent); }
    void putEscaped(const char* value, std::size_t length);
    void putQuotedName(const std::string& name);
    void putNumber(int value);
    void putNumber(double value);
    void putDate(const DateTime& value);
    void beginAttribute(const std::string& name);
    void writeQuotedValue(const char* value, std::size_t length);
    void writeQuotedAttribute(const std::string& name, const char* value, std::size_t length);
    void writeTextObject(const std::string& name, const char* value, std::size_t length);
    void writeStringVector(const std::vector<std::string>& values, const std::string& name,
                           bool escape);
    void writeOpen(char bracket);
    void writeClose(char bracket);
    void writeFrameOpen(const std::string& name, char bracket);
    void writeFrameClose(char bracket);
    void write(const char* text, std::size_t length);

    int m_level = 0;
    std::string m_indent;
    bool m_needComma = false;
    bool m_atStart = true;
    bool m_started = true;
    bool m_indentOn = true;
    std::ostream* m_out;
    Utf8String* m_transcoder = nullptr;
    std::string m_buffer;                // room for an operation's text when the output has none
    std::streambuf* m_direct = nullptr;  // the output buffer the operation writes in, if any
    char* m_next = nullptr;              // where the operation's next byte goes
    char* m_limit = nullptr;             // end of its room
    std::string m_escaped;               // escaped text awaiting transcoding
    std::string m_transcoded;            // its transcoded form
    std::string m_dateText;              // a date's wire text
};

}  // namespace Corvane::Soa::Common::Xml

#endif
