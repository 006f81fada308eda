#include "common/xml/TypeIdentities.hpp"

#include <array>
#include <atomic>
#include <mutex>
#include <new>
#include <stdexcept>
#include <unordered_map>

namespace Corvane::Soa::Common::Xml {

namespace {

// Entries live in chunks that are allocated as the table grows and never move: 4096 chunks of
// 256 hold a million identities, far beyond the types of any program.
constexpr std::uint32_t kChunkBits = 8;
constexpr std::uint32_t kChunkSize = 1U << kChunkBits;
constexpr std::uint32_t kChunks = 4096;

// Zero-initialised before any code runs, so lookups work during static initialisation.
std::array<std::atomic<TypeIdentities::Identity*>, kChunks> gChunks{};

struct Index {
    std::mutex lock;
    // Key: the namespace, a NUL, the type name.
    std::unordered_map<std::string, std::uint32_t> numbers;
    std::uint32_t count = 0;

    std::uint32_t add(std::string_view ns, std::string_view typeName) {
        if (count == kChunkSize * kChunks) {
            throw std::length_error("too many data type identities");
        }
        const std::uint32_t number = count;
        std::atomic<TypeIdentities::Identity*>& slot = gChunks[number >> kChunkBits];
        TypeIdentities::Identity* chunk = slot.load(std::memory_order_relaxed);
        const bool fresh = chunk == nullptr;
        if (fresh) {
            chunk = new TypeIdentities::Identity[kChunkSize];
        }
        TypeIdentities::Identity& entry = chunk[number & (kChunkSize - 1)];
        entry.ns = ns;
        entry.typeName = typeName;
        // A new chunk is published with its first entry written: entry 0 is read by objects
        // that never asked for a number.
        if (fresh) {
            slot.store(chunk, std::memory_order_release);
        }
        ++count;
        return number;
    }
};

Index& index() {
    static Index* const made = [] {
        auto* table = new Index;
        table->add({}, {});  // number 0: the empty identity of a default-constructed object
        table->numbers.emplace(std::string(1, '\0'), 0);
        return table;
    }();
    return *made;
}

}  // namespace

std::uint32_t TypeIdentities::intern(std::string_view ns, std::string_view typeName) {
    std::string key;
    key.reserve(ns.size() + 1 + typeName.size());
    key.append(ns).append(1, '\0').append(typeName);
    Index& table = index();
    const std::lock_guard<std::mutex> guard(table.lock);
    const auto found = table.numbers.find(key);
    if (found != table.numbers.end()) {
        return found->second;
    }
    const std::uint32_t number = table.add(ns, typeName);
    table.numbers.emplace(std::move(key), number);
    return number;
}

const TypeIdentities::Identity& TypeIdentities::at(std::uint32_t number) noexcept {
    const Identity* chunk = gChunks[number >> kChunkBits].load(std::memory_order_acquire);
    if (chunk == nullptr) {
        // Only number 0 can be asked for before the table exists. Its texts are made in place
        // and never destroyed, like the table's.
        alignas(Identity) static unsigned char storage[sizeof(Identity)];
        static const Identity* const empty = new (storage) Identity;
        return *empty;
    }
    return chunk[number & (kChunkSize - 1)];
}

}  // namespace Corvane::Soa::Common::Xml
