#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/internal/json/BooleanValue.hpp>
#include <corvane/soa/internal/json/DateValue.hpp>
#include <corvane/soa/internal/json/DoubleValue.hpp>
#include <corvane/soa/internal/json/IntegerValue.hpp>
#include <corvane/soa/internal/json/NullValue.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>

#include "internal/json/ValuePool.hpp"

#include <new>
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

namespace {
// The string of a value, in a block of the values' storage.
std::string* newString(std::string&& text) {
    return new (Value::operator new(sizeof(std::string))) std::string(std::move(text));
}
}  // namespace

StringValue* StringValue::makeInPlace(std::size_t capacity) {
    if (capacity > ValuePool::kLargest - sizeof(StringValue)) {
        return nullptr;
    }
    return new (Value::operator new(sizeof(StringValue) + capacity)) StringValue();
}

StringValue::StringValue(const std::string& value) : m_string(newString(std::string(value))) {}
StringValue::StringValue(std::string&& value) : m_string(newString(std::move(value))) {}
StringValue::~StringValue() {
    if (m_string != nullptr) {
        m_string->~basic_string();
        Value::operator delete(m_string, sizeof(std::string));
    }
}
const std::string& StringValue::getValue() const {
    if (m_string == nullptr) {
        m_string = newString(std::string(view()));
    }
    return *m_string;
}
void StringValue::serialize(int /*level*/, std::ostream& os) const {
    os.put('"');
    os << Common::Xml::toJsonString(getValue());
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
