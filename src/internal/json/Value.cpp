#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Value.hpp>

#include "internal/json/ValuePool.hpp"

#include <array>
#include <new>
#include <vector>

namespace Corvane::Soa::Internal::Json {

Value::~Value() = default;

void* Value::operator new(std::size_t size, std::align_val_t alignment) {
    return ::operator new(size, alignment);
}

// The unsized form: not every compiler declares the sized one by default.
void Value::operator delete(void* block, std::size_t /*size*/,
                            std::align_val_t alignment) noexcept {
    ::operator delete(block, alignment);
}

namespace {

// The containers waiting to be destroyed, last in first out, in blocks of the value pool: a
// wide array queues all its child containers at once, and blocks of the pool cost no heap call.
class PendingQueue {
public:
    PendingQueue() = default;
    PendingQueue(const PendingQueue&) = delete;
    PendingQueue& operator=(const PendingQueue&) = delete;
    ~PendingQueue() {
        release(m_top);
        release(m_spare);
    }

    // False when no block could be had for it.
    bool push(Value* value) noexcept {
        if (m_top == nullptr || m_top->count == Node::kCapacity) {
            Node* node = m_spare;
            m_spare = nullptr;
            if (node == nullptr) {
                try {
                    node = static_cast<Node*>(ValuePool::allocate(sizeof(Node)));
                } catch (const std::bad_alloc&) {
                    return false;
                }
            }
            node->below = m_top;
            node->count = 0;
            m_top = node;
        }
        m_top->items[m_top->count++] = value;
        return true;
    }

    // The value `depth` places below the top, or null.
    Value* peek(std::size_t depth) const noexcept {
        for (const Node* node = m_top; node != nullptr; node = node->below) {
            if (depth < node->count) {
                return node->items[node->count - 1 - depth];
            }
            depth -= node->count;
        }
        return nullptr;
    }

    Value* pop() noexcept {
        while (m_top != nullptr && m_top->count == 0) {
            Node* empty = m_top;
            m_top = empty->below;
            release(m_spare);
            m_spare = empty;
            m_spare->below = nullptr;
        }
        return m_top != nullptr ? m_top->items[--m_top->count] : nullptr;
    }

private:
    struct Node {
        static constexpr std::size_t kCapacity = 14;
        Node* below;
        std::size_t count;
        Value* items[kCapacity];
    };
    static_assert(sizeof(Node) <= ValuePool::kLargest, "a node is one block of the pool");

    static void release(Node* node) noexcept {
        while (node != nullptr) {
            Node* below = node->below;
            ValuePool::deallocate(node, sizeof(Node));
            node = below;
        }
    }

    Node* m_top = nullptr;
    Node* m_spare = nullptr;  // kept back so that a queue going up and down a block boundary
                              // does not take and give back a block each time
};

constexpr std::size_t kLine = 64;

void prefetchRange(const void* begin, std::size_t bytes) {
    const auto* p = static_cast<const char*>(begin);
    for (std::size_t offset = 0; offset < bytes; offset += kLine) {
        __builtin_prefetch(p + offset);
    }
}

}  // namespace

// Fetches the member or element array of a container whose header is at hand.
void Value::prefetchStorage(const Value* container) noexcept {
    if (container->getType() == OBJECT) {
        const auto& members = static_cast<const JSONObject*>(container)->m_members;
        prefetchRange(members.data(), members.size() * sizeof(JSONObject::Member));
    } else {
        const auto& elements = static_cast<const JSONArray*>(container)->m_elements;
        prefetchRange(elements.data(), elements.size() * sizeof(JSONArray::Element));
    }
}

// Fetches the headers of a container's members, whose array is at hand.
void Value::prefetchChildren(const Value* container) noexcept {
    if (container->getType() == OBJECT) {
        for (const auto& member : static_cast<const JSONObject*>(container)->m_members) {
            __builtin_prefetch(member.value().get());
        }
    } else {
        for (const auto& element : static_cast<const JSONArray*>(container)->m_elements) {
            __builtin_prefetch(element.get());
        }
    }
}

// A container's destructor releases its children, and a child container whose last holder that
// was would be destroyed inside it: a deep tree would recurse as deep as it is. Instead, while one
// destruction runs on this thread, containers that reach a count of zero wait in its queue and
// are destroyed one after the other at the outermost level.
//
// A large tree is mostly out of the cache by the time it is released, and taking it apart chases
// pointers: container, member array, member. The queue tells what comes next, so the loop fetches
// ahead in stages: the header of the third container waiting, the member array of the second
// (whose header came with the previous turn), the members of the next one.
void Value::destroy(Value* value) noexcept {
    thread_local PendingQueue* pending = nullptr;
    const ValueType type = value->getType();
    // A scalar releases nothing that could recurse.
    if (type != ARRAY && type != OBJECT) {
        delete value;
        return;
    }
    if (pending != nullptr) {
        prefetchStorage(value);
        if (!pending->push(value)) {
            // No room to queue it: destroy it here, recursing one level deeper.
            delete value;
        }
        return;
    }
    // The values of a tree lie side by side: their releases are counted off per chunk.
    const ValuePool::BatchedRelease batch;
    PendingQueue queue;
    pending = &queue;
    delete value;
    while (Value* next = queue.pop()) {
        if (Value* second = queue.peek(0)) {
            prefetchChildren(second);
            if (Value* third = queue.peek(1)) {
                prefetchStorage(third);
                if (Value* fourth = queue.peek(2)) {
                    __builtin_prefetch(fourth);
                }
            }
        }
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
