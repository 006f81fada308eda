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

// Children are taken off the tree before they are deleted, so that every delete below meets a
// node without children: the depth of the tree never reaches the call stack.
XMLNode::~XMLNode() {
    std::vector<XMLNode*> pending = std::move(m_children);
    while (!pending.empty()) {
        XMLNode* node = pending.back();
        pending.pop_back();
        pending.insert(pending.end(), node->m_children.begin(), node->m_children.end());
        node->m_children.clear();
        delete node;
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
