// Archives made by Info-ZIP zip and by Python's zipfile read here as unzip and zipfile read
// them: the same names (unzip -Z1), sizes, CRC-32s, methods and dates (zipfile), the same verdict
// (unzip -t) and the same extracted files (unzip -d).
#include <gtest/gtest.h>

#include "RunCommand.hpp"

#include <corvane/soa/common/ZipArchive.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Corvane::Soa::Common::ZipArchive;
using Corvane::Soa::Common::ZipEntry;
using Corvane::Soa::Common::Exceptions::IOException;

constexpr const char* kOracle = R"(import sys, zipfile
with zipfile.ZipFile(sys.argv[1]) as z:
    for i in z.infolist():
        print(i.file_size, i.CRC, i.compress_size, i.compress_type,
              '%04d%02d%02d%02d%02d%02d' % i.date_time)
)";

constexpr const char* kMaker = R"(import sys, zipfile
with zipfile.ZipFile(sys.argv[1], 'w', zipfile.ZIP_DEFLATED) as z:
    for n in range(int(sys.argv[2])):
        z.writestr('many/%05d.txt' % n, 'entry %d\n' % n * (n % 7), zipfile.ZIP_STORED)
    z.writestr('\u00fcn\u00efcode/\u540d\u524d.txt', 'UTF-8 names are flagged\n')
    z.writestr(zipfile.ZipInfo('dir/'), '')
    with z.open('zip64.bin', 'w', force_zip64=True) as f:
        f.write(bytes(range(256)) * 1000)
)";

std::string slurp(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        out.push_back(line);
    }
    return out;
}

// Relative path to content ("<dir>" for a directory) of everything under `dir`.
std::map<std::string, std::string> tree(const fs::path& dir) {
    std::map<std::string, std::string> files;
    for (const auto& item : fs::recursive_directory_iterator(dir)) {
        files[item.path().lexically_relative(dir).string()] =
            item.is_directory() ? "<dir>" : slurp(item.path());
    }
    return files;
}

class ZipArchiveInterop : public ::testing::Test {
protected:
    void SetUp() override {
        if (runCommand("command -v zip && command -v unzip && command -v python3").status != 0) {
            GTEST_SKIP() << "zip, unzip or python3 is missing (scripts/install-deps installs them)";
        }
        m_dir = fs::temp_directory_path() /
                ("cvsoa-zip-" + std::to_string(::getpid()) + "-" +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
        std::ofstream(m_dir / "oracle.py") << kOracle;
        std::ofstream(m_dir / "maker.py") << kMaker;
    }
    void TearDown() override { fs::remove_all(m_dir); }

    CommandOutcome run(const std::string& command) const {
        return runCommand("cd '" + m_dir.string() + "' && LC_ALL=C.UTF-8 " + command);
    }

    // Compares what is read here with what unzip and zipfile read; `extract` compares the files
    // written by extractAll with those unzip writes.
    void expectSameAsTools(const std::string& name, bool extract) const {
        const std::string path = (m_dir / name).string();
        const ZipArchive archive(path);
        std::vector<std::string> names;
        std::vector<std::string> fields;
        char line[128];
        for (const ZipEntry& entry : archive.getEntries()) {
            names.push_back(entry.getName());
            const auto t = entry.getModificationTime();
            std::snprintf(line, sizeof line, "%llu %u %llu %u %04d%02d%02d%02d%02d%02d",
                          static_cast<unsigned long long>(entry.getSize()), entry.getCrc32(),
                          static_cast<unsigned long long>(entry.getCompressedSize()),
                          entry.getMethod(), t.year(), t.month(), t.day(), t.hour(), t.minute(),
                          t.second());
            fields.emplace_back(line);
        }
        EXPECT_EQ(names, lines(run("unzip -Z1 " + name).output)) << name;
        EXPECT_EQ(fields, lines(run("python3 oracle.py " + name).output)) << name;
        EXPECT_EQ(run("unzip -tq " + name + " >/dev/null 2>&1").status, 0) << name;
        EXPECT_NO_THROW(archive.test()) << name;
        if (extract) {
            ASSERT_EQ(run("unzip -qo " + name + " -d by-unzip").status, 0);
            archive.extractAll((m_dir / "by-us").string());
            EXPECT_EQ(tree(m_dir / "by-us"), tree(m_dir / "by-unzip")) << name;
            fs::remove_all(m_dir / "by-us");
            fs::remove_all(m_dir / "by-unzip");
        }
    }

    fs::path m_dir;
};

TEST_F(ZipArchiveInterop, ReadsInfoZipArchivesAsUnzipDoes) {
    const fs::path src = m_dir / "src";
    fs::create_directories(src / "dir" / "sub");
    fs::create_directories(src / "emptydir");
    std::string text;
    for (int i = 0; i < 3000; ++i) {
        text += "line " + std::to_string(i) + " of a text that deflates well\n";
    }
    std::string random(40000, '\0');
    std::uint32_t state = 20161205;
    for (char& c : random) {
        state = state * 1664525U + 1013904223U;
        c = static_cast<char>(state >> 24U);
    }
    std::ofstream(src / "text.txt", std::ios::binary) << text;
    std::ofstream(src / "random.bin", std::ios::binary) << random;
    std::ofstream empty(src / "empty.txt");
    std::ofstream(src / "dir" / "sub" / "nested.txt") << "nested\n";
    std::ofstream(src / "Gr\xc3\xbc\xc3\x9f\x65.txt") << "a UTF-8 name\n";
    ASSERT_EQ(run("cd src && zip -qr ../deflated.zip . && zip -qr0 ../stored.zip . && "
                  "zip -qr -fz ../zip64.zip .")
                  .status,
              0);

    expectSameAsTools("deflated.zip", true);
    expectSameAsTools("stored.zip", true);
    expectSameAsTools("zip64.zip", false);

    const ZipArchive archive((m_dir / "deflated.zip").string());
    const ZipEntry* entry = archive.find("text.txt");
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->getMethod(), ZipEntry::kDeflated);
    EXPECT_EQ(archive.read(*entry), text);
    std::ostringstream streamed;
    archive.read(*archive.find("random.bin"), streamed);
    EXPECT_EQ(streamed.str(), random);
    EXPECT_TRUE(archive.find("emptydir/")->isDirectory());
    EXPECT_EQ(archive.read(*archive.find("empty.txt")), "");

    // A damaged byte of deflated data: unzip and this reader both find the entry wrong.
    std::string bytes = slurp(m_dir / "deflated.zip");
    const std::size_t header = entry->getRecord().localHeaderOffset;
    const auto field = [&](std::size_t at) {
        return static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1])
                                                           << 8U;
    };
    bytes[header + 30 + field(header + 26) + field(header + 28) + 100] ^= 0x55;
    std::ofstream(m_dir / "damaged.zip", std::ios::binary) << bytes;
    EXPECT_NE(run("unzip -tq damaged.zip >/dev/null 2>&1").status, 0);
    const ZipArchive damaged((m_dir / "damaged.zip").string());
    EXPECT_THROW(damaged.test(*damaged.find("text.txt")), IOException);
}

TEST_F(ZipArchiveInterop, ReadsZipfileArchivesWithManyEntriesAndZip64) {
    ASSERT_EQ(run("python3 maker.py many.zip 70000").status, 0);
    expectSameAsTools("many.zip", false);
    const ZipArchive archive((m_dir / "many.zip").string());
    ASSERT_EQ(archive.getEntries().size(), 70003U);
    EXPECT_EQ(archive.read(archive.getEntries()[9]), "entry 9\nentry 9\n");
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        for (int b = 0; b < 256; ++b) {
            expected += static_cast<char>(b);
        }
    }
    EXPECT_EQ(archive.read(*archive.find("zip64.bin")), expected);

    ASSERT_EQ(run("python3 maker.py small.zip 3").status, 0);
    expectSameAsTools("small.zip", true);
}

}  // namespace
