#ifndef CORVANE_SOA_COMMON_XML_XMLNODE_HPP
#define CORVANE_SOA_COMMON_XML_XMLNODE_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AccountedAllocation.hpp>

#include <atomic>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace Corvane::Soa::Common::Xml {

/// One parsed XML element: its local name, the type named by its xsi:type attribute (the
/// extension name), its other attributes, its character content and its child elements.
///
/// A node owns the children that were made with `new` and added to it. Destroying a node
/// destroys that whole subtree without recursion, however deep the tree. Trees built by
/// `SAXToNodeParser` belong to that parser, which frees their nodes all together: such a node
/// is never deleted by its parent nor by the caller.
class CORVANE_SOA_API XMLNode {
public:
    using Attributes = std::map<std::string, std::string>;

    XMLNode();
    explicit XMLNode(std::string name);
    XMLNode(const XMLNode&) = delete;
    XMLNode& operator=(const XMLNode&) = delete;
    ~XMLNode();

    /// The element's local name.
    const std::string& getName() const noexcept { return *m_name; }
    void setName(const std::string& name);

    /// The character content, all pieces concatenated in document order.
    const std::string& getText() const noexcept { return *m_text; }
    void setText(const std::string& text);
    void appendText(const std::string& text);

    /// The child elements in document order.
    const std::vector<XMLNode*>& getChildren() const noexcept { return *m_children; }
    /// The enclosing element; null for the root.
    XMLNode* getParent() const noexcept { return m_parent; }
    /// Appends `child` (which must have no parent yet) and takes ownership of it; returns it.
    XMLNode* addChild(XMLNode* child);

    /// Sets an attribute; a prefixed attribute is stored under its qualified name ("xml:lang").
    void putAttr(const std::string& name, const std::string& value);
    /// The attribute's value, or the empty string when it is absent.
    const std::string& getAttr(const std::string& name) const;
    bool existsAttr(const std::string& name) const;
    /// All attributes by name. The map is made on the first call and kept: it is the same
    /// object on every later call, and `putAttr` keeps it up to date.
    const Attributes& attrs() const;

    /// The type named by the element's xsi:type attribute, without its prefix; empty when the
    /// element has none.
    const std::string& getExtensionName() const noexcept { return *m_extensionName; }
    void setExtensionName(const std::string& name);

    /// Prints the subtree for diagnostics, one element a line, each line starting with `indent`
    /// and two more spaces per level:
    ///   name [extension] attribute="value" ... = "text"
    /// The extension appears only when there is one, the text only when it holds more than
    /// white space.
    void output(std::ostream& out, const std::string& indent) const;

    CORVANE_SOA_ACCOUNTED_ALLOCATION("XMLNode")

private:
    friend class SAXToNodeParser;

    // The attributes are kept in one array, in the order they were given, and looked up by a
    // walk: elements have few. The name of a parsed attribute is shared by every attribute
    // of that name in the document and belongs to the parser's tree.
    struct Attribute {
        const std::string* name;
        std::string value;
    };

    // A part that a node neither owns nor has in place is shared: an empty one, or a name or
    // a white space text that a parser's tree keeps once for all its nodes. It is replaced by
    // a part of the node's own when the node changes it.
    enum Flags : std::uint32_t {
        kTreeOwned = 1U << 0,         // made by a parser, which frees it; its parent never does
        kOwnsName = 1U << 1,          // m_name was made with new for this node
        kOwnsExtension = 1U << 2,     // m_extensionName was made with new for this node
        kOwnsAttributes = 1U << 3,    // m_attributes (and each name) was allocated for it
        kDeletesChildren = 1U << 4,   // some child was added with addChild and is not a tree's
        kOwnsText = 1U << 5,          // m_text was made with new for this node
        kTextInPlace = 1U << 6,       // m_text is this node's, in its tree's memory
        kOwnsChildList = 1U << 7,     // m_children was made with new for this node
        kChildListInPlace = 1U << 8,  // m_children is this node's, in its tree's memory
    };

    // A node of a parser's tree, named by a string that the tree keeps.
    XMLNode(const std::string* name, XMLNode* parent) noexcept;

    const Attribute* findAttribute(const std::string& name) const noexcept;
    void destroyAttributes() noexcept;
    void deleteChildren() noexcept;
    std::string& ownText();
    std::vector<XMLNode*>& ownChildren();

    // One cache line: the parts are pointed to, so that a node without text, children or
    // attributes, or with shared ones, takes no room for them.
    const std::string* m_name;
    const std::string* m_text;
    const std::vector<XMLNode*>* m_children;
    const std::string* m_extensionName;
    XMLNode* m_parent = nullptr;
    Attribute* m_attributes = nullptr;
    mutable std::atomic<Attributes*> m_attributeMap{nullptr};
    std::uint32_t m_attributeCount = 0;
    std::uint32_t m_flags = 0;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
