#ifndef CVSOA_GEN_CODEWRITER_HPP
#define CVSOA_GEN_CODEWRITER_HPP

#include "SchemaSet.hpp"

#include <ostream>
#include <string>
#include <vector>

namespace Corvane::Soa::Gen {

/// Where a schema's code goes and what it is called, from its target namespace
/// "<base>/Schemas/<Area>/<yyyy-mm>/<Service>".
struct SchemaNames {
    std::vector<std::string> namespaces;  // C++: Corvane, Schemas, <Area...>, _yyyy_mm, Service
    std::string header;                   // corvane/soa/schemas/<Area path>/_yyyy_mm/<Service>.hpp
    std::string guard;

    /// Throws `GeneratorError` for a namespace of another form.
    static SchemaNames of(const SchemaModel& schema);
    std::string qualified() const;  // "::Corvane::Schemas::..."
};

/// Writes the header and the source of one schema: thin classes whose operations call the
/// runtime with each type's descriptor.
class CodeWriter {
public:
    CodeWriter(const SchemaSet& schemas, std::string exportMacro, std::string exportHeader);

    std::string header(const SchemaModel& schema) const;
    std::string source(const SchemaModel& schema) const;

private:
    std::string cppType(const FieldModel& field) const;
    void members(std::ostream& out, const TypeModel& type) const;
    static void wireOperations(std::ostream& out, const TypeModel& type);
    std::string classOf(const QualifiedName& name) const;

    const SchemaSet& m_schemas;
    std::string m_exportMacro;
    std::string m_exportHeader;
};

}  // namespace Corvane::Soa::Gen

#endif
