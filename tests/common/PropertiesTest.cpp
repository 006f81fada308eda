#include <corvane/soa/common/Properties.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using Corvane::Soa::Common::Properties;
using Corvane::Soa::Common::Exceptions::IOException;

namespace {

// "key=value|key=value", raw (a key holding "=" or "|" does not occur in the cases).
std::string entriesOf(const Properties& properties) {
    std::string text;
    for (const auto& [key, value] : properties.entries()) {
        text.append(text.empty() ? "" : "|").append(key).append("=").append(value);
    }
    return text;
}

std::string loaded(const std::string& text) {
    Properties properties;
    properties.loadText(text);
    return entriesOf(properties);
}

TEST(Properties, ReadsLinesAsTheJavaPlatformDoes) {
    const struct {
        std::string text, entries;
    } cases[] = {
        // Separators, and the white space around them.
        {"a=1\nb:2\nc 3\nd\t=\t4\ne  :  =5\nf = = 6\ng\fx", "a=1|b=2|c=3|d=4|e==5|f== 6|g=x"},
        {"  lead=x  \nnovalue\nempty=\n:nokey", "lead=x  |novalue=|empty=|=nokey"},
        // Escaped separators and white space in keys; escapes.
        {"a\\=b\\:c\\ d=v\n\\#k=\\!v", "a=b:c d=v|#k=!v"},
        {"t=\\t\\n\\r\\f\\\\\\q\\\"\\u0041\\u00e9\\u20AC", "t=\t\n\r\f\\q\"A\xC3\xA9\xE2\x82\xAC"},
        {"v=\\ \\ two leading", "v=  two leading"},
        // Comments: "#" and "!" first on a line, after white space; not within a line.
        {"# c\n  ! c\nk=v # not a comment\n#", "k=v # not a comment"},
        // Line ends: \n, \r, \r\n, mixed; blank lines.
        {"a=1\rb=2\r\nc=3\n\r\n\rd=4", "a=1|b=2|c=3|d=4"},
        // Continuation: an odd number of backslashes; the next line's leading blanks dropped.
        {"k=one\\\n    two\\\r\n\tthree\\\\\nn=x", "k=onetwothree\\|n=x"},
        {"k=a\\\\\\\n b", "k=a\\b"},
        {"ke\\\n  y = v", "key=v"},
        // A continuation followed by an empty line ends the line; "#" after a continuation is
        // text, unless the line is still empty.
        {"k=a\\\n\nn=b", "k=a|n=b"},
        {"k=a\\\n#b\n\\\n#c\nn=d", "k=a#b|n=d"},
        // An escape split over a continuation.
        {"k=\\u00\\\n  41", "k=A"},
        // A backslash last in the text is dropped; a line of one backslash is an empty key,
        // unless it continues into more text.
        {"k=v\\", "k=v"},
        {"a=1\n\\", "a=1|="},
        {"a=1\n\\\n", "a=1|="},
        {"a=1\n\\\r\n", "a=1"},
        {"a=1\n\\\n  ", "a=1"},
        // Surrogate pairs of escapes are one character; a half alone is U+FFFD.
        {"s=\\uD83D\\uDE00 \\ud83d\\ude00", "s=\xF0\x9F\x98\x80 \xF0\x9F\x98\x80"},
        {"s=\\uD83D|\\uDE00|\\uD83D\\uD83D\\uDE00",
         "s=\xEF\xBF\xBD|\xEF\xBF\xBD|\xEF\xBF\xBD\xF0\x9F\x98\x80"},
        // A repeated key takes the last value and keeps its first place.
        {"a=1\nb=2\na=3", "a=3|b=2"},
        // UTF-8 as it is; malformed bytes are U+FFFD, counted as the Java platform counts them;
        // a byte-order mark stays.
        {"\xC3\xA9=\xF0\x9F\x98\x80", "\xC3\xA9=\xF0\x9F\x98\x80"},
        {"a=\x80|\xC3|\xE2\x82|\xED\xA0\x80|\xF0\x9F\x98|\xC0\xAF|\xE0\x80\x80|\xF4\x90\x80\x80",
         "a=\xEF\xBF\xBD|\xEF\xBF\xBD|\xEF\xBF\xBD|\xEF\xBF\xBD|\xEF\xBF\xBD|"
         "\xEF\xBF\xBD\xEF\xBF\xBD|\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD|"
         "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"a=\xE2\x82", "a=\xEF\xBF\xBD"},
        {"\xEF\xBB\xBFk=v", "\xEF\xBB\xBFk=v"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(loaded(c.text), c.entries);
    }
}

TEST(Properties, AMalformedEscapeNamesItsLineAndLeavesTheObjectAsItWas) {
    const struct {
        std::string text, message;
    } cases[] = {
        {"a=1\n\n# c\nk=\\u12G4", "<text>: line 4: malformed \\uxxxx escape \"\\u12G4\""},
        {"a=1\r\nb=2\rk=v\\\n  more\\\r\n  \\u00",
         "<text>: line 5: malformed \\uxxxx escape \"\\u00\""},
        {"\\u12=v", "<text>: line 1: malformed \\uxxxx escape \"\\u12=v\""},
        {"k=\\u\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9",
         "<text>: line 1: malformed \\uxxxx escape \"\\u\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\""},
    };
    const std::string advice = ": write four hexadecimal digits after \\u, or \\\\ for a backslash";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        for (const bool filled : {false, true}) {
            Properties properties;
            if (filled) {
                properties.set("kept", "1");
            }
            try {
                properties.loadText(c.text);
                ADD_FAILURE() << "loaded";
            } catch (const IOException& e) {
                EXPECT_EQ(e.getMessage(), c.message + advice);
            }
            EXPECT_EQ(entriesOf(properties), filled ? "kept=1" : "");
        }
    }
}

// Keys and values that need escapes are written so that they read back byte for byte.
TEST(Properties, SavesWhatLoadsBackTheSame) {
    Properties properties;
    properties.set(" lead and inner ", "  two leading, inner  and trailing  ");
    properties.set("=:#!\\", "=:#!\\ \t\n\r\f");
    properties.set("\x01\x1F\x7F", std::string("\x0B\x00\x7F", 3));
    properties.set("", "");
    properties.set("\xC3\xA9t\xC3\xA9 \xF0\x9F\x98\x80", "\xE2\x82\xAC\\u0041");
    properties.set("#comment-like", "!value");
    const std::string text = properties.toText();
    EXPECT_EQ(text,
              "\\ lead\\ and\\ inner\\ =\\  two leading, inner  and trailing  \n"
              "\\=\\:\\#\\!\\\\=\\=\\:\\#\\!\\\\ \\t\\n\\r\\f\n"
              "\\u0001\\u001F\\u007F=\\u000B\\u0000\\u007F\n"
              "=\n"
              "\xC3\xA9t\xC3\xA9\\ \xF0\x9F\x98\x80=\xE2\x82\xAC\\\\u0041\n"
              "\\#comment-like=\\!value\n");
    Properties reloaded;
    reloaded.loadText(text);
    EXPECT_EQ(reloaded, properties);
}

TEST(Properties, KeepsKeysInOrderThroughSetAndRemove) {
    Properties properties;
    properties.loadText("c=1\na=2\nb=3");
    properties.set("a", "4");
    properties.set("d", "5");
    EXPECT_TRUE(properties.remove("c"));
    EXPECT_FALSE(properties.remove("c"));
    EXPECT_EQ(properties.keys(), (std::vector<std::string>{"a", "b", "d"}));
    EXPECT_EQ(properties.get("a") + properties.get("c", "none"), "4none");
    // Enough keys to grow the index several times; every one is still found.
    for (int i = 0; i < 1000; ++i) {
        properties.set("k" + std::to_string(i), std::to_string(i));
    }
    properties.remove("k0");
    EXPECT_EQ(properties.size(), 1002U);
    for (int i = 1; i < 1000; ++i) {
        ASSERT_EQ(properties.get("k" + std::to_string(i)), std::to_string(i));
    }
}

class PropertiesFile : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = ::testing::TempDir() + "properties-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        dir = pattern + "/";
    }
    void TearDown() override { std::filesystem::remove_all(dir); }

    static std::string read(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    std::string dir;
};

// Saving replaces the file in one step: through a link the file it names is replaced, the link
// stays, and the file keeps its permissions.
TEST_F(PropertiesFile, SavesThroughALinkAndLoadsBack) {
    Properties properties;
    properties.set("url", "https://example.test:8443/app");
    std::ofstream(dir + "real.properties") << "old=1\n";
    ::chmod((dir + "real.properties").c_str(), 0600);
    ASSERT_EQ(::symlink("real.properties", (dir + "link.properties").c_str()), 0);
    properties.save(dir + "link.properties");
    EXPECT_TRUE(std::filesystem::is_symlink(dir + "link.properties"));
    EXPECT_EQ(read(dir + "real.properties"), "url=https\\://example.test\\:8443/app\n");
    struct stat status {};
    ASSERT_EQ(::stat((dir + "real.properties").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    Properties reloaded;
    reloaded.load(dir + "link.properties");
    EXPECT_EQ(reloaded, properties);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 2);
}

TEST_F(PropertiesFile, FailuresNameTheFile) {
    const std::string missing = dir + "missing/app.properties";
    const auto message = [](const auto& action) {
        try {
            action();
        } catch (const IOException& e) {
            return e.getMessage();
        }
        return std::string("no exception");
    };
    Properties properties;
    EXPECT_EQ(message([&] { properties.load(missing); }),
              missing +
                  ": cannot be opened (No such file or directory); check that the file exists "
                  "and can be read");
    EXPECT_EQ(message([&] { properties.load(dir); }),
              dir + ": cannot be read (Is a directory); check that it is a file and can be read");
    EXPECT_EQ(message([&] { properties.save(missing); }),
              missing +
                  ": cannot be written (No such file or directory); check the directory and its "
                  "permissions");
    std::ofstream(dir + "bad.properties") << "a=1\nb=\\uXYZW\n";
    EXPECT_EQ(message([&] { properties.load(dir + "bad.properties"); }),
              dir +
                  "bad.properties: line 2: malformed \\uxxxx escape \"\\uXYZW\": write four "
                  "hexadecimal digits after \\u, or \\\\ for a backslash");
}

}  // namespace
