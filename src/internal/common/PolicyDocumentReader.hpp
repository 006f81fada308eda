#ifndef CORVANE_SOA_SRC_INTERNAL_COMMON_POLICYDOCUMENTREADER_HPP
#define CORVANE_SOA_SRC_INTERNAL_COMMON_POLICYDOCUMENTREADER_HPP

#include "common/xml/ElementSink.hpp"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace Corvane::Soa::Common {
class ObjectPropertyPolicy;
}  // namespace Corvane::Soa::Common

namespace Corvane::Soa::Internal::Common {

/// Reads a policy file's elements as the XML reader scans them, with no tree between, and adds
/// what they hold to a policy once the whole document has been read: a document that is not
/// well formed further on changes nothing, as when the file was read into a tree first. The
/// first misplaced element is remembered and the rest of the document only scanned; `apply`
/// then adds what came before it, as a reading of the tree in document order would have, and
/// throws its message.
class PolicyDocumentReader : public ::Corvane::Soa::Common::Xml::ElementSink {
public:
    /// The messages of a misplaced element, shared with the reading of a tree.
    static std::string invalidRoot(const std::string& name);
    static std::string unexpectedElement(const std::string& name);
    static std::string typeWithoutName();
    static std::string invalidProperty();

    PolicyDocumentReader() = default;

    void startElement(const std::string& name, const Attribute* attributes,
                      std::size_t count) override;
    void endElement() override { --m_depth; }

    /// Adds what was read to `policy` as `PolicyMarshaller::load` does from a tree: the root's
    /// flags, then each type with its properties through `addProperty` and `addType`. Throws
    /// the message of the first misplaced element after adding what came before it.
    void apply(::Corvane::Soa::Common::ObjectPropertyPolicy& policy);

private:
    // One "ObjectType" or "Property" element: its name and its flags, bit i for flag i of
    // `PolicyMarshaller::flags()` (set: whether the attribute is there; on: its value).
    struct Element {
        std::string name;
        std::uint8_t set;
        std::uint8_t on;
        bool isType;
    };

    void fault(std::string message, bool inType);
    static void readFlags(const Attribute* attributes, std::size_t count, std::uint8_t& set,
                          std::uint8_t& on);

    int m_depth = 0;
    bool m_inType = false;  // whether the current child of the root is a type that is read
    bool m_rootRead = false;
    std::uint8_t m_rootSet = 0;
    std::uint8_t m_rootOn = 0;
    std::deque<Element> m_elements;  // in document order, each type before its properties
    bool m_faulted = false;
    bool m_faultInType = false;  // the fault is inside the last type, which is then not added
    std::string m_fault;
};

}  // namespace Corvane::Soa::Internal::Common

#endif
