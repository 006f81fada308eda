#ifndef CORVANE_SOA_INTERNAL_JSON_DATEVALUE_HPP
#define CORVANE_SOA_INTERNAL_JSON_DATEVALUE_HPP

#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/internal/json/Value.hpp>

#include <memory>
#include <string>

namespace Corvane::Soa::Internal::Json {

class Parser;

/// A JSON string that has the shape of a date, read as a `DateTime`; it prints the date's wire
/// text, made once, when it is first asked for, and kept.
class CORVANE_SOA_API DateValue : public Value {
public:
    explicit DateValue(const ::Corvane::Soa::Common::DateTime& value);
    ~DateValue() override;

    bool isEmpty() const override { return false; }
    std::size_t size() const override { return 1; }
    ValueType getType() const override { return DATE; }

    const ::Corvane::Soa::Common::DateTime& getValue() const noexcept { return m_value; }
    /// The wire text of the date.
    const std::string& getText() const;

protected:
    void serialize(int level, std::ostream& os) const override;

private:
    ::Corvane::Soa::Common::DateTime m_value;
    mutable std::unique_ptr<std::string> m_text;  // made when first asked for
};

}  // namespace Corvane::Soa::Internal::Json

#endif
