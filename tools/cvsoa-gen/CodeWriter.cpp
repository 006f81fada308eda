#include "CodeWriter.hpp"

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

namespace Corvane::Soa::Gen {

namespace {

const char* const kXml = "::Corvane::Soa::Common::Xml::";

std::string upperFirst(std::string text) {
    if (!text.empty()) {
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    }
    return text;
}

bool isVersion(const std::string& part) {
    return part.size() == 7 && std::isdigit(static_cast<unsigned char>(part[0])) != 0 &&
           part[4] == '-';
}

const char* kindName(Kind kind) {
    static const char* const names[] = {"Text",        "Boolean",       "Integer",   "Float",
                                        "Double",      "DateTime",      "Structure", "Reference",
                                        "ServiceData", "StructureList", "TextList",  "TextElement"};
    return names[static_cast<int>(kind)];
}

// "outer::name".
std::string member(std::string outer, const std::string& name) {
    outer.append("::").append(name);
    return outer;
}

bool isAttribute(Kind kind) { return kind <= Kind::DateTime; }
bool holdsObject(Kind kind) {
    return kind == Kind::Structure || kind == Kind::Reference || kind == Kind::ServiceData;
}

bool isFlagged(const FieldModel& field) {
    return field.optional && (isAttribute(field.kind) || holdsObject(field.kind));
}

// The initialiser of a scalar member.
const char* initialiser(Kind kind) {
    switch (kind) {
        case Kind::Boolean:
            return " = false";
        case Kind::Integer:
        case Kind::Float:
        case Kind::Double:
            return " = 0";
        default:
            return "";
    }
}

// The alignment of a member of the kind, in bytes.
int alignmentOf(Kind kind) {
    switch (kind) {
        case Kind::Boolean:
            return 1;
        case Kind::Integer:
        case Kind::Float:
            return 4;
        default:
            return 8;
    }
}

// Text in a C++ string literal.
std::string literal(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') {
            out.push_back('\\');
        }
        out.push_back(c);
    }
    return out + "\"";
}

}  // namespace

SchemaNames SchemaNames::of(const SchemaModel& schema) {
    const std::string marker = "/Schemas/";
    const std::size_t at = schema.ns.find(marker);
    std::vector<std::string> parts;
    if (at != std::string::npos) {
        std::stringstream rest(schema.ns.substr(at + marker.size()));
        std::string part;
        while (std::getline(rest, part, '/')) {
            parts.push_back(part);
        }
    }
    bool valid = parts.size() >= 2;
    for (const std::string& part : parts) {
        valid = valid && !part.empty();
        for (char c : part) {
            valid =
                valid && (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_');
        }
    }
    if (!valid) {
        throw GeneratorError(schema.file, 0,
                             "the target namespace " + schema.ns +
                                 " is not supported: it must read <base>/Schemas/<Area>/<yyyy-mm>/"
                                 "<Service>");
    }
    SchemaNames names;
    names.namespaces = {"Corvane", "Schemas"};
    std::string path = "corvane/soa/schemas";
    for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
        std::string part = parts[i];
        if (isVersion(part)) {
            part = "_" + part.substr(0, 4) + "_" + part.substr(5);
        } else if (std::isdigit(static_cast<unsigned char>(part[0])) != 0) {
            part.insert(0, 1, '_');
        }
        names.namespaces.push_back(part);
        path += "/" + part;
    }
    std::string service = parts.back();
    for (std::size_t i = 1; i < service.size(); ++i) {
        service[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(service[i])));
    }
    service = upperFirst(service);
    names.namespaces.push_back(service);
    names.header = path + "/" + service + ".hpp";
    names.guard = "CORVANE_SOA_SCHEMAS_";
    for (std::size_t i = 2; i < names.namespaces.size(); ++i) {
        const std::string& part = names.namespaces[i];
        for (std::size_t j = part[0] == '_' ? 1 : 0; j < part.size(); ++j) {
            names.guard.push_back(
                static_cast<char>(std::toupper(static_cast<unsigned char>(part[j]))));
        }
        names.guard.push_back('_');
    }
    names.guard += "HPP";
    return names;
}

std::string SchemaNames::qualified() const {
    std::string result;
    for (const std::string& part : namespaces) {
        result += "::" + part;
    }
    return result;
}

CodeWriter::CodeWriter(const SchemaSet& schemas, std::string exportMacro, std::string exportHeader)
    : m_schemas(schemas),
      m_exportMacro(std::move(exportMacro)),
      m_exportHeader(std::move(exportHeader)) {}

std::string CodeWriter::classOf(const QualifiedName& name) const {
    return SchemaNames::of(m_schemas.schema(name.ns)).qualified() + "::" + name.local;
}

std::string CodeWriter::cppType(const FieldModel& field) const {
    switch (field.kind) {
        case Kind::Text:
        case Kind::TextElement:
            return "std::string";
        case Kind::Boolean:
            return "bool";
        case Kind::Integer:
            return "int";
        case Kind::Float:
            return "float";
        case Kind::Double:
            return "double";
        case Kind::DateTime:
            return "::Corvane::Soa::Common::DateTime";
        case Kind::TextList:
            return "std::vector<std::string>";
        case Kind::StructureList:
            return "std::vector<::Corvane::Soa::Common::AutoPtr<" + classOf(field.type) + ">>";
        default:
            return "::Corvane::Soa::Common::AutoPtr<" + classOf(field.type) + ">";
    }
}

std::string CodeWriter::header(const SchemaModel& schema) const {
    const SchemaNames names = SchemaNames::of(schema);
    std::ostringstream out;
    out << "// Generated by cvsoa-gen from " << schema.ns << ". Do not edit.\n"
        << "#ifndef " << names.guard << "\n#define " << names.guard << "\n\n";
    if (schema.handWritten) {
        // The classes have a header each, beside this one: <Service>/<Type>.hpp.
        const std::string dir = names.header.substr(0, names.header.size() - 4);
        for (const TypeModel& type : schema.types) {
            out << "#include <" << dir << "/" << type.name << ".hpp>\n";
        }
        out << "\n#endif\n";
        return out.str();
    }
    out << "#include <" << m_exportHeader << ">\n"
        << "#include <corvane/soa/common/AccountedAllocation.hpp>\n"
        << "#include <corvane/soa/common/AutoPtr.hpp>\n"
        << "#include <corvane/soa/common/DateTime.hpp>\n"
        << "#include <corvane/soa/common/xml/BaseObject.hpp>\n"
        << "#include <corvane/soa/common/xml/FieldBlock.hpp>\n"
        << "#include <corvane/soa/common/xml/TypeDescriptor.hpp>\n";
    std::set<std::string> includes;
    for (const TypeModel& type : schema.types) {
        for (const FieldModel& field : type.fields) {
            if (!isAttribute(field.kind) && field.kind != Kind::TextList &&
                field.kind != Kind::TextElement && field.type.ns != schema.ns) {
                includes.insert(SchemaNames::of(m_schemas.schema(field.type.ns)).header);
            }
        }
    }
    for (const std::string& include : includes) {
        out << "#include <" << include << ">\n";
    }
    out << "\n#include <set>\n#include <string>\n#include <vector>\n\n";
    out << "namespace " << names.qualified().substr(2) << " {\n\n";
    for (const TypeModel& type : schema.types) {
        out << "class " << type.name << ";\n";
    }
    const std::string full = names.qualified().substr(2);
    for (const TypeModel& type : schema.types) {
        const std::string& c = type.name;
        out << "\nclass " << m_exportMacro << " " << c << " : public " << kXml << "BaseObject {\n"
            << "public:\n"
            << "    " << c << "();\n"
            << "    " << c << "(const " << c << "& other);\n"
            << "    " << c << "& operator=(const " << c << "& other);\n"
            << "    ~" << c << "() override;\n\n"
            << "    /// The fields, identity and factory of the type.\n"
            << "    static const " << kXml << "TypeDescriptor& typeDescriptor();\n\n";
        for (const FieldModel& field : type.fields) {
            const std::string x = upperFirst(field.name);
            const std::string t = cppType(field);
            // A field in the block reads the empty block until one is made, and the mutable
            // accessors make it.
            const char* const reading =
                field.inBlock ? " { return m_seldom.get()." : " noexcept { return ";
            const char* const writing =
                field.inBlock ? " { return m_seldom.edit()." : " noexcept { return ";
            out << "    const " << t << "& get" << x << "() const" << reading << "m_" << field.name
                << "; }\n"
                << "    " << t << "& get" << x << "()" << writing << "m_" << field.name << "; }\n"
                << "    void set" << x << "(const " << t << "& value);\n";
            if (field.kind == Kind::StructureList) {
                out << "    void add" << x << "(const ::Corvane::Soa::Common::AutoPtr<"
                    << classOf(field.type) << ">& value);\n";
            } else if (field.kind == Kind::TextList) {
                out << "    void add" << x << "(const std::string& value);\n";
            }
            if (isFlagged(field) && field.inBlock) {
                out << "    bool getIs" << x << "Set() const { return m_seldom.get().m_is" << x
                    << "Set; }\n"
                    << "    void setIs" << x << "Set(bool set) {\n"
                    << "        if (set || m_seldom.made()) {\n"
                    << "            m_seldom.edit().m_is" << x << "Set = set;\n"
                    << "        }\n"
                    << "    }\n";
            } else if (isFlagged(field)) {
                out << "    bool getIs" << x << "Set() const noexcept { return m_is" << x
                    << "Set; }\n"
                    << "    void setIs" << x << "Set(bool set) noexcept { m_is" << x
                    << "Set = set; }\n";
            }
        }
        out << "\n    void outputXML(" << kXml << "XmlStream& stream) const override;\n"
            << "    void outputXML(" << kXml
            << "XmlStream& stream, const std::string& elementName) const override;\n"
            << "    void parse(const " << kXml << "XMLNode& node) override;\n"
            << "    void getNamespaces(std::set<std::string>& namespaces) const override;\n"
            << "    void writeJSON(" << kXml << "JsonStream* stream) const override;\n"
            << "    using " << kXml << "BaseObject::parseJSON;\n"
            << "    void parseJSON(::Corvane::Soa::Common::AutoPtr<"
               "::Corvane::Soa::Internal::Json::JSONObject> json) override;\n";
        if (type.mapEntry) {
            out << "    bool isJsonMapEntry() const override;\n"
                << "    bool isJsonMapKeyReferenceType() const override;\n"
                << "    void writeJSONKey(" << kXml << "JsonStream* stream) const override;\n"
                << "    void writeJSONValue(" << kXml << "JsonStream* stream) const override;\n"
                << "    void parseSimpleJSONMapEntry(const std::string& key, "
                   "::Corvane::Soa::Common::AutoPtr<::Corvane::Soa::Internal::Json::JSONObject> "
                   "object) override;\n"
                << "    void parseComplexJSONMapKey(::Corvane::Soa::Common::AutoPtr<"
                   "::Corvane::Soa::Internal::Json::Value> key) override;\n"
                << "    void parseComplexJSONMapValue(::Corvane::Soa::Common::AutoPtr<"
                   "::Corvane::Soa::Internal::Json::Value> value) override;\n";
        }
        out << "\n    CORVANE_SOA_ACCOUNTED_ALLOCATION(" << literal(member(full, c)) << ")\n\n"
            << "protected:\n"
            << "    " << kXml << "BaseObject* reallyClone() const override;\n\n"
            << "private:\n";
        // The members by alignment, the smallest first, so that none pads and the first can
        // take the spare bytes at the end of the base: the presence flags and booleans, then
        // the 4-byte scalars, then the rest, each in declaration order.
        const auto declare = [&](bool inBlock, const char* indent) {
            for (const int alignment : {1, 4, 8}) {
                for (const FieldModel& field : type.fields) {
                    if (field.inBlock != inBlock) {
                        continue;
                    }
                    if (alignment == 1 && isFlagged(field)) {
                        out << indent << "bool m_is" << upperFirst(field.name) << "Set = false;\n";
                    }
                    if (alignmentOf(field.kind) == alignment) {
                        out << indent << cppType(field) << " m_" << field.name
                            << initialiser(field.kind) << ";\n";
                    }
                }
            }
        };
        if (type.hasBlock) {
            out << "    // The optional attributes and the lists, made on first write.\n"
                << "    struct Seldom {\n";
            declare(true, "        ");
            out << "\n        CORVANE_SOA_ACCOUNTED_ALLOCATION(" << literal(member(full, c))
                << ")\n    };\n"
                << "    " << kXml << "FieldBlock<Seldom> m_seldom;\n";
        }
        declare(false, "    ");
        out << "};\n";
    }
    out << "\n}  // namespace " << full << "\n\n#endif\n";
    return out.str();
}

std::string CodeWriter::source(const SchemaModel& schema) const {
    const SchemaNames names = SchemaNames::of(schema);
    const std::string full = names.qualified().substr(2);
    std::ostringstream out;
    out << "// Generated by cvsoa-gen from " << schema.ns << ". Do not edit.\n"
        << "#include <" << names.header << ">\n\n"
        << "#include <corvane/soa/common/xml/FieldAccess.hpp>\n"
        << "#include <corvane/soa/common/xml/ObjectList.hpp>\n"
        << "#include <corvane/soa/common/xml/ObjectRuntime.hpp>\n"
        << "#include <corvane/soa/common/xml/TypeRegistry.hpp>\n"
        << "#include <corvane/soa/internal/json/JSONObject.hpp>\n\n"
        << "namespace " << full << " {\n\n"
        << "using ::Corvane::Soa::Common::AutoPtr;\n"
        << "using ::Corvane::Soa::Common::Xml::BaseObject;\n"
        << "using ::Corvane::Soa::Common::Xml::FieldAccess;\n"
        << "using ::Corvane::Soa::Common::Xml::FieldDescriptor;\n"
        << "using ::Corvane::Soa::Common::Xml::FieldKind;\n"
        << "using ::Corvane::Soa::Common::Xml::ObjectList;\n"
        << "using ::Corvane::Soa::Common::Xml::ObjectRuntime;\n"
        << "using ::Corvane::Soa::Common::Xml::TypeDescriptor;\n\n"
        << "namespace {\n\nconst std::string kNamespace = " << literal(schema.ns) << ";\n\n"
        << "}  // namespace\n";
    for (const TypeModel& type : schema.types) {
        const std::string& c = type.name;
        out << "\n// " << c << "\n\n"
            << "const TypeDescriptor& " << c << "::typeDescriptor() {\n";
        if (!type.fields.empty()) {
            out << "    static const FieldDescriptor fields[] = {\n";
            for (const FieldModel& field : type.fields) {
                const std::string wire =
                    field.kind == Kind::ServiceData ? "ServiceData" : field.name;
                // The accessor of a member: of the object, or of the object's block.
                const auto access = [&](const std::string& name, bool heldObject) {
                    if (field.inBlock) {
                        out << "&FieldAccess::inBlock<&" << c << "::m_seldom, &" << c
                            << "::Seldom::" << name << ">, ";
                    } else {
                        out << "&FieldAccess::" << (heldObject ? "object" : "member") << "<&" << c
                            << "::" << name << ">, ";
                    }
                };
                out << "        {" << literal(wire) << ", FieldKind::" << kindName(field.kind)
                    << ", ";
                access("m_" + field.name, holdsObject(field.kind));
                if (isFlagged(field)) {
                    access("m_is" + upperFirst(field.name) + "Set", false);
                } else {
                    out << "nullptr, ";
                }
                if (field.kind == Kind::StructureList) {
                    out << "&ObjectList<" << classOf(field.type) << ">::kAccess, ";
                } else {
                    out << "nullptr, ";
                }
                if (!isAttribute(field.kind) && field.kind != Kind::TextList &&
                    field.kind != Kind::TextElement) {
                    out << "&" << classOf(field.type) << "::typeDescriptor";
                } else {
                    out << "nullptr";
                }
                out << "},\n";
            }
            out << "    };\n";
            // The fields in the byte-wise order of their wire names.
            std::vector<std::pair<std::string, std::size_t>> names;
            for (std::size_t i = 0; i < type.fields.size(); ++i) {
                const FieldModel& field = type.fields[i];
                names.emplace_back(field.kind == Kind::ServiceData ? "ServiceData" : field.name, i);
            }
            std::sort(names.begin(), names.end());
            out << "    static const unsigned short byName[] = {";
            for (std::size_t i = 0; i < names.size(); ++i) {
                out << (i == 0 ? "" : ", ") << names[i].second;
            }
            out << "};\n";
        }
        out << "    static const TypeDescriptor type{&kNamespace, " << literal(c)
            << ", kNamespace + " << literal("." + c) << ", " << literal(member(full, c)) << ", "
            << (type.fields.empty() ? "nullptr" : "fields") << ", " << type.fields.size() << ", "
            << (type.mapEntry ? "true" : "false") << ", []() -> BaseObject* { return new " << c
            << "; }, " << (type.fields.empty() ? "nullptr" : "byName")
            << ", BaseObject::identify(kNamespace, " << literal(c) << ")};\n"
            << "    return type;\n}\n\n";
        if (!schema.handWritten) {
            members(out, type);
            wireOperations(out, type);
        }
    }
    out << "\nnamespace {\n\n";
    for (const TypeModel& type : schema.types) {
        out << "const ::Corvane::Soa::Common::Xml::TypeRegistry::Registration k" << type.name
            << "Registration{" << type.name << "::typeDescriptor()};\n";
    }
    out << "\n}  // namespace\n\n}  // namespace " << full << "\n";
    return out.str();
}

// The constructors, assignment and setters of a generated class.
void CodeWriter::members(std::ostream& out, const TypeModel& type) const {
    const std::string& c = type.name;
    out << c << "::" << c << "()\n    : BaseObject(typeDescriptor().identity)";
    for (const FieldModel& field : type.fields) {
        if (holdsObject(field.kind)) {
            out << ",\n      m_" << field.name << "(new " << classOf(field.type) << ")";
        }
    }
    out << " {}\n\n"
        << c << "::" << c << "(const " << c << "& other) = default;\n"
        << c << "& " << c << "::operator=(const " << c << "& other) = default;\n"
        << c << "::~" << c << "() = default;\n\n";
    for (const FieldModel& field : type.fields) {
        const std::string x = upperFirst(field.name);
        // Where the field's members are: the object, or its block (made here).
        const std::string owner = field.inBlock ? "m_seldom.edit()." : "";
        out << "void " << c << "::set" << x << "(const " << cppType(field) << "& value) {\n";
        if (field.inBlock) {
            out << "    Seldom& seldom = m_seldom.edit();\n";
        }
        const std::string in = field.inBlock ? "seldom." : "";
        if (isFlagged(field)) {
            out << "    " << in << "m_is" << x << "Set = true;\n";
        }
        out << "    " << in << "m_" << field.name << " = value;\n}\n\n";
        if (field.kind == Kind::StructureList) {
            out << "void " << c << "::add" << x << "(const AutoPtr<" << classOf(field.type)
                << ">& value) { " << owner << "m_" << field.name << ".push_back(value); }\n\n";
        } else if (field.kind == Kind::TextList) {
            out << "void " << c << "::add" << x << "(const std::string& value) { " << owner << "m_"
                << field.name << ".push_back(value); }\n\n";
        }
    }
}

// The overrides that hand each operation to the runtime with the type's descriptor.
void CodeWriter::wireOperations(std::ostream& out, const TypeModel& type) {
    const std::string& c = type.name;
    const std::string xml = kXml;
    out << "void " << c << "::outputXML(" << xml << "XmlStream& stream) const {\n"
        << "    outputXML(stream, typeDescriptor().name);\n}\n\n"
        << "void " << c << "::outputXML(" << xml
        << "XmlStream& stream, const std::string& elementName) const {\n"
        << "    ObjectRuntime::outputXML(*this, typeDescriptor(), stream, elementName);\n}\n\n"
        << "void " << c << "::parse(const " << xml << "XMLNode& node) {\n"
        << "    ObjectRuntime::parse(*this, typeDescriptor(), node);\n}\n\n"
        << "void " << c << "::getNamespaces(std::set<std::string>& namespaces) const {\n"
        << "    ObjectRuntime::getNamespaces(*this, typeDescriptor(), namespaces);\n}\n\n"
        << "void " << c << "::writeJSON(" << xml << "JsonStream* stream) const {\n"
        << "    ObjectRuntime::writeJSON(*this, typeDescriptor(), stream);\n}\n\n"
        << "void " << c
        << "::parseJSON(AutoPtr<::Corvane::Soa::Internal::Json::JSONObject> json) {\n"
        << "    ObjectRuntime::parseJSON(*this, typeDescriptor(), json);\n}\n\n";
    if (type.mapEntry) {
        out << "bool " << c << "::isJsonMapEntry() const { return true; }\n\n"
            << "bool " << c << "::isJsonMapKeyReferenceType() const {\n"
            << "    return ObjectRuntime::isJsonMapKeyReferenceType(typeDescriptor());\n}\n\n"
            << "void " << c << "::writeJSONKey(" << xml << "JsonStream* stream) const {\n"
            << "    ObjectRuntime::writeJSONKey(*this, typeDescriptor(), stream);\n}\n\n"
            << "void " << c << "::writeJSONValue(" << xml << "JsonStream* stream) const {\n"
            << "    ObjectRuntime::writeJSONValue(*this, typeDescriptor(), stream);\n}\n\n"
            << "void " << c << "::parseSimpleJSONMapEntry(const std::string& key, "
            << "AutoPtr<::Corvane::Soa::Internal::Json::JSONObject> /*object*/) {\n"
            << "    ObjectRuntime::parseSimpleJSONMapEntry(*this, typeDescriptor(), "
               "key);\n}\n\n"
            << "void " << c
            << "::parseComplexJSONMapKey(AutoPtr<::Corvane::Soa::Internal::Json::Value> key) "
               "{\n"
            << "    ObjectRuntime::parseComplexJSONMapKey(*this, typeDescriptor(), key);\n}\n\n"
            << "void " << c
            << "::parseComplexJSONMapValue(AutoPtr<::Corvane::Soa::Internal::Json::Value> "
               "value) {\n"
            << "    ObjectRuntime::parseComplexJSONMapValue(*this, typeDescriptor(), "
               "value);\n}\n\n";
    }
    out << "BaseObject* " << c << "::reallyClone() const { return new " << c << "(*this); }\n";
}

}  // namespace Corvane::Soa::Gen
