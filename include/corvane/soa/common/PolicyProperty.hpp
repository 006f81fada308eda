#ifndef CORVANE_SOA_COMMON_POLICYPROPERTY_HPP
#define CORVANE_SOA_COMMON_POLICYPROPERTY_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/GlobalAllocation.hpp>

#include <cstddef>
#include <map>
#include <new>
#include <string>
#include <vector>

namespace Corvane::Soa::Common {

/// One property of an object type in an object property policy: its name and its modifiers.
///
/// A modifier is a named boolean, stored as the text "1" or "0". Reading one gives true only for
/// the stored texts "true" and "1"; an absent modifier reads false. Properties are ordered, and
/// keyed in every property set, by their names alone.
class CORVANE_SOA_API PolicyProperty {
public:
    /// Modifier name to stored text, in byte-wise name order.
    using Modifiers = std::map<std::string, std::string>;

    PolicyProperty() = default;
    explicit PolicyProperty(const std::string& name);
    /// `modifiers` is a comma-separated list ("withProperties, asAttribute"); each trimmed piece is
    /// set to true.
    PolicyProperty(const std::string& name, const std::string& modifiers);

    const std::string& getName() const noexcept { return m_name; }
    void setName(const std::string& name) { m_name = name; }

    bool getBooleanModifier(const std::string& name) const;
    /// Stores "1" or "0" under `name`, replacing what was there.
    void setModifier(const std::string& name, bool value);
    /// A text is not a boolean: `setModifier("x", "false")` would otherwise set true.
    void setModifier(const std::string& name, const char* value) = delete;
    /// The modifier names in name order.
    std::vector<std::string> getModifierNames() const;
    const Modifiers& getModifiers() const noexcept { return m_modifiers; }

    /// Same name and the same modifiers with the same stored texts.
    bool operator==(const PolicyProperty& other) const;
    bool operator!=(const PolicyProperty& other) const { return !(*this == other); }
    bool operator<(const PolicyProperty& other) const noexcept { return m_name < other.m_name; }
    bool operator>(const PolicyProperty& other) const noexcept { return other.m_name < m_name; }

    CORVANE_SOA_GLOBAL_ALLOCATION

private:
    std::string m_name;
    Modifiers m_modifiers;
};

}  // namespace Corvane::Soa::Common

#endif
