#ifndef CVSOA_GEN_SCHEMASET_HPP
#define CVSOA_GEN_SCHEMASET_HPP

#include "SchemaModel.hpp"

#include <map>
#include <string>
#include <vector>

namespace Corvane::Soa::Gen {

/// The schemas to generate and every schema they import, with each field's kind decided.
class SchemaSet {
public:
    /// Reads `files` and, by namespace, their imports: from an import's schemaLocation, else
    /// among `files` and the schemas under `importDirs`.
    SchemaSet(const std::vector<std::string>& files, const std::vector<std::string>& importDirs);

    const SchemaModel& schema(const std::string& ns) const { return *m_byNamespace.at(ns); }
    const std::vector<std::string>& given() const noexcept { return m_given; }
    /// Every file read, for the build's dependency file.
    std::vector<std::string> files() const;

private:
    const SchemaModel& load(const std::string& file);
    void resolve(SchemaModel& schema);
    static void checkMapEntry(const SchemaModel& schema, const TypeModel& type);
    /// Moves a type's optional attributes and lists into a block made on first write when they
    /// would take a fair share of every object inline.
    static void placeSeldomFields(const SchemaModel& schema, TypeModel& type);
    std::string findNamespace(const std::string& ns);
    /// The type of a top-level element, or null when no schema read declares it.
    const QualifiedName* element(const QualifiedName& name) const;

    std::vector<std::string> m_importDirs;
    std::vector<std::string> m_given;  // namespaces of the given files, in order
    std::map<std::string, SchemaModel> m_byFile;
    std::map<std::string, SchemaModel*> m_byNamespace;
    std::map<std::string, std::string> m_candidates;  // namespace -> file, from importDirs
    bool m_scanned = false;
};

}  // namespace Corvane::Soa::Gen

#endif
