#ifndef CORVANE_SOA_INTERNAL_JSON_JSONOBJECT_HPP
#define CORVANE_SOA_INTERNAL_JSON_JSONOBJECT_HPP

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/internal/json/Value.hpp>
#include <corvane/soa/internal/json/ValueArray.hpp>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace Corvane::Soa::Internal::Json {

class JSONArray;
class NullValue;
class Parser;

/// A JSON object: members ordered by byte-wise comparison of their keys, each key once.
///
/// Typed getters throw `KeyNotFoundException` for a missing key and `InvalidTypeException` for a
/// member of another kind ("This elment is NULL." for a null member).
class CORVANE_SOA_API JSONObject : public Value {
public:
    /// A key and its value. The key's text is a block of the values' storage with a count of its
    /// holders: the members of one parsed document share the text of equal keys.
    class Member {
    public:
        Member(const char* key, std::size_t length, ::Corvane::Soa::Common::AutoPtr<Value> value)
            : m_key(Key::make(key, length, 1)), m_value(std::move(value)) {}
        Member(Member&& other) noexcept
            : m_key(std::exchange(other.m_key, nullptr)), m_value(std::move(other.m_value)) {}
        Member& operator=(Member&& other) noexcept {
            if (this != &other) {
                Key::release(std::exchange(m_key, std::exchange(other.m_key, nullptr)), 1);
                m_value = std::move(other.m_value);
            }
            return *this;
        }
        Member(const Member&) = delete;
        Member& operator=(const Member&) = delete;
        ~Member() { Key::release(m_key, 1); }

        std::string_view key() const noexcept { return {m_key->text(), m_key->length}; }
        const ::Corvane::Soa::Common::AutoPtr<Value>& value() const noexcept { return m_value; }
        ::Corvane::Soa::Common::AutoPtr<Value>& value() noexcept { return m_value; }

    private:
        friend class Parser;

        // The text of a key and the number of its holders, the bytes following the header.
        struct Key {
            std::atomic<std::uint32_t> holders;
            std::uint32_t length;

            const char* text() const noexcept { return reinterpret_cast<const char*>(this + 1); }
            static Key* make(const char* text, std::size_t length, std::uint32_t holders) {
                void* block = Value::operator new(sizeof(Key) + length);
                Key* key = new (block) Key{{holders}, static_cast<std::uint32_t>(length)};
                std::memcpy(reinterpret_cast<char*>(key + 1), text, length);
                return key;
            }
            static void release(Key* key, std::uint32_t count) noexcept {
                if (key != nullptr &&
                    key->holders.fetch_sub(count, std::memory_order_acq_rel) == count) {
                    const std::size_t bytes = sizeof(Key) + key->length;
                    key->~Key();
                    Value::operator delete(key, bytes);
                }
            }
        };

        // Takes over one holding of `key`.
        Member(Key* key, ::Corvane::Soa::Common::AutoPtr<Value> value) noexcept
            : m_key(key), m_value(std::move(value)) {}

        Key* m_key;
        ::Corvane::Soa::Common::AutoPtr<Value> m_value;
    };
    /// The member storage comes from the values' pool, as the values themselves.
    using Members = ValueArray<Member>;

    JSONObject() = default;
    ~JSONObject() override;

    /// True when the object has at least one member: callers rely on this inverted sense.
    bool isEmpty() const override { return !m_members.empty(); }
    std::size_t size() const override { return m_members.size(); }
    ValueType getType() const override { return OBJECT; }

    /// Stores the value under the key, replacing (and releasing) any value already there.
    void accumulate(const std::string& key, bool value);
    void accumulate(const std::string& key, const ::Corvane::Soa::Common::DateTime& value);
    void accumulate(const std::string& key, double value);
    void accumulate(const std::string& key, int value);
    void accumulate(const std::string& key, ::Corvane::Soa::Common::AutoPtr<JSONArray> value);
    void accumulate(const std::string& key, ::Corvane::Soa::Common::AutoPtr<JSONObject> value);
    void accumulate(const std::string& key, ::Corvane::Soa::Common::AutoPtr<NullValue> value);
    void accumulate(const std::string& key, const std::string& value);
    void accumulate(const std::string& key, const char* value);
    /// A container given as a raw pointer would otherwise be taken for a bool: wrap it in an
    /// `AutoPtr`.
    template <class T, class = std::enable_if_t<!std::is_same_v<std::remove_cv_t<T>, char>>>
    void accumulate(const std::string& key, T* value) = delete;

    bool containsKey(const std::string& key) const;
    /// The keys in key order.
    std::vector<std::string> getKeys() const;
    ValueType getValueType(const std::string& key) const;
    bool isNull(const std::string& key) const;

    bool getBoolean(const std::string& key) const;
    /// A date member, or a string member read as a wire-form date.
    ::Corvane::Soa::Common::DateTime getDate(const std::string& key) const;
    /// A double member, or an integer member widened.
    double getDouble(const std::string& key) const;
    int getInteger(const std::string& key) const;
    ::Corvane::Soa::Common::AutoPtr<JSONArray> getJSONArray(const std::string& key) const;
    ::Corvane::Soa::Common::AutoPtr<JSONObject> getJSONObject(const std::string& key) const;
    /// A string member, or a date member's wire text.
    const std::string& getString(const std::string& key) const;
    /// The stored value itself, whatever its kind.
    ::Corvane::Soa::Common::AutoPtr<Value> getValue(const std::string& key) const;

    /// The key text itself converted, for maps whose keys are written as text.
    std::string getKeyAsString(const std::string& key) const;
    int getKeyAsInteger(const std::string& key) const;
    double getKeyAsDouble(const std::string& key) const;

    /// The members in key order.
    const Members& getMembers() const noexcept { return m_members; }

    /// Prints the object as indented JSON text at level 0.
    void serializeObject(std::ostream& os) const;

protected:
    void serialize(int level, std::ostream& os) const override;

private:
    friend class Parser;
    friend class Value;

    void put(const std::string& key, ::Corvane::Soa::Common::AutoPtr<Value> value);
    const Value& find(const std::string& key) const;

    Members m_members;  // sorted by key
};

}  // namespace Corvane::Soa::Internal::Json

#endif
