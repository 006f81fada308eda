// cvsoa zip list|test|extract, run as a program on archives built byte by byte.
#include <gtest/gtest.h>

#include "RunCommand.hpp"
#include "ZipBuilder.hpp"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#ifdef CVSOA_TOOL

namespace {

namespace fs = std::filesystem;

TEST(ZipCommand, ListsTestsAndExtractsOrExplains) {
    const fs::path dir =
        fs::temp_directory_path() / ("cvsoa-zip-command-" + std::to_string(::getpid()));
    fs::remove_all(dir);
    fs::create_directories(dir);
    ZipBuilderEntry folder{"docs/", ""};
    folder.mode = 040755;
    ZipBuilderEntry wrong{"b.txt", "0123456789"};
    wrong.crc = 1;
    ZipBuilderEntry unsafe{"../b.txt", "0123456789"};
    std::ofstream(dir / "good.zip", std::ios::binary)
        << zipArchiveBytes({folder, {"docs/a.txt", "hello\n", 8}, {"b.txt", "0123456789"}});
    std::ofstream(dir / "bad.zip", std::ios::binary)
        << zipArchiveBytes({folder, {"docs/a.txt", "hello\n", 8}, wrong});
    std::ofstream(dir / "unsafe.zip", std::ios::binary) << zipArchiveBytes({unsafe});
    std::ofstream(dir / "text.txt") << "not an archive";
    const std::string listing =
        " Length   Method    Size  Cmpr    Date    Time   CRC-32   Name\n"
        "--------  ------  ------- ---- ---------- ----- --------  ----\n"
        "       0  Stored        0   0% 2016-12-05 14:03 00000000  docs/\n"
        "       6  Defl:N       11   0% 2016-12-05 14:03 363a3020  docs/a.txt\n"
        "      10  Stored       10   0% 2016-12-05 14:03 a684c7c6  b.txt\n"
        "--------          -------  ---                            -------\n"
        "      16               21   0%                            3 files\n";
    const std::string hint = "\nName a zip archive, or - to read one from standard input.\n";
    const struct {
        std::string arguments;
        int status;
        std::string output;
    } cases[] = {
        {"list good.zip", 0, listing},
        {"list - < good.zip", 0, listing},
        {"test good.zip", 0,
         "docs/: OK\ndocs/a.txt: OK\nb.txt: OK\ngood.zip: no errors in 3 entries\n"},
        {"test bad.zip", 1,
         "docs/: OK\ndocs/a.txt: OK\nb.txt: CRC-32 mismatch: the archive says 00000001, the data "
         "give a684c7c6\nbad.zip: 1 of 3 entries are damaged or cannot be read\n"},
        {"extract good.zip -o out", 0, "good.zip: 3 entries extracted into out\n"},
        {"extract unsafe.zip -o out2", 1,
         "cvsoa zip: unsafe.zip: ../b.txt: refused: the name holds a \"..\" part; nothing was "
         "extracted\n"},
        {"list text.txt", 1,
         "cvsoa zip: text.txt: no end of central directory record: not a zip archive, or a "
         "truncated one" +
             hint},
        {"test - < text.txt", 1,
         "cvsoa zip: standard input: no end of central directory record: not a zip archive, or a "
         "truncated one" +
             hint},
        {"list missing.zip", 1,
         "cvsoa zip: missing.zip: cannot open the file: No such file or directory" + hint},
    };
    for (const auto& c : cases) {
        const CommandOutcome outcome = runCommand("cd '" + dir.string() + "' && " + CVSOA_TOOL +
                                                  " zip " + c.arguments + " 2>&1");
        EXPECT_EQ(outcome.status, c.status) << c.arguments;
        EXPECT_EQ(outcome.output, c.output) << c.arguments;
    }
    std::ifstream extracted(dir / "out" / "docs" / "a.txt");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(extracted), {}), "hello\n");
    EXPECT_FALSE(fs::exists(dir / "b.txt"));
    EXPECT_EQ(runCommand(std::string(CVSOA_TOOL) + " zip list 2>/dev/null").status, 2);
    fs::remove_all(dir);
}

}  // namespace

#endif
