#ifndef CORVANE_SOA_INTERNAL_JSON_VALUE_HPP
#define CORVANE_SOA_INTERNAL_JSON_VALUE_HPP

#include <corvane/soa/Export.hpp>

#include <cstddef>
#include <cstdint>
#include <new>
#include <ostream>
#include <string>

namespace Corvane::Soa::Internal::Json {

class JSONObject;
class JSONArray;

/// A node of the JSON tree: one of six scalar kinds or one of the two containers. Values are
/// created with `new` and held through `AutoPtr`, which calls `ref()` and `unref()`; the count
/// is plain, not atomic, so a tree belongs to one thread at a time.
///
/// Destroying a tree never recurses, however deep it is: containers whose last holder lets go
/// are taken apart one at a time.
///
/// Values, and the member and element arrays of containers up to 2048 bytes, are cut one after
/// the other from large chunks, not taken from the global heap one by one: building and
/// releasing a large tree costs no heap call per value. A chunk goes back to the heap when all
/// its values have been released. A value may be released on another thread than the one that
/// made it.
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

    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, std::align_val_t alignment);
    static void* operator new(std::size_t /*size*/, void* place) noexcept { return place; }
    static void operator delete(void* block, std::size_t size) noexcept;
    static void operator delete(void* block, std::size_t size, std::align_val_t alignment) noexcept;
    static void operator delete(void* /*block*/, void* /*place*/) noexcept {}

    void ref() noexcept { ++m_refCount; }
    void unref() noexcept {
        if (--m_refCount == 0) {
            destroy(this);
        }
    }

    /// The name of a kind in messages: "Undeterined", "Boolean", "Double", "Integer",
    /// "JSONArray", "JSONObject", "Null", "String", "Date".
    static const std::string& getTypeName(ValueType type);

    /// Sets the indentation unit of printed trees, in blanks (2 unless set).
    static void setTabSize(std::size_t size);

protected:
    friend class JSONObject;
    friend class JSONArray;

    /// Prints the value as JSON text at the given indentation level.
    virtual void serialize(int level, std::ostream& os) const = 0;

    /// `level` indentation units of blanks.
    static std::string getPadding(int level);

private:
    static void destroy(Value* value) noexcept;
    static void prefetchStorage(const Value* container) noexcept;
    static void prefetchChildren(const Value* container) noexcept;

    std::uint32_t m_refCount = 0;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
