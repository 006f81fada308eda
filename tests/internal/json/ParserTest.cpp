// Reading JSON text: kinds, strings, dates, numbers, the exact error texts with their positions,
// and hostile input (deep nesting, truncation, the public corpora).
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/ParsingException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Internal::Json::JSONArray;
using Corvane::Soa::Internal::Json::JSONObject;
using Corvane::Soa::Internal::Json::Parser;
using Corvane::Soa::Internal::Json::ParsingException;
using Corvane::Soa::Internal::Json::Value;
using InternalServerException =
    Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;

namespace {

AutoPtr<JSONObject> parseObject(const std::string& text) {
    Parser parser;
    AutoPtr<JSONObject> object = parser.parse(text).dynamicCast<JSONObject>();
    EXPECT_FALSE(object.isNull());
    return object;
}

std::string errorOf(const std::string& text) {
    try {
        Parser().parse(text);
    } catch (const ParsingException& e) {
        return e.getMessage();
    }
    return "(no error)";
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

TEST(Parser, DecidesKindsFromTheFirstBytes) {
    const auto object = parseObject(
        R"({"d": 1.0, "i": 10, "e": 1e3, "n": -5, "t": true, "f": false, "z": null,
            "s": "text", "o": {"a": [1, "x"]}, "date": "2016-12-05T14:03:09+01:00"})");
    EXPECT_EQ(object->getValueType("d"), Value::DOUBLE);
    EXPECT_EQ(object->getValueType("i"), Value::INTEGER);
    EXPECT_EQ(object->getValueType("e"), Value::DOUBLE);
    EXPECT_EQ(object->getInteger("n"), -5);
    EXPECT_DOUBLE_EQ(object->getDouble("e"), 1000.0);
    EXPECT_TRUE(object->getBoolean("t"));
    EXPECT_FALSE(object->getBoolean("f"));
    EXPECT_TRUE(object->isNull("z"));
    EXPECT_EQ(object->getString("s"), "text");
    EXPECT_EQ(object->getValueType("date"), Value::DATE);
    const AutoPtr<JSONArray> array = object->getJSONObject("o")->getJSONArray("a");
    EXPECT_EQ(array->size(), 2U);
    EXPECT_EQ(array->getValueType(1), Value::STRING);
}

TEST(Parser, NestedArraysKeepTheirOwnKinds) {
    const AutoPtr<JSONArray> root =
        Parser().parse("[\n   [1, 2, 2.5e3\n]\n, [[\"a\"], {}], null]").dynamicCast<JSONArray>();
    ASSERT_FALSE(root.isNull());
    ASSERT_EQ(root->size(), 3U);
    EXPECT_EQ(root->getValueType(0), Value::ARRAY);
    EXPECT_EQ(root->getValueType(2), Value::NULL_VALUE);
    const AutoPtr<JSONArray> first = root->getJSONArray(0);
    ASSERT_EQ(first->size(), 3U);
    EXPECT_EQ(first->getInteger(1), 2);
    EXPECT_EQ(first->getValueType(2), Value::DOUBLE);
    const AutoPtr<JSONArray> second = root->getJSONArray(1);
    EXPECT_EQ(second->getJSONArray(0)->getString(0), "a");
    EXPECT_EQ(second->getValueType(1), Value::OBJECT);
}

TEST(Parser, StringsAreUnescapedButKeysKeptAsWritten) {
    const auto object = parseObject(R"({"k\"ey": "a\/b \"q\" \\ \t\u0041", "plain": "x"})");
    EXPECT_TRUE(object->containsKey(R"(k\"ey)"));
    EXPECT_EQ(object->getString(R"(k\"ey)"), "a/b \"q\" \\ \t\\u0041");
    // A repeated key keeps the last value.
    EXPECT_EQ(parseObject(R"({"k": 1, "k": "x"})")->getString("k"), "x");
    EXPECT_EQ(parseObject(R"({"b": 1, "a": 2, "B": 3})")->getKeys(),
              (std::vector<std::string>{"B", "a", "b"}));
}

TEST(Parser, DateShapedStringsGoToTheDateReader) {
    EXPECT_EQ(parseObject(R"({"d": "2016-12-05T14:03:09+00:00"})")->getString("d").substr(0, 10),
              "2016-12-05");
    // The shape test looks at eleven bytes only; the rest must then read as a valid date.
    EXPECT_THROW(parseObject(R"({"d": "2016-12-05T99:00:00+00:00"})"), InternalServerException);
    EXPECT_EQ(parseObject(R"({"d": "2016-12-05 14:03"})")->getValueType("d"), Value::STRING);
}

TEST(Parser, ErrorTextsCarryLineAndCharacter) {
    EXPECT_EQ(errorOf("42"),
              "The root of a JSON document must be a JSONObject {}, or a JSONArray, [].\n");
    EXPECT_EQ(errorOf(""),
              "The root of a JSON document must be a JSONObject {}, or a JSONArray, [].\n");
    EXPECT_EQ(errorOf(R"({"a" 1})"), "Expecting a ':'. Line 1 character 5.\n");
    EXPECT_EQ(errorOf("{\n  \"a\": 1,\n  \"b\" 2}"), "Expecting a ':'. Line 3 character 6.\n");
    // A run of line breaks, blank lines included, counts as one line.
    EXPECT_EQ(errorOf("{\n\n\r\n\"a\" 2}"), "Expecting a ':'. Line 2 character 4.\n");
    EXPECT_EQ(errorOf(R"({"a": 1 "b": 2})"), "Expecting a '}'. Line 1 character 8.\n");
    EXPECT_EQ(errorOf("[1, 2"), "Expecting a ']'. Line 1 character 5.\n");
    EXPECT_EQ(errorOf("[1, ]"), "Unkown value type. Line 1 character 4.\n");
    EXPECT_EQ(errorOf("[nul]"), "Unkown value type. Line 1 character 1.\n");
    EXPECT_EQ(errorOf(R"({"a": "open)"), "Expecting a closing quote. Line 1 character 11.\n");
    EXPECT_EQ(errorOf(R"({"open: 1})"), "Expecting a closing quote. Line 1 character 10.\n");
    EXPECT_EQ(errorOf(R"(["abc\)"), "Expecting a closing quote. Line 1 character 6.\n");
}

TEST(Parser, RefusesNestingDeeperThan1024Levels) {
    const std::string ok = std::string(1024, '[') + std::string(1024, ']');
    EXPECT_NO_THROW(Parser().parse(ok));
    const std::string deep = std::string(1025, '[') + std::string(1025, ']');
    EXPECT_EQ(errorOf(deep), "The JSON document is nested too deeply. Line 1 character 1025.\n");
    const std::string million(1000000, '[');
    EXPECT_EQ(errorOf(million).rfind("The JSON document is nested too deeply. ", 0), 0U);
    std::string objects;
    for (int i = 0; i < 2000; ++i) {
        objects += "{\"a\":";
    }
    EXPECT_EQ(errorOf(objects).rfind("The JSON document is nested too deeply. ", 0), 0U);
}

TEST(Parser, EveryTruncationOfADocumentFailsCleanly) {
    const std::string document =
        R"({"ServiceData": {"plain": ["uid1", "uid2"], "modelObjects": {"uid1": {"uid": "uid1",)"
        R"( "className": "Item", "props": {"date": "2016-12-05T14:03:09+01:00", "n": -1.5e3,)"
        R"( "ok": true, "none": null, "text": "a\"b\\c"}}}}, "count": 2})";
    ASSERT_NO_THROW(Parser().parse(document));
    for (std::size_t length = 0; length < document.size(); ++length) {
        // A copy of exactly `length` bytes, so that reading past it is caught by the sanitizers.
        const std::string truncated = document.substr(0, length);
        try {
            Parser().parse(truncated);
            ADD_FAILURE() << "accepted " << length << " bytes";
        } catch (const ParsingException&) {
        } catch (const InternalServerException&) {
        }
    }
}

TEST(ParserCorpora, JsonTestSuiteParsesOrFailsCleanly) {
    const std::filesystem::path dir =
        std::filesystem::path(CVSOA_CORPORA_DIR) / "json/JSONTestSuite/test_parsing";
    if (!std::filesystem::is_directory(dir)) {
        GTEST_SKIP() << "corpus not found at " << dir;
    }
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        const std::string text = readFile(entry.path());
        bool parsed = false;
        try {
            Parser().parse(text);
            parsed = true;
        } catch (const ParsingException&) {
        } catch (const InternalServerException&) {
        }
        ++files;
        // Documents that must parse do, when their root is a container and they hold no \u
        // escape (which is kept, not decoded).
        const std::size_t first = text.find_first_not_of(" \t\r\n");
        const bool containerRoot =
            first != std::string::npos && (text[first] == '{' || text[first] == '[');
        if (name.rfind("y_", 0) == 0 && containerRoot && text.find("\\u") == std::string::npos) {
            EXPECT_TRUE(parsed) << name;
        }
    }
    EXPECT_GT(files, 300);
}

TEST(ParserCorpora, AdversarialDocumentsFailOrParseWithoutCrashing) {
    const std::filesystem::path dir = std::filesystem::path(CVSOA_CORPORA_DIR) / "adversarial";
    if (!std::filesystem::is_directory(dir)) {
        GTEST_SKIP() << "corpus not found at " << dir;
    }
    for (const char* name : {"json-deep-array-100k.json", "json-deep-object-100k.json",
                             "json-deep-array-100k-unclosed.json", "json-truncated-string.json",
                             "json-trailing-lone-backslash.json", "json-unterminated-key.json"}) {
        const std::string text = readFile(dir / name);
        EXPECT_THROW(Parser().parse(text), ParsingException) << name;
    }
}
