#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLDocumentHandler.hpp>
#include <xercesc/sax/InputSource.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXException.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDGrammar.hpp>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <mutex>
#include <string>

namespace Corvane::Soa::Common::Xml {

using Exceptions::DomException;
namespace X = XERCES_CPP_NAMESPACE;

namespace {

constexpr const char* kDtdMessage = "Document Type Defintions are not permited in XML documents.";
constexpr const char* kTooDeepMessage = "The XML document is nested too deeply.";
constexpr const char* kStringSystemId = "From-String";
constexpr const char* kStringName = "From String";
constexpr const char* kStreamSystemId = "From-std::istream";
constexpr const char* kStreamName = "From std::istream";

// The XML Schema instance namespace, whose "type" attribute names the element's type.
constexpr char16_t kXsiUri[] = u"http://www.w3.org/2001/XMLSchema-instance";
constexpr char16_t kType[] = u"type";

std::atomic<bool> s_replaceHexOneA{false};

// The library has no initialisation call: Xerces is brought up on first use, once per
// process, and stays up until the process ends.
void initializeXerces() {
    static std::once_flag once;
    std::call_once(once, [] { X::XMLPlatformUtils::Initialize(); });
}

bool equals(const XMLCh* text, const char16_t* expected) {
    return text != nullptr && X::XMLString::equals(text, expected);
}

std::size_t lengthOf(const XMLCh* text) {
    return text == nullptr ? 0 : std::char_traits<char16_t>::length(text);
}

// Reads a standard stream for Xerces. The stream is not owned.
class IStreamBinInputStream : public X::BinInputStream {
public:
    explicit IStreamBinInputStream(std::istream& in) : m_in(in) {}

    XMLFilePos curPos() const override { return m_position; }
    XMLSize_t readBytes(XMLByte* const toFill, const XMLSize_t maxToRead) override {
        if (!m_in.good()) {
            return 0;
        }
        m_in.read(reinterpret_cast<char*>(toFill), static_cast<std::streamsize>(maxToRead));
        const auto count = static_cast<XMLSize_t>(m_in.gcount());
        m_position += count;
        return count;
    }
    const XMLCh* getContentType() const override { return nullptr; }

private:
    std::istream& m_in;
    XMLFilePos m_position = 0;
};

class IStreamInputSource : public X::InputSource {
public:
    IStreamInputSource(std::istream& in, const char* systemId)
        : X::InputSource(systemId), m_in(in) {}

    X::BinInputStream* makeStream() const override { return new IStreamBinInputStream(m_in); }

private:
    std::istream& m_in;
};

// XML 1.x: "1." and one or more digits, nothing around them.
bool isXmlVersion(const XMLCh* version) {
    if (version == nullptr || version[0] != u'1' || version[1] != u'.' || version[2] == 0) {
        return false;
    }
    for (const XMLCh* c = version + 2; *c != 0; ++c) {
        if (*c < u'0' || *c > u'9') {
            return false;
        }
    }
    return true;
}

// Sees the XML declaration, which no SAX callback reports. Xerces lets a version with trailing
// blanks ("1.0 ") pass; the grammar does not.
class DeclarationCheck : public X::XMLDocumentHandler {
public:
    using Refuse = void (*)(void* owner, const XMLCh* version);
    DeclarationCheck(void* owner, Refuse refuse) : m_owner(owner), m_refuse(refuse) {}

    void XMLDecl(const XMLCh* const version, const XMLCh* const, const XMLCh* const,
                 const XMLCh* const) override {
        if (lengthOf(version) != 0 && !isXmlVersion(version)) {
            m_refuse(m_owner, version);
        }
    }
    void docCharacters(const XMLCh* const, const XMLSize_t, const bool) override {}
    void docComment(const XMLCh* const) override {}
    void docPI(const XMLCh* const, const XMLCh* const) override {}
    void endDocument() override {}
    void endElement(const X::XMLElementDecl&, const unsigned int, const bool,
                    const XMLCh* const) override {}
    void endEntityReference(const X::XMLEntityDecl&) override {}
    void ignorableWhitespace(const XMLCh* const, const XMLSize_t, const bool) override {}
    void resetDocument() override {}
    void startDocument() override {}
    void startElement(const X::XMLElementDecl&, const unsigned int, const XMLCh* const,
                      const X::RefVectorOf<X::XMLAttr>&, const XMLSize_t, const bool,
                      const bool) override {}
    void startEntityReference(const X::XMLEntityDecl&) override {}

private:
    void* m_owner;
    Refuse m_refuse;
};

}  // namespace

// The Xerces handler behind the parser: builds the tree and turns every failure into a
// DomException.
class SAXToNodeParser::Impl : public X::DefaultHandler {
public:
    Impl() = default;
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl() override { discard(); }

    XMLNode* parse(const X::InputSource& source, const std::string& documentName);
    void discard();

    // ContentHandler
    void setDocumentLocator(const X::Locator* const locator) override { m_locator = locator; }
    void startElement(const XMLCh* const uri, const XMLCh* const localname,
                      const XMLCh* const qname, const X::Attributes& attrs) override;
    void characters(const XMLCh* const chars, const XMLSize_t length) override;
    void endElement(const XMLCh* const uri, const XMLCh* const localname,
                    const XMLCh* const qname) override;

    // DTDHandler, LexicalHandler, EntityResolver: no document type definition is ever acted
    // on. startDTD comes as soon as the declaration's name and identifiers are read, before
    // its internal subset or any external subset, so refusing there refuses it all.
    void notationDecl(const XMLCh* const, const XMLCh* const, const XMLCh* const) override {
        throw DomException(kDtdMessage);
    }
    void unparsedEntityDecl(const XMLCh* const, const XMLCh* const, const XMLCh* const,
                            const XMLCh* const) override {
        throw DomException(kDtdMessage);
    }
    void startDTD(const XMLCh* const, const XMLCh* const, const XMLCh* const) override {
        throw DomException(kDtdMessage);
    }
    X::InputSource* resolveEntity(const XMLCh* const, const XMLCh* const) override {
        throw DomException(kDtdMessage);
    }

    // ErrorHandler
    void fatalError(const X::SAXParseException& e) override {
        throw DomException(layout("Fatal Error: parsing: ", e));
    }
    void error(const X::SAXParseException& e) override {
        throw DomException(layout("Error: parsing: ", e));
    }
    void warning(const X::SAXParseException& e) override {
        m_warnings.push_back(layout("Warning: parsing: ", e));
    }

    std::string m_encoding;
    XMLNode* m_root = nullptr;
    std::vector<std::string> m_warnings;

private:
    std::string local(const XMLCh* text) {
        std::string out;
        m_utf8->decode(text, lengthOf(text), out, s_replaceHexOneA.load());
        return out;
    }
    std::string position(const std::string& heading, const XMLCh* systemId, unsigned long long line,
                         unsigned long long column);
    std::string layout(const char* heading, const X::SAXParseException& e);
    bool hasDocumentType() const;
    [[noreturn]] void refuseVersion(const XMLCh* version);

    XMLNode* m_current = nullptr;
    int m_depth = 0;
    std::string m_documentName;
    std::unique_ptr<Utf8String> m_utf8;
    const X::Locator* m_locator = nullptr;
    X::SAX2XMLReader* m_reader = nullptr;
    std::string m_scratchName;
    std::string m_scratchValue;
};

std::string SAXToNodeParser::Impl::position(const std::string& heading, const XMLCh* systemId,
                                            unsigned long long line, unsigned long long column) {
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, ": line %llu, char %llu\n", line, column);
    return heading + local(systemId) + numbers;
}

std::string SAXToNodeParser::Impl::layout(const char* heading, const X::SAXParseException& e) {
    if (lengthOf(e.getSystemId()) == 0) {
        return "XML Document '" + m_documentName + "' does not exist.\n";
    }
    std::string message =
        position(heading, e.getSystemId(), e.getLineNumber(), e.getColumnNumber());
    const std::string text = local(e.getMessage());
    if (!text.empty()) {
        message += "Message: " + text + "\n";
    }
    return message;
}

// A declaration with neither identifiers nor internal subset ("<!DOCTYPE r>") reaches no
// handler; it still declares the root element in the DTD grammar that the scanner keeps, which
// is empty for a document without one. Asked at the root element, before anything is built.
void SAXToNodeParser::Impl::refuseVersion(const XMLCh* version) {
    std::string message;
    if (m_locator != nullptr) {
        message = position("Fatal Error: parsing: ", m_locator->getSystemId(),
                           m_locator->getLineNumber(), m_locator->getColumnNumber());
    } else {
        message = "Fatal Error: parsing: " + m_documentName + "\n";
    }
    message += "Message: '" + local(version) + "' is not a valid XML version\n";
    throw DomException(message);
}

bool SAXToNodeParser::Impl::hasDocumentType() const {
    X::Grammar* grammar = m_reader != nullptr ? m_reader->getRootGrammar() : nullptr;
    if (grammar == nullptr || grammar->getGrammarType() != X::Grammar::DTDGrammarType) {
        return false;
    }
    return static_cast<X::DTDGrammar*>(grammar)->getElemEnumerator().hasMoreElements();
}

void SAXToNodeParser::Impl::startElement(const XMLCh* const, const XMLCh* const localname,
                                         const XMLCh* const, const X::Attributes& attrs) {
    // Refused at once: the scan of each further level costs more than the one before.
    if (m_depth >= kMaxDepth) {
        std::string message = kTooDeepMessage;
        message += '\n';
        if (m_locator != nullptr) {
            message += position("Fatal Error: parsing: ", m_locator->getSystemId(),
                                m_locator->getLineNumber(), m_locator->getColumnNumber());
        }
        message += "Message: more than 1024 levels of elements\n";
        throw DomException(message);
    }
    if (m_root == nullptr && hasDocumentType()) {
        throw DomException(kDtdMessage);
    }
    auto* node = new XMLNode;
    if (m_current != nullptr) {
        m_current->addChild(node);
    } else if (m_root == nullptr) {
        m_root = node;
    } else {
        m_root->addChild(node);
    }
    m_current = node;
    ++m_depth;

    const bool replace = s_replaceHexOneA.load(std::memory_order_relaxed);
    m_utf8->decode(localname, lengthOf(localname), node->m_name, replace);
    const XMLSize_t count = attrs.getLength();
    for (XMLSize_t i = 0; i < count; ++i) {
        const XMLCh* value = attrs.getValue(i);
        m_scratchValue.clear();
        m_utf8->decode(value, lengthOf(value), m_scratchValue, replace);
        if (equals(attrs.getURI(i), kXsiUri) && equals(attrs.getLocalName(i), kType)) {
            const std::size_t colon = m_scratchValue.find(':');
            node->m_extensionName =
                colon == std::string::npos ? m_scratchValue : m_scratchValue.substr(colon + 1);
            continue;
        }
        const XMLCh* name = attrs.getQName(i);
        m_scratchName.clear();
        m_utf8->decode(name, lengthOf(name), m_scratchName, replace);
        node->m_attributes[m_scratchName] = m_scratchValue;
    }
}

void SAXToNodeParser::Impl::characters(const XMLCh* const chars, const XMLSize_t length) {
    if (m_current != nullptr) {
        m_utf8->decode(chars, length, m_current->m_text,
                       s_replaceHexOneA.load(std::memory_order_relaxed));
    }
}

void SAXToNodeParser::Impl::endElement(const XMLCh* const, const XMLCh* const, const XMLCh* const) {
    if (m_current == nullptr) {
        std::cerr << "End element called when not inside one!" << std::endl;
        return;
    }
    m_current = m_current->getParent();
    --m_depth;
}

void SAXToNodeParser::Impl::discard() {
    delete m_root;
    m_root = nullptr;
    m_current = nullptr;
    m_depth = 0;
}

XMLNode* SAXToNodeParser::Impl::parse(const X::InputSource& source,
                                      const std::string& documentName) {
    discard();
    m_warnings.clear();
    m_documentName = documentName;
    m_locator = nullptr;
    m_utf8 = std::make_unique<Utf8String>(m_encoding);

    std::unique_ptr<X::SAX2XMLReader> reader(X::XMLReaderFactory::createXMLReader());
    reader->setContentHandler(this);
    reader->setDTDHandler(this);
    reader->setErrorHandler(this);
    reader->setLexicalHandler(this);
    reader->setDeclarationHandler(this);
    reader->setEntityResolver(this);
    DeclarationCheck declarationCheck(this, [](void* owner, const XMLCh* version) {
        static_cast<Impl*>(owner)->refuseVersion(version);
    });
    reader->installAdvDocHandler(&declarationCheck);
    // Namespace processing stays on, as it comes. What changes is only what could make the
    // reader open something the caller did not name: no external DTD, no schema named by
    // xsi:schemaLocation, no default entity resolution. The refusal of the DOCTYPE above
    // already keeps the first and last closed; these settings close them twice.
    reader->setFeature(X::XMLUni::fgXercesLoadExternalDTD, false);
    reader->setFeature(X::XMLUni::fgXercesLoadSchema, false);
    reader->setFeature(X::XMLUni::fgXercesDisableDefaultEntityResolution, true);

    m_reader = reader.get();
    struct Forget {
        X::SAX2XMLReader*& reader;
        ~Forget() { reader = nullptr; }
    } forget{m_reader};
    try {
        reader->parse(source);
    } catch (const DomException&) {
        discard();
        throw;
    } catch (const X::OutOfMemoryException&) {
        discard();
        throw DomException("Fatal Error: parsing: " + documentName + "\nMessage: out of memory\n");
    } catch (const X::XMLException& e) {
        discard();
        std::string message = "Fatal Error: parsing: " + documentName + "\n";
        const std::string text = local(e.getMessage());
        if (!text.empty()) {
            message += "Message: " + text + "\n";
        }
        throw DomException(message);
    } catch (const X::SAXException& e) {
        discard();
        std::string message = "Fatal Error: parsing: " + documentName + "\n";
        const std::string text = local(e.getMessage());
        if (!text.empty()) {
            message += "Message: " + text + "\n";
        }
        throw DomException(message);
    } catch (...) {
        discard();
        throw;
    }
    m_locator = nullptr;
    if (m_root == nullptr) {
        throw DomException("XML Document '" + documentName + "' does not exist.\n");
    }
    return m_root;
}

SAXToNodeParser::SAXToNodeParser() : m_impl(std::make_unique<Impl>()) {}

SAXToNodeParser::~SAXToNodeParser() = default;

XMLNode* SAXToNodeParser::parseString(const std::string& xml) {
    initializeXerces();
    // The document ends at its first zero byte, which is handed over with it.
    const std::size_t length = std::strlen(xml.c_str()) + 1;
    X::MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.c_str()), length,
                                kStringSystemId, false);
    source.setCopyBufToStream(false);
    return m_impl->parse(source, kStringName);
}

XMLNode* SAXToNodeParser::parseString(const std::string& xml, const std::string& encoding) {
    setEncodingName(encoding);
    return parseString(xml);
}

XMLNode* SAXToNodeParser::parseStream(std::istream* in) {
    initializeXerces();
    if (in == nullptr || !in->good()) {
        m_impl->discard();
        throw DomException(std::string("XML Document '") + kStreamName + "' does not exist.\n");
    }
    IStreamInputSource source(*in, kStreamSystemId);
    return m_impl->parse(source, kStreamName);
}

XMLNode* SAXToNodeParser::parseStream(std::istream* in, const std::string& encoding) {
    setEncodingName(encoding);
    return parseStream(in);
}

XMLNode* SAXToNodeParser::parseFile(const std::string& path) {
    initializeXerces();
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        m_impl->discard();
        throw DomException("XML Document '" + path + "' does not exist.\n");
    }
    const std::string content((std::istreambuf_iterator<char>(file)),
                              std::istreambuf_iterator<char>());
    X::MemBufInputSource source(reinterpret_cast<const XMLByte*>(content.data()), content.size(),
                                path.c_str(), false);
    source.setCopyBufToStream(false);
    return m_impl->parse(source, path);
}

XMLNode* SAXToNodeParser::parseFile(const std::string& path, const std::string& encoding) {
    setEncodingName(encoding);
    return parseFile(path);
}

XMLNode& SAXToNodeParser::getRoot() const {
    if (m_impl->m_root == nullptr) {
        throw DomException("No XML document has been parsed.");
    }
    return *m_impl->m_root;
}

XMLNode* SAXToNodeParser::getRootNode() const noexcept { return m_impl->m_root; }

void SAXToNodeParser::setEncodingName(const std::string& encoding) {
    m_impl->m_encoding = encoding;
}

const std::string& SAXToNodeParser::getEncodingName() const noexcept { return m_impl->m_encoding; }

const std::vector<std::string>& SAXToNodeParser::getWarnings() const noexcept {
    return m_impl->m_warnings;
}

void SAXToNodeParser::replaceHexOneA(bool replace) { s_replaceHexOneA.store(replace); }

bool SAXToNodeParser::checkForIllegalXMLchars(const std::string& xml, std::string& report) {
    constexpr int kMaxReported = 200;
    report.clear();
    int found = 0;
    int line = 1;
    int column = 0;
    const std::size_t size = xml.size();
    for (std::size_t i = 0; i < size; ++i) {
        const char c = xml[i];
        if (c == '\n' || c == '\r') {
            if (c == '\r' && i + 1 < size && xml[i + 1] == '\n') {
                ++i;
            }
            ++line;
            column = 0;
            continue;
        }
        ++column;
        const auto value = static_cast<int>(static_cast<signed char>(c));
        if (value >= 0x20 && value != 0x7F) {
            continue;
        }
        if (found == 0) {
            report = "The XML document containes one or more invalid character codes:\n ";
        }
        if (++found > kMaxReported) {
            break;
        }
        char entry[64];
        std::snprintf(entry, sizeof entry, "0x%X at line %d char %d\n",
                      static_cast<unsigned>(value), line, column);
        report += entry;
    }
    return found == 0;
}

}  // namespace Corvane::Soa::Common::Xml
