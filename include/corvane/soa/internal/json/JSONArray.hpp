#ifndef CORVANE_SOA_INTERNAL_JSON_JSONARRAY_HPP
#define CORVANE_SOA_INTERNAL_JSON_JSONARRAY_HPP

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/internal/json/Value.hpp>
#include <corvane/soa/internal/json/ValueArray.hpp>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace Corvane::Soa::Internal::Json {

class JSONObject;
class NullValue;
class Parser;

/// A JSON array. Each element carries the kind recorded when it was added; typed getters check
/// that recorded kind and throw `IndexOutOfRangeException` or `InvalidTypeException`.
class CORVANE_SOA_API JSONArray : public Value {
public:
    JSONArray() = default;
    ~JSONArray() override;

    /// True when the array has at least one element: callers rely on this inverted sense.
    bool isEmpty() const override { return !m_elements.empty(); }
    std::size_t size() const override { return m_elements.size(); }
    ValueType getType() const override { return ARRAY; }

    void add(bool value);
    void add(const ::Corvane::Soa::Common::DateTime& value);
    void add(double value);
    void add(int value);
    void add(::Corvane::Soa::Common::AutoPtr<JSONArray> value);
    void add(::Corvane::Soa::Common::AutoPtr<JSONObject> value);
    void add(::Corvane::Soa::Common::AutoPtr<NullValue> value);
    void add(const std::string& value);
    void add(const char* value);
    /// A container given as a raw pointer would otherwise be taken for a bool: wrap it in an
    /// `AutoPtr`.
    template <class T, class = std::enable_if_t<!std::is_same_v<std::remove_cv_t<T>, char>>>
    void add(T* value) = delete;

    /// The kind recorded for the element (no range check beyond the vector's own).
    ValueType getValueType(std::size_t index) const;
    bool isNull(std::size_t index) const;
    ::Corvane::Soa::Common::AutoPtr<Value> getValue(std::size_t index) const;

    bool getBoolean(std::size_t index) const;
    ::Corvane::Soa::Common::DateTime getDate(std::size_t index) const;
    double getDouble(std::size_t index) const;
    int getInteger(std::size_t index) const;
    ::Corvane::Soa::Common::AutoPtr<JSONArray> getJSONArray(std::size_t index) const;
    ::Corvane::Soa::Common::AutoPtr<JSONObject> getJSONObject(std::size_t index) const;
    const std::string& getString(std::size_t index) const;

    /// Prints the array as indented JSON text at level 0.
    void serializeDocument(std::ostream& os) const;

protected:
    void serialize(int level, std::ostream& os) const override;

private:
    friend class Parser;
    friend class Value;

    // An element and the kind recorded for it, in one word. The kind is the value's own type,
    // except for a null holder (stored as twice the kind, below any address) and for the null
    // value of a null text, recorded as a string (its address with the low bit set).
    class Element {
    public:
        Element(ValueType kind, ::Corvane::Soa::Common::AutoPtr<Value> value) noexcept {
            Value* held = value.get();
            if (held == nullptr) {
                m_bits = static_cast<std::uintptr_t>(kind) * 2;
                return;
            }
            held->ref();
            m_bits = reinterpret_cast<std::uintptr_t>(held) |
                     (kind != held->getType() ? std::uintptr_t{1} : std::uintptr_t{0});
        }
        Element(Element&& other) noexcept : m_bits(other.m_bits) { other.m_bits = 0; }
        Element& operator=(Element&& other) noexcept {
            if (this != &other) {
                reset();
                m_bits = other.m_bits;
                other.m_bits = 0;
            }
            return *this;
        }
        Element(const Element&) = delete;
        Element& operator=(const Element&) = delete;
        ~Element() { reset(); }

        Value* get() const noexcept {
            // The word is an address with a flag in its low bit, by design.
            return m_bits < kLowest
                       ? nullptr
                       : reinterpret_cast<Value*>(  // NOLINT(performance-no-int-to-ptr)
                             m_bits & ~std::uintptr_t{1});
        }
        ValueType kind() const {
            if (m_bits < kLowest) {
                return static_cast<ValueType>(m_bits / 2);
            }
            return (m_bits & 1U) != 0 ? STRING : get()->getType();
        }
        void reset() noexcept {
            Value* held = get();
            m_bits = 0;
            if (held != nullptr) {
                held->unref();
            }
        }

    private:
        static constexpr std::uintptr_t kLowest = 64;
        std::uintptr_t m_bits;
    };

    void append(ValueType kind, ::Corvane::Soa::Common::AutoPtr<Value> value);
    void checkIndex(std::size_t index) const;

    ValueArray<Element> m_elements;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
