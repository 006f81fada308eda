#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace {

using Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;
using Corvane::Soa::Common::Xml::Utf8String;
namespace Xml = Corvane::Soa::Common::Xml;

// The same words in each page: the local bytes and their UTF-8 form.
constexpr const char* kTokyoSjis = "\x93\x8c\x8b\x9e";            // 東京
constexpr const char* kTokyoEucJp = "\xc5\xec\xb5\xfe";           // 東京
constexpr const char* kTokyoUtf8 = "\xe6\x9d\xb1\xe4\xba\xac";    // 東京
constexpr const char* kChineseBig5 = "\xa4\xa4\xa4\xe5";          // 中文
constexpr const char* kChineseUtf8 = "\xe4\xb8\xad\xe6\x96\x87";  // 中文
constexpr const char* kCafe1252 = "caf\xe9 \x80";                 // café €
constexpr const char* kCafeUtf8 = "caf\xc3\xa9 \xe2\x82\xac";

std::string encoded(Utf8String& converter, const std::string& local) {
    std::string utf8;
    converter.encode(local, utf8);
    return utf8;
}

std::string decoded(Utf8String& converter, const std::string& utf8) {
    std::string local;
    converter.decode(utf8, local);
    return local;
}

std::string repeat(const std::string& text, std::size_t times) {
    std::string out;
    out.reserve(text.size() * times);
    for (std::size_t i = 0; i < times; ++i) {
        out += text;
    }
    return out;
}

// Long texts go through in several pieces and give the same text as one: each character of the
// repeated words lands at a different offset from the piece boundaries.
TEST(Utf8StringTest, ConvertsEachCodePageBothWaysInOnePieceOrMany) {
    struct Case {
        const char* page;
        std::string local;
        std::string utf8;
    };
    const Case cases[] = {
        {"Shift_JIS", kTokyoSjis, kTokyoUtf8},
        {"EUC-JP", kTokyoEucJp, kTokyoUtf8},
        {"Big5", kChineseBig5, kChineseUtf8},
        {"windows-1252", kCafe1252, kCafeUtf8},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.page);
        Utf8String converter(c.page);
        EXPECT_FALSE(converter.isLocalUtf8());
        EXPECT_EQ(encoded(converter, "a " + c.local + " z"), "a " + c.utf8 + " z");
        EXPECT_EQ(decoded(converter, "a " + c.utf8 + " z"), "a " + c.local + " z");
        EXPECT_EQ(encoded(converter, ""), "");
        // Conversions append.
        std::string out = "<";
        converter.encode(c.local, out);
        EXPECT_EQ(out, "<" + c.utf8);

        const std::string local = repeat("x" + c.local, 30001);
        const std::string utf8 = repeat("x" + c.utf8, 30001);
        ASSERT_GT(local.size(), 3 * Utf8String::sUnicodeBufferSize);
        EXPECT_EQ(encoded(converter, local), utf8);
        EXPECT_EQ(decoded(converter, utf8), local);
    }
}

// A trail byte may look like ASCII: 0x5C ('\\') ends the Shift_JIS form of 表.
TEST(Utf8StringTest, ShiftJisTrailBytesInTheAsciiRange) {
    Utf8String converter("Shift_JIS");
    EXPECT_EQ(encoded(converter, "\x95\x5c\x83\x4f"), "\xe8\xa1\xa8\xe3\x82\xb0");  // 表グ
    EXPECT_EQ(decoded(converter, "\xe8\xa1\xa8\xe3\x82\xb0"), "\x95\x5c\x83\x4f");
}

// Input goes through in pieces of 20480 bytes: a lead byte at the end of one piece and its
// trail byte at the start of the next still make one character, wherever the cut falls.
TEST(Utf8StringTest, CharacterStraddlingAPieceBoundary) {
    Utf8String sjis("Shift_JIS");
    for (std::size_t pad : {Utf8String::sUnicodeBufferSize - 1, Utf8String::sUnicodeBufferSize,
                            2 * Utf8String::sUnicodeBufferSize - 1}) {
        SCOPED_TRACE(pad);
        const std::string local = std::string(pad, 'a') + kTokyoSjis + "z";
        const std::string utf8 = std::string(pad, 'a') + kTokyoUtf8 + "z";
        EXPECT_EQ(encoded(sjis, local), utf8);
        EXPECT_EQ(decoded(sjis, utf8), local);
    }
    // A four-byte UTF-8 character cut by the boundary, into a page that has it (GB18030).
    Utf8String gb("GB18030");
    const std::string utf8 =
        std::string(Utf8String::sUnicodeBufferSize - 2, 'a') + "\xf0\x9f\x98\x80" + "\xe4\xb8\xad";
    const std::string local =
        std::string(Utf8String::sUnicodeBufferSize - 2, 'a') + "\x94\x39\xfc\x36" + "\xd6\xd0";
    EXPECT_EQ(decoded(gb, utf8), local);
    EXPECT_EQ(encoded(gb, local), utf8);
}

TEST(Utf8StringTest, DecodesZeroTerminatedUtf16) {
    Utf8String sjis("Shift_JIS");
    std::string local = "[";
    sjis.decode(u"\u6771\u4eac!", local, false);

    const unsigned short units[] = {0x6771, 0x4eac, 0};
    sjis.decode(units, local, false);
    sjis.decode(u"", local, false);
    EXPECT_EQ(local, std::string("[") + kTokyoSjis + "!" + kTokyoSjis);

    // Longer than both work buffers: 30000 characters make 60000 local bytes.
    std::u16string many(30000, u'\u6771');
    local.clear();
    sjis.decode(many.c_str(), local, false);
    EXPECT_EQ(local, repeat("\x93\x8c", 30000));
}

// UTF-8 written unit by unit, the plainest way: the reference for the conversion, which
// works a block of units at a time.
std::string referenceUtf8(const std::u16string& units, bool replaceHexOneA) {
    std::string out;
    for (std::size_t i = 0; i < units.size(); ++i) {
        std::uint32_t c = units[i];
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
            units[i + 1] <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00u);
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            c = 0xFFFD;
        }
        const int more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        if (more == 0) {
            out += static_cast<char>(replaceHexOneA && c == 0x1A ? '?' : c);
            continue;
        }
        // The lead byte, 0xC0, 0xE0 or 0xF0 with the top bits, then six bits a byte.
        out += static_cast<char>(((0xFFu << (7 - more)) & 0xFF) | (c >> (6 * more)));
        for (int k = more - 1; k >= 0; --k) {
            out += static_cast<char>(0x80 | ((c >> (6 * k)) & 0x3F));
        }
    }
    return out;
}

// Runs of ASCII of every length around the block size, mixed with two-, three- and four-byte
// characters, lone surrogates and the substitution byte, in texts from empty to several
// thousand units: whatever falls on a block or chunk boundary, the result is the reference's,
// appended to what the string held.
TEST(Utf8StringTest, DecodesEveryMixOfAsciiAndOtherUnits) {
    Utf8String utf8("UTF-8");
    const std::u16string pieces[] = {u"\u00e9",          u"\u6771",          u"\U0001F600",
                                     {char16_t(0xD800)}, {char16_t(0xDC00)}, u"\u001a",
                                     u"\u007f\u0080"};
    std::uint64_t state = 12345;
    auto next = [&state](std::size_t n) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::size_t>((state >> 33) % n);
    };
    for (int round = 0; round < 400; ++round) {
        std::u16string text;
        const std::size_t parts = next(round < 200 ? 4 : 60);
        for (std::size_t p = 0; p < parts; ++p) {
            text.append(next(40), static_cast<char16_t>(u'a' + next(26)));
            if (next(3) != 0) {
                text += pieces[next(std::size(pieces))];
            }
        }
        for (const bool replace : {false, true}) {
            std::string out = "before:";
            utf8.decode(text.data(), text.size(), out, replace);
            ASSERT_EQ(out, "before:" + referenceUtf8(text, replace)) << "round " << round;
        }
    }
}

// A surrogate pair split by the end of a chunk of the conversion (256 units) is still one
// character.
TEST(Utf8StringTest, SurrogatePairsAcrossChunkBoundaries) {
    Utf8String utf8("UTF-8");
    for (std::size_t before = 250; before < 262; ++before) {
        std::u16string text(before, u'x');
        text += u"\U0001F600";
        text.append(300, u'y');
        std::string out;
        utf8.decode(text.data(), text.size(), out, false);
        EXPECT_EQ(out, referenceUtf8(text, false)) << before;
    }
    // Only the given length counts: a high surrogate that ends it stays unpaired (U+FFFD).
    const char16_t last[] = {u'a', 0xD83D, 0xDE00};
    std::string out;
    utf8.decode(last, 2, out, false);
    EXPECT_EQ(out, "a\xef\xbf\xbd");
}

// A character that the page cannot represent becomes its substitution byte, 0x1A for
// windows-1252; asked to, the conversion writes '?' instead.
TEST(Utf8StringTest, ReplacesTheSubstitutionByteOnRequest) {
    Utf8String cp1252("windows-1252");
    std::string local;
    cp1252.decode(u"a\u6771b\u00e9", local, true);
    EXPECT_EQ(local, "a?b\xe9");

    Utf8String utf8("UTF-8");
    local.clear();
    utf8.decode(u"a\u001ab", local, true);
    EXPECT_EQ(local, "a?b");

    // UTF-8 text goes to a page by another route than UTF-16 does; the substitutes are the same.
    local = decoded(cp1252, "a\xe6\x9d\xb1!");
    cp1252.decode(u"a\u6771!", local, false);
    EXPECT_EQ(local, "a\x1a!a\x1a!");
    Utf8String sjis("Shift_JIS");
    EXPECT_EQ(decoded(sjis, "x\xc3\xa9\xf0\x9f\x98\x80"), "x\xfc\xfc\xfc\xfc");
    local.clear();
    sjis.decode(u"x\u00e9\U0001F600", local, false);
    EXPECT_EQ(local, "x\xfc\xfc\xfc\xfc");
}

TEST(Utf8StringTest, RecognisesUtf8SpellingsAndCopies) {
    // Not UTF-8 at all: a copy keeps the bytes as they are.
    const std::string bytes = "\xff\xfe\x93 text";
    for (const char* page : {"UTF-8", "UTF_8", "UTF 8", "utf8", "utf-8", "U-T-F_8"}) {
        SCOPED_TRACE(page);
        Utf8String converter(page);
        EXPECT_TRUE(converter.isLocalUtf8());
        EXPECT_EQ(converter.getLocalCodePage(), page);
        EXPECT_EQ(encoded(converter, bytes), bytes);
        EXPECT_EQ(decoded(converter, bytes), bytes);
    }
    EXPECT_FALSE(Utf8String("UTF-16").isLocalUtf8());
    EXPECT_FALSE(Utf8String("UTF-7").isLocalUtf8());
}

TEST(Utf8StringTest, UnknownCodePageFailsAtConstruction) {
    try {
        Utf8String converter("no-such-page");
        FAIL() << "no exception";
    } catch (const InternalServerException& e) {
        EXPECT_EQ(e.getMessage(),
                  "Error opening local (no-such-page) converter U_FILE_ACCESS_ERROR");
        EXPECT_EQ(e.getCode(), 534);
        EXPECT_EQ(e.getLevel(), 3);
    }
}

// Bytes that are no character of the source page are reported with the converter's name
// and aliases.
TEST(Utf8StringTest, IllegalInputIsReportedWithTheConverterNames) {
    Utf8String sjis("Shift_JIS");
    // The message names the converter, then its aliases (a list that depends on the conversion
    // library's data: only its start is pinned), then the error.
    const auto expectError = [](const std::function<void()>& convert, const std::string& head,
                                const std::string& tail) {
        try {
            convert();
            ADD_FAILURE() << "no exception";
        } catch (const InternalServerException& e) {
            const std::string message = e.getMessage();
            EXPECT_EQ(message.rfind(head, 0), 0U) << message;
            ASSERT_GT(message.size(), head.size() + tail.size()) << message;
            EXPECT_EQ(message.substr(message.size() - tail.size()), tail);
            EXPECT_EQ(e.getCode(), 534);
        }
    };
    expectError([&] { encoded(sjis, "ok \x93"); },  // a lead byte without its trail byte
                "An error occured converting ibm-943_P15A-2003 "
                "(ibm-943_P15A-2003, ibm-943, Shift_JIS, ",
                ") to Unicode.U_TRUNCATED_CHAR_FOUND");
    expectError([&] { decoded(sjis, "ok \xff"); }, "An error occured converting UTF-8 (UTF-8, ",
                ") to Unicode.U_ILLEGAL_CHAR_FOUND");
    // The converters start afresh after a failure.
    EXPECT_EQ(encoded(sjis, kTokyoSjis), kTokyoUtf8);
    EXPECT_EQ(decoded(sjis, kTokyoUtf8), kTokyoSjis);
}

TEST(Utf8StringTest, DefaultCodePageIsTheOneOfXmlText) {
    EXPECT_EQ(Utf8String::getDefaultEncoding(), "");
    Utf8String::setDefaultEncoding("Shift_JIS");
    EXPECT_EQ(Xml::getDefaultCharacterEncoding(), "Shift_JIS");
    EXPECT_TRUE(Xml::isFirstOfMultibyte('\x93'));
    Utf8String sjis;
    EXPECT_EQ(sjis.getLocalCodePage(), "Shift_JIS");
    EXPECT_EQ(encoded(sjis, kTokyoSjis), kTokyoUtf8);

    Xml::setDefaultCharacterEncoding("Big5");
    EXPECT_EQ(Utf8String::getDefaultEncoding(), "Big5");
    Utf8String big5;
    EXPECT_EQ(encoded(big5, kChineseBig5), kChineseUtf8);
    // A page given by name wins over the default.
    Utf8String eucJp("EUC-JP");
    EXPECT_EQ(encoded(eucJp, kTokyoEucJp), kTokyoUtf8);
}

TEST(Utf8StringTest, EscapingWithATranscoder) {
    Xml::setDefaultCharacterEncoding("Shift_JIS");
    Utf8String sjis;
    EXPECT_EQ(Xml::toXmlString(std::string(kTokyoSjis) + " & <", &sjis),
              std::string(kTokyoUtf8) + " &amp; &lt;");
    // The trail byte 0x5C of 表 is part of the character, not a backslash to escape.
    EXPECT_EQ(Xml::toJsonString("\x95\x5c\"/", &sjis), "\xe8\xa1\xa8\\\"\\/");
}

}  // namespace
