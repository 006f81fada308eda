// Reading and writing two 10 MB JSON responses (model objects with properties, and file records
// heavy with numbers and dates): the parser against nlohmann::json::parse and RapidJSON's
// Document::Parse on the same text, and the memory of the three trees; then the responses'
// records, held as generated types hold their fields, written through JsonStream, through
// RapidJSON's Writer, and by nlohmann's dump of a tree made from them. Same program, same data;
// the ratios follow the table.
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/internal/json/Parser.hpp>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <nlohmann/json.hpp>

#include "FileRecordReply.hpp"
#include "RatioReporter.hpp"

#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::DateTime;
using Corvane::Soa::Common::Xml::JsonStream;
namespace Json = Corvane::Soa::Internal::Json;

// A service response of about 10 MB: model objects with properties of every kind, pretty-printed.
struct Response {
    std::string text;
    int objects = 0;
};

const Response& response() {
    static const Response built = [] {
        Response r;
        std::string& out = r.text;
        out = "{\n  \"ServiceData\": {\n    \"modelObjects\": [\n";
        char item[1024];
        int i = 0;
        for (; out.size() < 10 * 1000 * 1000; ++i) {
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
        r.objects = i;
        return r;
    }();
    return built;
}

const std::string& responseText() { return response().text; }

std::size_t heapInUse() { return mallinfo2().uordblks; }

void parseTree(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        Json::Parser parser;
        AutoPtr<Json::Value> root = parser.parse(text);
        benchmark::DoNotOptimize(root.get());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void parseNlohmann(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        nlohmann::json root = nlohmann::json::parse(text);
        benchmark::DoNotOptimize(root);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void parseRapidJson(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        rapidjson::Document root;
        root.Parse(text.c_str(), text.size());
        benchmark::DoNotOptimize(root.IsObject());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

// The data of the response as the generated types hold it: one record per model object.
struct Record {
    std::string uid;
    std::string className;
    std::string type;
    std::string objectName;
    DateTime created;
    int sequence = 0;
    double weight = 0.0;
    bool released = false;
    std::vector<std::string> tags;
    int first = 0;
    int second = 0;
    double third = 0.0;
};

// The records of the response text above, field for field (the null owner is left out).
const std::vector<Record>& records() {
    static const std::vector<Record> all = [] {
        std::vector<Record> out;
        char text[64];
        for (int i = 0; i < response().objects; ++i) {
            Record r;
            std::snprintf(text, sizeof text, "Qx%07dAbCdEf", i);
            r.uid = text;
            r.className = "ItemRevision";
            r.type = "Document";
            r.objectName = "Bracket \"" + std::to_string(i) + "\" / left";
            r.created = DateTime(2016, 1 + i % 12, 1 + i % 28, 14, 3, 9);
            r.sequence = i;
            std::snprintf(text, sizeof text, "%d.%03d", i % 1000, i % 997);
            r.weight = std::strtod(text, nullptr);
            r.released = i % 2 == 0;
            r.tags = {"a" + std::to_string(i), "b", "c"};
            r.first = i;
            r.second = i * 3;
            r.third = (i % 100) + 0.5;
            out.push_back(std::move(r));
        }
        return out;
    }();
    return all;
}

// Writes the response as a generated type writes its members: attributes for scalars, keys
// before nested objects and arrays.
void writeRecord(JsonStream& out, const Record& r) {
    out.writeObjectOpen();
    out.writeAttribute("uid", r.uid, true);
    out.writeAttribute("className", r.className, true);
    out.writeAttribute("type", r.type, true);
    out.writeKey("props");
    out.writeObjectOpen();
    out.writeAttribute("object_name", r.objectName, true);
    out.writeAttribute("creation_date", r.created, true);
    out.writeAttribute("sequence", r.sequence, true);
    out.writeAttribute("weight", r.weight, true);
    out.writeAttribute("released", r.released, true);
    out.writeVector(r.tags, "tags");
    out.writeKey("values");
    out.writeArrayOpen();
    out.writeValue(r.first);
    out.writeValue(r.second);
    out.writeValue(r.third);
    out.writeArrayClose();
    out.writeObjectClose();
    out.writeObjectClose();
}

void writeDocument(JsonStream& out, const std::vector<Record>& all) {
    out.writeObjectOpen();
    out.writeKey("ServiceData");
    out.writeObjectOpen();
    out.writeKey("modelObjects");
    out.writeArrayOpen();
    for (const Record& r : all) {
        writeRecord(out, r);
    }
    out.writeArrayClose();
    out.writeObjectClose();
    out.writeKey("partialErrors");
    out.writeArrayOpen();
    out.writeArrayClose();
    out.writeObjectClose();
}

// The same through RapidJSON's writer; dates take their wire text as JsonStream writes it.
template <class Writer>
void writeDocument(Writer& out, const std::vector<Record>& all) {
    std::string date;
    const auto string = [&out](const std::string& text) {
        out.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    };
    out.StartObject();
    out.Key("ServiceData");
    out.StartObject();
    out.Key("modelObjects");
    out.StartArray();
    for (const Record& r : all) {
        out.StartObject();
        out.Key("uid");
        string(r.uid);
        out.Key("className");
        string(r.className);
        out.Key("type");
        string(r.type);
        out.Key("props");
        out.StartObject();
        out.Key("object_name");
        string(r.objectName);
        out.Key("creation_date");
        date.clear();
        r.created.appendTo(date);
        string(date);
        out.Key("sequence");
        out.Int(r.sequence);
        out.Key("weight");
        out.Double(r.weight);
        out.Key("released");
        out.Bool(r.released);
        out.Key("tags");
        out.StartArray();
        for (const std::string& tag : r.tags) {
            string(tag);
        }
        out.EndArray();
        out.Key("values");
        out.StartArray();
        out.Int(r.first);
        out.Int(r.second);
        out.Double(r.third);
        out.EndArray();
        out.EndObject();
        out.EndObject();
    }
    out.EndArray();
    out.EndObject();
    out.Key("partialErrors");
    out.StartArray();
    out.EndArray();
    out.EndObject();
}

nlohmann::json toNlohmann(const std::vector<Record>& all) {
    nlohmann::json objects = nlohmann::json::array();
    for (const Record& r : all) {
        objects.push_back({{"uid", r.uid},
                           {"className", r.className},
                           {"type", r.type},
                           {"props",
                            {{"object_name", r.objectName},
                             {"creation_date", r.created.toString()},
                             {"sequence", r.sequence},
                             {"weight", r.weight},
                             {"released", r.released},
                             {"tags", r.tags},
                             {"values", {r.first, r.second, r.third}}}}});
    }
    return {{"ServiceData", {{"modelObjects", std::move(objects)}}},
            {"partialErrors", nlohmann::json::array()}};
}

// The file records as a generated type writes them.
void writeFileRecord(JsonStream& out, const cvsoa::bench::FileRecord& r) {
    out.writeObjectOpen();
    out.writeAttribute("uid", r.uid, true);
    out.writeAttribute("className", r.className, true);
    out.writeAttribute("type", r.type, true);
    out.writeAttribute("name", r.name, true);
    out.writeAttribute("description", r.description, true);
    out.writeAttribute("volume", r.volume, true);
    out.writeAttribute("path", r.path, true);
    out.writeAttribute("mimeType", r.mimeType, true);
    out.writeAttribute("checksum", r.checksum, true);
    out.writeAttribute("size", r.size, true);
    out.writeAttribute("blocks", r.blocks, true);
    out.writeAttribute("offset", r.offset, true);
    out.writeAttribute("priority", r.priority, true);
    out.writeAttribute("version", r.version, true);
    out.writeAttribute("mode", r.mode, true);
    out.writeAttribute("ratio", r.ratio, true);
    out.writeAttribute("density", r.density, true);
    out.writeAttribute("entropy", r.entropy, true);
    out.writeAttribute("latency", r.latency, true);
    out.writeAttribute("score", r.score, true);
    out.writeAttribute("readOnly", r.readOnly, true);
    out.writeAttribute("archived", r.archived, true);
    out.writeAttribute("created", r.created, true);
    out.writeAttribute("modified", r.modified, true);
    out.writeAttribute("accessed", r.accessed, true);
    out.writeAttribute("released", r.released, true);
    out.writeKey("owner");
    out.writeObjectOpen();
    out.writeAttribute("uid", r.ownerUid, true);
    out.writeAttribute("name", r.ownerName, true);
    out.writeAttribute("group", r.ownerGroup, true);
    out.writeAttribute("id", r.ownerId, true);
    out.writeAttribute("quota", r.ownerQuota, true);
    out.writeObjectClose();
    out.writeKey("attributes");
    out.writeArrayOpen();
    for (const cvsoa::bench::FileAttribute& attribute : r.attributes) {
        out.writeObjectOpen();
        out.writeAttribute("name", attribute.name, true);
        out.writeAttribute("value", attribute.value, true);
        out.writeObjectClose();
    }
    out.writeArrayClose();
    out.writeVector(r.tags, "tags");
    out.writeObjectClose();
}

void writeDocument(JsonStream& out, const std::vector<cvsoa::bench::FileRecord>& all) {
    out.writeObjectOpen();
    out.writeKey("files");
    out.writeArrayOpen();
    for (const cvsoa::bench::FileRecord& r : all) {
        writeFileRecord(out, r);
    }
    out.writeArrayClose();
    out.writeObjectClose();
}

template <class Writer>
void writeDocument(Writer& out, const std::vector<cvsoa::bench::FileRecord>& all) {
    std::string date;
    const auto string = [&out](const char* key, const std::string& text) {
        out.Key(key);
        out.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    };
    const auto dateMember = [&](const char* key, const DateTime& value) {
        date.clear();
        value.appendTo(date);
        string(key, date);
    };
    out.StartObject();
    out.Key("files");
    out.StartArray();
    for (const cvsoa::bench::FileRecord& r : all) {
        out.StartObject();
        string("uid", r.uid);
        string("className", r.className);
        string("type", r.type);
        string("name", r.name);
        string("description", r.description);
        string("volume", r.volume);
        string("path", r.path);
        string("mimeType", r.mimeType);
        string("checksum", r.checksum);
        out.Key("size");
        out.Double(r.size);
        for (const auto& [key, value] : {std::pair<const char*, int>{"blocks", r.blocks},
                                         {"offset", r.offset},
                                         {"priority", r.priority},
                                         {"version", r.version},
                                         {"mode", r.mode}}) {
            out.Key(key);
            out.Int(value);
        }
        for (const auto& [key, value] : {std::pair<const char*, double>{"ratio", r.ratio},
                                         {"density", r.density},
                                         {"entropy", r.entropy},
                                         {"latency", r.latency},
                                         {"score", r.score}}) {
            out.Key(key);
            out.Double(value);
        }
        out.Key("readOnly");
        out.Bool(r.readOnly);
        out.Key("archived");
        out.Bool(r.archived);
        dateMember("created", r.created);
        dateMember("modified", r.modified);
        dateMember("accessed", r.accessed);
        dateMember("released", r.released);
        out.Key("owner");
        out.StartObject();
        string("uid", r.ownerUid);
        string("name", r.ownerName);
        string("group", r.ownerGroup);
        out.Key("id");
        out.Int(r.ownerId);
        out.Key("quota");
        out.Double(r.ownerQuota);
        out.EndObject();
        out.Key("attributes");
        out.StartArray();
        for (const cvsoa::bench::FileAttribute& attribute : r.attributes) {
            out.StartObject();
            string("name", attribute.name);
            string("value", attribute.value);
            out.EndObject();
        }
        out.EndArray();
        out.Key("tags");
        out.StartArray();
        for (const std::string& tag : r.tags) {
            out.String(tag.data(), static_cast<rapidjson::SizeType>(tag.size()));
        }
        out.EndArray();
        out.EndObject();
    }
    out.EndArray();
    out.EndObject();
}

nlohmann::json toNlohmann(const std::vector<cvsoa::bench::FileRecord>& all) {
    nlohmann::json files = nlohmann::json::array();
    for (const cvsoa::bench::FileRecord& r : all) {
        nlohmann::json attributes = nlohmann::json::array();
        for (const cvsoa::bench::FileAttribute& attribute : r.attributes) {
            attributes.push_back({{"name", attribute.name}, {"value", attribute.value}});
        }
        files.push_back({{"uid", r.uid},
                         {"className", r.className},
                         {"type", r.type},
                         {"name", r.name},
                         {"description", r.description},
                         {"volume", r.volume},
                         {"path", r.path},
                         {"mimeType", r.mimeType},
                         {"checksum", r.checksum},
                         {"size", r.size},
                         {"blocks", r.blocks},
                         {"offset", r.offset},
                         {"priority", r.priority},
                         {"version", r.version},
                         {"mode", r.mode},
                         {"ratio", r.ratio},
                         {"density", r.density},
                         {"entropy", r.entropy},
                         {"latency", r.latency},
                         {"score", r.score},
                         {"readOnly", r.readOnly},
                         {"archived", r.archived},
                         {"created", r.created.toString()},
                         {"modified", r.modified.toString()},
                         {"accessed", r.accessed.toString()},
                         {"released", r.released.toString()},
                         {"owner",
                          {{"uid", r.ownerUid},
                           {"name", r.ownerName},
                           {"group", r.ownerGroup},
                           {"id", r.ownerId},
                           {"quota", r.ownerQuota}}},
                         {"attributes", std::move(attributes)},
                         {"tags", r.tags}});
    }
    return {{"files", std::move(files)}};
}

const std::vector<cvsoa::bench::FileRecord>& fileRecords() {
    return cvsoa::bench::fileRecordReply().records;
}

const std::string& fileRecordText() { return cvsoa::bench::fileRecordReply().text; }

// A document's records, built on first use.
template <class Item>
using Records = const std::vector<Item>& (*)();

// The write benchmarks, each written once for both documents.
template <class Item>
void writeJsonStream(benchmark::State& state, Records<Item> document) {
    const std::vector<Item>& all = document();
    std::size_t bytes = 0;
    for (auto _ : state) {
        std::ostringstream text;
        {
            JsonStream out(&text);
            writeDocument(out, all);
        }
        bytes = static_cast<std::size_t>(text.tellp());
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

template <class Item>
void writeNlohmann(benchmark::State& state, Records<Item> document) {
    const nlohmann::json root = toNlohmann(document());
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string text = root.dump();
        bytes = text.size();
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

template <class Item>
void writeRapidJson(benchmark::State& state, Records<Item> document) {
    const std::vector<Item>& all = document();
    std::size_t bytes = 0;
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        writeDocument(writer, all);
        bytes = buffer.GetSize();
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

template <class Item>
void registerWrites(const std::string& prefix, Records<Item> document) {
    benchmark::RegisterBenchmark((prefix + "/JsonStream").c_str(), writeJsonStream<Item>, document)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((prefix + "/nlohmann").c_str(), writeNlohmann<Item>, document)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((prefix + "/RapidJSON").c_str(), writeRapidJson<Item>, document)
        ->Unit(benchmark::kMillisecond);
}

// Heap held by each tree of the same document, measured with the tree alive. Runs before the
// benchmarks, so that no peer's released blocks (kept by the heap for reuse) hide what a tree
// costs.
void printMemory(std::ostream& os, const std::string& text, const char* document) {
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
    os << std::fixed << std::setprecision(1) << "tree memory for " << text.size() / 1e6 << " MB of "
       << document << ": Parser " << ours / 1e6 << " MB, nlohmann " << theirs / 1e6
       << " MB, RapidJSON " << rapid / 1e6 << " MB\n"
       << "ratio tree memory Parser/nlohmann (" << document << "): " << std::setprecision(2)
       << static_cast<double>(ours) / static_cast<double>(theirs) << " (target <= 1)\n"
       << "ratio tree memory Parser/RapidJSON (" << document
       << "): " << static_cast<double>(ours) / static_cast<double>(rapid) << " (target <= 1.5)\n";
}

bool looksLikeDate(const nlohmann::json& value) {
    if (!value.is_string()) {
        return false;
    }
    const std::string& text = value.get_ref<const std::string&>();
    return text.size() >= 19 && text[4] == '-' && text[7] == '-' && text[10] == 'T';
}

// Whether two documents hold the same data. Dates are read as local times and written with the
// local offset, so two date texts count as the same.
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

// Whether JsonStream and RapidJSON's Writer wrote the data that `expected` holds.
template <class Item>
bool writersAgree(const std::vector<Item>& all, const nlohmann::json& expected) {
    std::ostringstream stream;
    {
        JsonStream out(&stream);
        writeDocument(out, all);
    }
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writeDocument(writer, all);
    return sameData(nlohmann::json::parse(stream.str()), expected) &&
           sameData(nlohmann::json::parse(buffer.GetString()), expected);
}

void printAgreement(std::ostream& os, bool same, const char* document) {
    os << "JsonStream, RapidJSON's Writer and nlohmann wrote "
       << (same ? "the same data" : "DIFFERENT DATA") << " (" << document << ")\n";
}

// The three writers must write the data of the response text, which has a null owner more; for
// the file records, the data of nlohmann's tree.
void checkWrittenText(std::ostream& os) {
    nlohmann::json expected = nlohmann::json::parse(responseText());
    for (auto& object : expected["ServiceData"]["modelObjects"]) {
        object["props"].erase("owner");
    }
    printAgreement(os,
                   writersAgree(records(), expected) && sameData(toNlohmann(records()), expected),
                   "model objects");
    printAgreement(os, writersAgree(fileRecords(), toNlohmann(fileRecords())), "file records");
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    const std::string& objects = responseText();
    const std::string& files = fileRecordText();
    benchmark::RegisterBenchmark("parse/Parser", parseTree, objects)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("parse/nlohmann", parseNlohmann, objects)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("parse/RapidJSON", parseRapidJson, objects)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("parseFiles/Parser", parseTree, files)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("parseFiles/nlohmann", parseNlohmann, files)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("parseFiles/RapidJSON", parseRapidJson, files)
        ->Unit(benchmark::kMillisecond);
    registerWrites("write", &records);
    registerWrites("writeFiles", &fileRecords);
    std::ostringstream memory;
    printMemory(memory, objects, "model objects");
    printMemory(memory, files, "file records");
    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::ostream& os = std::cout;
    for (const char* document : {"parse", "parseFiles"}) {
        const std::string d = document;
        reporter.printRatio(os, "Parser/nlohmann (" + d + ")", d + "/nlohmann", d + "/Parser",
                            "target >= 2x");
        reporter.printRatio(os, "Parser/RapidJSON (" + d + ")", d + "/RapidJSON", d + "/Parser",
                            "target >= 0.5x");
    }
    for (const char* document : {"write", "writeFiles"}) {
        const std::string d = document;
        reporter.printRatio(os, "JsonStream/nlohmann dump (" + d + ")", d + "/nlohmann",
                            d + "/JsonStream", "target >= 1.5x");
        reporter.printRatio(os, "JsonStream/RapidJSON Writer (" + d + ")", d + "/RapidJSON",
                            d + "/JsonStream", "target >= 0.5x");
    }
    os << memory.str();
    checkWrittenText(os);
    benchmark::Shutdown();
    return 0;
}
