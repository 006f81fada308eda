#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/StringStream.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>

#include <cstring>

namespace Corvane::Soa::Common::Xml {

namespace {
constexpr char kPrefixStem[] = "ns";

// The put area of a stream buffer, which std::streambuf keeps protected: a pointer to member
// formed through a derived class reaches it on any buffer. Text that fits is copied straight in,
// without a virtual call per piece.
class PutArea : public std::streambuf {
public:
    static char* reserve(std::streambuf& buffer, std::size_t length) {
        char* next = (buffer.*&PutArea::pptr)();
        char* end = (buffer.*&PutArea::epptr)();
        return next != nullptr && static_cast<std::size_t>(end - next) >= length ? next : nullptr;
    }
    static void commit(std::streambuf& buffer, std::size_t length) {
        (buffer.*&PutArea::pbump)(static_cast<int>(length));
    }
};

char* put(char* out, const std::string& text) { return out + text.copy(out, text.size()); }
}  // namespace

XmlStream::XmlStream() : m_out(nullptr), m_ownedBuffer(new StringStream) { m_out = m_ownedBuffer; }

XmlStream::XmlStream(std::ostream* out) : m_out(out) {}

XmlStream::XmlStream(std::ostream* out, Utf8String* transcoder)
    : m_out(out), m_transcoder(transcoder) {}

XmlStream::~XmlStream() { delete m_ownedBuffer; }

// Text goes to the stream buffer directly: a formatted insertion per token would build a sentry
// each time, which costs more than the copy itself.
void XmlStream::write(const char* text, std::size_t length) {
    std::streambuf* buffer = m_out->rdbuf();
    if (buffer != nullptr && m_out->good() && length <= kDirect) {
        if (char* out = PutArea::reserve(*buffer, length)) {
            std::memcpy(out, text, length);
            PutArea::commit(*buffer, length);
            return;
        }
    }
    const auto wanted = static_cast<std::streamsize>(length);
    if (buffer == nullptr || !m_out->good() || buffer->sputn(text, wanted) != wanted) {
        m_out->setstate(std::ios_base::badbit);
    }
}

// Where the text of `length` bytes can be written straight into the output's put area, or null.
char* XmlStream::directRoom(std::size_t length) {
    std::streambuf* buffer = m_out->rdbuf();
    if (buffer == nullptr || !m_out->good() || length > kDirect) {
        return nullptr;
    }
    return PutArea::reserve(*buffer, length);
}

void XmlStream::commitDirect(std::size_t length) { PutArea::commit(*m_out->rdbuf(), length); }

void XmlStream::flushScratch() {
    write(m_scratch.data(), m_scratch.size());
    m_scratch.clear();
}

XmlStream& XmlStream::operator<<(const char* text) {
    write(text, std::strlen(text));
    return *this;
}

XmlStream& XmlStream::operator<<(const std::string& text) {
    write(text.data(), text.size());
    return *this;
}

bool XmlStream::addNamespace(const std::string& uri) {
    if (m_namespaces.count(uri) != 0) {
        return false;
    }
    m_namespaces.emplace(uri, kPrefixStem + std::to_string(m_prefixCounter));
    ++m_prefixCounter;
    return true;
}

// The interface takes the set by value, as callers hand over a copy.
void XmlStream::addNamespaces(
    std::set<std::string> uris) {  // NOLINT(performance-unnecessary-value-param)
    for (const std::string& uri : uris) {
        addNamespace(uri);
    }
}

std::string XmlStream::getNamespacePrefix(const std::string& uri) const {
    const auto entry = m_namespaces.find(uri);
    return entry != m_namespaces.end() ? entry->second : std::string();
}

void XmlStream::removeNamespace(const std::string& uri) { m_namespaces.erase(uri); }

void XmlStream::appendElementName(const std::string& ns, const std::string& name) {
    if (name.find(':') == std::string::npos) {
        const auto entry = m_namespaces.find(ns);
        if (entry != m_namespaces.end() && !entry->second.empty()) {
            m_scratch.append(entry->second);
            m_scratch.push_back(':');
        }
    }
    m_scratch.append(name);
}

void XmlStream::appendElementStart(const std::string& ns, const std::string& name) {
    m_scratch.append("\n<", 2);
    appendElementName(ns, name);
    if (m_rootPending) {
        for (const auto& [uri, prefix] : m_namespaces) {
            m_scratch.append(" xmlns:").append(prefix).append("=\"", 2).append(uri);
            m_scratch.push_back('"');
        }
        m_rootPending = false;
    }
}

void XmlStream::writeOpenElement(const std::string& ns, const std::string& name) {
    appendElementStart(ns, name);
    flushScratch();
}

void XmlStream::writeOpenElement(const std::string& ns, const std::string& name,
                                 const std::vector<NameValuePair>& attributes) {
    appendElementStart(ns, name);
    for (const NameValuePair& attribute : attributes) {
        m_scratch.push_back(' ');
        m_scratch.append(attribute.name).append("=\"", 2).append(attribute.value);
        m_scratch.push_back('"');
    }
    m_scratch.push_back('>');
    flushScratch();
}

void XmlStream::writeAttribute(const std::string& name, const std::string& value) {
    const std::size_t length = name.size() + value.size() + 4;
    if (char* out = directRoom(length)) {
        *out++ = ' ';
        out = put(out, name);
        *out++ = '=';
        *out++ = '"';
        out = put(out, value);
        *out = '"';
        commitDirect(length);
        return;
    }
    m_scratch.push_back(' ');
    m_scratch.append(name).append("=\"", 2).append(value);
    m_scratch.push_back('"');
    flushScratch();
}

void XmlStream::writeOpenElementClose(const std::string& /*name*/, bool empty) {
    if (empty) {
        write("/>", 2);
    } else {
        write(">", 1);
    }
}

void XmlStream::writeCloseElement(const std::string& ns, const std::string& name) {
    m_scratch.append("</", 2);
    appendElementName(ns, name);
    m_scratch.push_back('>');
    flushScratch();
}

void XmlStream::writeStringElement(const std::string& name, const std::string& value) {
    m_scratch.push_back('<');
    m_scratch.append(name);
    m_scratch.push_back('>');
    m_scratch.append(value).append("</", 2).append(name);
    m_scratch.push_back('>');
    flushScratch();
}

void XmlStream::writeBooleanElement(const std::string& name, bool value) {
    writeStringElement(name, value ? "1" : "0");
}

void XmlStream::writeIntegerElement(const std::string& name, int value) {
    writeStringElement(name, lexical_cast<std::string>(value));
}

void XmlStream::writeFloatElement(const std::string& name, float value) {
    writeStringElement(name, lexical_cast<std::string>(value));
}

void XmlStream::writeDoubleElement(const std::string& name, double value) {
    writeStringElement(name, lexical_cast<std::string>(value));
}

std::string XmlStream::str() const {
    return m_ownedBuffer != nullptr ? m_ownedBuffer->str() : std::string();
}

void XmlStream::str(std::string& out) const { out = str(); }

}  // namespace Corvane::Soa::Common::Xml
