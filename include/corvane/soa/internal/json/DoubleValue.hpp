#ifndef CORVANE_SOA_INTERNAL_JSON_DOUBLEVALUE_HPP
#define CORVANE_SOA_INTERNAL_JSON_DOUBLEVALUE_HPP

#include <corvane/soa/internal/json/Value.hpp>

namespace Corvane::Soa::Internal::Json {

/// A JSON number with a fraction or an exponent.
class CORVANE_SOA_API DoubleValue : public Value {
public:
    explicit DoubleValue(double value) : m_value(value) {}
    ~DoubleValue() override;

    bool isEmpty() const override { return false; }
    std::size_t size() const override { return 1; }
    ValueType getType() const override { return DOUBLE; }

    double getValue() const noexcept { return m_value; }

protected:
    void serialize(int level, std::ostream& os) const override;

private:
    double m_value;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
