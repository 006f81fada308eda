#ifndef CORVANE_SOA_SRC_COMMON_XML_XMLBINDER_HPP
#define CORVANE_SOA_SRC_COMMON_XML_XMLBINDER_HPP

// Binds an XML document straight into a generated object. Not part of the exported interface.

#include <corvane/soa/common/AutoPtr.hpp>

#include "common/xml/ElementSink.hpp"
#include "common/xml/GeneratedTypes.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Soa::Common::Xml {

class BaseObject;
class XMLNode;
struct FieldDescriptor;
struct TypeDescriptor;

/// Takes the elements of a document from the XML reader and binds them by the descriptors, as
/// `parse` of the document's tree would: children matched to fields by local name, unknown
/// children and attributes skipped, absent attributes read as empty. An object that is not what
/// its generator made gets its element as a tree of its own.
///
/// A failure of the binding itself (a value its attribute cannot take) makes the binder give up,
/// as `JsonBinder` does: the scan goes on, so that the document's faults come first, and the
/// caller reads the text through the tree.
class XmlBinder : public ElementSink {
public:
    /// Into `object` of `type`; or, when `object` is null, into a new object of the type that
    /// the root element names, its namespace read from `text`.
    XmlBinder(BaseObject* object, const TypeDescriptor* type, const std::string& text);
    XmlBinder(const XmlBinder&) = delete;
    XmlBinder& operator=(const XmlBinder&) = delete;
    ~XmlBinder() override;

    bool gaveUp() const noexcept { return m_gaveUp; }
    /// The object made for the root, when the binder made it.
    const AutoPtr<BaseObject>& made() const noexcept { return m_made; }

    bool wantsText() const override { return true; }
    void startElement(const std::string& name, const Attribute* attributes,
                      std::size_t count) override;
    void startTyped(const std::string& name, const Attribute* attributes, std::size_t count,
                    const std::string* extension) override;
    void text(std::string_view piece) override;
    void endElement() override;

private:
    enum class Frame : std::uint8_t { Object, Text, Skip, Tree };

    struct Level {
        Frame frame;
        BaseObject* object;            // Object: the object bound
        const TypeDescriptor* type;    // Object: its type
        BaseObject* owner;             // Text: the object whose field it is
        const FieldDescriptor* field;  // Text: the field
    };

    void start(const std::string& name, const Attribute* attributes, std::size_t count,
               const std::string* extension);
    void startRoot(const std::string& name, const Attribute* attributes, std::size_t count);
    void startChild(const std::string& name, const Attribute* attributes, std::size_t count,
                    const std::string* extension);
    void startTree(BaseObject& target, const std::string& name, const Attribute* attributes,
                   std::size_t count, const std::string* extension);
    void pushObject(BaseObject& object, const TypeDescriptor& type, const Attribute* attributes,
                    std::size_t count);
    void finishText(const Level& level);
    void giveUp();

    std::vector<Level> m_levels;
    // The text of the open text element (its children are skipped: at most one is open).
    std::string m_text;
    // The element of an object that reads itself, while it is read.
    std::unique_ptr<XMLNode> m_treeRoot;
    XMLNode* m_treeCurrent = nullptr;
    BaseObject* m_treeTarget = nullptr;
    GeneratedTypes::Cache m_generated;
    BaseObject* m_root;
    const TypeDescriptor* m_rootType;
    const std::string& m_document;
    AutoPtr<BaseObject> m_made;
    bool m_gaveUp = false;
};

/// Binds `text` into `object` of generated `type`; false when the tree path must read it.
bool bindXml(const std::string& text, BaseObject* object, const TypeDescriptor* type);

/// Binds `text` into a new object of the type its root names, left in `made`; false when the
/// tree path must read it.
bool bindXml(const std::string& text, AutoPtr<BaseObject>& made);

}  // namespace Corvane::Soa::Common::Xml

#endif
