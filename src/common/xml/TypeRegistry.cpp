#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/common/xml/TypeRegistry.hpp>

#include <map>
#include <mutex>

namespace Corvane::Soa::Common::Xml {

namespace {

struct Table {
    std::mutex lock;
    std::map<std::string, const TypeDescriptor*> byQualifiedName;
};

// Filled while libraries load, before anything else runs, and never destroyed, so that
// lookups during static destruction still answer.
Table& table() {
    static Table* const instance = new Table;
    return *instance;
}

}  // namespace

void TypeRegistry::add(const TypeDescriptor& type) {
    Table& t = table();
    const std::lock_guard<std::mutex> guard(t.lock);
    t.byQualifiedName.emplace(type.qualifiedName, &type);
}

const TypeDescriptor* TypeRegistry::find(const std::string& qualifiedName) {
    Table& t = table();
    const std::lock_guard<std::mutex> guard(t.lock);
    const auto entry = t.byQualifiedName.find(qualifiedName);
    return entry == t.byQualifiedName.end() ? nullptr : entry->second;
}

const TypeDescriptor* TypeRegistry::find(const std::string& namespaceUri,
                                         const std::string& localName) {
    std::string name;
    name.reserve(namespaceUri.size() + 1 + localName.size());
    name.append(namespaceUri).append(1, '.').append(localName);
    return find(name);
}

AutoPtr<BaseObject> TypeRegistry::create(const std::string& namespaceUri,
                                         const std::string& localName) {
    const TypeDescriptor* type = find(namespaceUri, localName);
    return AutoPtr<BaseObject>(type == nullptr ? nullptr : type->create());
}

AutoPtr<BaseObject> TypeRegistry::create(const std::string& qualifiedName) {
    const TypeDescriptor* type = find(qualifiedName);
    return AutoPtr<BaseObject>(type == nullptr ? nullptr : type->create());
}

std::vector<std::string> TypeRegistry::names() {
    Table& t = table();
    const std::lock_guard<std::mutex> guard(t.lock);
    std::vector<std::string> result;
    result.reserve(t.byQualifiedName.size());
    for (const auto& entry : t.byQualifiedName) {
        result.push_back(entry.first);
    }
    return result;
}

}  // namespace Corvane::Soa::Common::Xml
