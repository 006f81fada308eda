#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/internal/json/IndexOutOfRangeException.hpp>
#include <corvane/soa/internal/json/InvalidTypeException.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/KeyNotFoundException.hpp>
#include <corvane/soa/internal/json/NullValue.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;
using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::DateTime;
using Corvane::Soa::Common::Xml::lexical_cast;
using namespace Corvane::Soa::Internal::Json;

// Runs `call` and expects it to throw exactly `E` with `message`, through both accessors.
template <class E>
void expectFailure(const std::function<void()>& call, const std::string& message) {
    try {
        call();
        ADD_FAILURE() << "no exception, expected: " << message;
    } catch (const E& e) {
        EXPECT_EQ(e.getMessage(), message);
        EXPECT_STREQ(e.what(), message.c_str());
    } catch (const JSONException& e) {
        ADD_FAILURE() << "another JSON exception: " << e.getMessage();
    }
}

// Prints an object or an array as a document.
std::string print(const Value& root) {
    std::ostringstream os;
    if (const auto* object = dynamic_cast<const JSONObject*>(&root)) {
        object->serializeObject(os);
    } else {
        dynamic_cast<const JSONArray&>(root).serializeDocument(os);
    }
    return os.str();
}

// A container that counts its destructions.
int gDestroyed = 0;
template <class Base>
class Counting : public Base {
public:
    ~Counting() override { ++gDestroyed; }
};

// One member of every kind, in this order: an array, a boolean, a double, an integer, a null, an
// object, a string, a date and a date's wire text. An object stores them under these keys, which
// are in key order; an array at the same indexes.
const char* const kKeys[] = {"a", "b", "d", "i", "n", "o", "s", "t", "w"};
DateTime date() { return DateTime(2014, 3, 22, 0, 19, 59); }
std::string keyOf(const JSONObject&, std::size_t i) { return kKeys[i]; }
std::size_t keyOf(const JSONArray&, std::size_t i) { return i; }

// Stores a value in an object under the key, or appends it to an array.
template <class T>
void put(JSONObject& object, const std::string& key, T value) {
    object.accumulate(key, value);
}
template <class T>
void put(JSONArray& array, const std::string&, T value) {
    array.add(value);
}

template <class C>
AutoPtr<C> everyKind() {
    AutoPtr<C> c(new C);
    std::size_t i = 0;
    const auto put = [&](auto value) { ::put(*c, kKeys[i++], value); };
    AutoPtr<JSONArray> array(new JSONArray);
    array->add(1);
    AutoPtr<JSONObject> inner(new JSONObject);
    inner->accumulate("x", 1);
    put(array);
    put(true);
    put(2.5);
    put(5);
    put(AutoPtr<NullValue>(new NullValue));
    put(inner);
    put(std::string("text"));
    put(date());
    put(lexical_cast<std::string>(date()).c_str());
    return c;
}

template <class C>
void expectEveryKindReadBack() {
    const AutoPtr<C> c = everyKind<C>();
    const C& v = *c;
    const auto k = [&v](std::size_t i) { return keyOf(v, i); };
    const Value::ValueType kinds[] = {Value::ARRAY,   Value::BOOLEAN,    Value::DOUBLE,
                                      Value::INTEGER, Value::NULL_VALUE, Value::OBJECT,
                                      Value::STRING,  Value::DATE,       Value::STRING};
    ASSERT_EQ(v.size(), std::size(kinds));
    for (std::size_t i = 0; i < std::size(kinds); ++i) {
        EXPECT_EQ(v.getValueType(k(i)), kinds[i]) << i;
        EXPECT_EQ(v.isNull(k(i)), i == 4) << i;
    }
    EXPECT_EQ(v.getJSONArray(k(0))->getInteger(0), 1);
    EXPECT_TRUE(v.getBoolean(k(1)));
    EXPECT_EQ(v.getDouble(k(2)), 2.5);
    EXPECT_EQ(v.getInteger(k(3)), 5);
    EXPECT_EQ(v.getDouble(k(3)), 5.0);
    // Containers are handed out, not copied; so is the stored text.
    EXPECT_EQ(v.getJSONObject(k(5)), v.getValue(k(5)));
    EXPECT_EQ(v.getJSONObject(k(5))->getInteger("x"), 1);
    EXPECT_EQ(v.getString(k(6)), "text");
    EXPECT_EQ(&v.getString(k(6)), &v.getString(k(6)));
    // Dates read as their wire text, and that text reads back as the date.
    EXPECT_EQ(v.getDate(k(7)), date());
    EXPECT_EQ(v.getString(k(7)), v.getString(k(8)));
    EXPECT_EQ(v.getDate(k(8)), date());
}

TEST(ValueModel, KindNamesAndInvertedEmptiness) {
    const char* const names[] = {"Undeterined", "Boolean", "Double", "Integer", "JSONArray",
                                 "JSONObject",  "Null",    "String", "Date"};
    for (int kind = 0; kind <= 8; ++kind) {
        EXPECT_EQ(Value::getTypeName(static_cast<Value::ValueType>(kind)), names[kind]);
    }
    // Containers answer true when they hold something.
    JSONArray array;
    JSONObject object;
    EXPECT_FALSE(array.isEmpty());
    EXPECT_FALSE(object.isEmpty());
    array.add(false);
    object.accumulate("k", false);
    EXPECT_TRUE(array.isEmpty());
    EXPECT_TRUE(object.isEmpty());
    EXPECT_TRUE(NullValue().isEmpty());
    EXPECT_FALSE(StringValue("").isEmpty());
}

TEST(ValueModel, ObjectsAndArraysRecordEveryKindAndReadItBack) {
    {
        SCOPED_TRACE("JSONObject");
        expectEveryKindReadBack<JSONObject>();
    }
    SCOPED_TRACE("JSONArray");
    expectEveryKindReadBack<JSONArray>();
}

TEST(JSONObject, GetterFailuresInOrderOfChecks) {
    const AutoPtr<JSONObject> object = everyKind<JSONObject>();
    const JSONObject& o = *object;
    // Each typed getter, the wording of its kind (dates share the double wording) and a member
    // of another kind.
    struct Getter {
        std::function<void(const std::string&)> get;
        const char* kind;
        const char* otherKey;
    };
    const Getter getters[] = {
        {[&](const std::string& k) { o.getBoolean(k); }, "a boolean", "i"},
        {[&](const std::string& k) { o.getDate(k); }, "a double", "b"},
        {[&](const std::string& k) { o.getDouble(k); }, "a double", "s"},
        {[&](const std::string& k) { o.getInteger(k); }, "an integer", "d"},
        {[&](const std::string& k) { o.getJSONArray(k); }, "a JSONArray", "o"},
        {[&](const std::string& k) { o.getJSONObject(k); }, "a JSONObject", "a"},
        {[&](const std::string& k) { o.getString(k); }, "a string", "i"},
    };
    // A missing key comes first, then a null member whatever was asked for, then the kind.
    const std::string missing = "nope is not a valid key in this JSONObject";
    for (const Getter& g : getters) {
        SCOPED_TRACE(g.kind);
        expectFailure<KeyNotFoundException>([&] { g.get("nope"); }, missing);
        expectFailure<InvalidTypeException>([&] { g.get("n"); }, "This elment is NULL.");
        expectFailure<InvalidTypeException>(
            [&] { g.get(g.otherKey); }, std::string(g.otherKey) + " is not " + g.kind + " value.");
    }
    expectFailure<KeyNotFoundException>([&] { o.isNull("nope"); }, missing);
    expectFailure<KeyNotFoundException>([&] { o.getValueType("nope"); }, missing);
    expectFailure<KeyNotFoundException>([&] { o.getValue("nope"); }, missing);
    // A string that is not a date's wire text.
    EXPECT_THROW(o.getDate("s"), InternalServerException);
}

TEST(JSONObject, AccumulateReplacesAndReleases) {
    JSONObject object;
    object.accumulate("k", 1);
    object.accumulate("k", "x");
    EXPECT_EQ(object.size(), 1U);
    EXPECT_EQ(object.getValueType("k"), Value::STRING);
    EXPECT_EQ(object.getString("k"), "x");

    gDestroyed = 0;
    object.accumulate("c", AutoPtr<JSONArray>(new Counting<JSONArray>));
    object.accumulate("c", AutoPtr<JSONObject>(new Counting<JSONObject>));
    EXPECT_EQ(gDestroyed, 1);
    object.accumulate("c", 2.0);
    EXPECT_EQ(gDestroyed, 2);
    EXPECT_EQ(object.getKeys(), std::vector<std::string>({"c", "k"}));

    // A null text is a null member.
    object.accumulate("k", static_cast<const char*>(nullptr));
    EXPECT_TRUE(object.isNull("k"));
}

TEST(JSONObject, KeysAreOrderedBytewiseAndConvertThemselves) {
    JSONObject object;
    for (const char* key : {"b", "\xC3\xA9", "a", "B", "", "ab"}) {
        object.accumulate(key, 1);
    }
    EXPECT_EQ(object.getKeys(), std::vector<std::string>({"", "B", "a", "ab", "b", "\xC3\xA9"}));
    EXPECT_TRUE(object.containsKey(""));
    EXPECT_FALSE(object.containsKey("A"));
    // The key text itself is converted; it need not be present.
    EXPECT_EQ(object.getKeyAsInteger("-42"), -42);
    EXPECT_EQ(object.getKeyAsInteger("x"), std::numeric_limits<int>::min());
    EXPECT_EQ(object.getKeyAsDouble("2.5"), 2.5);
}

TEST(JSONObject, NullHolderReadsAsNull) {
    JSONObject object;
    object.accumulate("z", AutoPtr<JSONArray>());
    EXPECT_TRUE(object.isNull("z"));
    EXPECT_TRUE(object.getValue("z").isNull());
    expectFailure<InvalidTypeException>([&] { object.getJSONArray("z"); }, "This elment is NULL.");
    EXPECT_EQ(print(object), "{\"z\": null}");
}

TEST(JSONArray, GetterFailuresInOrderOfChecks) {
    JSONArray array;
    array.add(true);
    array.add(AutoPtr<NullValue>(new NullValue));
    array.add(1.5);
    // The recorded kind fits but nothing of that kind is held.
    array.add(AutoPtr<JSONArray>());
    array.add(AutoPtr<JSONObject>());
    array.add(static_cast<const char*>(nullptr));
    array.add("not a date");
    const std::function<void(std::size_t)> getters[] = {
        [&](std::size_t i) { array.getBoolean(i); },    [&](std::size_t i) { array.getDate(i); },
        [&](std::size_t i) { array.getDouble(i); },     [&](std::size_t i) { array.getInteger(i); },
        [&](std::size_t i) { array.getJSONArray(i); },  [&](std::size_t i) { array.getString(i); },
        [&](std::size_t i) { array.getJSONObject(i); }, [&](std::size_t i) { array.isNull(i); }};
    // The range comes first, then the recorded kind.
    for (const auto& get : getters) {
        expectFailure<IndexOutOfRangeException>(
            [&] { get(7); },
            "The index 7 is out of range for the number of values in this JSONArray(7).");
    }
    const std::string established = "This JSONArray index has been established as containing a ";
    expectFailure<InvalidTypeException>([&] { array.getInteger(0); },
                                        established + "Boolean type.");
    expectFailure<InvalidTypeException>([&] { array.getString(1); }, established + "Null type.");
    expectFailure<InvalidTypeException>([&] { array.getDate(2); }, established + "Double type.");
    expectFailure<InvalidTypeException>([&] { array.getJSONObject(2); },
                                        established + "Double type.");
    expectFailure<InvalidTypeException>([&] { array.getJSONArray(3); }, "This elment is NULL.");
    expectFailure<InvalidTypeException>([&] { array.getJSONObject(4); }, "This elment is NULL.");
    expectFailure<InvalidTypeException>([&] { array.getString(5); }, "This elment is NULL.");
    EXPECT_EQ(array.getValueType(5), Value::STRING);
    EXPECT_TRUE(array.isNull(5));
    EXPECT_FALSE(array.isNull(3));
    EXPECT_THROW(array.getDate(6), InternalServerException);
}

TEST(ValueModelPrinting, ScalarsStringsAndEmptyContainers) {
    JSONArray array;
    array.add(std::numeric_limits<int>::min());
    array.add(0.1);
    array.add(-2.5);
    array.add(false);
    array.add(AutoPtr<NullValue>(new NullValue));
    array.add(date());
    EXPECT_EQ(print(array), "[-2147483648,0.10000000000000001,-2.5,false,null,\"" +
                                lexical_cast<std::string>(date()) + "\"\n]");
    // Strings are escaped, keys are not.
    JSONObject object;
    object.accumulate("q\"k", std::string("a/b\t\x01\"\\\n"));
    EXPECT_EQ(print(object), std::string("{\"q\"k\": \"a\\/b\\t\x01\\\"\\\\\\n\"}"));
    EXPECT_EQ(print(JSONObject()), "{\n}");
    EXPECT_EQ(print(JSONArray()), "[\n]");
}

TEST(ValueModelPrinting, NestedTreesWithEachTabSize) {
    // Every layout: arrays of scalars and of containers, empty containers, objects of one member
    // and of several. Printing does not depend on how a tree was built: the parser builds these.
    const std::pair<const char*, const char*> trees[] = {
        {R"({"arr": [1, 2, 3], "empty": {}, "obj": {"y": null, "x": true}, "one": {"k": 1.5}})",
         "{\n"
         "@\"arr\": \n"
         "@[1,2,3\n"
         "@],\n"
         "@\"empty\": {\n"
         "@},\n"
         "@\"obj\": \n"
         "@{\n"
         "@@\"x\": true,\n"
         "@@\"y\": null\n"
         "@},\n"
         "@\"one\": {\"k\": 1.5}\n"
         "}"},
        {R"([1, {"a": 1}, [], {"b": 2, "a": 1}, "s", [["t"]]])",
         "[1,\n"
         "@{\"a\": 1},\n"
         "@[\n"
         "@],\n"
         "@{\n"
         "@@\"a\": 1,\n"
         "@@\"b\": 2\n"
         "@},\"s\",\n"
         "@[\n"
         "@@[\"t\"\n"
         "@@]\n"
         "@]\n"
         "]"},
    };
    // The default size first, then others; ends with the default again for the tests that follow.
    std::size_t tab = 2;
    for (const std::size_t next : {4U, 0U, 2U}) {
        for (const auto& [text, layout] : trees) {
            std::string expected;
            for (const char* c = layout; *c != '\0'; ++c) {
                expected += *c == '@' ? std::string(tab, ' ') : std::string(1, *c);
            }
            EXPECT_EQ(print(*Parser().parse(text)), expected) << "tab size " << tab;
        }
        Value::setTabSize(tab = next);
    }
}

// A chain of `depth` counting containers, each holding the next.
template <class C>
AutoPtr<C> chain(int depth) {
    AutoPtr<C> top(new Counting<C>);
    C* tip = top.get();
    for (int i = 1; i < depth; ++i) {
        AutoPtr<C> next(new Counting<C>);
        put(*tip, "k", next);
        tip = next.get();
    }
    return top;
}

TEST(ValueModelLifetime, DeepTreesAreDestroyedWithoutRecursion) {
    constexpr int kDepth = 1000000;
    gDestroyed = 0;
    chain<JSONArray>(kDepth);
    EXPECT_EQ(gDestroyed, kDepth);
    // Objects in objects, released by replacing the member that holds the top one.
    gDestroyed = 0;
    JSONObject holder;
    holder.accumulate("tree", chain<JSONObject>(kDepth));
    EXPECT_EQ(gDestroyed, 0);
    holder.accumulate("tree", 0);
    EXPECT_EQ(gDestroyed, kDepth);
}

TEST(ValueModelLifetime, SharedChildOutlivesItsContainers) {
    gDestroyed = 0;
    AutoPtr<JSONObject> child(new Counting<JSONObject>);
    child->accumulate("x", 1);
    AutoPtr<JSONArray> grandchild(new Counting<JSONArray>);
    child->accumulate("g", grandchild);
    {
        AutoPtr<JSONObject> parent(new Counting<JSONObject>);
        parent->accumulate("c", child);
        AutoPtr<JSONArray> list(new Counting<JSONArray>);
        list->add(child);
        list->add(child);
        parent->accumulate("l", list);
    }
    EXPECT_EQ(gDestroyed, 2);
    EXPECT_EQ(child->getInteger("x"), 1);
    EXPECT_EQ(child->getJSONArray("g"), grandchild);
    child.reset();
    EXPECT_EQ(gDestroyed, 3);
    EXPECT_EQ(grandchild->size(), 0U);
    grandchild.reset();
    EXPECT_EQ(gDestroyed, 4);
}

}  // namespace
