#ifndef CVSOA_GEN_SCHEMAMODEL_HPP
#define CVSOA_GEN_SCHEMAMODEL_HPP

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace Corvane::Soa::Gen {

/// A refusal of the input: "file:line: what", or "file: what" without a line.
class GeneratorError : public std::runtime_error {
public:
    GeneratorError(const std::string& file, int line, const std::string& what)
        : std::runtime_error(file + (line > 0 ? ":" + std::to_string(line) : std::string()) + ": " +
                             what) {}
};

/// A name in a namespace, as a schema's QName resolves to.
struct QualifiedName {
    std::string ns;
    std::string local;
};

/// How a field travels; the names match the runtime's `FieldKind`.
enum class Kind {
    Text,
    Boolean,
    Integer,
    Float,
    Double,
    DateTime,
    Structure,
    Reference,
    ServiceData,
    StructureList,
    TextList,
    TextElement
};

struct FieldModel {
    std::string name;
    QualifiedName type;
    bool attribute = false;
    bool list = false;
    bool optional = false;  // attribute without use="required", or element with minOccurs="0"
    bool byReference =
        false;  // declared with ref=: `type` names a top-level element until resolved
    int line = 0;
    Kind kind = Kind::Text;  // decided once every schema is read
    bool inBlock = false;    // kept in the type's block of seldom-set fields
};

struct TypeModel {
    std::string name;
    std::vector<FieldModel> fields;
    int line = 0;
    bool mapEntry = false;
    /// The optional attributes and lists are kept in a block made on first write.
    bool hasBlock = false;
};

/// One schema file: its target namespace, the namespaces it imports and its types.
struct SchemaModel {
    std::string file;
    std::string ns;
    struct Import {
        std::string ns;
        std::string location;
        int line;
    };
    std::vector<Import> imports;
    std::vector<TypeModel> types;
    /// The classes are written by hand (the generator writes their descriptors and
    /// registers them); asked for by the schema's
    /// <xsd:appinfo source="cvsoa-gen">hand-written classes</xsd:appinfo>.
    bool handWritten = false;
    /// Top-level element declarations: element name -> its type.
    std::map<std::string, QualifiedName> elements;
};

}  // namespace Corvane::Soa::Gen

#endif
