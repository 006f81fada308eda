// Reading and writing a 10 MB JSON response: the parser against nlohmann::json::parse and
// RapidJSON's Document::Parse, the memory of the three trees, and JsonStream against
// nlohmann's dump and RapidJSON's Writer. Same text, same program; the ratios follow the table.
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/internal/json/BooleanValue.hpp>
#include <corvane/soa/internal/json/DateValue.hpp>
#include <corvane/soa/internal/json/DoubleValue.hpp>
#include <corvane/soa/internal/json/IntegerValue.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <nlohmann/json.hpp>

#include "RatioReporter.hpp"

#include <cstdio>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Xml::JsonStream;
namespace Json = Corvane::Soa::Internal::Json;

// A service response of about 10 MB: model objects with properties of every kind, pretty-printed.
const std::string& responseText() {
    static const std::string text = [] {
        std::string out = "{\n  \"ServiceData\": {\n    \"modelObjects\": [\n";
        char item[1024];
        for (int i = 0; out.size() < 10 * 1000 * 1000; ++i) {
            std::snprintf(item, sizeof item,
                          "%s      {\n        \"uid\": \"Qx%07dAbCdEf\",\n        \"className\": "
                          "\"ItemRevision\",\n"
                          "        \"type\": \"Document\",\n        \"props\": {\n"
                          "          \"object_name\": \"Bracket \\\"%d\\\" / left\",\n"
                          "          \"creation_date\": \"2016-%02d-%02dT14:03:09+01:00\",\n"
                          "          \"sequence\": %d,\n          \"weight\": %d.%03d,\n"
                          "          \"released\": %s,\n          \"owner\": null,\n"
                          "          \"tags\": [\"a%d\", \"b\", \"c\"],\n"
                          "          \"values\": [%d, %d, %d.5]\n        }\n      }",
                          i == 0 ? "" : ",\n", i, i, 1 + i % 12, 1 + i % 28, i, i % 1000, i % 997,
                          i % 2 == 0 ? "true" : "false", i, i, i * 3, i % 100);
            out += item;
        }
        out += "\n    ]\n  },\n  \"partialErrors\": []\n}\n";
        return out;
    }();
    return text;
}

std::size_t heapInUse() { return mallinfo2().uordblks; }

void parseTree(benchmark::State& state) {
    const std::string& text = responseText();
    for (auto _ : state) {
        Json::Parser parser;
        AutoPtr<Json::Value> root = parser.parse(text);
        benchmark::DoNotOptimize(root.get());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void parseNlohmann(benchmark::State& state) {
    const std::string& text = responseText();
    for (auto _ : state) {
        nlohmann::json root = nlohmann::json::parse(text);
        benchmark::DoNotOptimize(root);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void parseRapidJson(benchmark::State& state) {
    const std::string& text = responseText();
    for (auto _ : state) {
        rapidjson::Document root;
        root.Parse(text.c_str(), text.size());
        benchmark::DoNotOptimize(root.IsObject());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

// The stream has no null of its own: the separator, then the member or element as raw text.
void writeNull(JsonStream& out, const std::string* key) {
    out.writeCommaAndLineFeed();
    if (key != nullptr) {
        out << "\"";
        out << *key;
        out << "\":";
    }
    out << "null";
}

// Writes a parsed tree through the stream, as generated types write their members.
void writeValue(JsonStream& out, const Json::Value& value);

// Scalar members are written as attributes, containers under their key. The members' values
// are fetched ahead, as a generated type finds its fields side by side in its own object.
void writeMembers(JsonStream& out, const Json::JSONObject& object) {
    for (const auto& member : object.getMembers()) {
        __builtin_prefetch(member.second.get());
    }
    out.writeObjectOpen();
    for (const auto& [key, member] : object.getMembers()) {
        switch (member->getType()) {
            case Json::Value::OBJECT:
            case Json::Value::ARRAY:
                out.writeKey(key);
                writeValue(out, *member);
                break;
            case Json::Value::STRING:
                out.writeAttribute(key, static_cast<const Json::StringValue&>(*member).getValue(),
                                   true);
                break;
            case Json::Value::DATE:
                out.writeEncodedAttribute(key,
                                          static_cast<const Json::DateValue&>(*member).getText());
                break;
            case Json::Value::INTEGER:
                out.writeAttribute(key, static_cast<const Json::IntegerValue&>(*member).getValue(),
                                   true);
                break;
            case Json::Value::DOUBLE:
                out.writeAttribute(key, static_cast<const Json::DoubleValue&>(*member).getValue(),
                                   true);
                break;
            case Json::Value::BOOLEAN:
                out.writeAttribute(key, static_cast<const Json::BooleanValue&>(*member).getValue(),
                                   true);
                break;
            default:
                writeNull(out, &key);
                break;
        }
    }
    out.writeObjectClose();
}

void writeValue(JsonStream& out, const Json::Value& value) {
    switch (value.getType()) {
        case Json::Value::OBJECT:
            writeMembers(out, static_cast<const Json::JSONObject&>(value));
            break;
        case Json::Value::ARRAY: {
            const auto& array = static_cast<const Json::JSONArray&>(value);
            out.writeArrayOpen();
            for (std::size_t i = 0; i < array.size(); ++i) {
                writeValue(out, *array.getValue(i));
            }
            out.writeArrayClose();
            break;
        }
        case Json::Value::STRING:
            out.writeValue(static_cast<const Json::StringValue&>(value).getValue());
            break;
        case Json::Value::DATE:
            out.writeEncodedValue(static_cast<const Json::DateValue&>(value).getText());
            break;
        case Json::Value::INTEGER:
            out.writeValue(static_cast<const Json::IntegerValue&>(value).getValue());
            break;
        case Json::Value::DOUBLE:
            out.writeValue(static_cast<const Json::DoubleValue&>(value).getValue());
            break;
        case Json::Value::BOOLEAN:
            out.writeValue(static_cast<const Json::BooleanValue&>(value).getValue());
            break;
        default:
            writeNull(out, nullptr);
            break;
    }
}

void writeJsonStream(benchmark::State& state) {
    Json::Parser parser;
    const AutoPtr<Json::Value> root = parser.parse(responseText());
    std::size_t bytes = 0;
    for (auto _ : state) {
        std::ostringstream text;
        {
            JsonStream out(&text);
            writeValue(out, *root);
        }
        bytes = static_cast<std::size_t>(text.tellp());
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

void writeNlohmann(benchmark::State& state) {
    const nlohmann::json root = nlohmann::json::parse(responseText());
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string text = root.dump();
        bytes = text.size();
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

void writeRapidJson(benchmark::State& state) {
    rapidjson::Document root;
    root.Parse(responseText().c_str(), responseText().size());
    std::size_t bytes = 0;
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        root.Accept(writer);
        bytes = buffer.GetSize();
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

// The text JsonStream writes for the whole tree.
std::string streamText(const Json::Value& root) {
    std::ostringstream text;
    {
        JsonStream out(&text);
        writeValue(out, root);
    }
    return text.str();
}

// Heap held by each tree of the same document, measured with the tree alive. Runs before the
// benchmarks: the parser's value pool keeps the blocks of released trees for reuse, and a pool
// warmed by them would hide what a tree costs.
void printMemory(std::ostream& os) {
    const std::string& text = responseText();
    std::size_t before = heapInUse();
    std::size_t ours = 0;
    {
        Json::Parser parser;
        const AutoPtr<Json::Value> root = parser.parse(text);
        ours = heapInUse() - before;
    }
    before = heapInUse();
    std::size_t theirs = 0;
    {
        const nlohmann::json root = nlohmann::json::parse(text);
        theirs = heapInUse() - before;
    }
    before = heapInUse();
    std::size_t rapid = 0;
    {
        rapidjson::Document root;
        root.Parse(text.c_str(), text.size());
        rapid = heapInUse() - before;
    }
    os << std::fixed << std::setprecision(1) << "tree memory for " << text.size() / 1e6
       << " MB of text: Parser " << ours / 1e6 << " MB, nlohmann " << theirs / 1e6
       << " MB, RapidJSON " << rapid / 1e6 << " MB (for reference)\n"
       << "ratio tree memory Parser/nlohmann: " << std::setprecision(2)
       << static_cast<double>(ours) / static_cast<double>(theirs) << " (target <= 1)\n";
}

bool looksLikeDate(const nlohmann::json& value) {
    if (!value.is_string()) {
        return false;
    }
    const std::string& text = value.get_ref<const std::string&>();
    return text.size() >= 19 && text[4] == '-' && text[7] == '-' && text[10] == 'T';
}

// Whether two documents hold the same data. Dates are written in their wire form (in UTC), so
// two date texts count as the same.
bool sameData(const nlohmann::json& a, const nlohmann::json& b) {
    if (looksLikeDate(a) && looksLikeDate(b)) {
        return true;
    }
    if (a.type() != b.type() || a.size() != b.size()) {
        return a == b;
    }
    if (a.is_object()) {
        for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j) {
            if (i.key() != j.key() || !sameData(*i, *j)) {
                return false;
            }
        }
        return true;
    }
    if (a.is_array()) {
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (!sameData(a[i], b[i])) {
                return false;
            }
        }
        return true;
    }
    return a == b;
}

// The walk must write the document it read.
void checkWrittenText(std::ostream& os) {
    Json::Parser parser;
    const AutoPtr<Json::Value> root = parser.parse(responseText());
    const bool same =
        sameData(nlohmann::json::parse(streamText(*root)), nlohmann::json::parse(responseText()));
    os << "JsonStream wrote " << (same ? "the same data" : "DIFFERENT DATA") << "\n";
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RegisterBenchmark("parse/Parser", parseTree)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("parse/nlohmann", parseNlohmann)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("parse/RapidJSON", parseRapidJson)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("write/JsonStream", writeJsonStream)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("write/nlohmann", writeNlohmann)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("write/RapidJSON", writeRapidJson)->Unit(benchmark::kMillisecond);
    std::ostringstream memory;
    printMemory(memory);
    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::ostream& os = std::cout;
    reporter.printRatio(os, "Parser/nlohmann", "parse/nlohmann", "parse/Parser", "target >= 2x");
    reporter.printRatio(os, "Parser/RapidJSON", "parse/RapidJSON", "parse/Parser",
                        "target >= 0.5x");
    reporter.printRatio(os, "JsonStream/nlohmann dump", "write/nlohmann", "write/JsonStream",
                        "target >= 1.5x");
    reporter.printRatio(os, "JsonStream/RapidJSON Writer", "write/RapidJSON", "write/JsonStream",
                        "target >= 0.5x");
    os << memory.str();
    checkWrittenText(os);
    benchmark::Shutdown();
    return 0;
}
