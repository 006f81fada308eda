#ifndef CORVANE_SOA_INTERNAL_JSON_VALUE_HPP
#define CORVANE_SOA_INTERNAL_JSON_VALUE_HPP

#include <corvane/soa/Export.hpp>

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace Corvane::Soa::Internal::Json {

/// A node of the JSON tree, held through `AutoPtr` by its own (non-atomic) count.
class CORVANE_SOA_API Value {
public:
    /// Kinds of values; the numbers are fixed.
    enum ValueType {
        UNDETERMINED = 0,
        BOOLEAN = 1,
        DOUBLE = 2,
        INTEGER = 3,
        ARRAY = 4,
        OBJECT = 5,
        NULL_VALUE = 6,
        STRING = 7,
        DATE = 8
    };

    Value() = default;
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    virtual ~Value();
    virtual bool isEmpty() const = 0;
    virtual std::size_t size() const = 0;
    virtual ValueType getType() const = 0;

    void ref() noexcept { ++m_refCount; }
    void unref() noexcept {
        if (--m_refCount == 0) {
            delete this;
        }
    }

protected:
    virtual void serialize(int level, std::ostream& os) const = 0;

private:
    std::uint32_t m_refCount = 0;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
