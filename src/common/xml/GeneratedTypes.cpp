#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>

#include "common/xml/GeneratedTypes.hpp"

#include <mutex>
#include <unordered_map>

namespace Corvane::Soa::Common::Xml {

const std::type_info& GeneratedTypes::classOf(const TypeDescriptor& type) {
    static std::mutex mutex;
    static std::unordered_map<const TypeDescriptor*, const std::type_info*> classes;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto found = classes.find(&type);
        if (found != classes.end()) {
            return *found->second;
        }
    }
    // Made outside the lock: a constructor may ask about another type.
    const AutoPtr<BaseObject> sample(type.create());
    const BaseObject& object = *sample;
    const std::type_info& made = typeid(object);
    const std::lock_guard<std::mutex> lock(mutex);
    classes.emplace(&type, &made);
    return made;
}

bool GeneratedTypes::isGenerated(const BaseObject& object, const TypeDescriptor& type) {
    return typeid(object) == classOf(type);
}

bool GeneratedTypes::Cache::isGenerated(const BaseObject& object, const TypeDescriptor& type) {
    for (const auto& [known, made] : m_known) {
        if (known == &type) {
            return typeid(object) == *made;
        }
    }
    const std::type_info& made = classOf(type);
    m_known.emplace_back(&type, &made);
    return typeid(object) == made;
}

}  // namespace Corvane::Soa::Common::Xml
