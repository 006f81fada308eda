#include <corvane/soa/common/IPropertyPolicyChangeListener.hpp>
#include <corvane/soa/common/PolicyType.hpp>
#include <corvane/soa/common/StringUtils.hpp>

#include <utility>

namespace Corvane::Soa::Common {

PolicyType::PolicyType(const std::string& text) {
    const std::size_t brace = text.find('{');
    if (brace == std::string::npos) {
        m_name = text;
        return;
    }
    m_name = text.substr(0, brace);
    addProperties(text);
}

PolicyType::PolicyType(const std::string& name, const std::string& properties) : m_name(name) {
    for (const std::string& piece : StringUtils::split(properties, ",")) {
        addProperty(StringUtils::trim(piece));
    }
}

PolicyType::PolicyType(const std::string& name, const std::string& properties,
                       const std::string& modifiers)
    : m_name(name) {
    for (const std::string& piece : StringUtils::split(properties, ",")) {
        addProperty(PolicyProperty(StringUtils::trim(piece), modifiers));
    }
}

void PolicyType::getProperties(std::set<const PolicyProperty*>& out) const {
    for (const PolicyProperty& property : m_properties) {
        out.insert(&property);
    }
}

std::vector<std::string> PolicyType::getPropertyNames() const {
    std::vector<std::string> names;
    names.reserve(m_properties.size());
    for (const PolicyProperty& property : m_properties) {
        names.push_back(property.getName());
    }
    return names;
}

bool PolicyType::hasProperty(const std::string& name) const {
    return m_properties.count(PolicyProperty(name)) != 0;
}

PolicyProperty* PolicyType::getProperty(const std::string& name) {
    // Set elements are constant only to keep their order; the order depends on the name alone,
    // which the caller leaves alone.
    return const_cast<PolicyProperty*>(static_cast<const PolicyType&>(*this).getProperty(name));
}

const PolicyProperty* PolicyType::getProperty(const std::string& name) const {
    const auto found = m_properties.find(PolicyProperty(name));
    return found == m_properties.end() ? nullptr : &*found;
}

void PolicyType::addProperty(const std::string& name) { addProperty(PolicyProperty(name)); }

void PolicyType::addProperty(PolicyProperty& property) {
    mergeModifiers(&property);
    store(PolicyProperty(property));
    tellListeners(property);
}

void PolicyType::addProperty(PolicyProperty&& property) {
    mergeModifiers(&property);
    tellListeners(store(std::move(property)));
}

PolicyProperty& PolicyType::store(PolicyProperty&& property) {
    // Files list properties in name order: a name past the last one goes to the end at once.
    auto place = m_properties.end();
    if (!m_properties.empty() && !(*m_properties.rbegin() < property)) {
        place = m_properties.find(property);
        if (place != m_properties.end()) {
            place = m_properties.erase(place);
        }
    }
    // Set elements are constant only to keep their order, which the name alone decides.
    return const_cast<PolicyProperty&>(*m_properties.insert(place, std::move(property)));
}

void PolicyType::tellListeners(PolicyProperty& property) {
    // A listener may add or remove listeners while it is told: each step looks up the next one
    // after the listener just told.
    Listeners& all = listeners();
    for (auto next = all.begin(); next != all.end();) {
        IPropertyPolicyChangeListener* listener = *next;
        listener->propertyAdded(*this, property.getName(), property);
        next = all.upper_bound(listener);
    }
}

void PolicyType::addProperties(const std::string& text) {
    const std::size_t brace = text.find('{');
    const std::size_t first = brace == std::string::npos ? 0 : brace + 1;
    const std::size_t close = text.find('}', first);
    const std::size_t end = close == std::string::npos ? text.size() : close;
    std::size_t start = first;
    while (start <= end) {
        std::size_t comma = text.find(',', start);
        if (comma == std::string::npos || comma > end) {
            comma = end;
        }
        if (comma > start) {
            addProperty(text.substr(start, comma - start));
        }
        start = comma + 1;
    }
}

void PolicyType::addProperties(const PolicyType& other) {
    // Adding a type's own properties to it replaces each while the walk goes on: walk a copy.
    const Properties ownCopy = &other == this ? m_properties : Properties();
    for (const PolicyProperty& stored : &other == this ? ownCopy : other.m_properties) {
        PolicyProperty property(stored);
        addProperty(property);
    }
}

void PolicyType::setProperties(const std::string& text) {
    m_properties.clear();
    addProperties(text);
}

void PolicyType::eraseProperty(const PolicyProperty& property) { m_properties.erase(property); }

void PolicyType::eraseProperty(const std::string& name) {
    m_properties.erase(PolicyProperty(name));
}

bool PolicyType::getBooleanModifier(const std::string& name) const {
    const auto found = m_modifiers.find(name);
    return found != m_modifiers.end() && (found->second == "1" || found->second == "true");
}

void PolicyType::setModifier(const std::string& name, bool value) {
    m_modifiers[name] = value ? "1" : "0";
    for (const PolicyProperty& property : m_properties) {
        // Merging never touches the name, which alone keys the set.
        mergeModifiers(const_cast<PolicyProperty*>(&property));
    }
}

std::vector<std::string> PolicyType::getModifierNames() const {
    std::vector<std::string> names;
    names.reserve(m_modifiers.size());
    for (const auto& modifier : m_modifiers) {
        names.push_back(modifier.first);
    }
    return names;
}

void PolicyType::mergeModifiers(PolicyProperty* property) const {
    const PolicyProperty::Modifiers& own = property->getModifiers();
    for (const auto& modifier : m_modifiers) {
        if (own.find(modifier.first) == own.end()) {
            property->setModifier(modifier.first, getBooleanModifier(modifier.first));
        }
    }
}

std::string PolicyType::toString() const {
    std::string text = m_name;
    text += '{';
    const char* separator = "";
    for (const PolicyProperty& property : m_properties) {
        text.append(separator).append(property.getName());
        separator = ", ";
    }
    text += '}';
    return text;
}

bool PolicyType::operator==(const PolicyType& other) const {
    if (m_name != other.m_name || m_modifiers != other.m_modifiers ||
        m_properties.size() != other.m_properties.size()) {
        return false;
    }
    for (const PolicyProperty& property : m_properties) {
        const auto found = other.m_properties.find(property);
        if (found == other.m_properties.end() || !(*found == property)) {
            return false;
        }
    }
    return true;
}

void PolicyType::addPropertyPolicyChangeListener(IPropertyPolicyChangeListener* listener) {
    listeners().insert(listener);
}

void PolicyType::removePropertyPolicyChangeListener(IPropertyPolicyChangeListener* listener) {
    listeners().erase(listener);
}

PolicyType::Listeners& PolicyType::listeners() {
    // Made on first use, so that a listener registered during another file's static
    // initialisation finds it; never destroyed, so that one removed during exit does too.
    static Listeners* const all = new Listeners;
    return *all;
}

}  // namespace Corvane::Soa::Common
