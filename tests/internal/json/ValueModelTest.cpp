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

std::string print(const JSONObject& object) {
    std::ostringstream os;
    object.serializeObject(os);
    return os.str();
}

std::string print(const JSONArray& array) {
    std::ostringstream os;
    array.serializeDocument(os);
    return os.str();
}

// A container that counts its destructions.
int gDestroyed = 0;
template <class Base>
class Counting : public Base {
public:
    ~Counting() override { ++gDestroyed; }
};

// One member of every kind.
AutoPtr<JSONObject> everyKind() {
    AutoPtr<JSONObject> object(new JSONObject);
    AutoPtr<JSONArray> array(new JSONArray);
    array->add(1);
    AutoPtr<JSONObject> inner(new JSONObject);
    inner->accumulate("x", 1);
    object->accumulate("a", array);
    object->accumulate("b", true);
    object->accumulate("d", 2.5);
    object->accumulate("i", 5);
    object->accumulate("n", AutoPtr<NullValue>(new NullValue));
    object->accumulate("o", inner);
    object->accumulate("s", std::string("text"));
    object->accumulate("t", DateTime(2014, 3, 22, 0, 19, 59));
    return object;
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

TEST(JSONObject, GettersReturnAcceptedKinds) {
    const AutoPtr<JSONObject> object = everyKind();
    EXPECT_TRUE(object->getBoolean("b"));
    EXPECT_EQ(object->getInteger("i"), 5);
    EXPECT_EQ(object->getDouble("d"), 2.5);
    EXPECT_EQ(object->getDouble("i"), 5.0);
    EXPECT_EQ(object->getString("s"), "text");
    EXPECT_EQ(object->getJSONArray("a")->getInteger(0), 1);
    EXPECT_EQ(object->getJSONObject("o")->getInteger("x"), 1);
    EXPECT_EQ(object->getJSONObject("o"), object->getValue("o"));
    EXPECT_EQ(object->getValue("n")->getType(), Value::NULL_VALUE);
    // A reference to the stored text, not a copy.
    EXPECT_EQ(&object->getString("s"), &object->getString("s"));

    EXPECT_TRUE(object->containsKey("t"));
    EXPECT_FALSE(object->containsKey("T"));
    EXPECT_FALSE(object->containsKey(""));
    EXPECT_TRUE(object->isNull("n"));
    EXPECT_FALSE(object->isNull("s"));
    EXPECT_EQ(object->getValueType("a"), Value::ARRAY);
    EXPECT_EQ(object->getValueType("t"), Value::DATE);
}

TEST(JSONObject, GetterFailuresInOrderOfChecks) {
    const AutoPtr<JSONObject> object = everyKind();
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
    EXPECT_EQ(o.size(), 8U);
}

TEST(JSONObject, DatesAndStringsReadAsEachOther) {
    const std::string text = "2014-03-22T00:19:59+01:00";
    const DateTime date(text);
    JSONObject object;
    object.accumulate("date", date);
    object.accumulate("text", text.c_str());
    object.accumulate("bad", "2014-03-22");

    EXPECT_EQ(object.getString("date"), lexical_cast<std::string>(date));
    EXPECT_EQ(object.getDate("date"), date);
    EXPECT_EQ(object.getDate("text"), date);
    EXPECT_EQ(object.getValueType("text"), Value::STRING);
    EXPECT_THROW(object.getDate("bad"), InternalServerException);
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

TEST(JSONObject, KeysAreOrderedBytewise) {
    JSONObject object;
    for (const char* key : {"b", "\xC3\xA9", "a", "B", "", "ab"}) {
        object.accumulate(key, 1);
    }
    EXPECT_EQ(object.getKeys(), std::vector<std::string>({"", "B", "a", "ab", "b", "\xC3\xA9"}));
    for (const auto& member : object.getMembers()) {
        EXPECT_TRUE(object.containsKey(member.first));
    }
}

TEST(JSONObject, KeysConvertThemselves) {
    const JSONObject object;  // the key need not be present
    EXPECT_EQ(object.getKeyAsString("k 1"), "k 1");
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

TEST(JSONArray, AddRecordsKinds) {
    JSONArray array;
    array.add(true);
    array.add(DateTime(2014, 3, 22, 0, 19, 59));
    array.add(0.5);
    array.add(7);
    array.add(AutoPtr<JSONArray>(new JSONArray));
    array.add(AutoPtr<JSONObject>(new JSONObject));
    array.add(AutoPtr<NullValue>(new NullValue));
    array.add(std::string("s"));
    array.add("c");
    const std::vector<Value::ValueType> kinds = {Value::BOOLEAN,    Value::DATE,   Value::DOUBLE,
                                                 Value::INTEGER,    Value::ARRAY,  Value::OBJECT,
                                                 Value::NULL_VALUE, Value::STRING, Value::STRING};
    ASSERT_EQ(array.size(), kinds.size());
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        EXPECT_EQ(array.getValueType(i), kinds[i]) << i;
        EXPECT_EQ(array.isNull(i), i == 6) << i;
    }
    EXPECT_TRUE(array.getBoolean(0));
    EXPECT_EQ(array.getDate(1), DateTime(2014, 3, 22, 0, 19, 59));
    EXPECT_EQ(array.getString(1), lexical_cast<std::string>(DateTime(2014, 3, 22, 0, 19, 59)));
    EXPECT_EQ(array.getDouble(2), 0.5);
    EXPECT_EQ(array.getDouble(3), 7.0);
    EXPECT_EQ(array.getInteger(3), 7);
    EXPECT_EQ(array.getJSONArray(4)->size(), 0U);
    EXPECT_EQ(array.getJSONObject(5), array.getValue(5));
    EXPECT_EQ(array.getString(8), "c");
    EXPECT_EQ(&array.getString(7), &array.getString(7));
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
    const std::function<void(std::size_t)> getters[] = {
        [&](std::size_t i) { array.getBoolean(i); },    [&](std::size_t i) { array.getDate(i); },
        [&](std::size_t i) { array.getDouble(i); },     [&](std::size_t i) { array.getInteger(i); },
        [&](std::size_t i) { array.getJSONArray(i); },  [&](std::size_t i) { array.getString(i); },
        [&](std::size_t i) { array.getJSONObject(i); }, [&](std::size_t i) { array.isNull(i); }};
    // The range comes first, then the recorded kind.
    for (const auto& get : getters) {
        expectFailure<IndexOutOfRangeException>(
            [&] { get(6); },
            "The index 6 is out of range for the number of values in this JSONArray(6).");
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

    JSONArray strings;
    strings.add("not a date");
    EXPECT_THROW(strings.getDate(0), InternalServerException);
}

TEST(ValueModelPrinting, ScalarsStringsAndEmptyContainers) {
    JSONArray array;
    array.add(std::numeric_limits<int>::min());
    array.add(0.1);
    array.add(-2.5);
    array.add(false);
    array.add(AutoPtr<NullValue>(new NullValue));
    const DateTime date(2014, 3, 22, 0, 19, 59);
    array.add(date);
    EXPECT_EQ(print(array), "[-2147483648,0.10000000000000001,-2.5,false,null,\"" +
                                lexical_cast<std::string>(date) + "\"\n]");
    // Strings are escaped, keys are not.
    JSONObject object;
    object.accumulate("q\"k", std::string("a/b\t\x01\"\\\n"));
    EXPECT_EQ(print(object), std::string("{\"q\"k\": \"a\\/b\\t\x01\\\"\\\\\\n\"}"));
    EXPECT_EQ(print(JSONObject()), "{\n}");
    EXPECT_EQ(print(JSONArray()), "[\n]");
}

// Members of every layout: an array, an empty object, an object of two members and one of one.
// Printing does not depend on how a tree was built: the parser builds these.
AutoPtr<JSONObject> nested() {
    return Parser()
        .parse(
            R"({"arr": [1, 2, 3], "empty": {}, "obj": {"y": null, "x": true}, "one": {"k": 1.5}})")
        .dynamicCast<JSONObject>();
}

TEST(ValueModelPrinting, NestedObjectWithEachTabSize) {
    const AutoPtr<JSONObject> root = nested();
    const char* const layout =
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
        "}";
    for (const std::size_t tab : {2U, 4U, 0U, 2U}) {
        Value::setTabSize(tab);
        std::string expected;
        for (const char* c = layout; *c != '\0'; ++c) {
            expected += *c == '@' ? std::string(tab, ' ') : std::string(1, *c);
        }
        EXPECT_EQ(print(*root), expected) << "tab size " << tab;
    }
}

TEST(ValueModelPrinting, NestedArray) {
    const AutoPtr<JSONArray> array =
        Parser()
            .parse(R"([1, {"a": 1}, [], {"b": 2, "a": 1}, "s", [["t"]]])")
            .dynamicCast<JSONArray>();
    ASSERT_FALSE(array.isNull());
    EXPECT_EQ(print(*array),
              "[1,\n"
              "  {\"a\": 1},\n"
              "  [\n"
              "  ],\n"
              "  {\n"
              "    \"a\": 1,\n"
              "    \"b\": 2\n"
              "  },\"s\",\n"
              "  [\n"
              "    [\"t\"\n"
              "    ]\n"
              "  ]\n"
              "]");
}

TEST(ValueModelLifetime, DeepTreesAreDestroyedWithoutRecursion) {
    constexpr int kDepth = 1000000;
    gDestroyed = 0;
    {
        AutoPtr<JSONArray> root(new Counting<JSONArray>);
        JSONArray* tip = root.get();
        for (int i = 1; i < kDepth; ++i) {
            AutoPtr<JSONArray> next(new Counting<JSONArray>);
            tip->add(next);
            tip = next.get();
        }
        tip->add(1);
    }
    EXPECT_EQ(gDestroyed, kDepth);

    // Objects in objects, released by replacing the member that holds the top one.
    gDestroyed = 0;
    JSONObject holder;
    {
        AutoPtr<JSONObject> top(new Counting<JSONObject>);
        JSONObject* tip = top.get();
        for (int i = 1; i < kDepth; ++i) {
            AutoPtr<JSONObject> next(new Counting<JSONObject>);
            tip->accumulate("k", next);
            tip = next.get();
        }
        holder.accumulate("tree", top);
    }
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
