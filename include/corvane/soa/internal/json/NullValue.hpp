#ifndef CORVANE_SOA_INTERNAL_JSON_NULLVALUE_HPP
#define CORVANE_SOA_INTERNAL_JSON_NULLVALUE_HPP

#include <corvane/soa/internal/json/Value.hpp>

namespace Corvane::Soa::Internal::Json {

/// JSON null.
class CORVANE_SOA_API NullValue : public Value {
public:
    NullValue() = default;
    ~NullValue() override;

    bool isEmpty() const override { return true; }
    std::size_t size() const override { return 0; }
    ValueType getType() const override { return NULL_VALUE; }

protected:
    void serialize(int level, std::ostream& os) const override;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
