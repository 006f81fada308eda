#ifndef CORVANE_SOA_SRC_COMMON_XML_ELEMENTSINK_HPP
#define CORVANE_SOA_SRC_COMMON_XML_ELEMENTSINK_HPP

// The XML reader's elements handed over one by one, for the library's readers that want no
// tree. Not part of the exported interface.

#include <cstddef>
#include <string>
#include <string_view>

namespace Corvane::Soa::Common::Xml {

/// Receives the elements of a document in document order, as `SAXToNodeParser` would have put
/// them in its tree: names and values in the parser's code page, an element's name its local
/// name, an attribute's its qualified name; the xsi:type attribute is not among them. Text is
/// handed over, in pieces, only to a sink that asks for it. What is handed over is valid during
/// the call only.
class ElementSink {
public:
    struct Attribute {
        const std::string* name;
        std::string_view value;
    };

    ElementSink() = default;
    ElementSink(const ElementSink&) = delete;
    ElementSink& operator=(const ElementSink&) = delete;
    virtual ~ElementSink() = default;

    virtual void startElement(const std::string& name, const Attribute* attributes,
                              std::size_t count) = 0;
    virtual void endElement() = 0;

    /// Whether `text` is to be called with the character content.
    virtual bool wantsText() const { return false; }
    /// A piece of the character content of the innermost open element (or, outside any
    /// element, of none).
    virtual void text(std::string_view /*piece*/) {}
    /// `startElement` with the type that the element's xsi:type names (without its prefix), or
    /// null when it has none.
    virtual void startTyped(const std::string& name, const Attribute* attributes, std::size_t count,
                            const std::string* /*extension*/) {
        startElement(name, attributes, count);
    }
};

/// Reads the file at `path` exactly as `SAXToNodeParser::parseFile(path, encoding)` does, with
/// the same refusals and the same messages, handing its elements to `sink` instead of building
/// a tree. The elements reach `sink` while the scan goes on, in batches: a document that turns
/// out to be faulty further on has handed over its earlier elements by then.
void parseFileInto(const std::string& path, const std::string& encoding, ElementSink& sink);

/// Reads `xml` exactly as `SAXToNodeParser::parseString(xml)` does, handing its elements to
/// `sink` in the same way.
void parseStringInto(const std::string& xml, ElementSink& sink);

}  // namespace Corvane::Soa::Common::Xml

#endif
