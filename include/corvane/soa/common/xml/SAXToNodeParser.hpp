#ifndef CORVANE_SOA_COMMON_XML_SAXTONODEPARSER_HPP
#define CORVANE_SOA_COMMON_XML_SAXTONODEPARSER_HPP

#include <corvane/soa/Export.hpp>

#include <istream>
#include <memory>
#include <string>
#include <vector>

namespace Corvane::Soa::Common::Xml {

class ElementSink;
class XMLNode;

/// Reads an XML document in one pass into a tree of `XMLNode`s. Element names, attribute
/// values and text are converted to the parser's code page (see `setEncodingName`; by default
/// the process's default local code page).
///
/// Every failure is thrown as `Exceptions::DomException`:
///   - a document type declaration, whatever it holds: "Document Type Defintions are not
///     permited in XML documents." (nothing in it is ever acted on or fetched);
///   - an element more than `kMaxDepth` levels deep: "The XML document is nested too deeply."
///     followed by "\n" and the position in the layout below;
///   - a document that is not well formed:
///       "Fatal Error: parsing: SYSTEM-ID: line L, char C\n" then "Message: TEXT\n"
///     ("Error: parsing:" for a recoverable error, which is refused just the same);
///   - a file or stream that cannot be read: "XML Document 'NAME' does not exist.\n".
/// Nothing is returned half parsed. Warnings do not stop the parse: they are kept, in the
/// same layout with the heading "Warning: parsing:", and listed by `getWarnings`.
///
/// The tree of the last parse belongs to the parser: it lives until the next parse or the
/// parser's end. A parser serves one thread at a time; separate parsers share nothing.
class CORVANE_SOA_API SAXToNodeParser {
public:
    /// Elements deeper than this are refused.
    static constexpr int kMaxDepth = 1024;

    SAXToNodeParser();
    SAXToNodeParser(const SAXToNodeParser&) = delete;
    SAXToNodeParser& operator=(const SAXToNodeParser&) = delete;
    ~SAXToNodeParser();

    /// Parses the text up to its first zero byte; the system identifier in messages is
    /// "From-String". Returns the root.
    XMLNode* parseString(const std::string& xml);
    /// As above, converting text to the code page `encoding` (which is kept for later parses).
    XMLNode* parseString(const std::string& xml, const std::string& encoding);
    /// Parses what the stream holds; described as "From std::istream", with the system
    /// identifier "From-std::istream". A null or failed stream "does not exist".
    XMLNode* parseStream(std::istream* in);
    XMLNode* parseStream(std::istream* in, const std::string& encoding);
    /// Parses a file; its path describes it and is its system identifier.
    XMLNode* parseFile(const std::string& path);
    XMLNode* parseFile(const std::string& path, const std::string& encoding);

    /// The root of the last parse. `getRoot` throws `DomException` when there is none.
    XMLNode& getRoot() const;
    XMLNode* getRootNode() const noexcept;

    /// The code page for text conversion; empty for the default local code page.
    void setEncodingName(const std::string& encoding);
    const std::string& getEncodingName() const noexcept;

    /// The warnings of the last parse, in order.
    const std::vector<std::string>& getWarnings() const noexcept;

    /// Lists the bytes of `xml` that are not printable ASCII, a line feed or a carriage return
    /// (at most 200) and returns whether there were none. When there are, `report` becomes
    ///   "The XML document containes one or more invalid character codes:\n "
    /// followed by one "0x%X at line %d char %d\n" a byte, the byte printed as a sign-extended
    /// 32-bit value (0xC3 prints as FFFFFFC3). Lines and characters count from 1; a carriage
    /// return followed by a line feed ends one line. A clean text leaves `report` empty.
    static bool checkForIllegalXMLchars(const std::string& xml, std::string& report);

    /// Process-wide: whether text conversion turns the substitution byte 0x1A into '?'.
    static void replaceHexOneA(bool replace);

private:
    // The library's own readers that take the elements without a tree: parseFile's scan, with
    // its checks and messages, feeding them.
    friend void parseFileInto(const std::string& path, const std::string& encoding,
                              ElementSink& sink);
    friend void parseStringInto(const std::string& xml, ElementSink& sink);

    class Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
