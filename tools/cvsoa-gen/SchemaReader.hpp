#ifndef CVSOA_GEN_SCHEMAREADER_HPP
#define CVSOA_GEN_SCHEMAREADER_HPP

#include "SchemaModel.hpp"

#include <string>

namespace Corvane::Soa::Gen {

/// Reads one schema file into its model, refusing with a `GeneratorError` whatever lies
/// outside the subset the generator supports.
class SchemaReader {
public:
    static SchemaModel read(const std::string& file);
    /// Only the target namespace, for finding an imported schema among candidate files.
    static std::string targetNamespace(const std::string& file);
};

}  // namespace Corvane::Soa::Gen

#endif
