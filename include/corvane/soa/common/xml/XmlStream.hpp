#ifndef CORVANE_SOA_COMMON_XML_XMLSTREAM_HPP
#define CORVANE_SOA_COMMON_XML_XMLSTREAM_HPP

#include <corvane/soa/Export.hpp>

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace Corvane::Soa::Common::Xml {

class StringStream;
class Utf8String;

/// Forward-only XML writer through which every data type writes its XML form.
///
/// It keeps the namespace URIs of the document with their generated prefixes (ns0, ns1, ... in
/// the order of addition), declares all of them on the root element, and prefixes element names.
/// Every element start begins on a new line; nothing else adds line breaks or indentation.
/// Values and attribute values are written as given: callers escape them with `toXmlString`.
///
/// Each operation hands its text to the output stream's buffer in one piece. Failures of the
/// output stream stay in that stream's state.
class CORVANE_SOA_API XmlStream {
public:
    /// An attribute of `writeOpenElement`: name and value.
    struct NameValuePair {
        NameValuePair() = default;
        NameValuePair(std::string n, std::string v) : name(std::move(n)), value(std::move(v)) {}
        std::string name;
        std::string value;
    };

    /// Writes into a buffer of its own; see `str()`.
    XmlStream();
    /// Writes into `out`, which it does not own.
    explicit XmlStream(std::ostream* out);
    /// Writes into `out`; `transcoder` converts local text to UTF-8 for the callers that use it.
    XmlStream(std::ostream* out, Utf8String* transcoder);
    XmlStream(const XmlStream&) = delete;
    XmlStream& operator=(const XmlStream&) = delete;
    ~XmlStream();

    XmlStream& operator<<(const char* text);
    XmlStream& operator<<(const std::string& text);

    /// True until the first element start has been written.
    bool isRootElement() const noexcept { return m_rootPending; }

    bool addNamespace(const std::string& uri);
    void addNamespaces(std::set<std::string> uris);
    std::string getNamespacePrefix(const std::string& uri) const;

    /// "\n<" and the (prefixed) name, with the namespace declarations when it is the root;
    /// the start tag stays open for attributes.
    void writeOpenElement(const std::string& ns, const std::string& name);
    /// A complete start tag with the given attributes.
    void writeOpenElement(const std::string& ns, const std::string& name,
                          const std::vector<NameValuePair>& attributes);
    void writeAttribute(const std::string& name, const std::string& value);
    /// Closes the start tag: "/>" when `empty`, ">" otherwise.
    void writeOpenElementClose(const std::string& name, bool empty);
    void writeCloseElement(const std::string& ns, const std::string& name);

    void writeStringElement(const std::string& name, const std::string& value);
    void writeBooleanElement(const std::string& name, bool value);
    void writeIntegerElement(const std::string& name, int value);
    void writeFloatElement(const std::string& name, float value);
    void writeDoubleElement(const std::string& name, double value);

    /// The text written so far into the stream's own buffer; empty when writing to a caller's
    /// stream.
    std::string str() const;
    void str(std::string& out) const;

    Utf8String* getUtf8Transcoder() const noexcept { return m_transcoder; }

private:
    void removeNamespace(const std::string& uri);
    void appendElementName(const std::string& ns, const std::string& name);
    void appendElementStart(const std::string& ns, const std::string& name);
    void flushScratch();
    void write(const char* text, std::size_t length);
    char* directRoom(std::size_t length);
    void commitDirect(std::size_t length);

    // Longest text copied straight into the output's put area (pbump counts in int).
    static constexpr std::size_t kDirect = std::size_t{1} << 30U;

    std::map<std::string, std::string> m_namespaces;
    int m_prefixCounter = 0;
    bool m_rootPending = true;
    std::ostream* m_out;
    StringStream* m_ownedBuffer = nullptr;
    Utf8String* m_transcoder = nullptr;
    std::string m_scratch;  // one operation's text, handed to the output in one piece
};

}  // namespace Corvane::Soa::Common::Xml

#endif
