#include <corvane/soa/common/ObjectPropertyPolicy.hpp>
#include <corvane/soa/internal/common/PolicyMarshaller.hpp>

#include <utility>

namespace Corvane::Soa::Common {

using Internal::Common::PolicyMarshaller;

void ObjectPropertyPolicy::addType(PolicyType& type) {
    mergeModifiers(type);
    const auto found = m_types.find(type);
    if (found == m_types.end()) {
        m_types.insert(type);
        return;
    }
    // Adding properties never touches the stored type's name, which alone keys the set.
    auto& stored = const_cast<PolicyType&>(*found);
    // Adding a stored type to itself replaces its properties while the walk goes on: walk a copy.
    const PolicyType::Properties ownCopy =
        &stored == &type ? type.getProperties() : PolicyType::Properties();
    for (const PolicyProperty& added : &stored == &type ? ownCopy : type.getProperties()) {
        PolicyProperty property(added);
        stored.addProperty(property);
    }
}

void ObjectPropertyPolicy::addType(PolicyType&& type) {
    mergeModifiers(type);
    // Files list types in name order: a name past the last one goes to the end at once.
    if (m_types.empty() || *m_types.rbegin() < type) {
        m_types.insert(m_types.end(), std::move(type));
    } else if (m_types.count(type) == 0) {
        m_types.insert(std::move(type));
    } else {
        addType(type);  // merged already: merging again changes nothing
    }
}

void ObjectPropertyPolicy::addType(const std::string& text) { addType(PolicyType(text)); }

PolicyType* ObjectPropertyPolicy::getType(const std::string& name) {
    // The caller may change anything but the name, which alone keys the set.
    return const_cast<PolicyType*>(static_cast<const ObjectPropertyPolicy&>(*this).getType(name));
}

const PolicyType* ObjectPropertyPolicy::getType(const std::string& name) const {
    PolicyType key;
    key.setName(name);
    const auto found = m_types.find(key);
    return found == m_types.end() ? nullptr : &*found;
}

std::vector<std::string> ObjectPropertyPolicy::getTypeNames() const {
    std::vector<std::string> names;
    names.reserve(m_types.size());
    for (const PolicyType& type : m_types) {
        names.push_back(type.getName());
    }
    return names;
}

bool ObjectPropertyPolicy::removeType(const std::string& name) {
    PolicyType key;
    key.setName(name);
    return m_types.erase(key) != 0;
}

bool ObjectPropertyPolicy::removeProperties(const PolicyType& type) {
    PolicyType* stored = getType(type.getName());
    if (stored == nullptr) {
        return false;
    }
    if (type.getProperties().empty()) {
        removeType(type.getName());
        return true;
    }
    for (const PolicyProperty& property : type.getProperties()) {
        stored->eraseProperty(property);
    }
    return true;
}

bool ObjectPropertyPolicy::getBooleanModifier(const std::string& name) const {
    const auto found = m_modifiers.find(name);
    return found != m_modifiers.end() && (found->second == "1" || found->second == "true");
}

void ObjectPropertyPolicy::setModifier(const std::string& name, bool value) {
    // The types already added keep their modifiers: a policy modifier reaches a type only when
    // the type is added.
    m_modifiers[name] = value ? "1" : "0";
}

std::vector<std::string> ObjectPropertyPolicy::getModifierNames() const {
    std::vector<std::string> names;
    names.reserve(m_modifiers.size());
    for (const auto& modifier : m_modifiers) {
        names.push_back(modifier.first);
    }
    return names;
}

void ObjectPropertyPolicy::mergeModifiers(PolicyType& type) const {
    const PolicyType::Modifiers& own = type.getModifiers();
    for (const auto& modifier : m_modifiers) {
        if (own.find(modifier.first) == own.end()) {
            type.setModifier(modifier.first, getBooleanModifier(modifier.first));
        }
    }
}

void ObjectPropertyPolicy::save(const std::string& path) const {
    PolicyMarshaller::save(*this, path);
}

void ObjectPropertyPolicy::load(const std::string& path) { PolicyMarshaller::load(*this, path); }

void ObjectPropertyPolicy::createDir(std::string path) {
    PolicyMarshaller::createDir(std::move(path));
}

bool ObjectPropertyPolicy::operator==(const ObjectPropertyPolicy& other) const {
    if (m_modifiers != other.m_modifiers || m_types.size() != other.m_types.size()) {
        return false;
    }
    for (const PolicyType& type : m_types) {
        const auto found = other.m_types.find(type);
        if (found == other.m_types.end() || !(*found == type)) {
            return false;
        }
    }
    return true;
}

}  // namespace Corvane::Soa::Common
