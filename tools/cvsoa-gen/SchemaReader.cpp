#include "SchemaReader.hpp"

#include "StartTags.hpp"

#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include <cctype>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace Corvane::Soa::Gen {

namespace {

using Soa::Common::Xml::XMLNode;

// The parsed tree of a file with, for each element, its line and the prefixes in scope.
class Document {
public:
    explicit Document(const std::string& file) : m_file(file) {
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            throw GeneratorError(file, 0, "cannot be read");
        }
        std::ostringstream text;
        text << in.rdbuf();
        try {
            m_root = m_parser.parseString(text.str());
        } catch (const Soa::Common::Exceptions::DomException& e) {
            throw GeneratorError(file, 0, "is not a well-formed XML document: " + e.getMessage());
        }
        const StartTags tags(text.str());
        std::size_t index = 0;
        number(m_root, tags, index);
    }

    const XMLNode& root() const { return *m_root; }
    const std::string& file() const { return m_file; }
    int line(const XMLNode& node) const { return m_lines.at(&node); }

    [[noreturn]] void refuse(const XMLNode& node, const std::string& what) const {
        throw GeneratorError(m_file, line(node), what);
    }

    // The namespace URI of a prefix as in scope at `node`.
    std::string resolvePrefix(const XMLNode& node, const std::string& prefix) const {
        for (const XMLNode* at = &node; at != nullptr; at = at->getParent()) {
            const auto& declared = m_prefixes.at(at);
            const auto found = declared.find(prefix);
            if (found != declared.end()) {
                return found->second;
            }
        }
        if (prefix.empty()) {
            return std::string();
        }
        refuse(node, "namespace prefix \"" + prefix + "\" is not declared");
    }

    QualifiedName resolve(const XMLNode& node, const std::string& qname) const {
        const std::size_t colon = qname.find(':');
        if (colon == std::string::npos) {
            return {resolvePrefix(node, ""), qname};
        }
        return {resolvePrefix(node, qname.substr(0, colon)), qname.substr(colon + 1)};
    }

private:
    void number(const XMLNode* node, const StartTags& tags, std::size_t& index) {
        // Iterative pre-order walk: the document order of the start tags.
        std::vector<const XMLNode*> pending{node};
        while (!pending.empty()) {
            const XMLNode* at = pending.back();
            pending.pop_back();
            const StartTags::Tag& tag = tags.tags().at(index++);
            m_lines[at] = tag.line;
            m_prefixes[at] = tag.prefixes;
            const auto& children = at->getChildren();
            for (auto child = children.rbegin(); child != children.rend(); ++child) {
                pending.push_back(*child);
            }
        }
    }

    std::string m_file;
    Soa::Common::Xml::SAXToNodeParser m_parser;
    const XMLNode* m_root = nullptr;
    std::map<const XMLNode*, int> m_lines;
    std::map<const XMLNode*, std::map<std::string, std::string>> m_prefixes;
};

// Refuses every attribute of `node` outside `allowed` (namespace declarations are not kept as
// attributes).
void allowOnly(const Document& doc, const XMLNode& node,
               std::initializer_list<const char*> allowed) {
    for (const auto& attribute : node.attrs()) {
        bool known = false;
        for (const char* name : allowed) {
            known = known || attribute.first == name;
        }
        if (!known) {
            doc.refuse(node, "attribute \"" + attribute.first + "\" of " + node.getName() +
                                 " is not supported");
        }
    }
}

bool isAnnotation(const XMLNode& node) { return node.getName() == "annotation"; }

// Type and field names become C++ names.
const std::string& identifier(const Document& doc, const XMLNode& node) {
    const std::string& name = node.getAttr("name");
    bool valid = !name.empty() && std::isdigit(static_cast<unsigned char>(name[0])) == 0;
    for (const char c : name) {
        valid = valid && (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_');
    }
    if (!valid) {
        doc.refuse(node,
                   "the name \"" + name + "\" is not supported (names must be C++ identifiers)");
    }
    return name;
}

// A field's accessors must not hide the object base's own: getTypeName, getNamespace(s),
// getQaulifiedName.
const std::string& fieldName(const Document& doc, const XMLNode& node) {
    const std::string& name = identifier(doc, node);
    if (name == "typeName" || name == "namespace" || name == "namespaces" ||
        name == "qaulifiedName") {
        doc.refuse(node, "the field name \"" + name +
                             "\" is not supported (its accessor would hide the object base's)");
    }
    return name;
}

void readElement(const Document& doc, const XMLNode& node, TypeModel& type) {
    allowOnly(doc, node, {"name", "type", "ref", "minOccurs", "maxOccurs", "form"});
    for (const XMLNode* child : node.getChildren()) {
        if (!isAnnotation(*child)) {
            doc.refuse(*child, "an element's own " + child->getName() + " is not supported");
        }
    }
    FieldModel field;
    if (node.existsAttr("ref")) {
        // A reference to a top-level element: the field takes that element's name and type.
        if (node.existsAttr("name") || node.existsAttr("type")) {
            doc.refuse(node, "an element with ref and a name or type is not supported");
        }
        field.type = doc.resolve(node, node.getAttr("ref"));
        field.name = field.type.local;
        field.byReference = true;
    } else if (!node.existsAttr("name") || !node.existsAttr("type")) {
        doc.refuse(node, "an element without both name and type (or a ref) is not supported");
    } else {
        field.name = fieldName(doc, node);
        field.type = doc.resolve(node, node.getAttr("type"));
    }
    field.line = doc.line(node);
    const std::string& max = node.getAttr("maxOccurs");
    if (max == "unbounded") {
        field.list = true;
    } else if (!max.empty() && max != "1") {
        doc.refuse(node, "maxOccurs=\"" + max + "\" is not supported");
    }
    field.optional = node.getAttr("minOccurs") == "0";
    type.fields.push_back(field);
}

void readAttribute(const Document& doc, const XMLNode& node, TypeModel& type) {
    allowOnly(doc, node, {"name", "type", "use", "form"});
    for (const XMLNode* child : node.getChildren()) {
        if (!isAnnotation(*child)) {
            doc.refuse(*child, "an attribute's own " + child->getName() + " is not supported");
        }
    }
    if (!node.existsAttr("name") || !node.existsAttr("type")) {
        doc.refuse(node, "an attribute without both name and type is not supported");
    }
    FieldModel field;
    field.name = fieldName(doc, node);
    field.type = doc.resolve(node, node.getAttr("type"));
    field.attribute = true;
    field.line = doc.line(node);
    const std::string& use = node.getAttr("use");
    if (!use.empty() && use != "required" && use != "optional") {
        doc.refuse(node, "use=\"" + use + "\" is not supported");
    }
    field.optional = use != "required";
    type.fields.push_back(field);
}

TypeModel readComplexType(const Document& doc, const XMLNode& node) {
    allowOnly(doc, node, {"name"});
    if (!node.existsAttr("name")) {
        doc.refuse(node, "a complexType without a name is not supported");
    }
    TypeModel type;
    type.name = identifier(doc, node);
    type.line = doc.line(node);
    for (const XMLNode* child : node.getChildren()) {
        const std::string& name = child->getName();
        if (isAnnotation(*child)) {
            continue;
        }
        if (name == "sequence") {
            allowOnly(doc, *child, {});
            for (const XMLNode* element : child->getChildren()) {
                if (element->getName() == "element") {
                    readElement(doc, *element, type);
                } else if (!isAnnotation(*element)) {
                    doc.refuse(*element, element->getName() + " in a sequence is not supported");
                }
            }
        } else if (name == "attribute") {
            readAttribute(doc, *child, type);
        } else {
            doc.refuse(*child, name + " is not supported");
        }
    }
    std::set<std::string> names;
    for (const FieldModel& field : type.fields) {
        if (!names.insert(field.name).second) {
            throw GeneratorError(doc.file(), field.line,
                                 "field \"" + field.name + "\" is declared twice in " + type.name);
        }
    }
    type.mapEntry = type.fields.size() == 2 && type.fields[0].name != type.fields[1].name &&
                    names.count("key") == 1 && names.count("value") == 1;
    return type;
}

// The schema's own annotation may carry instructions to the generator.
void readSchemaAnnotation(const Document& doc, const XMLNode& node, SchemaModel& schema) {
    for (const XMLNode* child : node.getChildren()) {
        if (child->getName() != "appinfo" || child->getAttr("source") != "cvsoa-gen") {
            continue;
        }
        if (child->getText() != "hand-written classes") {
            doc.refuse(*child, "the instruction \"" + child->getText() +
                                   "\" is not supported (cvsoa-gen knows \"hand-written "
                                   "classes\")");
        }
        schema.handWritten = true;
    }
}

}  // namespace

SchemaModel SchemaReader::read(const std::string& file) {
    const Document doc(file);
    const XMLNode& root = doc.root();
    if (root.getName() != "schema") {
        doc.refuse(root, "a document whose root is not a schema is not supported");
    }
    allowOnly(doc, root,
              {"targetNamespace", "elementFormDefault", "attributeFormDefault", "version"});
    SchemaModel schema;
    schema.file = file;
    schema.ns = root.getAttr("targetNamespace");
    if (schema.ns.empty()) {
        doc.refuse(root, "a schema without a targetNamespace is not supported");
    }
    std::map<std::string, int> seen;
    for (const XMLNode* child : root.getChildren()) {
        const std::string& name = child->getName();
        if (isAnnotation(*child)) {
            readSchemaAnnotation(doc, *child, schema);
            continue;
        }
        if (name == "import") {
            allowOnly(doc, *child, {"namespace", "schemaLocation"});
            schema.imports.push_back(
                {child->getAttr("namespace"), child->getAttr("schemaLocation"), doc.line(*child)});
        } else if (name == "complexType") {
            TypeModel type = readComplexType(doc, *child);
            const auto [at, added] = seen.emplace(type.name, type.line);
            if (!added) {
                throw GeneratorError(file, type.line,
                                     "type " + type.name + " is declared twice in " + schema.ns +
                                         " (first at line " + std::to_string(at->second) + ")");
            }
            schema.types.push_back(std::move(type));
        } else if (name == "element") {
            // A top-level element names a document root; its type is declared as a complexType.
            allowOnly(doc, *child, {"name", "type"});
            if (!child->existsAttr("type") ||
                (!child->getChildren().empty() && !isAnnotation(*child->getChildren().front()))) {
                doc.refuse(*child, "an element with an anonymous type is not supported");
            }
            schema.elements[identifier(doc, *child)] = doc.resolve(*child, child->getAttr("type"));
        } else {
            doc.refuse(*child, name + " is not supported");
        }
    }
    return schema;
}

std::string SchemaReader::targetNamespace(const std::string& file) {
    try {
        const Document doc(file);
        return doc.root().getAttr("targetNamespace");
    } catch (const GeneratorError&) {
        return std::string();
    }
}

}  // namespace Corvane::Soa::Gen
