#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/internal/json/BooleanValue.hpp>
#include <corvane/soa/internal/json/DateValue.hpp>
#include <corvane/soa/internal/json/DoubleValue.hpp>
#include <corvane/soa/internal/json/IntegerValue.hpp>
#include <corvane/soa/internal/json/InvalidTypeException.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/KeyNotFoundException.hpp>
#include <corvane/soa/internal/json/NullValue.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>

#include <algorithm>
#include <utility>

namespace Corvane::Soa::Internal::Json {

using Common::AutoPtr;
using Common::DateTime;
using Common::Xml::lexical_cast;

namespace {

using Members = JSONObject::Members;

// std::string compares through char_traits<char>, which orders bytes as unsigned char: the
// plain byte-wise order of the keys.
bool keyBefore(const JSONObject::Member& member, std::string_view key) {
    return member.key() < key;
}

template <class Iterator>
Iterator lowerBound(Iterator first, Iterator last, std::string_view key) {
    return std::lower_bound(first, last, key, keyBefore);
}

// The stored pointer under the key (null when a null holder was stored); throws when the key
// is missing.
Value* lookup(const Members& members, const std::string& key) {
    const auto it = lowerBound(members.begin(), members.end(), key);
    if (it == members.end() || it->key() != key) {
        throw KeyNotFoundException(key + " is not a valid key in this JSONObject");
    }
    return it->value().get();
}

// Stands in for a null holder, which reads like a JSON null. It is never held, so its count
// never changes.
Value& nullStandIn() {
    static NullValue instance;
    return instance;
}

// The failure of a typed getter whose member is of a kind it does not accept.
[[noreturn]] void throwWrongKind(const Value& value, const std::string& key, const char* what) {
    if (value.getType() == Value::NULL_VALUE) {
        throw InvalidTypeException("This elment is NULL.");
    }
    throw InvalidTypeException(key + what);
}

}  // namespace

// Releasing the members reads each value's count: fetching them all first overlaps the cache
// misses of a large tree instead of taking them one after the other.
JSONObject::~JSONObject() {
    for (const Member& member : m_members) {
        __builtin_prefetch(member.value().get());
    }
    // Last first: the members that are containers wait in the destruction queue, which hands out
    // the last one queued first, so the tree is taken apart in document order.
    for (auto member = m_members.rbegin(); member != m_members.rend(); ++member) {
        member->value().reset();
    }
}

void JSONObject::put(const std::string& key, AutoPtr<Value> value) {
    // Members usually come in key order: appending needs no search.
    if (m_members.empty() || m_members.back().key() < key) {
        m_members.emplace_back(key.data(), key.size(), std::move(value));
        return;
    }
    const auto it = lowerBound(m_members.begin(), m_members.end(), key);
    if (it->key() == key) {
        it->value() = std::move(value);  // releases the value it replaces
        return;
    }
    m_members.emplace(it, key.data(), key.size(), std::move(value));
}

void JSONObject::accumulate(const std::string& key, bool value) {
    put(key, new BooleanValue(value));
}
void JSONObject::accumulate(const std::string& key, const DateTime& value) {
    put(key, new DateValue(value));
}
void JSONObject::accumulate(const std::string& key, double value) {
    put(key, new DoubleValue(value));
}
void JSONObject::accumulate(const std::string& key, int value) {
    put(key, new IntegerValue(value));
}
void JSONObject::accumulate(const std::string& key, AutoPtr<JSONArray> value) {
    put(key, std::move(value));
}
void JSONObject::accumulate(const std::string& key, AutoPtr<JSONObject> value) {
    put(key, std::move(value));
}
void JSONObject::accumulate(const std::string& key, AutoPtr<NullValue> value) {
    put(key, std::move(value));
}
void JSONObject::accumulate(const std::string& key, const std::string& value) {
    put(key, new StringValue(value));
}
// A null text is stored as a JSON null.
void JSONObject::accumulate(const std::string& key, const char* value) {
    if (value == nullptr) {
        put(key, new NullValue());
    } else {
        put(key, new StringValue(value));
    }
}

const Value& JSONObject::find(const std::string& key) const {
    Value* value = lookup(m_members, key);
    return value != nullptr ? *value : nullStandIn();
}

bool JSONObject::containsKey(const std::string& key) const {
    const auto it = lowerBound(m_members.begin(), m_members.end(), key);
    return it != m_members.end() && it->key() == key;
}

std::vector<std::string> JSONObject::getKeys() const {
    std::vector<std::string> keys;
    keys.reserve(m_members.size());
    for (const Member& member : m_members) {
        keys.emplace_back(member.key());
    }
    return keys;
}

Value::ValueType JSONObject::getValueType(const std::string& key) const {
    return find(key).getType();
}

bool JSONObject::isNull(const std::string& key) const { return find(key).getType() == NULL_VALUE; }

bool JSONObject::getBoolean(const std::string& key) const {
    const Value& value = find(key);
    if (value.getType() == BOOLEAN) {
        return static_cast<const BooleanValue&>(value).getValue();
    }
    throwWrongKind(value, key, " is not a boolean value.");
}

DateTime JSONObject::getDate(const std::string& key) const {
    const Value& value = find(key);
    switch (value.getType()) {
        case DATE:
            return static_cast<const DateValue&>(value).getValue();
        case STRING:
            return lexical_cast<DateTime, std::string>(
                static_cast<const StringValue&>(value).getValue());
        default:
            throwWrongKind(value, key, " is not a double value.");
    }
}

double JSONObject::getDouble(const std::string& key) const {
    const Value& value = find(key);
    switch (value.getType()) {
        case DOUBLE:
            return static_cast<const DoubleValue&>(value).getValue();
        case INTEGER:
            return static_cast<const IntegerValue&>(value).getValue();
        default:
            throwWrongKind(value, key, " is not a double value.");
    }
}

int JSONObject::getInteger(const std::string& key) const {
    const Value& value = find(key);
    if (value.getType() == INTEGER) {
        return static_cast<const IntegerValue&>(value).getValue();
    }
    throwWrongKind(value, key, " is not an integer value.");
}

AutoPtr<JSONArray> JSONObject::getJSONArray(const std::string& key) const {
    Value* value = lookup(m_members, key);
    if (value != nullptr && value->getType() == ARRAY) {
        return AutoPtr<JSONArray>(static_cast<JSONArray*>(value));
    }
    throwWrongKind(value != nullptr ? *value : nullStandIn(), key, " is not a JSONArray value.");
}

AutoPtr<JSONObject> JSONObject::getJSONObject(const std::string& key) const {
    Value* value = lookup(m_members, key);
    if (value != nullptr && value->getType() == OBJECT) {
        return AutoPtr<JSONObject>(static_cast<JSONObject*>(value));
    }
    throwWrongKind(value != nullptr ? *value : nullStandIn(), key, " is not a JSONObject value.");
}

const std::string& JSONObject::getString(const std::string& key) const {
    const Value& value = find(key);
    switch (value.getType()) {
        case STRING:
            return static_cast<const StringValue&>(value).getValue();
        case DATE:
            return static_cast<const DateValue&>(value).getText();
        default:
            throwWrongKind(value, key, " is not a string value.");
    }
}

AutoPtr<Value> JSONObject::getValue(const std::string& key) const {
    return AutoPtr<Value>(lookup(m_members, key));
}

std::string JSONObject::getKeyAsString(const std::string& key) const { return key; }

int JSONObject::getKeyAsInteger(const std::string& key) const {
    return lexical_cast<int, std::string>(key);
}

double JSONObject::getKeyAsDouble(const std::string& key) const {
    return lexical_cast<double, std::string>(key);
}

void JSONObject::serializeObject(std::ostream& os) const { serialize(0, os); }

// A single member stays on the opening line; otherwise each member starts a line of its own.
// A member whose value is an array, or an object of two or more members, starts that value on
// a line of its own too. Keys are written as stored.
void JSONObject::serialize(int level, std::ostream& os) const {
    const std::size_t count = m_members.size();
    os.put('{');
    if (count != 0) {
        const std::string inner = getPadding(level + 1);
        for (std::size_t i = 0; i < count; ++i) {
            const Member& member = m_members[i];
            if (count > 1) {
                os.put('\n');
                os << inner;
            }
            os.put('"');
            os << member.key();
            os.write("\": ", 3);
            const Value* value = member.value().get();
            if (value == nullptr) {
                os.write("null", 4);
            } else {
                const ValueType type = value->getType();
                if (type == ARRAY || (type == OBJECT && value->size() >= 2)) {
                    os.put('\n');
                    os << inner;
                }
                value->serialize(level + 1, os);
            }
            if (i + 1 < count) {
                os.put(',');
            }
        }
    }
    if (count != 1) {
        os.put('\n');
        os << getPadding(level);
    }
    os.put('}');
}

}  // namespace Corvane::Soa::Internal::Json
