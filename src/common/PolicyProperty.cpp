#include <corvane/soa/common/PolicyProperty.hpp>
#include <corvane/soa/common/StringUtils.hpp>

namespace Corvane::Soa::Common {

PolicyProperty::PolicyProperty(const std::string& name) : m_name(name) {}

PolicyProperty::PolicyProperty(const std::string& name, const std::string& modifiers)
    : m_name(name) {
    for (const std::string& piece : StringUtils::split(modifiers, ",")) {
        setModifier(StringUtils::trim(piece), true);
    }
}

bool PolicyProperty::getBooleanModifier(const std::string& name) const {
    const auto found = m_modifiers.find(name);
    return found != m_modifiers.end() && (found->second == "1" || found->second == "true");
}

void PolicyProperty::setModifier(const std::string& name, bool value) {
    m_modifiers[name] = value ? "1" : "0";
}

std::vector<std::string> PolicyProperty::getModifierNames() const {
    std::vector<std::string> names;
    names.reserve(m_modifiers.size());
    for (const auto& modifier : m_modifiers) {
        names.push_back(modifier.first);
    }
    return names;
}

bool PolicyProperty::operator==(const PolicyProperty& other) const {
    return m_name == other.m_name && m_modifiers == other.m_modifiers;
}

}  // namespace Corvane::Soa::Common
