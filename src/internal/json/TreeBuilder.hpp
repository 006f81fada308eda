#ifndef CORVANE_SOA_SRC_INTERNAL_JSON_TREEBUILDER_HPP
#define CORVANE_SOA_SRC_INTERNAL_JSON_TREEBUILDER_HPP

// The handler of `JsonScanner` that builds the value tree: the parser's own, and the typed
// reader's for the subtrees of types that read themselves from a tree. Not part of the exported
// interface.

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/internal/json/BooleanValue.hpp>
#include <corvane/soa/internal/json/DateValue.hpp>
#include <corvane/soa/internal/json/DoubleValue.hpp>
#include <corvane/soa/internal/json/IntegerValue.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/NullValue.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>

#include "internal/json/JsonScanner.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

namespace Corvane::Soa::Internal::Json {

namespace TreeOrder {

// A member read but not yet stored: its key as written, a view of the text, and its value.
struct PendingMember {
    const char* key;
    std::size_t length;
    ::Corvane::Soa::Common::AutoPtr<Value> value;
};

// Byte-wise key order, as std::string's operator< (bytes as unsigned char), deciding most pairs
// by their first byte without a call.
inline bool keyLess(const PendingMember& a, const PendingMember& b) {
    const std::size_t common = a.length < b.length ? a.length : b.length;
    if (common != 0 && a.key[0] != b.key[0]) {
        return static_cast<unsigned char>(a.key[0]) < static_cast<unsigned char>(b.key[0]);
    }
    const int order = std::memcmp(a.key, b.key, common);
    return order != 0 ? order < 0 : a.length < b.length;
}

inline bool sameKey(const PendingMember& a, const PendingMember& b) {
    return a.length == b.length && std::memcmp(a.key, b.key, a.length) == 0;
}

// Members arrive in document order and the object keeps them sorted by key, a repeated key
// keeping its last value: the sort must be stable. Objects are small, and insertion sort is the
// quicker there; large ones take the merge sort.
inline void sortMembers(PendingMember* first, PendingMember* last) {
    constexpr std::ptrdiff_t kSmall = 16;
    if (last - first > kSmall) {
        std::stable_sort(first, last, keyLess);
        return;
    }
    for (PendingMember* it = first + 1; it < last; ++it) {
        if (!keyLess(*it, *(it - 1))) {
            continue;
        }
        PendingMember moving = std::move(*it);
        PendingMember* hole = it;
        do {
            *hole = std::move(*(hole - 1));
            --hole;
        } while (hole != first && keyLess(moving, *(hole - 1)));
        *hole = std::move(moving);
    }
}

}  // namespace TreeOrder

/// Builds the value tree from the scanner's tokens. Open containers collect their members on
/// stacks shared by the whole document and take them over in one piece when they close; objects
/// keep their members sorted by key, a repeated key keeping its last value.
class Parser::TreeBuilder {
public:
    using Result = ::Corvane::Soa::Common::AutoPtr<Value>;

    struct Object {
        ::Corvane::Soa::Common::AutoPtr<JSONObject> object;
        std::size_t base;
        // Whether the keys so far came in strictly increasing order: then there is nothing to
        // sort and no repeated key.
        bool ordered;
        const char* key;
        std::size_t keyLength;
    };

    struct Array {
        ::Corvane::Soa::Common::AutoPtr<JSONArray> array;
        std::size_t base;
    };

    TreeBuilder() = default;
    TreeBuilder(const TreeBuilder&) = delete;
    TreeBuilder& operator=(const TreeBuilder&) = delete;
    ~TreeBuilder() {
        for (KeySlot& slot : m_keys) {
            settle(slot);
        }
    }

    Object beginObject() {
        return Object{::Corvane::Soa::Common::AutoPtr<JSONObject>(new JSONObject), m_members.size(),
                      true, nullptr, 0};
    }

    void key(Object& object, const char* text, std::size_t length) {
        object.key = text;
        object.keyLength = length;
    }

    // The key is kept exactly as written.
    void member(Object& object, Result&& value) {
        m_members.push_back(
            TreeOrder::PendingMember{object.key, object.keyLength, std::move(value)});
        if (object.ordered && m_members.size() - object.base > 1) {
            object.ordered = TreeOrder::keyLess(m_members[m_members.size() - 2], m_members.back());
        }
    }

    Result endObject(Object& object) {
        if (m_members.size() == object.base) {
            return std::move(object.object);
        }
        TreeOrder::PendingMember* first = m_members.data() + object.base;
        TreeOrder::PendingMember* last = m_members.data() + m_members.size();
        if (!object.ordered) {
            TreeOrder::sortMembers(first, last);
        }
        // Each key is made once, in its place; of a run of equal keys only the last is kept.
        auto& members = object.object->m_members;
        members.reserve(static_cast<std::size_t>(last - first));
        for (TreeOrder::PendingMember* it = first; it != last; ++it) {
            if (!object.ordered && it + 1 != last && TreeOrder::sameKey(*it, *(it + 1))) {
                continue;
            }
            members.emplace_back(
                JSONObject::Member(internKey(it->key, it->length), std::move(it->value)));
        }
        m_members.resize(object.base);
        return std::move(object.object);
    }

    Array beginArray() {
        return Array{::Corvane::Soa::Common::AutoPtr<JSONArray>(new JSONArray), m_elements.size()};
    }

    void element(Array& /*array*/, Value::ValueType kind, Result&& value) {
        m_elements.emplace_back(kind, std::move(value));
    }

    Result endArray(Array& array) {
        if (m_elements.size() == array.base) {
            return std::move(array.array);
        }
        const auto first = m_elements.begin() + static_cast<std::ptrdiff_t>(array.base);
        auto& elements = array.array->m_elements;
        elements.reserve(static_cast<std::size_t>(m_elements.end() - first));
        for (auto it = first; it != m_elements.end(); ++it) {
            elements.emplace_back(std::move(*it));
        }
        m_elements.erase(first, m_elements.end());
        return std::move(array.array);
    }

    Result string(const char* begin, const char* end, bool escaped) {
        const auto length = static_cast<std::size_t>(end - begin);
        StringValue* value = StringValue::makeInPlace(length);
        if (value == nullptr) {
            return Result(new StringValue(escaped ? JsonText::unescape(begin, end)
                                                  : std::string(begin, length)));
        }
        Result held(value);
        // Unescaping never lengthens the text.
        value->setSize(escaped ? JsonText::unescapeInto(value->bytes(), begin, end)
                               : (std::memcpy(value->bytes(), begin, length), length));
        return held;
    }

    Result date(const ::Corvane::Soa::Common::DateTime& value) {
        return Result(new DateValue(value));
    }
    Result integer(int value) { return Result(new IntegerValue(value)); }
    Result real(double value) { return Result(new DoubleValue(value)); }
    Result boolean(bool value) { return Result(new BooleanValue(value)); }
    Result null() { return Result(new NullValue()); }

private:
    using Key = JSONObject::Member::Key;

    // The members of a document share the text of equal keys: the keys met lately are kept in a
    // small table, each held by the table with a count large enough that members released early
    // cannot bring it to zero, and handed to the members without touching the count; the uses
    // are settled when the key leaves the table.
    static constexpr std::size_t kKeySlots = 256;
    static constexpr std::uint32_t kTableHolding = std::uint32_t{1} << 30U;

    struct KeySlot {
        Key* key = nullptr;
        std::uint32_t uses = 0;
    };

    static void settle(KeySlot& slot) noexcept {
        if (slot.key != nullptr) {
            Key::release(slot.key, kTableHolding - slot.uses);
        }
        slot = KeySlot();
    }

    static std::size_t slotOf(const char* text, std::size_t length) {
        // Whole eight-byte loads where the key is long enough: a load narrower than the store
        // before it would wait for that store to complete.
        std::uint64_t head = 0;
        std::uint64_t tail = 0;
        if (length >= 8) {
            std::memcpy(&head, text, 8);
            std::memcpy(&tail, text + length - 8, 8);
        } else {
            for (std::size_t i = 0; i < length; ++i) {
                head = (head << 8U) | static_cast<unsigned char>(text[i]);
            }
        }
        const std::uint64_t mixed =
            (head ^ (tail * 0x9E3779B97F4A7C15ULL) ^ length) * 0xBF58476D1CE4E5B9ULL;
        return static_cast<std::size_t>(mixed >> 56U);
    }

    Key* internKey(const char* text, std::size_t length) {
        KeySlot& slot = m_keys[slotOf(text, length)];
        if (slot.key == nullptr || slot.key->length != length ||
            std::memcmp(slot.key->text(), text, length) != 0 || slot.uses == kTableHolding - 1) {
            settle(slot);
            slot.key = Key::make(text, length, kTableHolding);
        }
        ++slot.uses;
        return slot.key;
    }

    // Members and elements of the open containers, innermost last.
    std::vector<TreeOrder::PendingMember> m_members;
    std::vector<JSONArray::Element> m_elements;
    KeySlot m_keys[kKeySlots];
};

}  // namespace Corvane::Soa::Internal::Json

#endif
