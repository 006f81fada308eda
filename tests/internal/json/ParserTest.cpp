// Reading JSON text: kinds, strings, dates, numbers, the exact error texts with their positions,
// and hostile input (deep nesting, truncation, the public corpora).
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/internal/json/DoubleValue.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/ParsingException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Corvane::Soa::Internal::Json;
using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::DateTime;
using InternalServerException =
    Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;

template <class T = JSONArray>
AutoPtr<T> parse(const std::string& text) {
    AutoPtr<T> root = Parser().parse(text).dynamicCast<T>();
    EXPECT_FALSE(root.isNull()) << text;
    return root;
}

std::string errorOf(const std::string& text) {
    try {
        Parser().parse(text);
    } catch (const ParsingException& e) {
        return e.getMessage();
    }
    return "(no error)";
}

// Whether the text parses; a fault other than these two exceptions fails the test.
bool parses(const std::string& text) {
    try {
        Parser().parse(text);
        return true;
    } catch (const ParsingException&) {
    } catch (const InternalServerException&) {
    }
    return false;
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(Parser, DecidesKindsFromTheFirstBytesAtEveryLevel) {
    const AutoPtr<JSONObject> object = parse<JSONObject>(
        "{\"t\": true, \"f\": false, \"z\": null, \"s\": \"text\",\n"
        " \"a\": [\n   [1, 2, 2.5e3\n]\n, [[\"a\"], {}], null]}");
    EXPECT_TRUE(object->getBoolean("t"));
    EXPECT_FALSE(object->getBoolean("f"));
    EXPECT_TRUE(object->isNull("z"));
    EXPECT_EQ(object->getString("s"), "text");
    const AutoPtr<JSONArray> root = object->getJSONArray("a");
    ASSERT_EQ(root->size(), 3U);
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
    const auto object = parse<JSONObject>(R"({"k\"ey": "a\/b \"q\" \\ \t\u0041", "plain": "x"})");
    EXPECT_EQ(object->getString(R"(k\"ey)"), "a/b \"q\" \\ \t\\u0041");
    EXPECT_EQ(parse<JSONObject>(R"({"s": "<\b\f\n\r\t\"\\\/\x\u00e9>"})")->getString("s"),
              "<\b\f\n\r\t\"\\/\\x\\u00e9>");
    // A repeated key keeps the last value, whatever its kind.
    EXPECT_EQ(parse<JSONObject>(R"({"k": 1, "k": "x"})")->getString("k"), "x");
}

TEST(Parser, ObjectsOfAnySizeKeepTheLastOfRepeatedKeysInByteOrder) {
    for (const int count : {5, 16, 17, 60}) {
        std::map<std::string, int> expected;
        std::string text = "{";
        for (int i = 0; i < count; ++i) {
            const std::string key = (i % 2 == 0 ? "k" : "K") + std::to_string((i * 37) % 13);
            expected[key] = i;
            text += (i == 0 ? "\"" : ", \"") + key + "\": " + std::to_string(i);
        }
        const auto object = parse<JSONObject>(text + "}");
        std::vector<std::string> keys;
        for (const auto& [key, value] : expected) {
            keys.push_back(key);
            EXPECT_EQ(object->getInteger(key), value) << count << " " << key;
        }
        EXPECT_EQ(object->getKeys(), keys) << count;
    }
}

TEST(Parser, NumbersReadAsTheCLibraryReadsThem) {
    // Decimals around the 15 digits that are read directly, and integers past 32 and 64 bits.
    std::istringstream fixed(
        "0.1 -0.0 9007199254740993.0 123456789012345.6 1.7976931348623157 1e3 -2.5E-3 .5 5. 1.5.3 "
        "0 -0 007 -2147483648 2147483648 4294967297 9223372036854775807 9223372036854775808 "
        "-9223372036854775809 123456789012345678901 12-3 +-5 +42 -");
    std::vector<std::string> numbers;
    for (std::string number; fixed >> number;) {
        numbers.push_back(number);
    }
    std::mt19937 random(7);
    for (int i = 0; i < 4000; ++i) {
        std::string number = random() % 2 == 0 ? "-" : "";
        const auto whole = 1 + random() % 17;
        const auto fraction = 1 + random() % 17;
        for (unsigned d = 0; d < whole + fraction; ++d) {
            number += d == whole ? "." : "";
            number += static_cast<char>('0' + random() % 10);
        }
        numbers.push_back(number);
    }
    std::string text = "[";
    for (const std::string& number : numbers) {
        text += (text.size() > 1 ? ", " : "") + number;
    }
    const AutoPtr<JSONArray> array = parse(text + "]");
    ASSERT_EQ(array->size(), numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const char* number = numbers[i].c_str();
        if (std::strpbrk(number, ".eE") != nullptr) {
            ASSERT_EQ(array->getValueType(i), Value::DOUBLE) << number;
            const double expected = std::strtod(number, nullptr);
            const double read = array->getValue(i).dynamicCast<DoubleValue>()->getValue();
            // The same bits: equal, and the same sign for zeros.
            EXPECT_TRUE(read == expected && std::signbit(read) == std::signbit(expected)) << number;
        } else {
            ASSERT_EQ(array->getValueType(i), Value::INTEGER) << number;
            const long expected = std::strtol(number, nullptr, 10);
            EXPECT_EQ(
                array->getInteger(i),
                static_cast<int>(static_cast<std::uint32_t>(static_cast<unsigned long>(expected))))
                << number;
        }
    }
}

TEST(Parser, DatesReadAsDateTimeReadsThemAndOnlyDateShapedStringsAreDates) {
    // Moves across midnight, month and year ends, days past the month's end, hour 24, the null
    // date, daylight-saving changes of the zones the tests run in, and the texts of other writers.
    for (const char* text :
         {"2016-12-05T14:03:09+01:00",     "2016-12-05T00:10:00+01:00", "2016-12-31T23:30:00-01:00",
          "2016-02-28T23:59:59-00:30",     "2016-04-31T10:00:00+00:00", "2016-02-30T23:00:00-02:00",
          "2016-12-05T24:00:00+00:00",     "0001-01-01T00:00:00+05:00", "0001-01-01T00:30:00+01:00",
          "2016-03-27T01:30:00+00:00",     "2016-03-27T02:30:00+01:00", "2016-10-30T00:30:00+00:00",
          "2016-10-30T02:30:00+02:00",     "2016-07-01T12:00:00+02:00", "1969-12-31T23:59:59+00:00",
          "9999-12-31T23:59:59-01:00",     "2016-12-05T14:03:09+0100",  "2016-12-05T14:03:09Z",
          "2016-12-05T14:03:09.250+01:00", "2016-12-05T14:03:09+14:00"}) {
        const AutoPtr<JSONArray> array = parse(std::string("[\"") + text + "\"]");
        const DateTime expected{std::string(text)};
        ASSERT_EQ(array->getValueType(0), Value::DATE) << text;
        EXPECT_EQ(array->getDate(0), expected) << text;
        EXPECT_EQ(array->getString(0), expected.toString()) << text;
    }
    // The shape test looks at eleven bytes only; the rest must then read as a valid date.
    EXPECT_THROW(Parser().parse(R"(["2016-12-05T99:00:00+00:00"])"), InternalServerException);
    EXPECT_EQ(parse(R"(["2016-12-05 14:03"])")->getValueType(0), Value::STRING);
}

TEST(Parser, ErrorTextsCarryLineAndCharacter) {
    const std::string root =
        "The root of a JSON document must be a JSONObject {}, or a JSONArray, [].\n";
    const std::pair<std::string, std::string> cases[] = {
        {"42", root},
        {"", root},
        {R"({"a" 1})", "Expecting a ':'. Line 1 character 5.\n"},
        {"{\n  \"a\": 1,\n  \"b\" 2}", "Expecting a ':'. Line 3 character 6.\n"},
        // A run of line breaks, blank lines included, counts as one line.
        {"{\n\n\r\n\"a\" 2}", "Expecting a ':'. Line 2 character 4.\n"},
        {R"({"a": 1 "b": 2})", "Expecting a '}'. Line 1 character 8.\n"},
        {"[1, 2", "Expecting a ']'. Line 1 character 5.\n"},
        {"[1, ]", "Unkown value type. Line 1 character 4.\n"},
        {"[nul]", "Unkown value type. Line 1 character 1.\n"},
        {R"({"a": "open)", "Expecting a closing quote. Line 1 character 11.\n"},
        {R"({"open: 1})", "Expecting a closing quote. Line 1 character 10.\n"},
        {R"(["abc\)", "Expecting a closing quote. Line 1 character 6.\n"},
    };
    for (const auto& [text, message] : cases) {
        EXPECT_EQ(errorOf(text), message) << text;
    }
}

TEST(Parser, RefusesNestingDeeperThan1024Levels) {
    EXPECT_NO_THROW(Parser().parse(std::string(1024, '[') + std::string(1024, ']')));
    EXPECT_EQ(errorOf(std::string(1025, '[') + std::string(1025, ']')),
              "The JSON document is nested too deeply. Line 1 character 1025.\n");
    std::string objects;
    for (int i = 0; i < 2000; ++i) {
        objects += "{\"a\":";
    }
    for (const std::string& deep : {std::string(1000000, '['), objects}) {
        EXPECT_EQ(errorOf(deep).rfind("The JSON document is nested too deeply. ", 0), 0U);
    }
}

TEST(Parser, EveryTruncationOfADocumentFailsCleanly) {
    const std::string document =
        R"({"ServiceData": {"plain": ["uid1", "uid2"], "modelObjects": {"uid1": {"uid": "uid1",)"
        R"( "className": "Item", "props": {"date": "2016-12-05T14:03:09+01:00", "n": -1.5e3,)"
        R"( "ok": true, "none": null, "text": "a\"b\\c"}}}}, "count": 2})";
    ASSERT_NO_THROW(Parser().parse(document));
    for (std::size_t length = 0; length < document.size(); ++length) {
        // A copy of exactly `length` bytes, so that reading past it is caught by the sanitizers.
        EXPECT_FALSE(parses(document.substr(0, length))) << "accepted " << length << " bytes";
    }
}

TEST(ParserCorpora, JsonTestSuiteParsesOrFailsCleanly) {
    const auto dir = std::filesystem::path(CVSOA_CORPORA_DIR) / "json/JSONTestSuite/test_parsing";
    if (!std::filesystem::is_directory(dir)) {
        GTEST_SKIP() << "corpus not found at " << dir;
    }
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        const std::string text = readFile(entry.path());
        const bool parsed = parses(text);
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

TEST(ParserCorpora, AdversarialDocumentsFailWithAParsingError) {
    const auto dir = std::filesystem::path(CVSOA_CORPORA_DIR) / "adversarial";
    if (!std::filesystem::is_directory(dir)) {
        GTEST_SKIP() << "corpus not found at " << dir;
    }
    for (const char* name : {"json-deep-array-100k.json", "json-deep-object-100k.json",
                             "json-deep-array-100k-unclosed.json", "json-truncated-string.json",
                             "json-trailing-lone-backslash.json", "json-unterminated-key.json"}) {
        EXPECT_THROW(Parser().parse(readFile(dir / name)), ParsingException) << name;
    }
}

}  // namespace
