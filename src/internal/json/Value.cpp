#include <corvane/soa/internal/json/Value.hpp>

#include <array>
#include <new>
#include <vector>

namespace Corvane::Soa::Internal::Json {

Value::~Value() = default;

// A container's destructor releases its children, and a child container whose last holder that
// was would be destroyed inside it: a deep tree would recurse as deep as it is. Instead, while one
// destruction runs on this thread, containers that reach a count of zero wait in its queue and
// are destroyed one after the other at the outermost level.
void Value::destroy(Value* value) noexcept {
    thread_local std::vector<Value*>* pending = nullptr;
    const ValueType type = value->getType();
    const bool container = type == ARRAY || type == OBJECT;
    if (pending != nullptr) {
        if (container) {
            try {
                pending->push_back(value);
                return;
            } catch (const std::bad_alloc&) {
                // No room to queue it: destroy it here, recursing one level deeper.
            }
        }
        delete value;
        return;
    }
    if (!container) {
        delete value;
        return;
    }
    std::vector<Value*> queue;
    pending = &queue;
    delete value;
    while (!queue.empty()) {
        Value* next = queue.back();
        queue.pop_back();
        delete next;
    }
    pending = nullptr;
}

const std::string& Value::getTypeName(ValueType type) {
    static const std::array<std::string, 9> kNames = {"Undeterined", "Boolean",   "Double",
                                                      "Integer",     "JSONArray", "JSONObject",
                                                      "Null",        "String",    "Date"};
    static const std::string kUnknown;
    const auto index = static_cast<std::size_t>(type);
    return index < kNames.size() ? kNames[index] : kUnknown;
}

namespace {
std::size_t& tabSize() {
    static std::size_t size = 2;
    return size;
}
}  // namespace

void Value::setTabSize(std::size_t size) { tabSize() = size; }

std::string Value::getPadding(int level) {
    // Paddings are kept per level and made again when the tab size has changed since.
    static std::vector<std::string> cache;
    if (level <= 0) {
        return std::string();
    }
    const auto index = static_cast<std::size_t>(level);
    const std::size_t wanted = index * tabSize();
    if (cache.size() <= index) {
        cache.resize(index + 1);
    }
    if (cache[index].size() != wanted) {
        cache[index].assign(wanted, ' ');
    }
    return cache[index];
}

}  // namespace Corvane::Soa::Internal::Json
