// Shift_JIS to UTF-8 and back through Utf8String, against ICU's ucnv_convert converting the
// whole buffer each way. Both run on the same 10 MB of local text; the ratio follows the table.
#include <corvane/soa/common/xml/Utf8String.hpp>

#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>

#include "RatioReporter.hpp"
#include "SplitMix.hpp"

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Corvane::Soa::Common::Xml::Utf8String;

constexpr std::size_t kLocalBytes = 10 * 1000 * 1000;
constexpr const char* kCodePage = "Shift_JIS";

using Random = cvsoa::bench::SplitMix;

// Converts with ucnv_convert into a buffer of `capacity` bytes; throws on failure.
std::string convert(const char* to, const char* from, const std::string& text,
                    std::size_t capacity) {
    std::string out(capacity, '\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = ucnv_convert(to, from, out.data(), static_cast<int32_t>(out.size()),
                                        text.data(), static_cast<int32_t>(text.size()), &status);
    if (U_FAILURE(status)) {
        throw std::runtime_error(std::string("ucnv_convert: ") + u_errorName(status));
    }
    out.resize(static_cast<std::size_t>(length));
    return out;
}

// Words of the kind local text holds: kanji, hiragana, katakana (full and half width),
// Japanese punctuation, and ASCII part numbers and names.
const std::vector<std::string>& words() {
    static const std::vector<std::string> list = {
        "\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e",                          // 日本語
        "\xe9\x83\xa8\xe5\x93\x81",                                      // 部品
        "\xe8\xa8\xad\xe8\xa8\x88",                                      // 設計
        "\xe8\xa3\xbd\xe9\x80\xa0",                                      // 製造
        "\xe5\x9b\xb3\xe9\x9d\xa2",                                      // 図面
        "\xe6\x89\xbf\xe8\xaa\x8d",                                      // 承認
        "\xe6\x94\xb9\xe8\xa8\x82",                                      // 改訂
        "\xe7\x95\xaa\xe5\x8f\xb7",                                      // 番号
        "\xe6\xa0\xaa\xe5\xbc\x8f\xe4\xbc\x9a\xe7\xa4\xbe",              // 株式会社
        "\xe6\x9d\xb1\xe4\xba\xac",                                      // 東京
        "\xe5\xa4\xa7\xe9\x98\xaa",                                      // 大阪
        "\xe3\x81\xae",                                                  // の
        "\xe3\x81\xaf",                                                  // は
        "\xe3\x82\x92",                                                  // を
        "\xe3\x81\xab",                                                  // に
        "\xe3\x81\xa7\xe3\x81\x99",                                      // です
        "\xe3\x81\x97\xe3\x81\xbe\xe3\x81\x97\xe3\x81\x9f",              // しました
        "\xe3\x82\xa2\xe3\x82\xa4\xe3\x83\x86\xe3\x83\xa0",              // アイテム
        "\xe3\x83\xaa\xe3\x83\x93\xe3\x82\xb8\xe3\x83\xa7\xe3\x83\xb3",  // リビジョン
        "\xe3\x83\x87\xe3\x83\xbc\xe3\x82\xbf\xe3\x82\xbb\xe3\x83\x83\xe3\x83\x88",  // データセット
        "\xe3\x83\x95\xe3\x82\xa9\xe3\x83\xab\xe3\x83\x80",                          // フォルダ
        "\xef\xbe\x83\xef\xbd\xbd\xef\xbe\x84",                                      // ﾃｽﾄ
        "\xe3\x80\x81",                                                              // 、
        "\xe3\x80\x82",                                                              // 。
        "\xe3\x80\x8c",                                                              // 「
        "\xe3\x80\x8d",                                                              // 」
        "\xef\xbc\x88\xef\xbc\x91\xef\xbc\x89",                                      // （１）
        "ITEM-",
        "A",
        "rev ",
        "Bracket ",
        " ",
        "\n"};
    return list;
}

// About 10 MB of Shift_JIS, made once from generated UTF-8 text with ucnv_convert.
const std::string& shiftJisText() {
    static const std::string text = [] {
        std::vector<std::size_t> localSizes;
        for (const std::string& word : words()) {
            localSizes.push_back(convert(kCodePage, "UTF-8", word, 4 * word.size() + 16).size());
        }
        Random random(20161205);
        std::string utf8;
        std::size_t localSize = 0;
        while (localSize < kLocalBytes) {
            const std::size_t pick = random.below(words().size());
            utf8 += words()[pick];
            localSize += localSizes[pick];
            if (words()[pick] == "ITEM-") {
                const std::string number = std::to_string(100000 + random.below(900000));
                utf8 += number;
                localSize += number.size();
            }
        }
        return convert(kCodePage, "UTF-8", utf8, utf8.size() + 16);
    }();
    return text;
}

void codePageUtf8String(benchmark::State& state) {
    const std::string& local = shiftJisText();
    Utf8String converter(kCodePage);
    std::string utf8;
    std::string back;
    for (auto _ : state) {
        utf8.clear();
        back.clear();
        converter.encode(local, utf8);
        converter.decode(utf8, back);
        benchmark::DoNotOptimize(back.data());
    }
    if (back != local) {
        state.SkipWithError("Utf8String did not give back the text it was given");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * local.size()));
}

void codePageIcu(benchmark::State& state) {
    const std::string& local = shiftJisText();
    // A half-width katakana byte becomes three bytes of UTF-8.
    std::string utf8(3 * local.size() + 16, '\0');
    std::string back(local.size() + 16, '\0');
    int32_t backLength = 0;
    for (auto _ : state) {
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length =
            ucnv_convert("UTF-8", kCodePage, utf8.data(), static_cast<int32_t>(utf8.size()),
                         local.data(), static_cast<int32_t>(local.size()), &status);
        backLength = ucnv_convert(kCodePage, "UTF-8", back.data(),
                                  static_cast<int32_t>(back.size()), utf8.data(), length, &status);
        if (U_FAILURE(status)) {
            state.SkipWithError(u_errorName(status));
            break;
        }
        benchmark::DoNotOptimize(back.data());
    }
    if (local.compare(0, local.size(), back, 0, static_cast<std::size_t>(backLength)) != 0) {
        state.SkipWithError("ucnv_convert did not give back the text it was given");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * local.size()));
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RegisterBenchmark("codepage/Utf8String", codePageUtf8String)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("codepage/ucnv_convert", codePageIcu)
        ->Unit(benchmark::kMillisecond);
    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::cout << "Shift_JIS text: " << shiftJisText().size() << " bytes, to UTF-8 and back\n";
    reporter.printTimeRatio(std::cout, "Utf8String/ucnv_convert", "codepage/Utf8String",
                            "codepage/ucnv_convert", "target <= 1.5");
    benchmark::Shutdown();
    return 0;
}
