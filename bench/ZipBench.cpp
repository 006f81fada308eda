// Reading every entry of a ~100 MB zip archive with ZipArchive, against libzip
// (zip_fopen_index/zip_fread) in the same program. The archive is made once with libzip in the
// temporary directory: text that deflates well, random bytes stored, and many small files.
#include <corvane/soa/common/ZipArchive.hpp>

#include <benchmark/benchmark.h>
#include <unistd.h>
#include <zip.h>

#include "RatioReporter.hpp"
#include "SplitMix.hpp"

#include <cstdint>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Corvane::Soa::Common::ZipArchive;
using Corvane::Soa::Common::ZipEntry;
using Random = cvsoa::bench::SplitMix;

constexpr int kTextFiles = 20;
constexpr std::size_t kTextBytes = 2 * 1000 * 1000;
constexpr int kRandomFiles = 10;
constexpr std::size_t kRandomBytes = 4 * 1000 * 1000;
constexpr int kSmallFiles = 5000;
constexpr std::size_t kSmallBytes = 4000;

std::string text(Random& random, std::size_t size) {
    static const char* const words[] = {"item",     "revision", "dataset", "folder",  "owner",
                                        "released", "pending",  "part",    "drawing", "\n"};
    std::string out;
    out.reserve(size + 16);
    while (out.size() < size) {
        out += words[random.below(10)];
        out += random.below(8) == 0 ? " " + std::to_string(random.below(100000)) + " " : " ";
    }
    out.resize(size);
    return out;
}

std::string randomBytes(Random& random, std::size_t size) {
    std::string out(size, '\0');
    for (std::size_t i = 0; i + 8 <= size; i += 8) {
        const std::uint64_t value = random.next();
        for (std::size_t b = 0; b < 8; ++b) {
            out[i + b] = static_cast<char>(value >> (8 * b));
        }
    }
    return out;
}

// The archive, made on first use; its data stay alive until libzip has written it.
struct BenchArchive {
    std::string path;
    std::uint64_t bytes = 0;  // uncompressed, all entries
    std::size_t entries = 0;

    BenchArchive() {
        path = (std::filesystem::temp_directory_path() /
                ("cvsoa-zip-bench-" + std::to_string(::getpid()) + ".zip"))
                   .string();
        Random random(20161205);
        std::vector<std::string> data;
        std::vector<std::string> names;
        std::vector<bool> stored;
        const auto add = [&](std::string name, std::string bytes, bool store) {
            names.push_back(std::move(name));
            data.push_back(std::move(bytes));
            stored.push_back(store);
        };
        for (int i = 0; i < kTextFiles; ++i) {
            add("text/" + std::to_string(i) + ".txt", text(random, kTextBytes), false);
        }
        for (int i = 0; i < kRandomFiles; ++i) {
            add("random/" + std::to_string(i) + ".bin", randomBytes(random, kRandomBytes), true);
        }
        for (int i = 0; i < kSmallFiles; ++i) {
            add("small/" + std::to_string(i / 100) + "/" + std::to_string(i) + ".txt",
                text(random, kSmallBytes / 2 + random.below(kSmallBytes)), false);
        }
        int error = 0;
        zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
        if (archive == nullptr) {
            throw std::runtime_error("cannot create " + path);
        }
        for (std::size_t i = 0; i < data.size(); ++i) {
            zip_source_t* source = zip_source_buffer(archive, data[i].data(), data[i].size(), 0);
            const zip_int64_t index =
                zip_file_add(archive, names[i].c_str(), source, ZIP_FL_ENC_UTF_8);
            if (index < 0) {
                throw std::runtime_error(zip_strerror(archive));
            }
            zip_set_file_compression(archive, static_cast<zip_uint64_t>(index),
                                     stored[i] ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 0);
            bytes += data[i].size();
        }
        if (zip_close(archive) != 0) {
            throw std::runtime_error(zip_strerror(archive));
        }
        entries = data.size();
    }
    BenchArchive(const BenchArchive&) = delete;
    BenchArchive& operator=(const BenchArchive&) = delete;
    ~BenchArchive() { std::filesystem::remove(path); }
};

const BenchArchive& benchArchive() {
    static const BenchArchive archive;
    return archive;
}

void zipArchive(benchmark::State& state) {
    const BenchArchive& made = benchArchive();
    std::uint64_t total = 0;
    for (auto _ : state) {
        total = 0;
        const ZipArchive archive(made.path);
        for (const ZipEntry& entry : archive.getEntries()) {
            const std::string data = archive.read(entry);
            total += data.size();
            benchmark::DoNotOptimize(data.data());
        }
    }
    if (total != made.bytes) {
        state.SkipWithError("ZipArchive did not read every byte");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * made.bytes));
}

void libzip(benchmark::State& state) {
    const BenchArchive& made = benchArchive();
    std::uint64_t total = 0;
    for (auto _ : state) {
        total = 0;
        int error = 0;
        zip_t* archive = zip_open(made.path.c_str(), ZIP_RDONLY, &error);
        if (archive == nullptr) {
            state.SkipWithError("zip_open failed");
            break;
        }
        const zip_int64_t count = zip_get_num_entries(archive, 0);
        for (zip_int64_t i = 0; i < count; ++i) {
            const auto index = static_cast<zip_uint64_t>(i);
            zip_stat_t stat;
            zip_stat_index(archive, index, 0, &stat);
            std::string data(static_cast<std::size_t>(stat.size), '\0');
            zip_file_t* file = zip_fopen_index(archive, index, 0);
            if (file == nullptr || zip_fread(file, data.data(), data.size()) !=
                                       static_cast<zip_int64_t>(data.size())) {
                state.SkipWithError("zip_fread failed");
            }
            zip_fclose(file);
            total += data.size();
            benchmark::DoNotOptimize(data.data());
        }
        zip_discard(archive);
    }
    if (total != made.bytes) {
        state.SkipWithError("libzip did not read every byte");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * made.bytes));
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    const BenchArchive& made = benchArchive();
    for (const auto& [name, function] :
         {std::pair{"zip/ZipArchive", zipArchive}, std::pair{"zip/libzip", libzip}}) {
        benchmark::RegisterBenchmark(name, function)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Repetitions(5);
    }
    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::cout << "archive: " << made.entries << " entries, " << made.bytes
              << " bytes uncompressed, " << std::filesystem::file_size(made.path)
              << " bytes on disk\n";
    reporter.printRatio(std::cout, "ZipArchive/libzip", "zip/libzip/real_time",
                        "zip/ZipArchive/real_time", "reading every entry; target >= 1");
    benchmark::Shutdown();
    return 0;
}
