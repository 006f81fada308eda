#include <corvane/soa/common/xml/XMLNode.hpp>

#include <utility>

namespace Corvane::Soa::Common::Xml {

namespace {

const std::string kEmpty;

bool isBlank(const std::string& text) {
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

}  // namespace

XMLNode::XMLNode(std::string name) : m_name(std::move(name)) {}

// A node is deleted only once its children are, and with none left, so no delete below ever
// recurses: the depth of the tree never reaches the call stack. The walk keeps the path from
// this node down to the node at hand, with the next child to visit at each level, and so needs
// memory for the depth of the tree only, however many children a node has. Nodes go in document
// order, children before their parent, which is about the order they were made in.
XMLNode::~XMLNode() {
    if (m_children.empty()) {
        return;
    }
    struct Level {
        XMLNode* node;
        std::size_t next;
    };
    std::vector<Level> path{{this, 0}};
    for (;;) {
        Level& level = path.back();
        std::vector<XMLNode*>& children = level.node->m_children;
        if (level.next < children.size()) {
            XMLNode* const child = children[level.next++];
            if (child->m_children.empty()) {
                delete child;
            } else {
                path.push_back({child, 0});
            }
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

XMLNode* XMLNode::addChild(XMLNode* child) {
    child->m_parent = this;
    m_children.push_back(child);
    return child;
}

void XMLNode::putAttr(const std::string& name, const std::string& value) {
    m_attributes[name] = value;
}

const std::string& XMLNode::getAttr(const std::string& name) const {
    const auto found = m_attributes.find(name);
    return found == m_attributes.end() ? kEmpty : found->second;
}

bool XMLNode::existsAttr(const std::string& name) const {
    return m_attributes.find(name) != m_attributes.end();
}

void XMLNode::output(std::ostream& out, const std::string& indent) const {
    // Depth-first in document order, with an explicit stack of (node, depth).
    std::vector<std::pair<const XMLNode*, std::size_t>> stack{{this, 0}};
    std::string line;
    while (!stack.empty()) {
        const auto [node, depth] = stack.back();
        stack.pop_back();
        line.assign(indent);
        line.append(depth * 2, ' ');
        line += node->m_name;
        if (!node->m_extensionName.empty()) {
            line += " [";
            line += node->m_extensionName;
            line += ']';
        }
        for (const auto& [name, value] : node->m_attributes) {
            line += ' ';
            line += name;
            line += "=\"";
            line += value;
            line += '"';
        }
        if (!isBlank(node->m_text)) {
            line += " = \"";
            line += node->m_text;
            line += '"';
        }
        line += '\n';
        out.write(line.data(), static_cast<std::streamsize>(line.size()));
        for (auto child = node->m_children.rbegin(); child != node->m_children.rend(); ++child) {
            stack.emplace_back(*child, depth + 1);
        }
    }
}

}  // namespace Corvane::Soa::Common::Xml
