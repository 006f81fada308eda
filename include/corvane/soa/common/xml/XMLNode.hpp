#ifndef CORVANE_SOA_COMMON_XML_XMLNODE_HPP
#define CORVANE_SOA_COMMON_XML_XMLNODE_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AccountedAllocation.hpp>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace Corvane::Soa::Common::Xml {

/// One parsed XML element: its local name, the type named by its xsi:type attribute (the
/// extension name), its other attributes, its character content and its child elements.
///
/// A node owns its children. Destroying a node destroys its whole subtree without recursion,
/// however deep the tree. Trees built by `SAXToNodeParser` belong to that parser.
class CORVANE_SOA_API XMLNode {
public:
    using Attributes = std::map<std::string, std::string>;

    XMLNode() = default;
    explicit XMLNode(std::string name);
    XMLNode(const XMLNode&) = delete;
    XMLNode& operator=(const XMLNode&) = delete;
    ~XMLNode();

    /// The element's local name.
    const std::string& getName() const noexcept { return m_name; }
    void setName(const std::string& name) { m_name = name; }

    /// The character content, all pieces concatenated in document order.
    const std::string& getText() const noexcept { return m_text; }
    void setText(const std::string& text) { m_text = text; }
    void appendText(const std::string& text) { m_text += text; }

    /// The child elements in document order.
    const std::vector<XMLNode*>& getChildren() const noexcept { return m_children; }
    /// The enclosing element; null for the root.
    XMLNode* getParent() const noexcept { return m_parent; }
    /// Appends `child` (which must have no parent yet) and takes ownership of it; returns it.
    XMLNode* addChild(XMLNode* child);

    /// Sets an attribute; a prefixed attribute is stored under its qualified name ("xml:lang").
    void putAttr(const std::string& name, const std::string& value);
    /// The attribute's value, or the empty string when it is absent.
    const std::string& getAttr(const std::string& name) const;
    bool existsAttr(const std::string& name) const;
    const Attributes& attrs() const noexcept { return m_attributes; }

    /// The type named by the element's xsi:type attribute, without its prefix; empty when the
    /// element has none.
    const std::string& getExtensionName() const noexcept { return m_extensionName; }
    void setExtensionName(const std::string& name) { m_extensionName = name; }

    /// Prints the subtree for diagnostics, one element a line, each line starting with `indent`
    /// and two more spaces per level:
    ///   name [extension] attribute="value" ... = "text"
    /// The extension appears only when there is one, the text only when it holds more than
    /// white space.
    void output(std::ostream& out, const std::string& indent) const;

    CORVANE_SOA_ACCOUNTED_ALLOCATION("XMLNode")

private:
    friend class SAXToNodeParser;

    std::string m_name;
    Attributes m_attributes;
    std::string m_text;
    std::vector<XMLNode*> m_children;
    XMLNode* m_parent = nullptr;
    std::string m_extensionName;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
