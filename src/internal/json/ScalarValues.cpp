#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/internal/json/BooleanValue.hpp>
#include <corvane/soa/internal/json/DateValue.hpp>
#include <corvane/soa/internal/json/DoubleValue.hpp>
#include <corvane/soa/internal/json/IntegerValue.hpp>
#include <corvane/soa/internal/json/NullValue.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>

#include <string>
#include <utility>

namespace Corvane::Soa::Internal::Json {

using Common::Xml::lexical_cast;

NullValue::~NullValue() = default;
void NullValue::serialize(int /*level*/, std::ostream& os) const { os.write("null", 4); }

BooleanValue::~BooleanValue() = default;
void BooleanValue::serialize(int /*level*/, std::ostream& os) const {
    if (m_value) {
        os.write("true", 4);
    } else {
        os.write("false", 5);
    }
}

IntegerValue::~IntegerValue() = default;
void IntegerValue::serialize(int /*level*/, std::ostream& os) const {
    os << lexical_cast<std::string, int>(m_value);
}

DoubleValue::~DoubleValue() = default;
void DoubleValue::serialize(int /*level*/, std::ostream& os) const {
    os << lexical_cast<std::string, double>(m_value);
}

StringValue::StringValue(const std::string& value) : m_value(value) {}
StringValue::StringValue(std::string&& value) noexcept : m_value(std::move(value)) {}
StringValue::StringValue(const char* text, std::size_t size) : m_value(text, size) {}
StringValue::~StringValue() = default;
void StringValue::serialize(int /*level*/, std::ostream& os) const {
    os.put('"');
    os << Common::Xml::toJsonString(m_value);
    os.put('"');
}

DateValue::DateValue(const Common::DateTime& value) : m_value(value) {}
DateValue::~DateValue() = default;
// Most dates of a document are read into a binding as dates: their text is made only for the
// few that are asked for it.
const std::string& DateValue::getText() const {
    if (!m_text) {
        m_text =
            std::make_unique<std::string>(lexical_cast<std::string, Common::DateTime>(m_value));
    }
    return *m_text;
}
// The wire text of a date holds nothing that needs escaping.
void DateValue::serialize(int /*level*/, std::ostream& os) const {
    os.put('"');
    os << getText();
    os.put('"');
}

}  // namespace Corvane::Soa::Internal::Json
