#ifndef CORVANE_SOA_SRC_COMMON_XML_GENERATEDTYPES_HPP
#define CORVANE_SOA_SRC_COMMON_XML_GENERATEDTYPES_HPP

// Tells an object of a generated class from one of a class that reads itself (a hand-written
// type, or a user's subclass of a generated one). Not part of the exported interface.

#include <typeinfo>
#include <utility>
#include <vector>

namespace Corvane::Soa::Common::Xml {

class BaseObject;
struct TypeDescriptor;

class GeneratedTypes {
public:
    /// Whether `object`'s class is exactly the class that `type` makes: then its descriptor
    /// tells how it reads itself. Safe from several threads.
    static bool isGenerated(const BaseObject& object, const TypeDescriptor& type);

    /// The same answer for one reader, which asks about few types, many times.
    class Cache {
    public:
        bool isGenerated(const BaseObject& object, const TypeDescriptor& type);

    private:
        std::vector<std::pair<const TypeDescriptor*, const std::type_info*>> m_known;
    };

private:
    static const std::type_info& classOf(const TypeDescriptor& type);
};

}  // namespace Corvane::Soa::Common::Xml

#endif
