#ifndef CORVANE_SOA_COMMON_XML_TYPEREGISTRY_HPP
#define CORVANE_SOA_COMMON_XML_TYPEREGISTRY_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AutoPtr.hpp>

#include <string>
#include <vector>

namespace Corvane::Soa::Common::Xml {

class BaseObject;
struct TypeDescriptor;

/// Every generated type of the process, found by namespace URI and local name or by qualified
/// name ("namespace.name", JSON's ".QName"), so that a document's own type can be built for it.
/// Generated types add themselves when their library is loaded.
class CORVANE_SOA_API TypeRegistry {
public:
    /// Adds `type`, which must live as long as the program. A second type of the same
    /// qualified name replaces nothing: the first one stays.
    static void add(const TypeDescriptor& type);

    static const TypeDescriptor* find(const std::string& namespaceUri,
                                      const std::string& localName);
    static const TypeDescriptor* find(const std::string& qualifiedName);

    /// A new object of the type, or null when none is registered under that name.
    static AutoPtr<BaseObject> create(const std::string& namespaceUri,
                                      const std::string& localName);
    static AutoPtr<BaseObject> create(const std::string& qualifiedName);

    /// The qualified names of all registered types, sorted.
    static std::vector<std::string> names();

    /// Adds a type from a static object's constructor: `const TypeRegistry::Registration
    /// r{kType};`.
    struct Registration {
        explicit Registration(const TypeDescriptor& type) { add(type); }
    };
};

}  // namespace Corvane::Soa::Common::Xml

#endif
