#ifndef CORVANE_SOA_COMMON_POLICYTYPE_HPP
#define CORVANE_SOA_COMMON_POLICYTYPE_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/GlobalAllocation.hpp>
#include <corvane/soa/common/PolicyProperty.hpp>

#include <cstddef>
#include <map>
#include <new>
#include <set>
#include <string>
#include <vector>

namespace Corvane::Soa::Common {

class IPropertyPolicyChangeListener;

/// An object type of a policy: its name, its own modifiers and its properties, one per name, in
/// name order.
///
/// The type's modifiers fill in those that a property lacks, when the property is added and
/// again whenever a type modifier is set; a property's own modifiers always win. Types are
/// ordered, and keyed in a policy, by their names alone.
class CORVANE_SOA_API PolicyType {
public:
    using Properties = std::set<PolicyProperty>;
    using Modifiers = PolicyProperty::Modifiers;

    PolicyType() = default;
    /// "Name" or "Name{p1,p2}": the properties in braces are added as by `addProperties(text)`.
    explicit PolicyType(const std::string& text);
    /// `properties` is comma-separated; each trimmed piece is added.
    PolicyType(const std::string& name, const std::string& properties);
    /// As above, each property with the comma-separated `modifiers` set true. The type itself
    /// gets no modifiers.
    PolicyType(const std::string& name, const std::string& properties,
               const std::string& modifiers);

    std::string getName() const { return m_name; }
    void setName(const std::string& name) { m_name = name; }

    const Properties& getProperties() const noexcept { return m_properties; }
    Properties& getProperties() noexcept { return m_properties; }
    /// Adds a pointer to each stored property to `out`.
    void getProperties(std::set<const PolicyProperty*>& out) const;
    std::vector<std::string> getPropertyNames() const;
    bool hasProperty(const std::string& name) const;
    /// The stored property of that name, or null. Its name must not be changed through it.
    PolicyProperty* getProperty(const std::string& name);
    const PolicyProperty* getProperty(const std::string& name) const;

    /// Adds `PolicyProperty(name)`.
    void addProperty(const std::string& name);
    /// Fills in `property`'s missing modifiers from the type's (changing the caller's object),
    /// replaces any stored property of the same name by a copy of it, and tells every listener.
    void addProperty(PolicyProperty& property);
    /// The same, keeping `property` itself: the listeners are told of the stored property.
    void addProperty(PolicyProperty&& property);
    /// Adds each non-empty piece, untrimmed, of the comma-separated list between the first "{"
    /// and the first "}" after it (or the end). A text without "{" is read as the bare list.
    void addProperties(const std::string& text);
    /// Adds a copy of each of `other`'s properties, in name order.
    void addProperties(const PolicyType& other);
    /// Removes every property, then `addProperties(text)`.
    void setProperties(const std::string& text);
    void eraseProperty(const PolicyProperty& property);
    void eraseProperty(const std::string& name);

    bool getBooleanModifier(const std::string& name) const;
    /// Stores the modifier, then fills it in on every property that lacks it.
    void setModifier(const std::string& name, bool value);
    void setModifier(const std::string& name, const char* value) = delete;
    std::vector<std::string> getModifierNames() const;
    const Modifiers& getModifiers() const noexcept { return m_modifiers; }
    /// Sets on `property` each of the type's modifiers that it lacks.
    void mergeModifiers(PolicyProperty* property) const;

    /// "Item{a, b}"; "Item{}" without properties.
    std::string toString() const;

    /// Same name, same modifiers, and an equal property for every property.
    bool operator==(const PolicyType& other) const;
    bool operator!=(const PolicyType& other) const { return !(*this == other); }
    bool operator<(const PolicyType& other) const noexcept { return m_name < other.m_name; }
    bool operator>(const PolicyType& other) const noexcept { return other.m_name < m_name; }

    /// Process-wide and unlocked: register and remove listeners while no thread adds properties.
    /// A listener is registered once however often it is added; listeners are told in the order
    /// of their addresses.
    static void addPropertyPolicyChangeListener(IPropertyPolicyChangeListener* listener);
    static void removePropertyPolicyChangeListener(IPropertyPolicyChangeListener* listener);

    CORVANE_SOA_GLOBAL_ALLOCATION

private:
    using Listeners = std::set<IPropertyPolicyChangeListener*>;
    static Listeners& listeners();
    // Puts `property`, its modifiers merged, in the place of any of the same name.
    PolicyProperty& store(PolicyProperty&& property);
    void tellListeners(PolicyProperty& property);

    std::string m_name;
    Modifiers m_modifiers;
    Properties m_properties;
};

}  // namespace Corvane::Soa::Common

#endif
