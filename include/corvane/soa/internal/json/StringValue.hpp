#ifndef CORVANE_SOA_INTERNAL_JSON_STRINGVALUE_HPP
#define CORVANE_SOA_INTERNAL_JSON_STRINGVALUE_HPP

#include <corvane/soa/internal/json/Value.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Corvane::Soa::Internal::Json {

class Parser;

/// A JSON string, held unescaped in the local code page.
///
/// A string read by the parser keeps its bytes right behind the value, in the same block, and
/// makes its `std::string` only when first asked for one: a large tree holds its texts at little
/// more than their length.
class CORVANE_SOA_API StringValue : public Value {
public:
    explicit StringValue(const std::string& value);
    explicit StringValue(std::string&& value);
    ~StringValue() override;

    bool isEmpty() const override { return false; }
    std::size_t size() const override { return 1; }
    ValueType getType() const override { return STRING; }

    const std::string& getValue() const;
    /// The text without making a `std::string` of it.
    std::string_view view() const noexcept {
        return m_string != nullptr
                   ? std::string_view(*m_string)
                   : std::string_view(reinterpret_cast<const char*>(this + 1), m_size);
    }

protected:
    void serialize(int level, std::ostream& os) const override;

private:
    friend class Parser;

    StringValue() noexcept = default;
    /// A new empty value with room for `capacity` bytes in place, or null when so many would not
    /// fit a block of the values' storage.
    static StringValue* makeInPlace(std::size_t capacity);
    void setSize(std::size_t size) noexcept { m_size = static_cast<std::uint32_t>(size); }
    char* bytes() noexcept { return reinterpret_cast<char*>(this + 1); }

    std::uint32_t m_size = 0;                 // the bytes in place
    mutable std::string* m_string = nullptr;  // the text as a string, once made
};

}  // namespace Corvane::Soa::Internal::Json

#endif
