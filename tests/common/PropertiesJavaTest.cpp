// Properties files read here and by the Java platform's java.util.Properties (through a UTF-8
// reader) give the same keys and values, for tricky files and for what `save` writes.
#include <corvane/soa/common/Properties.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <gtest/gtest.h>

#include "RunCommand.hpp"

#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

using Corvane::Soa::Common::Properties;
using Corvane::Soa::Common::Exceptions::IOException;

namespace {

// As PropertiesDump.java writes a string: printable ASCII but the backslash as it is, every other
// UTF-16 unit as \uXXXX. `text` is UTF-8, as loading makes it.
std::string dumped(const std::string& text) {
    std::string out;
    const auto unit = [&out](unsigned value) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "\\u%04X", value);
        out += hex;
    };
    for (std::size_t i = 0; i < text.size();) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const int length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        unsigned code = length == 1 ? byte : byte & (0x7FU >> length);
        for (int k = 1; k < length; ++k) {
            code = (code << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3FU);
        }
        i += static_cast<std::size_t>(length);
        if (code >= 0x20 && code < 0x7F && code != '\\') {
            out += static_cast<char>(code);
        } else if (code >= 0x10000) {
            unit(0xD800 + ((code - 0x10000) >> 10));
            unit(0xDC00 + ((code - 0x10000) & 0x3FF));
        } else {
            unit(code);
        }
    }
    return out;
}

std::string dumped(const std::string& path, const Properties* properties) {
    std::string out = "== " + path + "\n";
    if (properties == nullptr) {
        return out + "!! malformed\n";
    }
    std::vector<std::string> lines;
    for (const auto& [key, value] : properties->entries()) {
        lines.push_back(dumped(key).append("\t").append(dumped(value)));
    }
    std::sort(lines.begin(), lines.end());
    for (const std::string& line : lines) {
        out.append(line).append("\n");
    }
    return out;
}

// Texts made of the pieces that matter to the format, at random (no escape can make half a
// surrogate pair: there is no "D" among them).
std::vector<std::string> randomTexts(int count) {
    const char* const pieces[] = {"a",     "=",        ":",      " ", "\t",    "\f",
                                  "\\",    "\n",       "\r",     "#", "!",     "\\u0041",
                                  "\\u00", "\xC3\xA9", "\\n",    "b", "x\\\n", "\xF0\x9F\x98\x80",
                                  "\x80",  "\xE2\x82", "\\u0001"};
    std::mt19937 random(20261125);
    std::uniform_int_distribution<std::size_t> piece(0, std::size(pieces) - 1);
    std::uniform_int_distribution<int> length(1, 24);
    std::vector<std::string> texts;
    for (int i = 0; i < count; ++i) {
        std::string text;
        for (int n = length(random); n > 0; --n) {
            text += pieces[piece(random)];
        }
        texts.push_back(text);
    }
    return texts;
}

TEST(PropertiesJava, LoadsAsTheJavaPlatformLoads) {
    if (std::system("command -v java >/dev/null 2>&1") != 0) {
        GTEST_SKIP() << "java is not on PATH";
    }
    std::string dir = ::testing::TempDir() + "properties-java-XXXXXX";
    ASSERT_NE(::mkdtemp(dir.data()), nullptr);
    dir += "/";
    std::vector<std::string> texts = {
        std::string("a=1\nb:2\nc 3\nd\t=\t4\ne  :  =5\nf = = 6\ng\fx\n  lead=x  \nnovalue\n") +
            "empty=\n=nokey\n:colon\n",
        "a\\=b\\:c\\ d=v\n\\#k=\\!v\nt=\\t\\n\\r\\f\\\\\\q\\\"\\u0041\\u00e9\\u20AC\nv=\\ \\ two\n",
        "# c\n  ! c\nk=v # not\r\nb=2\rc=3\n\r\n\rd=4\n#",
        std::string(
            "k=one\\\n    two\\\r\n\tthree\\\\\nn=x\nm=a\\\\\\\n b\nke\\\n  y = v\np=a\\\n\n") +
            "q=b\nr=a\\\n#b\n\\\n#c\ns=\\u00\\\n  41\nt=v\\",
        "a=1\n\\",
        "a=1\n\\\n",
        "a=1\n\\\r\n",
        "a=1\n\\\n  ",
        "a=1\n\\\r",
        "s=\\uD83D\\uDE00 \\ud83d\\ude00\n",
        "a=1\nb=2\na=3",
        std::string(
            "\xC3\xA9=\xF0\x9F\x98\x80\na=\x80|\xC3|\xE2\x82|\xED\xA0\x80|\xF0\x9F\x98|\xC0\xAF|") +
            "\xE0\x80\x80|\xF4\x90\x80\x80|\xF8|\xFF|\xED\xA0|\xEF\xBF\xBF|\xED\x9F\xBF|\xF0\x8F\n",
        "a=\xE2\x82",
        "b=\xF0\x9F",
        "c=\xF0",
        "d=\xED\xA0",
        "\xEF\xBB\xBFk=v",
        "k=\\u12G4",
        "k\\u=v",
    };
    for (const std::string& text : randomTexts(300)) {
        texts.push_back(text);
    }
    // Each text, and what `save` writes for each text that loads.
    std::string arguments;
    std::string expected;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string path = dir + std::to_string(i) + ".properties";
        std::ofstream(path, std::ios::binary) << texts[i];
        Properties properties;
        try {
            properties.load(path);
            properties.save(path + ".saved");
            arguments.append(" ").append(path).append(" ").append(path).append(".saved");
            expected.append(dumped(path, &properties)).append(dumped(path + ".saved", &properties));
        } catch (const IOException&) {
            arguments.append(" ").append(path);
            expected.append(dumped(path, nullptr));
        }
    }
    const CommandOutcome outcome =
        runCommand("java " + std::string(CVSOA_SOURCE_DIR) + "/tests/common/PropertiesDump.java" +
                   arguments + " 2>&1");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, expected);
    std::filesystem::remove_all(dir);
}

}  // namespace
