#ifndef CORVANE_SOA_INTERNAL_JSON_INTEGERVALUE_HPP
#define CORVANE_SOA_INTERNAL_JSON_INTEGERVALUE_HPP

#include <corvane/soa/internal/json/Value.hpp>

namespace Corvane::Soa::Internal::Json {

/// A JSON number without fraction or exponent, as a 32-bit int.
class CORVANE_SOA_API IntegerValue : public Value {
public:
    explicit IntegerValue(int value) : m_value(value) {}
    ~IntegerValue() override;

    bool isEmpty() const override { return false; }
    std::size_t size() const override { return 1; }
    ValueType getType() const override { return INTEGER; }

    int getValue() const noexcept { return m_value; }

protected:
    void serialize(int level, std::ostream& os) const override;

private:
    int m_value;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
