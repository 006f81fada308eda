#ifndef CORVANE_SOA_COMMON_OBJECTPROPERTYPOLICY_HPP
#define CORVANE_SOA_COMMON_OBJECTPROPERTYPOLICY_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/GlobalAllocation.hpp>
#include <corvane/soa/common/PolicyType.hpp>

#include <cstddef>
#include <new>
#include <set>
#include <string>
#include <vector>

namespace Corvane::Soa::Common {

/// Which properties of which object types the server is to return, and how: the policy's own
/// modifiers and its types, one per name, in name order.
///
/// The policy's modifiers fill in a type's missing modifiers when the type is added. Setting a
/// policy modifier later leaves the types already added as they are.
class CORVANE_SOA_API ObjectPropertyPolicy {
public:
    using Types = std::set<PolicyType>;
    using Modifiers = PolicyType::Modifiers;

    ObjectPropertyPolicy() = default;

    /// Fills in `type`'s missing modifiers from the policy's (changing the caller's object). A
    /// new name stores a copy of it; a known name adds its properties to the stored type, whose
    /// own name and modifiers stay.
    void addType(PolicyType& type);
    /// The same, keeping `type` itself when its name is new.
    void addType(PolicyType&& type);
    /// Adds `PolicyType(text)`: "Name" or "Name{p1,p2}".
    void addType(const std::string& text);
    /// The stored type of that name, or null. Its name must not be changed through it.
    PolicyType* getType(const std::string& name);
    const PolicyType* getType(const std::string& name) const;
    const Types& getTypes() const noexcept { return m_types; }
    Types& getTypes() noexcept { return m_types; }
    std::vector<std::string> getTypeNames() const;
    /// False when there is no such type.
    bool removeType(const std::string& name);
    /// Erases `type`'s properties from the stored type of its name, or the whole stored type when
    /// `type` lists none. False when there is no such stored type.
    bool removeProperties(const PolicyType& type);

    bool getBooleanModifier(const std::string& name) const;
    /// Stores the modifier for the types added from now on.
    void setModifier(const std::string& name, bool value);
    void setModifier(const std::string& name, const char* value) = delete;
    std::vector<std::string> getModifierNames() const;
    const Modifiers& getModifiers() const noexcept { return m_modifiers; }
    /// Sets on `type` each of the policy's modifiers that it lacks.
    void mergeModifiers(PolicyType& type) const;

    /// Writes the policy file at `path`, making its directories first. The file is replaced in
    /// one step: it holds either its earlier content or the whole new one. Throws
    /// `Exceptions::IOException` when a directory or the file cannot be made.
    void save(const std::string& path) const;
    /// Adds what the policy file at `path` holds to this policy. Throws
    /// `Exceptions::IOException` when the file cannot be read, `Exceptions::DomException` when it
    /// is not a policy file; what was added before the fault stays.
    void load(const std::string& path);
    /// Makes each directory leading to the file `path`; existing ones are no error.
    static void createDir(std::string path);

    /// Same modifiers, and an equal type for every type.
    bool operator==(const ObjectPropertyPolicy& other) const;
    bool operator!=(const ObjectPropertyPolicy& other) const { return !(*this == other); }

    CORVANE_SOA_GLOBAL_ALLOCATION

private:
    Modifiers m_modifiers;
    Types m_types;
};

}  // namespace Corvane::Soa::Common

#endif
