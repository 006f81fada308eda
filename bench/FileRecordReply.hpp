#ifndef CVSOA_BENCH_FILERECORDREPLY_HPP
#define CVSOA_BENCH_FILERECORDREPLY_HPP

// The second JSON document of the benchmarks: a 10 MB reply of file records shaped as a file
// service answers, about 30 members each. A third of the members are numbers (64-bit sizes,
// negative integers, doubles with exponents), four are dates, names carry \uXXXX escapes and
// raw non-ASCII bytes, and every record holds an owner object and a short array of attribute
// objects. The records and the text come from one seeded generator: the same on every run.

#include "SplitMix.hpp"

#include <corvane/soa/common/DateTime.hpp>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace cvsoa::bench {

struct FileAttribute {
    std::string name;
    std::string value;
};

// A record as a binding holds it: strings as the parser gives them (the \uXXXX escapes kept as
// written, the others undone).
struct FileRecord {
    std::string uid;
    std::string className;
    std::string type;
    std::string name;
    std::string description;
    std::string volume;
    std::string path;
    std::string mimeType;
    std::string checksum;
    double size = 0.0;  // a 64-bit count, as a double holds it
    int blocks = 0;
    int offset = 0;
    int priority = 0;
    int version = 0;
    int mode = 0;
    double ratio = 0.0;
    double density = 0.0;
    double entropy = 0.0;
    double latency = 0.0;
    double score = 0.0;
    bool readOnly = false;
    bool archived = false;
    ::Corvane::Soa::Common::DateTime created;
    ::Corvane::Soa::Common::DateTime modified;
    ::Corvane::Soa::Common::DateTime accessed;
    ::Corvane::Soa::Common::DateTime released;
    std::string ownerUid;
    std::string ownerName;
    std::string ownerGroup;
    int ownerId = 0;
    double ownerQuota = 0.0;
    std::vector<FileAttribute> attributes;
    std::vector<std::string> tags;
};

struct FileRecordReply {
    std::vector<FileRecord> records;
    std::string text;
};

inline const FileRecordReply& fileRecordReply() {
    static const FileRecordReply built = [] {
        static const char* const kClasses[] = {"Dataset", "ImanFile", "DocumentRevision"};
        static const char* const kTypes[] = {"PDF", "Text", "MSWordX", "DirectModel"};
        static const char* const kMime[] = {"application/pdf", "text/plain", "image/tiff"};
        static const char* const kGroups[] = {"Engineering", "Qualit\\u00e4t", "Einkauf"};
        static const char* const kLanguages[] = {"de", "en", "fr", "ja"};
        FileRecordReply reply;
        SplitMix random(20240611);
        std::string& out = reply.text;
        out = "{\n  \"ServiceData\": {\n    \"partialErrors\": []\n  },\n  \"files\": [\n";
        char buffer[4096];
        const auto date = [&random](char* text, std::size_t size) {
            const int month = 1 + static_cast<int>(random.below(12));
            const int day = 1 + static_cast<int>(random.below(28));
            const int hour = static_cast<int>(random.below(24));
            const int minute = static_cast<int>(random.below(60));
            const int second = static_cast<int>(random.below(60));
            std::snprintf(text, size, "20%02d-%02d-%02dT%02d:%02d:%02d+0%d:00",
                          10 + static_cast<int>(random.below(14)), month, day, hour, minute, second,
                          static_cast<int>(random.below(3)));
            return std::string(text);
        };
        for (std::size_t i = 0; out.size() < 10 * 1000 * 1000; ++i) {
            FileRecord r;
            const auto n = static_cast<unsigned long long>(random.next());
            char text[128];
            std::snprintf(text, sizeof text, "gQ%010llxAAAAAAAA", n % 0xFFFFFFFFFFULL);
            r.uid = text;
            r.className = kClasses[random.below(3)];
            r.type = kTypes[random.below(4)];
            const int number = static_cast<int>(random.below(100000));
            std::snprintf(text, sizeof text,
                          "Pr\\u00fcfbericht %d \xc3\x9c"
                          "bersicht.pdf",
                          number);
            r.name = text;
            std::snprintf(text, sizeof text, "Scan \"%d\" of the \\u00c4nderungsantrag, page %d/%d",
                          number, static_cast<int>(random.below(40)), 40);
            r.description = text;
            std::snprintf(text, sizeof text, "vol_%02d", static_cast<int>(random.below(64)));
            r.volume = text;
            std::snprintf(text, sizeof text, "/srv/fms/%s/%06d/%s.pdf", r.volume.c_str(), number,
                          r.uid.c_str());
            r.path = text;
            r.mimeType = kMime[random.below(3)];
            std::snprintf(text, sizeof text, "%016llx", n);
            r.checksum = text;
            const long long size = 4000000000LL + static_cast<long long>(random.below(1U << 30U));
            r.size = static_cast<double>(size);
            r.blocks = static_cast<int>(size / 4096);
            r.offset = -static_cast<int>(random.below(100000));
            r.priority = -static_cast<int>(random.below(10));
            r.version = static_cast<int>(random.below(50));
            r.mode = 420;
            std::snprintf(text, sizeof text, "%.2g",
                          static_cast<double>(1 + random.below(99)) * 1e-7);
            r.ratio = std::strtod(text, nullptr);
            const std::string ratio = text;
            std::snprintf(text, sizeof text, "0.%03d", static_cast<int>(random.below(1000)));
            r.density = std::strtod(text, nullptr);
            const std::string density = text;
            std::snprintf(text, sizeof text, "%.4e",
                          static_cast<double>(random.below(800000)) / 100000.0);
            r.entropy = std::strtod(text, nullptr);
            const std::string entropy = text;
            std::snprintf(text, sizeof text, "%.3E",
                          static_cast<double>(1 + random.below(9999)) * 1e-6);
            r.latency = std::strtod(text, nullptr);
            const std::string latency = text;
            std::snprintf(text, sizeof text, "%d.%d", static_cast<int>(random.below(100)),
                          static_cast<int>(random.below(10)));
            r.score = std::strtod(text, nullptr);
            const std::string score = text;
            r.readOnly = random.below(2) == 0;
            r.archived = random.below(5) == 0;
            char dates[4][40];
            const std::string created = date(dates[0], sizeof dates[0]);
            const std::string modified = date(dates[1], sizeof dates[1]);
            const std::string accessed = date(dates[2], sizeof dates[2]);
            const std::string released = date(dates[3], sizeof dates[3]);
            r.created = ::Corvane::Soa::Common::DateTime(created);
            r.modified = ::Corvane::Soa::Common::DateTime(modified);
            r.accessed = ::Corvane::Soa::Common::DateTime(accessed);
            r.released = ::Corvane::Soa::Common::DateTime(released);
            std::snprintf(text, sizeof text, "uQ%08dAAAA", static_cast<int>(random.below(5000)));
            r.ownerUid = text;
            r.ownerName = random.below(2) == 0 ? "J\\u00f6rg M\\u00fcller"
                                               : "Ana Mar\xc3\xad"
                                                 "a";
            r.ownerGroup = kGroups[random.below(3)];
            r.ownerId = static_cast<int>(random.below(100000));
            std::snprintf(text, sizeof text, "%.1e",
                          static_cast<double>(1 + random.below(9)) * 1e10);
            r.ownerQuota = std::strtod(text, nullptr);
            const std::string quota = text;
            std::snprintf(text, sizeof text, "%d", static_cast<int>(1 + random.below(300)));
            r.attributes = {{"pages", text}, {"language", kLanguages[random.below(4)]}};
            r.tags = {"scan", r.volume};
            // The description's quote and the path's slashes are escaped in the text.
            std::string description;
            for (const char c : r.description) {
                if (c == '"') {
                    description += '\\';
                }
                description += c;
            }
            std::string path;
            for (const char c : r.path) {
                if (c == '/') {
                    path += '\\';
                }
                path += c;
            }
            std::snprintf(
                buffer, sizeof buffer,
                "%s    {\n      \"uid\": \"%s\",\n      \"className\": \"%s\",\n"
                "      \"type\": \"%s\",\n      \"name\": \"%s\",\n"
                "      \"description\": \"%s\",\n      \"volume\": \"%s\",\n"
                "      \"path\": \"%s\",\n      \"mimeType\": \"%s\",\n"
                "      \"checksum\": \"%s\",\n      \"size\": %lld,\n      \"blocks\": %d,\n"
                "      \"offset\": %d,\n      \"priority\": %d,\n      \"version\": %d,\n"
                "      \"mode\": %d,\n      \"ratio\": %s,\n      \"density\": %s,\n"
                "      \"entropy\": %s,\n      \"latency\": %s,\n      \"score\": %s,\n"
                "      \"readOnly\": %s,\n      \"archived\": %s,\n      \"deleted\": null,\n"
                "      \"created\": \"%s\",\n      \"modified\": \"%s\",\n"
                "      \"accessed\": \"%s\",\n      \"released\": \"%s\",\n"
                "      \"owner\": {\n        \"uid\": \"%s\",\n        \"name\": \"%s\",\n"
                "        \"group\": \"%s\",\n        \"id\": %d,\n        \"quota\": %s\n"
                "      },\n      \"attributes\": [\n"
                "        {\"name\": \"pages\", \"value\": \"%s\"},\n"
                "        {\"name\": \"language\", \"value\": \"%s\"}\n      ],\n"
                "      \"tags\": [\"scan\", \"%s\"]\n    }",
                i == 0 ? "" : ",\n", r.uid.c_str(), r.className.c_str(), r.type.c_str(),
                r.name.c_str(), description.c_str(), r.volume.c_str(), path.c_str(),
                r.mimeType.c_str(), r.checksum.c_str(), size, r.blocks, r.offset, r.priority,
                r.version, r.mode, ratio.c_str(), density.c_str(), entropy.c_str(), latency.c_str(),
                score.c_str(), r.readOnly ? "true" : "false", r.archived ? "true" : "false",
                created.c_str(), modified.c_str(), accessed.c_str(), released.c_str(),
                r.ownerUid.c_str(), r.ownerName.c_str(), r.ownerGroup.c_str(), r.ownerId,
                quota.c_str(), r.attributes[0].value.c_str(), r.attributes[1].value.c_str(),
                r.volume.c_str());
            out += buffer;
            reply.records.push_back(std::move(r));
        }
        out += "\n  ]\n}\n";
        return reply;
    }();
    return built;
}

}  // namespace cvsoa::bench

#endif
