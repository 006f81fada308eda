#ifndef CORVANE_SOA_INTERNAL_JSON_STRINGVALUE_HPP
#define CORVANE_SOA_INTERNAL_JSON_STRINGVALUE_HPP

#include <corvane/soa/internal/json/Value.hpp>

#include <cstddef>
#include <string>

namespace Corvane::Soa::Internal::Json {

class Parser;

/// A JSON string, held unescaped in the local code page.
class CORVANE_SOA_API StringValue : public Value {
public:
    explicit StringValue(const std::string& value);
    explicit StringValue(std::string&& value) noexcept;
    ~StringValue() override;

    bool isEmpty() const override { return false; }
    std::size_t size() const override { return 1; }
    ValueType getType() const override { return STRING; }

    const std::string& getValue() const noexcept { return m_value; }

protected:
    void serialize(int level, std::ostream& os) const override;

private:
    friend class Parser;

    StringValue(const char* text, std::size_t size);

    std::string m_value;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
