#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/FieldDescriptor.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/ListAccess.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/common/xml/TypeRegistry.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>

#include "common/xml/MemberAccess.hpp"
#include "common/xml/XmlBinder.hpp"

namespace Corvane::Soa::Common::Xml {

using MemberAccess::assignText;
using MemberAccess::held;
using MemberAccess::markSet;
using MemberAccess::store;

namespace {

// The attribute of that name, as the tree keeps it: of two that convert to one name, the last.
const ElementSink::Attribute* attributeNamed(const ElementSink::Attribute* attributes,
                                             std::size_t count, const std::string& name) {
    const ElementSink::Attribute* found = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
        if (*attributes[i].name == name) {
            found = attributes + i;
        }
    }
    return found;
}

void readAttribute(const FieldDescriptor& field, BaseObject& object, std::string_view text) {
    switch (field.kind) {
        case FieldKind::Text:
            assignText(store<std::string>(field, object), text);
            break;
        case FieldKind::Boolean:
            store<bool>(field, object) = lexical_cast<bool, std::string>(std::string(text));
            break;
        case FieldKind::Integer:
            store<int>(field, object) = lexical_cast<int, std::string>(std::string(text));
            break;
        case FieldKind::Float:
            store<float>(field, object) = lexical_cast<float, std::string>(std::string(text));
            break;
        case FieldKind::Double:
            store<double>(field, object) = lexical_cast<double, std::string>(std::string(text));
            break;
        default:
            store<DateTime>(field, object) = lexical_cast<DateTime, std::string>(std::string(text));
            break;
    }
}

// The field that a child element of that name goes to: the first element-kind field of the name.
const FieldDescriptor* childField(const TypeDescriptor& type, const std::string& name) {
    for (const FieldDescriptor& field : type) {
        if (!isAttributeKind(field.kind) && field.name == name) {
            return &field;
        }
    }
    return nullptr;
}

}  // namespace

XmlBinder::XmlBinder(BaseObject* object, const TypeDescriptor* type, const std::string& text)
    : m_root(object), m_rootType(type), m_document(text) {
    m_levels.reserve(16);
}

XmlBinder::~XmlBinder() = default;

void XmlBinder::giveUp() {
    m_gaveUp = true;
    m_levels.clear();
    m_treeRoot.reset();
    m_treeCurrent = nullptr;
}

void XmlBinder::pushObject(BaseObject& object, const TypeDescriptor& type,
                           const Attribute* attributes, std::size_t count) {
    m_levels.push_back(Level{Frame::Object, &object, &type, nullptr, nullptr});
    for (const FieldDescriptor& field : type) {
        if (!isAttributeKind(field.kind)) {
            continue;
        }
        const Attribute* attribute = attributeNamed(attributes, count, field.name);
        if (field.flag == nullptr) {
            readAttribute(field, object,
                          attribute != nullptr ? attribute->value : std::string_view());
        } else if (attribute != nullptr) {
            readAttribute(field, object, attribute->value);
            markSet(field, object);
        }
    }
}

void XmlBinder::startTree(BaseObject& target, const std::string& name, const Attribute* attributes,
                          std::size_t count, const std::string* extension) {
    auto node = std::make_unique<XMLNode>(name);
    for (std::size_t i = 0; i < count; ++i) {
        node->putAttr(*attributes[i].name, std::string(attributes[i].value));
    }
    if (extension != nullptr) {
        node->setExtensionName(*extension);
    }
    if (m_treeCurrent == nullptr) {
        m_treeRoot = std::move(node);
        m_treeCurrent = m_treeRoot.get();
        m_treeTarget = &target;
    } else {
        m_treeCurrent = m_treeCurrent->addChild(node.release());
    }
    m_levels.push_back(Level{Frame::Tree, nullptr, nullptr, nullptr, nullptr});
}

void XmlBinder::startRoot(const std::string& name, const Attribute* attributes, std::size_t count) {
    if (m_root == nullptr) {
        const TypeDescriptor* type = TypeRegistry::find(getRootNamespace(m_document), name);
        if (type == nullptr) {
            giveUp();  // the tree path names it, once the document is read
            return;
        }
        m_made = AutoPtr<BaseObject>(type->create());
        m_root = m_made.get();
        m_rootType = type;
    }
    pushObject(*m_root, *m_rootType, attributes, count);
}

void XmlBinder::startChild(const std::string& name, const Attribute* attributes, std::size_t count,
                           const std::string* extension) {
    const Level& top = m_levels.back();
    if (top.frame == Frame::Tree) {
        startTree(*m_treeTarget, name, attributes, count, extension);
        return;
    }
    const FieldDescriptor* field =
        top.frame == Frame::Object ? childField(*top.type, name) : nullptr;
    if (field == nullptr) {
        m_levels.push_back(Level{Frame::Skip, nullptr, nullptr, nullptr, nullptr});
        return;
    }
    BaseObject& object = *top.object;
    switch (field->kind) {
        case FieldKind::StructureList: {
            BaseObject* element = field->list->append(field->member(object, true));
            pushObject(*element, field->type(), attributes, count);
            break;
        }
        case FieldKind::TextList:
        case FieldKind::TextElement:
            m_text.clear();
            m_levels.push_back(Level{Frame::Text, nullptr, nullptr, &object, field});
            break;
        default: {
            BaseObject& member = held(*field, object);
            markSet(*field, object);
            if (m_generated.isGenerated(member, field->type())) {
                pushObject(member, field->type(), attributes, count);
            } else {
                startTree(member, name, attributes, count, extension);
            }
            break;
        }
    }
}

void XmlBinder::start(const std::string& name, const Attribute* attributes, std::size_t count,
                      const std::string* extension) {
    if (m_gaveUp) {
        return;
    }
    try {
        if (m_levels.empty()) {
            startRoot(name, attributes, count);
        } else {
            startChild(name, attributes, count, extension);
        }
    } catch (...) {
        // The tree path reports it, after the document's own faults.
        giveUp();
    }
}

void XmlBinder::startElement(const std::string& name, const Attribute* attributes,
                             std::size_t count) {
    start(name, attributes, count, nullptr);
}

void XmlBinder::startTyped(const std::string& name, const Attribute* attributes, std::size_t count,
                           const std::string* extension) {
    start(name, attributes, count, extension);
}

void XmlBinder::text(std::string_view piece) {
    if (m_gaveUp || m_levels.empty()) {
        return;
    }
    const Level& top = m_levels.back();
    if (top.frame == Frame::Text) {
        m_text.append(piece);
    } else if (top.frame == Frame::Tree) {
        m_treeCurrent->appendText(std::string(piece));
    }
}

void XmlBinder::finishText(const Level& level) {
    if (level.field->kind == FieldKind::TextList) {
        store<std::vector<std::string>>(*level.field, *level.owner).push_back(m_text);
    } else {
        assignText(store<std::string>(*level.field, *level.owner), m_text);
    }
}

void XmlBinder::endElement() {
    if (m_gaveUp) {
        return;
    }
    const Level level = m_levels.back();
    m_levels.pop_back();
    if (level.frame == Frame::Text) {
        finishText(level);
    } else if (level.frame == Frame::Tree) {
        XMLNode* parent = m_treeCurrent->getParent();
        if (parent != nullptr) {
            m_treeCurrent = parent;
            return;
        }
        m_treeCurrent = nullptr;
        const std::unique_ptr<XMLNode> node = std::move(m_treeRoot);
        try {
            m_treeTarget->parse(*node);
        } catch (...) {
            giveUp();
        }
    }
}

bool bindXml(const std::string& text, BaseObject* object, const TypeDescriptor* type) {
    XmlBinder binder(object, type, text);
    parseStringInto(text, binder);
    return !binder.gaveUp();
}

bool bindXml(const std::string& text, AutoPtr<BaseObject>& made) {
    XmlBinder binder(nullptr, nullptr, text);
    parseStringInto(text, binder);
    if (binder.gaveUp()) {
        return false;
    }
    made = binder.made();
    return true;
}

}  // namespace Corvane::Soa::Common::Xml
