// Hostile and damaged archives, built byte by byte: each is refused with a message naming the
// archive and the entry, and extraction leaves nothing of a refused entry behind.
#include <gtest/gtest.h>

#include "ZipBuilder.hpp"

#include <corvane/soa/common/ZipArchive.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Corvane::Soa::Common::ZipArchive;
using Corvane::Soa::Common::ZipLimits;
using Corvane::Soa::Common::Exceptions::IOException;

class ZipRefusal : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() /
                ("cvsoa-zip-" + std::to_string(::getpid()) + "-" +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
        m_path = (m_dir / "a.zip").string();
    }
    void TearDown() override { fs::remove_all(m_dir); }

    // A message about the archive: "PATH: what".
    std::string said(const std::string& what) const { return m_path + ": " + what; }

    void write(const std::string& bytes) const { std::ofstream(m_path, std::ios::binary) << bytes; }

    // The message of what `action` throws, or "no exception".
    template <class Action>
    static std::string thrown(Action action) {
        try {
            action();
        } catch (const IOException& e) {
            return e.getMessage();
        }
        return "no exception";
    }

    static std::set<std::string> listing(const fs::path& dir) {
        std::set<std::string> names;
        for (const auto& item : fs::recursive_directory_iterator(dir)) {
            names.insert(item.path().lexically_relative(dir).string());
        }
        return names;
    }

    fs::path m_dir;
    std::string m_path;
};

TEST_F(ZipRefusal, RefusesDamagedAndHostileArchivesNamingArchiveAndEntry) {
    const std::string ten = "0123456789";
    const auto one = [](ZipBuilderEntry entry) { return zipArchiveBytes({std::move(entry)}); };
    const std::string good = one({"a", ten});
    std::string multiDisk = good;
    multiDisk[multiDisk.size() - 18] = 1;  // the end record's disk number
    std::string overlapsDirectory = good;
    overlapsDirectory[18] = 60;  // the local header's compressed size, unread
    overlapsDirectory[good.find("PK\x01\x02") + 20] = 60;
    const ZipLimits small = ZipLimits().setMaxEntrySize(4);
    const struct {
        const char* what;
        std::string bytes;
        ZipLimits limits;
        std::string message;  // after "a.zip: "
    } cases[] = {
        {"not an archive",
         "hello, world",
         {},
         "no end of central directory record: not a zip archive, or a truncated one"},
        {"truncated",
         good.substr(0, good.size() - 10),
         {},
         "no end of central directory record: not a zip archive, or a truncated one"},
        {"multi-disk",
         multiDisk,
         {},
         "the archive spans several disks; multi-disk archives cannot be read"},
        {"two entries sharing data",
         zipArchiveBytes({{"a", ten}, {"b", ten, 0, 0, 0x314, 0100644, {}, {}, {}, 0}}),
         {},
         "a: its data overlap those of b; archives with overlapping entries are refused"},
        {"data over the central directory",
         overlapsDirectory,
         {},
         "a: its data overlap the central directory; archives with overlapping entries are "
         "refused"},
        {"encrypted",
         one({"a", ten, 0, 1}),
         {},
         "a: the entry is encrypted; encrypted entries cannot be read"},
        {"bzip2",
         one({"a", ten, 12}),
         {},
         "a: the entry uses compression method 12; only stored (0) and deflated (8) entries can "
         "be read"},
        {"CRC",
         one({"a", ten, 8, 0, 0x314, 0100644, 1}),
         {},
         "a: CRC-32 mismatch: the archive says 00000001, the data give a684c7c6"},
        {"growing",
         one({"a", ten, 8, 0, 0x314, 0100644, {}, 5}),
         {},
         "a: the data grow past the declared size of 5 bytes"},
        {"short",
         one({"a", ten, 8, 0, 0x314, 0100644, {}, 12}),
         {},
         "a: the data end after 10 bytes, short of the declared 12"},
        {"stored sizes differ",
         one({"a", ten, 0, 0, 0x314, 0100644, {}, 12}),
         {},
         "a: the entry is stored, but declares 12 bytes in 10"},
        {"entry limit", one({"a", ten}), small,
         "a: the entry declares 10 bytes, more than the limit of 4 bytes an entry"},
        {"ratio",
         one({"a", ten, 8, 0, 0x314, 0100644, {}, 3u << 20U}),
         {},
         "a: the entry expands 15 bytes to 3145728, beyond the limit of 1000 to 1"},
        {"damaged deflate data",
         one({"a", ten, 8, 0, 0x314, 0100644, {}, {}, "\xff\xff"}),
         {},
         "a: the deflated data are damaged (invalid block type)"},
        {"deflate data cut short",
         one({"a", ten, 8, 0, 0x314, 0100644, {}, {}, "\x01\x0a\x00"}),
         {},
         "a: the deflated data end before their last block: the entry is truncated"},
    };
    for (const auto& c : cases) {
        write(c.bytes);
        EXPECT_EQ(thrown([&] {
                      const ZipArchive archive(m_path, c.limits);
                      for (const auto& entry : archive.getEntries()) {
                          archive.read(entry);
                      }
                  }),
                  said(c.message))
            << c.what;
        // Each refusal of an entry refuses testing and extraction too, writing nothing.
        EXPECT_NE(thrown([&] { ZipArchive(m_path, c.limits).test(); }), "no exception") << c.what;
        EXPECT_NE(thrown([&] { ZipArchive(m_path, c.limits).extractAll((m_dir / "x").string()); }),
                  "no exception")
            << c.what;
        EXPECT_TRUE(!fs::exists(m_dir / "x") || fs::is_empty(m_dir / "x")) << c.what;
    }
}

TEST_F(ZipRefusal, RefusesUnsafeNamesBeforeWritingAnything) {
    const struct {
        const char* name;
        const char* why;
    } cases[] = {
        {"/etc/passwd", "the name is absolute"},
        {"../up", "the name holds a \"..\" part"},
        {"a/../../up", "the name holds a \"..\" part"},
        {"a/..", "the name holds a \"..\" part"},
        {"a\\b", "the name holds a backslash"},
        {"C:/x", "the name starts with a drive letter"},
        {"c:x", "the name starts with a drive letter"},
    };
    for (const auto& c : cases) {
        write(zipArchiveBytes({{"first.txt", "ok"}, {c.name, "bad"}}));
        EXPECT_EQ(thrown([&] { ZipArchive(m_path).extractAll((m_dir / "out").string()); }),
                  said(std::string(c.name)
                           .append(": refused: ")
                           .append(c.why)
                           .append("; nothing was extracted")));
        EXPECT_FALSE(fs::exists(m_dir / "out")) << c.name;
        EXPECT_FALSE(fs::exists(m_dir / "up")) << c.name;
    }
}

TEST_F(ZipRefusal, NeverWritesThroughOrCreatesSymbolicLinks) {
    const fs::path out = m_dir / "out";
    const fs::path outside = m_dir / "outside";
    fs::create_directories(out);
    fs::create_directories(outside);
    fs::create_directory_symlink(outside, out / "link");
    ZipBuilderEntry link{"made-link", "/etc"};
    link.mode = 0120777;
    write(zipArchiveBytes({link, {"plain.txt", "plain"}, {"link/escaped.txt", "bad"}}));
    EXPECT_EQ(thrown([&] { ZipArchive(m_path).extractAll(out.string()); }),
              m_path + ": link/escaped.txt: refused: " + out.string() +
                  "/link is a symbolic link, which could lead outside " + out.string());
    EXPECT_TRUE(fs::is_empty(outside));
    EXPECT_EQ(listing(out), (std::set<std::string>{"link", "plain.txt"}));
}

TEST_F(ZipRefusal, AnEntryThatFailsLeavesNoFileBehind) {
    ZipBuilderEntry bad{"dir/bad.txt", "bad"};
    bad.crc = 7;
    write(zipArchiveBytes({{"dir/good.txt", "good"}, bad, {"later.txt", "later"}}));
    const fs::path out = m_dir / "out";
    EXPECT_NE(thrown([&] { ZipArchive(m_path).extractAll(out.string()); }), "no exception");
    EXPECT_EQ(listing(out), (std::set<std::string>{"dir", "dir/good.txt"}));
}

TEST_F(ZipRefusal, NamesFromOtherSystemsAreCodePage437) {
    ZipBuilderEntry dos{"\x81\x62\x65r.txt", "x"};  // "über" in code page 437
    dos.versionMadeBy = 20;
    ZipBuilderEntry unixLatin1{"\xfc\x62\x65r.txt", "x"};  // not UTF-8: code page 437 too
    ZipBuilderEntry flagged{"\xc3\xbc\x62\x65r.txt", "x"};
    flagged.flags = 1U << 11U;
    write(zipArchiveBytes({dos, unixLatin1, flagged}));
    const ZipArchive archive(m_path);
    ASSERT_EQ(archive.getEntries().size(), 3U);
    EXPECT_EQ(archive.getEntries()[0].getName(), "\xc3\xbc\x62\x65r.txt");
    EXPECT_EQ(archive.getEntries()[1].getName(), "\xe2\x81\xbf\x62\x65r.txt");  // U+207F
    EXPECT_EQ(archive.getEntries()[2].getName(), "\xc3\xbc\x62\x65r.txt");
}

}  // namespace
