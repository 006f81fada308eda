#include <corvane/soa/common/xml/XMLNode.hpp>

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace Corvane::Soa::Common::Xml {

namespace {

const std::string kEmpty;
const std::vector<XMLNode*> kNoChildren;

bool isBlank(const std::string& text) {
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

// The room of an attribute array that a node allocated itself, for `count` attributes: it
// grows by doubling, so that attributes put one by one cost amortised constant time.
std::size_t capacityFor(std::size_t count) {
    std::size_t capacity = 4;
    while (capacity < count) {
        capacity *= 2;
    }
    return capacity;
}

}  // namespace

// A node made by the caller has its own name, text, extension and child list from the start, so
// that the references its getters return follow every change.
XMLNode::XMLNode() : XMLNode(std::string()) {}

XMLNode::XMLNode(std::string name)
    : m_name(&kEmpty), m_text(&kEmpty), m_children(&kNoChildren), m_extensionName(&kEmpty) {
    auto ownName = std::make_unique<std::string>(std::move(name));
    auto ownText = std::make_unique<std::string>();
    auto ownExtension = std::make_unique<std::string>();
    m_children = new std::vector<XMLNode*>();
    m_name = ownName.release();
    m_text = ownText.release();
    m_extensionName = ownExtension.release();
    m_flags = kOwnsName | kOwnsText | kOwnsExtension | kOwnsChildList;
}

XMLNode::XMLNode(const std::string* name, XMLNode* parent) noexcept
    : m_name(name),
      m_text(&kEmpty),
      m_children(&kNoChildren),
      m_extensionName(&kEmpty),
      m_parent(parent),
      m_flags(kTreeOwned) {}

XMLNode::~XMLNode() {
    if ((m_flags & kDeletesChildren) != 0 && !m_children->empty()) {
        deleteChildren();
    }
    if ((m_flags & kOwnsChildList) != 0) {
        delete m_children;
    } else if ((m_flags & kChildListInPlace) != 0) {
        m_children->~vector();
    }
    if ((m_flags & kOwnsText) != 0) {
        delete m_text;
    } else if ((m_flags & kTextInPlace) != 0) {
        m_text->~basic_string();
    }
    if (m_attributes != nullptr) {
        destroyAttributes();
    }
    delete m_attributeMap.load(std::memory_order_acquire);
    if ((m_flags & kOwnsName) != 0) {
        delete m_name;
    }
    if ((m_flags & kOwnsExtension) != 0) {
        delete m_extensionName;
    }
}

// A node is deleted only once its children are, and with none left, so no delete below ever
// recurses: the depth of the tree never reaches the call stack. The walk keeps the path from
// this node down to the node at hand, with the next child to visit at each level, and so needs
// memory for the depth of the tree only, however many children a node has. Nodes go in document
// order, children before their parent, which is about the order they were made in. A parser's
// nodes are left to their tree.
void XMLNode::deleteChildren() noexcept {
    struct Level {
        XMLNode* node;
        std::size_t next;
    };
    std::vector<Level> path{{this, 0}};
    for (;;) {
        Level& level = path.back();
        std::vector<XMLNode*>& children = level.node->ownChildren();
        if (level.next < children.size()) {
            XMLNode* const child = children[level.next++];
            if ((child->m_flags & kTreeOwned) != 0) {
                continue;
            }
            if ((child->m_flags & kDeletesChildren) == 0 || child->m_children->empty()) {
                delete child;  // which deletes nothing else
                continue;
            }
            path.push_back({child, 0});
            continue;
        }
        children.clear();
        XMLNode* const done = level.node;
        path.pop_back();
        if (path.empty()) {
            break;  // this node, now without children
        }
        delete done;
    }
}

void XMLNode::destroyAttributes() noexcept {
    const bool owned = (m_flags & kOwnsAttributes) != 0;
    for (std::uint32_t i = 0; i < m_attributeCount; ++i) {
        if (owned) {
            delete m_attributes[i].name;
        }
        m_attributes[i].~Attribute();
    }
    if (owned) {
        ::operator delete(m_attributes);
    }
    m_attributes = nullptr;
    m_attributeCount = 0;
}

void XMLNode::setName(const std::string& name) {
    if ((m_flags & kOwnsName) != 0) {
        *const_cast<std::string*>(m_name) = name;
        return;
    }
    m_name = new std::string(name);
    m_flags |= kOwnsName;
}

void XMLNode::setExtensionName(const std::string& name) {
    if ((m_flags & kOwnsExtension) != 0) {
        *const_cast<std::string*>(m_extensionName) = name;
        return;
    }
    m_extensionName = new std::string(name);
    m_flags |= kOwnsExtension;
}

std::string& XMLNode::ownText() {
    if ((m_flags & (kOwnsText | kTextInPlace)) == 0) {
        m_text = new std::string(*m_text);
        m_flags |= kOwnsText;
    }
    return *const_cast<std::string*>(m_text);
}

std::vector<XMLNode*>& XMLNode::ownChildren() {
    if ((m_flags & (kOwnsChildList | kChildListInPlace)) == 0) {
        m_children = new std::vector<XMLNode*>(*m_children);
        m_flags |= kOwnsChildList;
    }
    return *const_cast<std::vector<XMLNode*>*>(m_children);
}

void XMLNode::setText(const std::string& text) { ownText() = text; }

void XMLNode::appendText(const std::string& text) { ownText() += text; }

XMLNode* XMLNode::addChild(XMLNode* child) {
    ownChildren().push_back(child);
    child->m_parent = this;
    if ((child->m_flags & kTreeOwned) == 0) {
        m_flags |= kDeletesChildren;
    }
    return child;
}

const XMLNode::Attribute* XMLNode::findAttribute(const std::string& name) const noexcept {
    const Attribute* const end = m_attributes + m_attributeCount;
    for (const Attribute* attribute = m_attributes; attribute != end; ++attribute) {
        if (*attribute->name == name) {
            return attribute;
        }
    }
    return nullptr;
}

void XMLNode::putAttr(const std::string& name, const std::string& value) {
    // Everything that can fail comes first; the node changes only once nothing can.
    Attributes* const map = m_attributeMap.load(std::memory_order_acquire);
    std::string copy = value;
    if (auto* const found = const_cast<Attribute*>(findAttribute(name))) {
        if (map != nullptr) {
            (*map)[name] = value;
        }
        found->value.swap(copy);
        return;
    }

    // The attributes of a parsed node, or ones that fill their room, move to a new array of
    // the node's own, in which every name is the node's own too.
    auto ownName = std::make_unique<std::string>(name);
    const bool owned = (m_flags & kOwnsAttributes) != 0;
    struct Release {
        void operator()(Attribute* attributes) const noexcept { ::operator delete(attributes); }
    };
    std::unique_ptr<Attribute, Release> fresh;
    std::vector<std::unique_ptr<std::string>> names;
    if (!owned || m_attributeCount == capacityFor(m_attributeCount)) {
        if (!owned) {
            names.reserve(m_attributeCount);
            for (std::uint32_t i = 0; i < m_attributeCount; ++i) {
                names.push_back(std::make_unique<std::string>(*m_attributes[i].name));
            }
        }
        const std::size_t capacity = capacityFor(m_attributeCount + std::size_t{1});
        fresh.reset(static_cast<Attribute*>(::operator new(capacity * sizeof(Attribute))));
    }
    if (map != nullptr) {
        map->emplace(name, value);
    }

    if (fresh != nullptr) {
        for (std::uint32_t i = 0; i < m_attributeCount; ++i) {
            Attribute& old = m_attributes[i];
            new (fresh.get() + i)
                Attribute{owned ? old.name : names[i].release(), std::move(old.value)};
            old.~Attribute();
        }
        if (owned) {
            ::operator delete(m_attributes);
        }
        m_attributes = fresh.release();
        m_flags |= kOwnsAttributes;
    }
    new (m_attributes + m_attributeCount) Attribute{ownName.release(), std::move(copy)};
    ++m_attributeCount;
}

const std::string& XMLNode::getAttr(const std::string& name) const {
    const Attribute* const found = findAttribute(name);
    return found == nullptr ? kEmpty : found->value;
}

bool XMLNode::existsAttr(const std::string& name) const { return findAttribute(name) != nullptr; }

const XMLNode::Attributes& XMLNode::attrs() const {
    Attributes* map = m_attributeMap.load(std::memory_order_acquire);
    if (map != nullptr) {
        return *map;
    }
    // Made on first use. Readers on several threads may race to make it: one map wins and
    // the others are dropped.
    auto made = std::make_unique<Attributes>();
    for (std::uint32_t i = 0; i < m_attributeCount; ++i) {
        made->emplace_hint(made->end(), *m_attributes[i].name, m_attributes[i].value);
    }
    if (m_attributeMap.compare_exchange_strong(map, made.get(), std::memory_order_acq_rel,
                                               std::memory_order_acquire)) {
        return *made.release();
    }
    return *map;
}

void XMLNode::output(std::ostream& out, const std::string& indent) const {
    // Depth-first in document order, with an explicit stack of (node, depth).
    std::vector<std::pair<const XMLNode*, std::size_t>> stack{{this, 0}};
    std::vector<const Attribute*> sorted;
    std::string line;
    while (!stack.empty()) {
        const auto [node, depth] = stack.back();
        stack.pop_back();
        line.assign(indent);
        line.append(depth * 2, ' ');
        line += *node->m_name;
        if (!node->m_extensionName->empty()) {
            line += " [";
            line += *node->m_extensionName;
            line += ']';
        }
        // Attributes by name, as attrs() has them.
        sorted.clear();
        for (std::uint32_t i = 0; i < node->m_attributeCount; ++i) {
            sorted.push_back(node->m_attributes + i);
        }
        std::sort(sorted.begin(), sorted.end(),
                  [](const Attribute* a, const Attribute* b) { return *a->name < *b->name; });
        for (const Attribute* attribute : sorted) {
            line += ' ';
            line += *attribute->name;
            line += "=\"";
            line += attribute->value;
            line += '"';
        }
        if (!isBlank(*node->m_text)) {
            line += " = \"";
            line += *node->m_text;
            line += '"';
        }
        line += '\n';
        out.write(line.data(), static_cast<std::streamsize>(line.size()));
        const std::vector<XMLNode*>& children = *node->m_children;
        for (auto child = children.rbegin(); child != children.rend(); ++child) {
            stack.emplace_back(*child, depth + 1);
        }
    }
}

}  // namespace Corvane::Soa::Common::Xml
