// cvsoa convert: finds a document's type in the registry, binds it and writes the other form.
#include <gtest/gtest.h>

#include "RunCommand.hpp"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#ifdef CVSOA_TOOL

namespace {

namespace fs = std::filesystem;

// Runs `cvsoa convert arguments` with `input` on standard input; output, then errors.
CommandOutcome convert(const std::string& arguments, const std::string& input) {
    const fs::path in = fs::temp_directory_path() /
                        (std::string("cvsoa-convert-") +
                         ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".in");
    std::ofstream(in, std::ios::binary) << input;
    CommandOutcome outcome = runCommand(std::string(CVSOA_TOOL) + " convert " + arguments + " < " +
                                        in.string() + " 2>&1");
    fs::remove(in);
    return outcome;
}

constexpr const char* kFilesUri = "http://corvane.com/Schemas/Core/2006-03/FileManagement";

TEST(ConvertCommand, ConvertsOrExplains) {
    const std::string kFiles = kFilesUri;
    const std::string xml = "<ns0:TicketMap xmlns:ns0=\"" + kFiles +
                            "\" value=\"t\"><ns0:key uid=\"u\"/></ns0:TicketMap>";
    const std::string json =
        "{\n\".QName\":\"http:\\/\\/corvane.com\\/Schemas\\/Core\\/2006-03\\/"
        "FileManagement.TicketMap\",\n\"value\":\"t\",\n\"key\":\n{\n"
        "\"uid\":\"u\"\n}\n}\n";
    const std::string xmlOut = "<ns0:TicketMap xmlns:ns0=\"" + kFiles +
                               "\" xmlns:ns1=\"http://corvane.com/Schemas/Soa/2006-03/Base\" "
                               "value=\"t\">\n<ns0:key uid=\"u\"></ns0:key></ns0:TicketMap>\n";
    const struct {
        const char* what;
        std::string arguments, input;
        int status;
        std::string output;
    } cases[] = {
        {"XML to JSON", "-", xml, 0, json},
        {"JSON to XML, the type from .QName", "-", json, 0, xmlOut},
        {"the form asked for", "- --to xml", xml, 0, xmlOut},
        {"a round trip that keeps the document", "- --check", xml, 0,
         "round trip: same document\n" + json},
        {"an unknown type names the closest", "-", "<x:TicketMaps xmlns:x=\"" + kFiles + "\"/>", 1,
         "cvsoa convert: -: no type is registered as \"" + kFiles +
             ".TicketMaps\"; the closest are:\n  " + kFiles + ".TicketMap\n"},
        {"a JSON document without its type", "-", "{\"value\":\"t\"}", 1,
         "cvsoa convert: -: the document has no \".QName\"; name its type with --type\n"},
        {"a document that does not bind gives the layer's message",
         "--type " + kFiles + ".TicketMap -", "{\"key\":\"u\"}", 1,
         "cvsoa convert: -: value is not a valid key in this JSONObject\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const CommandOutcome outcome = convert(c.arguments, c.input);
        EXPECT_EQ(outcome.status, c.status);
        // The list of closest names may go on: only its head is pinned.
        const bool head = c.output.find("closest") != std::string::npos;
        EXPECT_EQ(head ? outcome.output.substr(0, c.output.size()) : outcome.output, c.output);
    }
}

TEST(ConvertCommand, WritesTheOutputWholeOrNotAtAll) {
    const fs::path out = fs::temp_directory_path() / "cvsoa-convert-test.json";
    fs::remove(out);
    const std::string start = std::string("<x:TicketMap xmlns:x=\"") + kFilesUri + "\"";
    EXPECT_EQ(convert("- -o " + out.string(), start + "/>").status, 0);
    EXPECT_TRUE(fs::exists(out));
    fs::remove(out);
    EXPECT_EQ(convert("- -o " + out.string(), start + ">").status, 1);
    EXPECT_FALSE(fs::exists(out));
}

}  // namespace

#endif
