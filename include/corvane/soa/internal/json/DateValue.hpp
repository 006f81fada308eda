#ifndef CORVANE_SOA_INTERNAL_JSON_DATEVALUE_HPP
#define CORVANE_SOA_INTERNAL_JSON_DATEVALUE_HPP

#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/internal/json/Value.hpp>

#include <string>

namespace Corvane::Soa::Internal::Json {

class Parser;

/// A JSON string that has the shape of a date, read as a `DateTime`; it keeps the date's wire
/// text, made once when the value is built, and prints that text.
class CORVANE_SOA_API DateValue : public Value {
public:
    explicit DateValue(const ::Corvane::Soa::Common::DateTime& value);
    ~DateValue() override;

    bool isEmpty() const override { return false; }
    std::size_t size() const override { return 1; }
    ValueType getType() const override { return DATE; }

    const ::Corvane::Soa::Common::DateTime& getValue() const noexcept { return m_value; }
    /// The wire text of the date.
    const std::string& getText() const noexcept { return m_text; }

protected:
    void serialize(int level, std::ostream& os) const override;

private:
    friend class Parser;

    /// `text` must be the wire text of `value`.
    DateValue(const ::Corvane::Soa::Common::DateTime& value, std::string text);

    ::Corvane::Soa::Common::DateTime m_value;
    std::string m_text;
};

}  // namespace Corvane::Soa::Internal::Json

#endif
