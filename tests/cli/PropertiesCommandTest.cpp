// cvsoa properties: show and get over a file or standard input.
#include <gtest/gtest.h>

#include "RunCommand.hpp"

#include <unistd.h>
#include <filesystem>
#include <fstream>
#include <string>

#ifdef CVSOA_TOOL

namespace {

TEST(PropertiesCommand, ShowsGetsOrExplains) {
    std::string dir = ::testing::TempDir() + "properties-cli-XXXXXX";
    ASSERT_NE(::mkdtemp(dir.data()), nullptr);
    const std::string file = dir + "/app.properties";
    std::ofstream(file, std::ios::binary)
        << "# client\nhost = example.test\nurl: https\\://example.test/\\\n    app\n"
           "greeting=h\\u00e9llo w\\u00f6rld\nempty\n";
    const std::string bad = dir + "/bad.properties";
    std::ofstream(bad, std::ios::binary) << "a=1\nb=\\u00\n";
    const std::string tool = std::string(CVSOA_TOOL) + " properties ";
    const struct {
        std::string arguments;
        int status;
        std::string output;
    } cases[] = {
        {"show " + file, 0,
         "host=example.test\nurl=https\\://example.test/app\ngreeting=h\xC3\xA9llo "
         "w\xC3\xB6rld\nempty=\n"},
        {"get " + file + " url", 0, "https://example.test/app\n"},
        {"get " + file + " empty", 0, "\n"},
        {"get - greeting < " + file, 0, "h\xC3\xA9llo w\xC3\xB6rld\n"},
        {"get " + file + " port", 1,
         "cvsoa properties: " + file + ": no key \"port\" (`cvsoa properties show " + file +
             "` lists the keys)\n"},
        {"show - < " + bad, 1,
         "cvsoa properties: standard input: line 2: malformed \\uxxxx escape \"\\u00\": write "
         "four hexadecimal digits after \\u, or \\\\ for a backslash\n"},
        {"show " + dir + "/none", 1,
         "cvsoa properties: " + dir +
             "/none: cannot be opened (No such file or directory); check that the file exists "
             "and can be read\n"},
        {"get " + file, 2, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const CommandOutcome outcome = runCommand(tool + c.arguments + " 2>&1");
        EXPECT_EQ(outcome.status, c.status);
        if (c.status != 2) {
            EXPECT_EQ(outcome.output, c.output);
        }
    }
    // -o writes the shown text to a file, which loads as the original.
    EXPECT_EQ(runCommand(tool + "show " + file + " -o " + dir + "/shown.properties").status, 0);
    EXPECT_EQ(runCommand(tool + "get " + dir + "/shown.properties url").output,
              "https://example.test/app\n");
    std::filesystem::remove_all(dir);
}

}  // namespace

#endif
