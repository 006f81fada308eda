#ifndef CORVANE_SOA_INTERNAL_JSON_BOOLEANVALUE_HPP
#define CORVANE_SOA_INTERNAL_JSON_BOOLEANVALUE_HPP

#include <corvane/soa/internal/json/Value.hpp>

namespace Corvane::Soa::Internal::Json {

/// A JSON true or false.
class CORVANE_SOA_API BooleanValue : public Value {
public:
    explicit BooleanValue(bool value) : m_value(value) {}
    ~BooleanValue() override;

    bool isEmpty() const override { return false; }
    std::size_t size() const override { return 1; }
    ValueType getType() const override { return BOOLEAN; }

    bool getValue() const noexcept { return m_value; }

protected:
    void serialize(int level, std::ostream& os) const override;

private:
    bool m_value;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
