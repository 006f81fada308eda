// SHA-256 of a 256 MB file: Digest::ofFile, which reads the file in blocks, against the crypto
// library's one-shot EVP_Digest over the same bytes already in memory (the floor: no reading at
// all) and over the file mapped into memory. The file is made once, in a temporary directory,
// and is in the page cache for every run. CVSOA_BENCH_DIGEST_MB sets another size.
#include "RatioReporter.hpp"
#include "SplitMix.hpp"

#include <corvane/soa/common/Digest.hpp>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <openssl/evp.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

namespace {

using Corvane::Soa::Common::Digest;

std::size_t fileSize() {
    const char* megabytes = std::getenv("CVSOA_BENCH_DIGEST_MB");
    return (megabytes != nullptr ? std::strtoull(megabytes, nullptr, 10) : 256) << 20U;
}

std::string& directory() {
    static std::string path = [] {
        std::string pattern = "/tmp/cvsoa-digest-bench-XXXXXX";
        return ::mkdtemp(pattern.data()) != nullptr ? pattern : std::string("/tmp");
    }();
    return path;
}

const std::string& filePath() {
    static const std::string path = directory() + "/large.bin";
    return path;
}

// The file's bytes, generated once and written to the file.
const std::string& contents() {
    static const std::string bytes = [] {
        std::string generated(fileSize(), '\0');
        cvsoa::bench::SplitMix random(20261125);
        for (std::size_t i = 0; i + 8 <= generated.size(); i += 8) {
            const std::uint64_t word = random.next();
            std::memcpy(&generated[i], &word, 8);
        }
        std::ofstream(filePath(), std::ios::binary)
            .write(generated.data(), static_cast<std::streamsize>(generated.size()));
        return generated;
    }();
    return bytes;
}

std::string evpHex(const void* data, std::size_t size) {
    Digest::Bytes bytes{};
    EVP_Digest(data, size, bytes.data(), nullptr, EVP_sha256(), nullptr);
    return Digest::toHex(bytes);
}

void finish(benchmark::State& state, const std::string& hex) {
    if (hex != evpHex(contents().data(), contents().size())) {
        state.SkipWithError("the digest differs from EVP_Digest's");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(contents().size()));
}

void digestOfFile(benchmark::State& state) {
    contents();
    std::string hex;
    for (auto _ : state) {
        hex = Digest::toHex(Digest::ofFile(filePath()));
        benchmark::DoNotOptimize(hex.data());
    }
    finish(state, hex);
}

void evpDigestInMemory(benchmark::State& state) {
    const std::string& bytes = contents();
    std::string hex;
    for (auto _ : state) {
        hex = evpHex(bytes.data(), bytes.size());
        benchmark::DoNotOptimize(hex.data());
    }
    finish(state, hex);
}

void evpDigestMapped(benchmark::State& state) {
    contents();
    std::string hex;
    for (auto _ : state) {
        const int file = ::open(filePath().c_str(), O_RDONLY);
        void* mapped = ::mmap(nullptr, fileSize(), PROT_READ, MAP_PRIVATE | MAP_POPULATE, file, 0);
        if (mapped == MAP_FAILED) {
            ::close(file);
            state.SkipWithError("the file cannot be mapped");
            return;
        }
        hex = evpHex(mapped, fileSize());
        ::munmap(mapped, fileSize());
        ::close(file);
        benchmark::DoNotOptimize(hex.data());
    }
    finish(state, hex);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    constexpr int kRepetitions = 7;
    const struct {
        const char* name;
        void (*function)(benchmark::State&);
    } benchmarks[] = {
        {"digest/Digest::ofFile", digestOfFile},
        {"digest/EVP_Digest in memory", evpDigestInMemory},
        {"digest/EVP_Digest mapped", evpDigestMapped},
    };
    for (const auto& [name, function] : benchmarks) {
        benchmark::RegisterBenchmark(name, function)
            ->Unit(benchmark::kMillisecond)
            ->Repetitions(kRepetitions);
    }
    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::cout << "file: " << (fileSize() >> 20U) << " MB\n";
    reporter.printThroughput(std::cout, "digest/Digest::ofFile", fileSize(), "read in blocks");
    reporter.printTimeRatio(std::cout, "Digest::ofFile/EVP_Digest in memory",
                            "digest/Digest::ofFile", "digest/EVP_Digest in memory",
                            "target <= 1.05");
    reporter.printTimeRatio(std::cout, "Digest::ofFile/EVP_Digest mapped", "digest/Digest::ofFile",
                            "digest/EVP_Digest mapped", "target <= 1.05");
    benchmark::Shutdown();
    std::remove(filePath().c_str());
    ::rmdir(directory().c_str());
    return 0;
}
