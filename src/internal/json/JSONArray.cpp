#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/internal/json/BooleanValue.hpp>
#include <corvane/soa/internal/json/DateValue.hpp>
#include <corvane/soa/internal/json/DoubleValue.hpp>
#include <corvane/soa/internal/json/IndexOutOfRangeException.hpp>
#include <corvane/soa/internal/json/IntegerValue.hpp>
#include <corvane/soa/internal/json/InvalidTypeException.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/NullValue.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>

#include <string>
#include <utility>

namespace Corvane::Soa::Internal::Json {

using Common::AutoPtr;
using Common::DateTime;
using Common::Xml::lexical_cast;

namespace {

[[noreturn]] void throwEstablished(Value::ValueType kind) {
    throw InvalidTypeException("This JSONArray index has been established as containing a " +
                               Value::getTypeName(kind) + " type.");
}

// The recorded kind was accepted but the element holds no value of a matching class.
[[noreturn]] void throwNull() { throw InvalidTypeException("This elment is NULL."); }

Value::ValueType typeOf(const Value* value) {
    return value != nullptr ? value->getType() : Value::UNDETERMINED;
}

}  // namespace

// As for objects: the elements' counts are fetched before they are released one by one.
JSONArray::~JSONArray() {
    for (const Element& element : m_elements) {
        __builtin_prefetch(element.get());
    }
    for (auto element = m_elements.rbegin(); element != m_elements.rend(); ++element) {
        element->reset();
    }
}

void JSONArray::append(ValueType kind, AutoPtr<Value> value) {
    m_elements.emplace_back(kind, std::move(value));
}

void JSONArray::add(bool value) { append(BOOLEAN, new BooleanValue(value)); }
void JSONArray::add(const DateTime& value) { append(DATE, new DateValue(value)); }
void JSONArray::add(double value) { append(DOUBLE, new DoubleValue(value)); }
void JSONArray::add(int value) { append(INTEGER, new IntegerValue(value)); }
void JSONArray::add(AutoPtr<JSONArray> value) { append(ARRAY, std::move(value)); }
void JSONArray::add(AutoPtr<JSONObject> value) { append(OBJECT, std::move(value)); }
void JSONArray::add(AutoPtr<NullValue> value) { append(NULL_VALUE, std::move(value)); }
void JSONArray::add(const std::string& value) { append(STRING, new StringValue(value)); }
// A null text is recorded as a string but holds a JSON null.
void JSONArray::add(const char* value) {
    if (value == nullptr) {
        append(STRING, new NullValue());
    } else {
        append(STRING, new StringValue(value));
    }
}

void JSONArray::checkIndex(std::size_t index) const {
    if (index >= m_elements.size()) {
        throw IndexOutOfRangeException("The index " + std::to_string(index) +
                                       " is out of range for the number of values in this "
                                       "JSONArray(" +
                                       std::to_string(m_elements.size()) + ").");
    }
}

Value::ValueType JSONArray::getValueType(std::size_t index) const {
    return m_elements.at(index).kind();
}

bool JSONArray::isNull(std::size_t index) const {
    checkIndex(index);
    return typeOf(m_elements[index].get()) == NULL_VALUE;
}

AutoPtr<Value> JSONArray::getValue(std::size_t index) const {
    checkIndex(index);
    return AutoPtr<Value>(m_elements[index].get());
}

bool JSONArray::getBoolean(std::size_t index) const {
    checkIndex(index);
    if (m_elements[index].kind() != BOOLEAN) {
        throwEstablished(m_elements[index].kind());
    }
    const Value* value = m_elements[index].get();
    if (typeOf(value) != BOOLEAN) {
        throwNull();
    }
    return static_cast<const BooleanValue*>(value)->getValue();
}

DateTime JSONArray::getDate(std::size_t index) const {
    checkIndex(index);
    const ValueType kind = m_elements[index].kind();
    if (kind != DATE && kind != STRING) {
        throwEstablished(kind);
    }
    const Value* value = m_elements[index].get();
    switch (typeOf(value)) {
        case DATE:
            return static_cast<const DateValue*>(value)->getValue();
        case STRING:
            return lexical_cast<DateTime, std::string>(
                static_cast<const StringValue*>(value)->getValue());
        default:
            throwNull();
    }
}

double JSONArray::getDouble(std::size_t index) const {
    checkIndex(index);
    const ValueType kind = m_elements[index].kind();
    if (kind != DOUBLE && kind != INTEGER) {
        throwEstablished(kind);
    }
    const Value* value = m_elements[index].get();
    switch (typeOf(value)) {
        case DOUBLE:
            return static_cast<const DoubleValue*>(value)->getValue();
        case INTEGER:
            return static_cast<const IntegerValue*>(value)->getValue();
        default:
            throwNull();
    }
}

int JSONArray::getInteger(std::size_t index) const {
    checkIndex(index);
    if (m_elements[index].kind() != INTEGER) {
        throwEstablished(m_elements[index].kind());
    }
    const Value* value = m_elements[index].get();
    if (typeOf(value) != INTEGER) {
        throwNull();
    }
    return static_cast<const IntegerValue*>(value)->getValue();
}

AutoPtr<JSONArray> JSONArray::getJSONArray(std::size_t index) const {
    checkIndex(index);
    if (m_elements[index].kind() != ARRAY) {
        throwEstablished(m_elements[index].kind());
    }
    Value* value = m_elements[index].get();
    if (typeOf(value) != ARRAY) {
        throwNull();
    }
    return AutoPtr<JSONArray>(static_cast<JSONArray*>(value));
}

AutoPtr<JSONObject> JSONArray::getJSONObject(std::size_t index) const {
    checkIndex(index);
    if (m_elements[index].kind() != OBJECT) {
        throwEstablished(m_elements[index].kind());
    }
    Value* value = m_elements[index].get();
    if (typeOf(value) != OBJECT) {
        throwNull();
    }
    return AutoPtr<JSONObject>(static_cast<JSONObject*>(value));
}

const std::string& JSONArray::getString(std::size_t index) const {
    checkIndex(index);
    const ValueType kind = m_elements[index].kind();
    if (kind != STRING && kind != DATE) {
        throwEstablished(kind);
    }
    const Value* value = m_elements[index].get();
    switch (typeOf(value)) {
        case STRING:
            return static_cast<const StringValue*>(value)->getValue();
        case DATE:
            return static_cast<const DateValue*>(value)->getText();
        default:
            throwNull();
    }
}

void JSONArray::serializeDocument(std::ostream& os) const { serialize(0, os); }

// Scalars follow one another on the opening line; each array or object element starts a line
// of its own. The closing bracket always has a line of its own.
void JSONArray::serialize(int level, std::ostream& os) const {
    const std::size_t count = m_elements.size();
    os.put('[');
    if (count != 0) {
        const std::string inner = getPadding(level + 1);
        for (std::size_t i = 0; i < count; ++i) {
            const ValueType kind = m_elements[i].kind();
            if (kind == ARRAY || kind == OBJECT) {
                os.put('\n');
                os << inner;
            }
            const Value* value = m_elements[i].get();
            if (value == nullptr) {
                os.write("null", 4);
            } else {
                value->serialize(level + 1, os);
            }
            if (i + 1 < count) {
                os.put(',');
            }
        }
    }
    os.put('\n');
    os << getPadding(level);
    os.put(']');
}

}  // namespace Corvane::Soa::Internal::Json
