#include <corvane/soa/common/MemoryManager.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include "AsciiText.hpp"
#include "BlockArena.hpp"
#include "DeclarationCheck.hpp"
#include "ElementSink.hpp"
#include "EventRecord.hpp"
#include "GrowingBytes.hpp"
#include "IStreamInputSource.hpp"
#include "NameTable.hpp"

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
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDGrammar.hpp>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Corvane::Soa::Common::Xml {

using Exceptions::DomException;
namespace X = XERCES_CPP_NAMESPACE;

#if defined(__GNUC__) || defined(__clang__)
#define CORVANE_SOA_COLD __attribute__((cold, noinline))
#else
#define CORVANE_SOA_COLD
#endif

namespace {

constexpr const char* kDtdMessage = "Document Type Defintions are not permited in XML documents.";
constexpr const char* kTooDeepMessage = "The XML document is nested too deeply.";
constexpr const char* kStringSystemId = "From-String";
constexpr const char* kStringName = "From String";
constexpr const char* kStreamSystemId = "From-std::istream";
constexpr const char* kStreamName = "From std::istream";

using Name = NameTable::Name;

// The XML Schema instance namespace, whose "type" attribute names the element's type.
constexpr char16_t kXsiUri[] = u"http://www.w3.org/2001/XMLSchema-instance";

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

// Whether a local name is "type", read no further than the first unit that differs.
bool isType(const XMLCh* name) {
    return name != nullptr && name[0] == u't' && name[1] == u'y' && name[2] == u'p' &&
           name[3] == u'e' && name[4] == 0;
}

// Whether a local name is "schemaLocation", the same way.
bool isSchemaLocation(const XMLCh* name) {
    return name != nullptr && name[0] == u's' && X::XMLString::equals(name, u"schemaLocation");
}

std::size_t lengthOf(const XMLCh* text) { return text == nullptr ? 0 : AsciiText::length(text); }

}  // namespace

// The Xerces handler behind the parser: builds the tree, or hands the elements to a sink, and
// turns every failure into a DomException.
class SAXToNodeParser::Impl : public X::DefaultHandler {
public:
    Impl() = default;
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl() override { discard(); }

    XMLNode* parse(const X::InputSource& source, const std::string& documentName);
    // Parses as `parse` does, handing the elements to `sink` instead of building a tree.
    void parseInto(const X::InputSource& source, const std::string& documentName,
                   ElementSink& sink);
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
    // The message for an exception that Xerces throws instead of reporting it with a position.
    std::string thrownLayout(const std::string& documentName, const XMLCh* text);
    bool hasDocumentType() const;
    // The heading of a fatal error at the place that the scanner has reached.
    std::string fatalHere();
    [[noreturn]] void refuseVersion(const XMLCh* version);

    [[noreturn]] void refuseTooDeep();
    // The scanner's schema processing is off (see parse), and with it the one check that it
    // made of documents that have no schema: that an xsi:schemaLocation lists pairs.
    void checkSchemaLocation(const XMLCh* value);
    [[noreturn]] CORVANE_SOA_COLD void refuseSchemaLocation();

    // What the scan does seldom is kept out of line, so that the code that runs at every
    // element and text, between the scanner's own steps, takes few cache lines.
    CORVANE_SOA_COLD void beginRoot();
    CORVANE_SOA_COLD void largeText(const XMLCh* chars, std::size_t length);

    // Whether a namespace URI is that of XML Schema instances. The scanner hands each URI from
    // one place, so the place where it was last seen is tried first.
    bool isXsi(const XMLCh* uri) {
        if (uri == m_xsiUri && uri != nullptr) {
            return true;
        }
        if (!equals(uri, kXsiUri)) {
            return false;
        }
        m_xsiUri = uri;
        return true;
    }

    // Appends the local form of `length` units to `out`. ASCII, the bulk of any document, is
    // narrowed here in line when the local code page is UTF-8; the rest goes to Utf8String.
    void appendLocal(const char16_t* units, std::size_t length, std::string& out, bool replace);
    // The same, to the texts of the open elements.
    void appendOpenText(const char16_t* units, std::size_t length, bool replace);

    // Recording, during the scan.
    void record(char16_t kind) { *m_events.extend(1) = kind; }
    void recordLength(std::size_t length);
    // Records a text as an event of the kind `bytes`, narrowed, when it is ASCII and the local
    // code page is UTF-8; else as one of the kind `units`. Returns whether it went as bytes.
    bool recordText(char16_t bytes, char16_t units, const XMLCh* text, std::size_t length);
    // Appends a piece of text to the text event that ends the record, if it can go as that
    // event went; returns whether it did.
    bool extendText(const XMLCh* text, std::size_t length);
    void recordName(Name& name);

    // Building, between pieces of the scan.
    void build();
    // Or handing the elements over, when there is a sink.
    void feed();
    void feedStart(const char16_t*& event);
    void feedText(const char16_t* text, std::size_t length);
    void buildStart(const char16_t*& event);
    std::string_view readValue(const char16_t*& event, char16_t kind, std::string& scratch,
                               bool replace);
    void buildText(const char16_t* text, std::size_t length);
    void buildText(const char* bytes, std::size_t size);
    // Moves the text of the innermost open element to its node once it has grown long.
    void keepLongText();
    void buildEnd();
    // Gives the element being closed, `node`, its children and its text.
    void complete(XMLNode& node);
    // Forgets the open elements, what they had and what is recorded; their nodes are the tree's.
    void clearOpen();

    // White space texts up to this size are shared between the nodes that have them.
    static constexpr std::size_t kSharedText = 256;

    // The nodes of the parse and what they share: their attribute arrays and the names of the
    // document, each kept once. With no memory manager installed the nodes are made in large
    // blocks and destroyed in one sweep, in the order they were made; a memory manager accounts
    // each node under its tag, so then each is allocated alone, as the caller's are. Either
    // way the tree frees its nodes itself: a node's parent does not (see XMLNode), and the
    // nodes that the caller adds to them are deleted by their parents as usual.
    class Tree {
    public:
        Tree() = default;
        Tree(const Tree&) = delete;
        Tree& operator=(const Tree&) = delete;
        ~Tree() {
            clear();
            for (const NodeBlock& block : m_blocks) {
                ::operator delete(block.nodes);
            }
        }

        // Decides, for the parse that begins, where its nodes go.
        void begin() noexcept { m_accounted = MemoryManager::getMemoryManager() != nullptr; }

        XMLNode* makeNode(const std::string& name) {
            if (m_accounted) {
                m_accountedNodes.reserve(m_accountedNodes.size() + 1);
                auto* const node = new XMLNode(&name, nullptr);
                m_accountedNodes.push_back(node);
                return node;
            }
            if (m_blocks.empty() || m_blocks[m_filling].used == m_blocks[m_filling].capacity) {
                nextBlock();
            }
            NodeBlock& block = m_blocks[m_filling];
            XMLNode* const node = ::new (block.nodes + block.used) XMLNode(&name, nullptr);
            ++block.used;
            return node;
        }

        // Room for `count` attributes, to be constructed by the caller.
        XMLNode::Attribute* makeAttributes(std::size_t count) {
            return static_cast<XMLNode::Attribute*>(
                m_bytes.allocate(count * sizeof(XMLNode::Attribute)));
        }

        // A text or a child list of a node's own, in the tree's memory; the node destroys it.
        std::string* placeText(const char* bytes, std::size_t size) {
            return new (m_bytes.allocate(sizeof(std::string))) std::string(bytes, size);
        }
        std::vector<XMLNode*>* placeChildren(std::vector<XMLNode*>::const_iterator first,
                                             std::vector<XMLNode*>::const_iterator last) {
            using List = std::vector<XMLNode*>;
            return new (m_bytes.allocate(sizeof(List))) List(first, last);
        }
        // A text of white space only, kept once for all the nodes that have it: the layout
        // between elements, which repeats all through an indented document.
        // `size` is at most kSharedText.
        const std::string& sharedText(const char* bytes, std::size_t size) {
            // An indented document has about one layout for each size (a line end and the
            // indentation of a level): the last one of the size is tried first.
            const std::string*& last = m_lastShared[size];
            if (last != nullptr && std::memcmp(last->data(), bytes, size) == 0) {
                return *last;
            }
            const std::string_view key(bytes, size);
            const auto found = m_sharedTexts.find(key);
            if (found != m_sharedTexts.end()) {
                last = found->second;
                return *last;
            }
            const std::string& text = m_texts.emplace_back(bytes, size);
            m_sharedTexts.emplace(text, &text);
            last = &text;
            return text;
        }

        Name& name(const char16_t* units, std::size_t length, Utf8String& utf8, bool replace) {
            return m_names.get(units, length, m_bytes, utf8, replace);
        }
        Name& typeName(const char16_t* units, std::size_t length, Utf8String& utf8, bool replace) {
            return m_typeNames.get(units, length, m_bytes, utf8, replace);
        }

        // Destroys every node, then what they shared. The first block of nodes stays.
        void clear() noexcept {
            // Parents go before their children, whose flags they read.
            for (XMLNode* node : m_accountedNodes) {
                delete node;
            }
            m_accountedNodes.clear();
            if (m_accountedNodes.capacity() > kKeptNodes) {
                std::vector<XMLNode*>().swap(m_accountedNodes);
            }
            for (NodeBlock& block : m_blocks) {
                for (std::size_t i = 0; i < block.used; ++i) {
                    block.nodes[i].~XMLNode();
                }
                block.used = 0;
            }
            for (std::size_t i = 1; i < m_blocks.size(); ++i) {
                ::operator delete(m_blocks[i].nodes);
            }
            if (m_blocks.size() > 1) {
                m_blocks.resize(1);
            }
            m_filling = 0;
            m_names.clear();
            m_typeNames.clear();
            m_sharedTexts.clear();
            std::fill(std::begin(m_lastShared), std::end(m_lastShared), nullptr);
            m_texts.clear();
            m_bytes.clear();
        }

    private:
        static constexpr std::size_t kFirstNodes = 32;
        static constexpr std::size_t kMostNodes = 8192;
        static constexpr std::size_t kKeptNodes = 1024;

        struct NodeBlock {
            XMLNode* nodes;
            std::size_t capacity;
            std::size_t used;
        };

        void nextBlock() {
            if (!m_blocks.empty() && m_filling + 1 < m_blocks.size()) {
                ++m_filling;
                return;
            }
            const std::size_t capacity =
                m_blocks.empty() ? kFirstNodes : std::min(2 * m_blocks.back().capacity, kMostNodes);
            m_blocks.reserve(m_blocks.size() + 1);
            auto* const nodes = static_cast<XMLNode*>(::operator new(capacity * sizeof(XMLNode)));
            m_blocks.push_back({nodes, capacity, 0});
            m_filling = m_blocks.size() - 1;
        }

        bool m_accounted = false;
        std::vector<XMLNode*> m_accountedNodes;  // in the order they were made
        std::vector<NodeBlock> m_blocks;
        std::size_t m_filling = 0;  // the block that new nodes go to
        BlockArena m_bytes;
        NameTable m_names{false};
        NameTable m_typeNames{true};
        std::deque<std::string> m_texts;
        std::unordered_map<std::string_view, const std::string*> m_sharedTexts;
        const std::string* m_lastShared[kSharedText + 1] = {};
    };

    // The text of `node` as a string of its own, to append to.
    std::string& placedText(XMLNode& node);

    std::string m_documentName;
    std::unique_ptr<Utf8String> m_utf8;
    bool m_localUtf8 = false;
    const X::Locator* m_locator = nullptr;
    X::SAX2XMLReader* m_reader = nullptr;
    X::XMLDocumentHandler* m_declarationCheck = nullptr;  // while it is installed
    const XMLCh* m_xsiUri = nullptr;                      // where the scanner had it last

    // The content handler does not build the tree itself: it records what the scanner reports
    // (names, attributes, text, still in UTF-16), and the tree is built from the record when it
    // has grown to a batch and when the scan ends. Done in turns, each of the scanner and the
    // builder runs with its own code and data in the processor's caches, which the two take
    // from each other when they alternate at every element. What must refuse a document at its
    // place (the depth limit, the document type) is still decided as the scanner reports it.
    //
    // A record is a sequence of 16-bit units: an event kind, then for
    //   kStart: the local name, the number of attributes, then for each attribute either
    //           kAttribute or kAttributeUnits, its value and its qualified name, or kXsiType
    //           and its type name;
    //   kText, kTextUnits: the characters;
    //   kEnd:   nothing.
    // A text (value, characters) is its length, in four units, then its content: for kText and
    // kAttribute the bytes of its local form, two a unit (ASCII, narrowed as it is recorded, so
    // that it is read once and takes half the room); for kTextUnits and kAttributeUnits its
    // UTF-16 units, converted when it is built.
    // A batch is built once the record reaches this many units (64 KB). Fuzzed documents are
    // small, so fuzzing builds make batches and long texts small too: then they reach the batch
    // boundaries and the path of long texts.
#if defined(FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION)
    static constexpr std::size_t kBatchUnits = 64;
#else
    static constexpr std::size_t kBatchUnits = std::size_t{32} * 1024;
#endif
    static constexpr char16_t kStart = 1;
    static constexpr char16_t kText = 2;
    static constexpr char16_t kEnd = 3;
    static constexpr char16_t kAttribute = 4;
    static constexpr char16_t kXsiType = 5;
    static constexpr char16_t kTextUnits = 6;
    static constexpr char16_t kAttributeUnits = 7;

    EventRecord m_events;
    // The end of the record when its last event is a text, where that text's length is and
    // whether it went as bytes.
    std::size_t m_textEnd = kNoText;
    std::size_t m_textLengthAt = 0;
    bool m_textBytes = false;
    static constexpr std::size_t kNoText = static_cast<std::size_t>(-1);
    // Of the scan: the depth of the element being reported and whether the root has begun.
    int m_depth = 0;
    bool m_begun = false;

    // Of the tree being built: the innermost element whose end has not been built yet.
    XMLNode* m_current = nullptr;
    std::string m_scratchValue;
    // Tells the elements apart, for the names of their attributes (see Name).
    std::uint64_t m_stamp = 0;
    // Whether text conversion turns 0x1A into '?', as it was when the parse began.
    bool m_replace = false;

    // What an open element has so far is kept here rather than in its node, and handed to the
    // node once, at its end: its children in one vector of the exact size and its text in one
    // string of the exact size, with no growing on the way. An element's children and text
    // are the last ones here while it is open (its own open children take theirs away when
    // they end).
    //
    // A text that grows long is the exception: it is moved to the node, and the rest of it
    // goes there straight (`direct`), so that it is never held twice.
    struct Open {
        std::size_t children;  // where its children begin in m_pending
        std::size_t text;      // where its text begins in m_openText
        bool direct;           // whether its text goes to its node straight
    };
    // Text this long (in units or bytes) is converted and kept without a copy between.
#if defined(FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION)
    static constexpr std::size_t kLargeText = 48;
#else
    static constexpr std::size_t kLargeText = std::size_t{16} * 1024;
#endif
    std::vector<Open> m_open;
    std::vector<XMLNode*> m_pending;
    GrowingBytes m_openText;

    Tree m_tree;

    // Where the elements go instead of the tree, during parseInto.
    ElementSink* m_sink = nullptr;
    bool m_sinkText = false;  // whether the sink takes the text
    std::vector<ElementSink::Attribute> m_sinkAttributes;
    std::vector<std::string> m_sinkValues;  // values that had to be converted
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

std::string SAXToNodeParser::Impl::fatalHere() {
    if (m_locator == nullptr) {
        return "Fatal Error: parsing: " + m_documentName + "\n";
    }
    return position("Fatal Error: parsing: ", m_locator->getSystemId(), m_locator->getLineNumber(),
                    m_locator->getColumnNumber());
}

void SAXToNodeParser::Impl::refuseVersion(const XMLCh* version) {
    throw DomException(fatalHere() + "Message: '" + local(version) +
                       "' is not a valid XML version\n");
}

// A declaration with neither identifiers nor internal subset ("<!DOCTYPE r>") reaches no
// handler; it still declares the root element in the DTD grammar that the scanner keeps, which
// is empty for a document without one. Asked at the root element, before anything is built.
bool SAXToNodeParser::Impl::hasDocumentType() const {
    X::Grammar* grammar = m_reader != nullptr ? m_reader->getRootGrammar() : nullptr;
    if (grammar == nullptr || grammar->getGrammarType() != X::Grammar::DTDGrammarType) {
        return false;
    }
    return static_cast<X::DTDGrammar*>(grammar)->getElemEnumerator().hasMoreElements();
}

void SAXToNodeParser::Impl::refuseTooDeep() {
    throw DomException(std::string(kTooDeepMessage) + "\n" + fatalHere() +
                       "Message: more than 1024 levels of elements\n");
}

namespace {

// A length takes four units, the lowest 16 bits first.
constexpr std::size_t kLengthUnits = 4;

void putLength(char16_t* at, std::uint64_t length) {
    for (std::size_t i = 0; i < kLengthUnits; ++i) {
        at[i] = static_cast<char16_t>(length & 0xFFFF);
        length >>= 16;
    }
}

std::size_t readLength(const char16_t*& event) {
    std::uint64_t length = 0;
    for (std::size_t i = kLengthUnits; i-- > 0;) {
        length = (length << 16) | event[i];
    }
    event += kLengthUnits;
    return static_cast<std::size_t>(length);
}

// Copies units, short runs (most names, values and texts) without a call.
void copyUnits(char16_t* to, const char16_t* from, std::size_t length) {
    auto* const out = reinterpret_cast<unsigned char*>(to);
    const auto* const in = reinterpret_cast<const unsigned char*>(from);
    const std::size_t bytes = length * sizeof(char16_t);
    if (bytes > 32) {
        std::memcpy(out, in, bytes);
    } else if (bytes >= 16) {
        std::memcpy(out, in, 16);
        std::memcpy(out + bytes - 16, in + bytes - 16, 16);
    } else if (bytes >= 8) {
        std::memcpy(out, in, 8);
        std::memcpy(out + bytes - 8, in + bytes - 8, 8);
    } else if (bytes >= 4) {
        std::memcpy(out, in, 4);
        std::memcpy(out + bytes - 4, in + bytes - 4, 4);
    } else if (bytes == 2) {
        *to = *from;
    }
}

// The units that `size` bytes take, two a unit.
constexpr std::size_t unitsForBytes(std::size_t size) { return (size + 1) / 2; }

// A name is recorded as its address in the tree, in four units.
constexpr std::size_t kNameUnits = 4;
static_assert(sizeof(void*) <= kNameUnits * sizeof(char16_t), "an address fits");

Name& readName(const char16_t*& event) {
    void* address = nullptr;
    std::memcpy(&address, event, sizeof address);
    event += kNameUnits;
    return *static_cast<Name*>(address);
}

}  // namespace

void SAXToNodeParser::Impl::recordLength(std::size_t length) {
    putLength(m_events.extend(kLengthUnits), length);
}

bool SAXToNodeParser::Impl::recordText(char16_t bytes, char16_t units, const XMLCh* text,
                                       std::size_t length) {
    if (m_localUtf8) {
        const std::size_t mark = m_events.size();
        char16_t* const at = m_events.extend(1 + kLengthUnits + unitsForBytes(length));
        at[0] = bytes;
        putLength(at + 1, length);
        char* const narrowed = reinterpret_cast<char*>(at + 1 + kLengthUnits);
        if (AsciiText::narrow(text, length, narrowed)) {
            if (m_replace) {
                std::replace(narrowed, narrowed + length, '\x1a', '?');
            }
            return true;
        }
        m_events.resize(mark);
    }
    char16_t* const at = m_events.extend(1 + kLengthUnits + length);
    at[0] = units;
    putLength(at + 1, length);
    copyUnits(at + 1 + kLengthUnits, text, length);
    return false;
}

bool SAXToNodeParser::Impl::extendText(const XMLCh* text, std::size_t length) {
    const char16_t* read = m_events.at(m_textLengthAt);
    const std::size_t had = readLength(read);
    const std::size_t mark = m_events.size();
    if (!m_textBytes) {
        copyUnits(m_events.extend(length), text, length);
    } else {
        m_events.extend(unitsForBytes(had + length) - unitsForBytes(had));
        char* const narrowed =
            reinterpret_cast<char*>(m_events.at(m_textLengthAt + kLengthUnits)) + had;
        if (!AsciiText::narrow(text, length, narrowed)) {
            m_events.resize(mark);
            return false;
        }
        if (m_replace) {
            std::replace(narrowed, narrowed + length, '\x1a', '?');
        }
    }
    putLength(m_events.at(m_textLengthAt), had + length);
    return true;
}

void SAXToNodeParser::Impl::recordName(Name& name) {
    void* const address = &name;
    std::memcpy(m_events.extend(kNameUnits), &address, sizeof address);
}

void SAXToNodeParser::Impl::startElement(const XMLCh* const, const XMLCh* const localname,
                                         const XMLCh* const, const X::Attributes& attrs) {
    // Names are looked up as they come, while the scanner's own data is at hand; the record
    // keeps where the tree has them.
    record(kStart);
    recordName(m_tree.name(localname, lengthOf(localname), *m_utf8, m_replace));
    const XMLSize_t count = attrs.getLength();
    recordLength(count);
    for (XMLSize_t i = 0; i < count; ++i) {
        const XMLCh* const value = attrs.getValue(i);
        // The local name first: it rules out nearly every attribute without asking the
        // scanner for the namespace.
        const XMLCh* const local = attrs.getLocalName(i);
        if (isType(local) && isXsi(attrs.getURI(i))) {
            record(kXsiType);
            recordName(m_tree.typeName(value, lengthOf(value), *m_utf8, m_replace));
            continue;
        }
        if (isSchemaLocation(local) && isXsi(attrs.getURI(i))) {
            checkSchemaLocation(value);
        }
        recordText(kAttribute, kAttributeUnits, value, lengthOf(value));
        const XMLCh* const name = attrs.getQName(i);
        recordName(m_tree.name(name, lengthOf(name), *m_utf8, m_replace));
    }
    // Refused at once (the scan of each further level costs more than the one before), and
    // after the attributes, whose faults the scanner reports before it reports the element.
    if (m_depth >= kMaxDepth) {
        refuseTooDeep();
    }
    if (!m_begun) {
        beginRoot();
    }
    ++m_depth;
    if (m_events.size() >= kBatchUnits) {
        build();
    }
}

void SAXToNodeParser::Impl::checkSchemaLocation(const XMLCh* value) {
    // Pairs of a namespace and a location, separated by white space.
    std::size_t tokens = 0;
    bool inToken = false;
    for (const XMLCh* at = value; at != nullptr && *at != 0; ++at) {
        const bool space = *at == u' ' || *at == u'\t' || *at == u'\n' || *at == u'\r';
        tokens += static_cast<std::size_t>(!space && !inToken);
        inToken = !space;
    }
    if (tokens % 2 != 0) {
        refuseSchemaLocation();
    }
}

void SAXToNodeParser::Impl::refuseSchemaLocation() {
    throw DomException(fatalHere() +
                       "Message: schemaLocation does not contain namespace-location pairs\n");
}

void SAXToNodeParser::Impl::beginRoot() {
    if (hasDocumentType()) {
        throw DomException(kDtdMessage);
    }
    // The XML declaration, if any, came before the root: from here on the check has nothing
    // to see, and the reader stops calling it at every element and text.
    if (m_declarationCheck != nullptr) {
        m_reader->removeAdvDocHandler(m_declarationCheck);
        m_declarationCheck = nullptr;
    }
    m_begun = true;
}

void SAXToNodeParser::Impl::largeText(const XMLCh* chars, std::size_t length) {
    // Converted where the scanner has it rather than copied first, once what came before is
    // built.
    build();
    buildText(chars, length);
}

void SAXToNodeParser::Impl::characters(const XMLCh* const chars, const XMLSize_t length) {
    if (m_sink != nullptr && !m_sinkText) {
        return;  // a sink that takes no text
    }
    if (length >= kLargeText) {
        largeText(chars, length);
        return;
    }
    // The scanner gives a text in several pieces (around a reference, at a line end): a
    // piece that follows another is recorded as part of it when it can be.
    if (m_events.size() != m_textEnd || !extendText(chars, length)) {
        m_textLengthAt = m_events.size() + 1;
        m_textBytes = recordText(kText, kTextUnits, chars, length);
    }
    m_textEnd = m_events.size();
    if (m_events.size() >= kBatchUnits) {
        build();
    }
}

void SAXToNodeParser::Impl::endElement(const XMLCh* const, const XMLCh* const, const XMLCh* const) {
    if (m_depth > 0) {
        --m_depth;
    }
    record(kEnd);
    if (m_events.size() >= kBatchUnits) {
        build();
    }
}

void SAXToNodeParser::Impl::appendLocal(const char16_t* units, std::size_t length, std::string& out,
                                        bool replace) {
    constexpr std::size_t kNarrowed = 256;
    if (m_localUtf8 && length <= kNarrowed) {
        char bytes[kNarrowed];
        if (AsciiText::narrow(units, length, bytes)) {
            if (replace) {
                std::replace(bytes, bytes + length, '\x1a', '?');
            }
            out.append(bytes, length);
            return;
        }
    }
    m_utf8->decode(units, length, out, replace);
}

void SAXToNodeParser::Impl::appendOpenText(const char16_t* units, std::size_t length,
                                           bool replace) {
    if (m_localUtf8) {
        char* const bytes = m_openText.extend(length);
        if (AsciiText::narrow(units, length, bytes)) {
            if (replace) {
                std::replace(bytes, bytes + length, '\x1a', '?');
            }
            return;
        }
        m_openText.resize(m_openText.size() - length);
    }
    m_scratchValue.clear();
    m_utf8->decode(units, length, m_scratchValue, replace);
    m_openText.append(m_scratchValue.data(), m_scratchValue.size());
}

void SAXToNodeParser::Impl::build() {
    if (m_sink != nullptr) {
        feed();
        return;
    }
    const char16_t* event = m_events.data();
    const char16_t* const end = event + m_events.size();
    while (event < end) {
        switch (*event++) {
            case kStart:
                buildStart(event);
                break;
            case kText: {
                const std::size_t size = readLength(event);
                buildText(reinterpret_cast<const char*>(event), size);
                event += unitsForBytes(size);
                break;
            }
            case kTextUnits: {
                const std::size_t length = readLength(event);
                buildText(event, length);
                event += length;
                break;
            }
            default:
                buildEnd();
                break;
        }
    }
    m_events.clear();
    m_textEnd = kNoText;
}

void SAXToNodeParser::Impl::feed() {
    const char16_t* event = m_events.data();
    const char16_t* const end = event + m_events.size();
    while (event < end) {
        switch (*event++) {
            case kStart:
                feedStart(event);
                break;
            case kText: {
                const std::size_t size = readLength(event);
                m_sink->text(std::string_view(reinterpret_cast<const char*>(event), size));
                event += unitsForBytes(size);
                break;
            }
            case kTextUnits: {
                const std::size_t length = readLength(event);
                feedText(event, length);
                event += length;
                break;
            }
            default:
                m_sink->endElement();
                break;
        }
    }
    m_events.clear();
    m_textEnd = kNoText;
}

// An attribute's recorded value: UTF-8 bytes as recorded, or UTF-16 units converted into
// `scratch`, which the view then shows.
std::string_view SAXToNodeParser::Impl::readValue(const char16_t*& event, char16_t kind,
                                                  std::string& scratch, bool replace) {
    const std::size_t length = readLength(event);
    if (kind == kAttribute) {
        const std::string_view value(reinterpret_cast<const char*>(event), length);
        event += unitsForBytes(length);
        return value;
    }
    scratch.clear();
    appendLocal(event, length, scratch, replace);
    event += length;
    return scratch;
}

void SAXToNodeParser::Impl::feedStart(const char16_t*& event) {
    const Name& name = readName(event);
    const std::size_t count = readLength(event);
    m_sinkAttributes.clear();
    if (m_sinkValues.size() < count) {
        m_sinkValues.resize(count);
    }
    const std::string* extension = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
        const char16_t kind = *event++;
        if (kind == kXsiType) {
            extension = &readName(event).text;
            continue;
        }
        const std::string_view value = readValue(event, kind, m_sinkValues[i], m_replace);
        m_sinkAttributes.push_back({&readName(event).text, value});
    }
    m_sink->startTyped(name.text, m_sinkAttributes.data(), m_sinkAttributes.size(), extension);
}

void SAXToNodeParser::Impl::buildStart(const char16_t*& event) {
    const bool replace = m_replace;
    const Name& name = readName(event);

    // The tree owns the node from here on, whatever happens next.
    XMLNode* const node = m_tree.makeNode(name.text);
    if (!m_open.empty()) {
        // The child of the innermost open element, m_current, which takes it at its end.
        node->m_parent = m_current;
        m_pending.push_back(node);
    } else if (m_current != nullptr) {
        m_current->addChild(node);
    } else if (m_root == nullptr) {
        m_root = node;
    } else {
        m_root->addChild(node);
    }
    m_open.push_back(Open{m_pending.size(), m_openText.size(), false});
    m_current = node;

    const std::size_t count = readLength(event);
    if (count == 0) {
        return;
    }
    XMLNode::Attribute* const attributes = m_tree.makeAttributes(count);
    node->m_attributes = attributes;
    const std::uint64_t stamp = ++m_stamp;
    for (std::size_t i = 0; i < count; ++i) {
        const char16_t kind = *event++;
        if (kind == kXsiType) {
            node->m_extensionName = &readName(event).text;
            continue;
        }
        const std::string_view value = readValue(event, kind, m_scratchValue, replace);
        Name& attributeName = readName(event);
        // Two names may convert to one in a code page that substitutes: the last one stays.
        if (attributeName.stamp == stamp) {
            attributes[attributeName.slot].value.assign(value);
            continue;
        }
        new (attributes + node->m_attributeCount)
            XMLNode::Attribute{&attributeName.text, std::string(value)};
        attributeName.stamp = stamp;
        attributeName.slot = node->m_attributeCount++;
    }
}

void SAXToNodeParser::Impl::feedText(const char16_t* text, std::size_t length) {
    m_scratchValue.clear();
    appendLocal(text, length, m_scratchValue, m_replace);
    m_sink->text(m_scratchValue);
}

void SAXToNodeParser::Impl::buildText(const char16_t* text, std::size_t length) {
    if (m_sink != nullptr) {
        feedText(text, length);
        return;
    }
    if (m_open.empty() || m_open.back().direct) {
        if (m_current != nullptr) {
            appendLocal(text, length, placedText(*m_current), m_replace);
        }
        return;
    }
    appendOpenText(text, length, m_replace);
    keepLongText();
}

void SAXToNodeParser::Impl::buildText(const char* bytes, std::size_t size) {
    if (m_open.empty() || m_open.back().direct) {
        if (m_current != nullptr) {
            placedText(*m_current).append(bytes, size);
        }
        return;
    }
    m_openText.append(bytes, size);
    keepLongText();
}

void SAXToNodeParser::Impl::keepLongText() {
    Open& open = m_open.back();
    if (m_openText.size() - open.text >= kLargeText) {
        // A long text goes to its node from here on, as it would have from the start: it is
        // not held twice.
        placedText(*m_current).append(m_openText.data() + open.text, m_openText.size() - open.text);
        m_openText.resize(open.text);
        open.direct = true;
    }
}

void SAXToNodeParser::Impl::buildEnd() {
    if (m_current == nullptr) {
        std::cerr << "End element called when not inside one!" << std::endl;
        return;
    }
    if (!m_open.empty()) {
        complete(*m_current);
    }
    m_current = m_current->getParent();
}

void SAXToNodeParser::Impl::complete(XMLNode& node) {
    const Open open = m_open.back();
    m_open.pop_back();
    if (open.children < m_pending.size()) {
        const auto first = m_pending.begin() + static_cast<std::ptrdiff_t>(open.children);
        node.m_children = m_tree.placeChildren(first, m_pending.end());
        node.m_flags |= XMLNode::kChildListInPlace;
        m_pending.erase(first, m_pending.end());
    }
    if (open.text < m_openText.size()) {
        const char* const text = m_openText.data() + open.text;
        const std::size_t size = m_openText.size() - open.text;
        if ((node.m_flags & XMLNode::kTextInPlace) != 0) {
            placedText(node).append(text, size);
        } else if (size <= kSharedText && AsciiText::isLayout(text, size)) {
            node.m_text = &m_tree.sharedText(text, size);
        } else {
            node.m_text = m_tree.placeText(text, size);
            node.m_flags |= XMLNode::kTextInPlace;
        }
        m_openText.resize(open.text);
    }
}

std::string& SAXToNodeParser::Impl::placedText(XMLNode& node) {
    if ((node.m_flags & XMLNode::kTextInPlace) == 0) {
        node.m_text = m_tree.placeText(node.m_text->data(), node.m_text->size());
        node.m_flags |= XMLNode::kTextInPlace;
    }
    return *const_cast<std::string*>(node.m_text);
}

void SAXToNodeParser::Impl::clearOpen() {
    m_pending.clear();
    m_open.clear();
    m_openText.resize(0);
    m_events.clear();
    m_textEnd = kNoText;
    // What one very large document needed is not kept for the next.
    constexpr std::size_t kKeptBytes = std::size_t{64} * 1024;
    if (m_openText.capacity() > kKeptBytes) {
        m_openText.reset();
    }
    if (m_pending.capacity() > kKeptBytes / sizeof(void*)) {  // pointers to nodes
        std::vector<XMLNode*>().swap(m_pending);
    }
    if (m_open.capacity() * sizeof(Open) > kKeptBytes) {
        std::vector<Open>().swap(m_open);
    }
    m_events.trim();
}

void SAXToNodeParser::Impl::discard() {
    clearOpen();
    m_root = nullptr;
    m_tree.clear();
    m_current = nullptr;
    m_depth = 0;
    m_begun = false;
}

std::string SAXToNodeParser::Impl::thrownLayout(const std::string& documentName,
                                                const XMLCh* text) {
    std::string message = "Fatal Error: parsing: " + documentName + "\n";
    const std::string converted = local(text);
    if (!converted.empty()) {
        message += "Message: " + converted + "\n";
    }
    return message;
}

XMLNode* SAXToNodeParser::Impl::parse(const X::InputSource& source,
                                      const std::string& documentName) {
    discard();
    m_tree.begin();
    m_warnings.clear();
    m_documentName = documentName;
    m_locator = nullptr;
    m_xsiUri = nullptr;  // the last reader's, whose memory may hold anything now
    m_utf8 = std::make_unique<Utf8String>(m_encoding);
    m_localUtf8 = m_utf8->isLocalUtf8();
    m_replace = s_replaceHexOneA.load();

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
    m_declarationCheck = &declarationCheck;
    // Namespace processing stays on, as it comes. Nothing may make the reader open what the
    // caller did not name: no external DTD, no schema named by xsi:schemaLocation, no default
    // entity resolution. The refusal of the DOCTYPE above already keeps the first and last
    // closed; these settings close them twice.
    reader->setFeature(X::XMLUni::fgXercesLoadExternalDTD, false);
    reader->setFeature(X::XMLUni::fgXercesLoadSchema, false);
    reader->setFeature(X::XMLUni::fgXercesDisableDefaultEntityResolution, true);
    // Schema processing is off too. With validation off and no schema ever loaded, it only
    // looked up a grammar for the namespace of every element, a tenth of the scan, and
    // checked xsi:schemaLocation, which the handler now does (checkSchemaLocation).
    reader->setFeature(X::XMLUni::fgXercesSchema, false);

    m_reader = reader.get();
    struct Forget {
        X::SAX2XMLReader*& reader;
        X::XMLDocumentHandler*& declarationCheck;
        ~Forget() {
            reader = nullptr;
            declarationCheck = nullptr;
        }
    } forget{m_reader, m_declarationCheck};
    try {
        reader->parse(source);
        build();  // the last batch
    } catch (const DomException&) {
        discard();
        throw;
    } catch (const X::OutOfMemoryException&) {
        discard();
        throw DomException("Fatal Error: parsing: " + documentName + "\nMessage: out of memory\n");
    } catch (const X::XMLException& e) {
        discard();
        throw DomException(thrownLayout(documentName, e.getMessage()));
    } catch (const X::SAXException& e) {
        discard();
        throw DomException(thrownLayout(documentName, e.getMessage()));
    } catch (...) {
        discard();
        throw;
    }
    m_locator = nullptr;
    clearOpen();
    if (m_root == nullptr && (m_sink == nullptr || !m_begun)) {
        throw DomException("XML Document '" + documentName + "' does not exist.\n");
    }
    return m_root;
}

void SAXToNodeParser::Impl::parseInto(const X::InputSource& source, const std::string& documentName,
                                      ElementSink& sink) {
    m_sink = &sink;
    m_sinkText = sink.wantsText();
    struct Detach {
        ElementSink*& sink;
        ~Detach() { sink = nullptr; }
    } detach{m_sink};
    parse(source, documentName);
}

namespace {

// The whole content of the file at `path`, read in large pieces; false when it cannot be opened.
bool readFile(const std::string& path, std::string& content) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return false;
    }
    // Room for all of a regular file at once; what else can be read grows as it comes.
    if (file.seekg(0, std::ios::end)) {
        const std::streamoff size = file.tellg();
        file.seekg(0, std::ios::beg);
        if (size > 0) {
            content.reserve(static_cast<std::size_t>(size));
        }
    }
    file.clear();  // a stream that cannot seek is read from where it is
    constexpr std::size_t kPiece = std::size_t{64} * 1024;
    std::unique_ptr<char[]> piece(new char[kPiece]);
    while (file.read(piece.get(), kPiece) || file.gcount() > 0) {
        content.append(piece.get(), static_cast<std::size_t>(file.gcount()));
    }
    return true;
}

}  // namespace

void parseFileInto(const std::string& path, const std::string& encoding, ElementSink& sink) {
    initializeXerces();
    std::string content;
    if (!readFile(path, content)) {
        throw DomException("XML Document '" + path + "' does not exist.\n");
    }
    X::MemBufInputSource source(reinterpret_cast<const XMLByte*>(content.data()), content.size(),
                                path.c_str(), false);
    source.setCopyBufToStream(false);
    SAXToNodeParser::Impl scanner;
    scanner.m_encoding = encoding;
    scanner.parseInto(source, path, sink);
}

void parseStringInto(const std::string& xml, ElementSink& sink) {
    initializeXerces();
    // The document ends at its first zero byte, which is handed over with it.
    const std::size_t length = std::strlen(xml.c_str()) + 1;
    X::MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.c_str()), length,
                                kStringSystemId, false);
    source.setCopyBufToStream(false);
    SAXToNodeParser::Impl scanner;
    scanner.parseInto(source, kStringName, sink);
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
    std::string content;
    if (!readFile(path, content)) {
        m_impl->discard();
        throw DomException("XML Document '" + path + "' does not exist.\n");
    }
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
        // Bytes are taken as signed on purpose: every byte of 0x80 or more is flagged, and is
        // reported as its sign-extended value.
        const auto value =
            static_cast<int>(static_cast<signed char>(c));  // NOLINT(bugprone-signed-char-misuse)
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
