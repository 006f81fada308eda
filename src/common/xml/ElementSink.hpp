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
/// name, an attribute's its qualified name; the xsi:type attribute is not among them, and text
/// is not handed over. What is handed over is valid during the call only.
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
};

/// Reads the file at `path` exactly as `SAXToNodeParser::parseFile(path, encoding)` does, with
/// the same refusals and the same messages, handing its elements to `sink` instead of building
/// a tree. The elements reach `sink` while the scan goes on, in batches: a document that turns
/// out to be faulty further on has handed over its earlier elements by then.
void parseFileInto(const std::string& path, const std::string& encoding, ElementSink& sink);

}  // namespace Corvane::Soa::Common::Xml

#endif
