#ifndef CORVANE_SOA_INTERNAL_COMMON_POLICYMARSHALLER_HPP
#define CORVANE_SOA_INTERNAL_COMMON_POLICYMARSHALLER_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AutoPtr.hpp>

#include <array>
#include <string>

namespace Corvane::Soa::Common {
class ObjectPropertyPolicy;
class PolicyProperty;
class PolicyType;
}  // namespace Corvane::Soa::Common

namespace Corvane::Soa::Common::Xml {
class XMLNode;
}  // namespace Corvane::Soa::Common::Xml

namespace Corvane::Schemas::Soa::Objectpropertypolicy {
class ObjectPropertyPolicy;
class ObjectType;
class Property;
}  // namespace Corvane::Schemas::Soa::Objectpropertypolicy

namespace Corvane::Soa::Internal::Common {

/// Reads and writes policy files:
///
///   <ObjectPropertyPolicy flags...>             any number of ObjectType and Include
///     <ObjectType name="..." flags...>          any number of Property
///       <Property name="..." flags.../>
///     <Include .../>                            skipped on load, never written
///
/// Each level may carry the six flags of `isAFlag` as boolean attributes ("1"/"0" when written,
/// true for "true" or "1" when read); they become the modifiers of the policy, the type and the
/// property. Other attributes are ignored. Every fault of a document's shape is a
/// `DomException` with one of the fixed messages below; file and directory faults are
/// `IOException`s.
class CORVANE_SOA_API PolicyMarshaller {
public:
    /// The namespace of the elements written.
    static const char* const kNamespace;
    /// Ends the messages of a document whose elements are out of place.
    static const char* const kSchemaNote;

    /// Whether `name` is one of "withProperties", "excludeUiValues", "includeIsModifiable",
    /// "asAttribute", "uIValueOnly" and "excludeParentProperties" (exactly, in that order).
    static bool isAFlag(const std::string& name);
    /// The flags in the order of `isAFlag`.
    static const std::array<std::string, 6>& flags();

    /// Adds to `policy` what the policy file at `path` holds (nothing is cleared first, and
    /// nothing undone on a fault). A file that cannot be read throws `IOException`
    /// "Error while loading the policy file specified in:" followed by the path; a document that
    /// is not well formed, the reader's `DomException`.
    static void load(::Corvane::Soa::Common::ObjectPropertyPolicy& policy, const std::string& path);
    /// Adds to `policy` what the parsed document `root` holds. A root not named
    /// "ObjectPropertyPolicy" throws "Invalid root node:" followed by its name and
    /// `kSchemaNote`; a root child other than "ObjectType" and "Include", "Unexpected element: "
    /// followed by its name and `kSchemaNote`.
    static void load(::Corvane::Soa::Common::ObjectPropertyPolicy& policy,
                     const ::Corvane::Soa::Common::Xml::XMLNode& root);
    /// Reads an "ObjectType" element into `type`. Without a "name" attribute it throws
    /// "The ObjectTypenode does not have the name' attribute.'" followed by `kSchemaNote`.
    static void parse(const ::Corvane::Soa::Common::Xml::XMLNode& node,
                      ::Corvane::Soa::Common::PolicyType& type);
    /// Reads a "Property" element into `property`. Another element, or one without a "name"
    /// attribute, throws "Invalid childPropertyelement.".
    static void parse(const ::Corvane::Soa::Common::Xml::XMLNode& node,
                      ::Corvane::Soa::Common::PolicyProperty& property);

    /// The schema-side form of `policy`: its flag modifiers as attributes ("1" or "0") and an
    /// "ObjectType" for each type, in name order. Modifiers that are not flags are dropped.
    static ::Corvane::Soa::Common::AutoPtr<
        ::Corvane::Schemas::Soa::Objectpropertypolicy::ObjectPropertyPolicy>
    serialize(const ::Corvane::Soa::Common::ObjectPropertyPolicy& policy);
    /// The schema-side form of `type`: its name, its flag modifiers and a "Property" for each
    /// property, in name order.
    static ::Corvane::Soa::Common::AutoPtr<
        ::Corvane::Schemas::Soa::Objectpropertypolicy::ObjectType>
    serialize(const ::Corvane::Soa::Common::PolicyType& type);
    /// The schema-side form of `property`: its name and its flag modifiers.
    static ::Corvane::Soa::Common::AutoPtr<::Corvane::Schemas::Soa::Objectpropertypolicy::Property>
    serialize(const ::Corvane::Soa::Common::PolicyProperty& property);

    /// The text of the policy file for `policy`: an XML declaration and `serialize(policy)` as
    /// the document.
    static std::string toXml(const ::Corvane::Soa::Common::ObjectPropertyPolicy& policy);
    /// Writes `toXml(policy)` to `path` after `createDir(path)`. The text goes to a new file
    /// beside the target, which then replaces the target in one step; on any fault the new file
    /// is removed and the target left as it was. A target that is a symbolic link stays one: the
    /// file it names (link by link, made when none is there yet) is the one replaced. A file
    /// that cannot be written throws `IOException` "'Error while creating file under:-'"
    /// followed by the path.
    static void save(const ::Corvane::Soa::Common::ObjectPropertyPolicy& policy,
                     const std::string& path);
    /// Makes each directory of `path` up to its last "/", parents first; empty parts are skipped
    /// and existing directories are no error. A directory that cannot be made (no such file,
    /// I/O error, no such device, permission denied, invalid argument) throws `IOException`
    /// "'Error in writing ObjectPropertyPolicy in a:-'" followed by the path.
    static void createDir(std::string path);
};

}  // namespace Corvane::Soa::Internal::Common

#endif
