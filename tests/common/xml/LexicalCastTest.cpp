#include <corvane/soa/common/xml/LexicalCast.hpp>

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <locale>
#include <string>

namespace {

using Corvane::Soa::Common::Xml::lexical_cast;

std::string text(int value) { return lexical_cast<std::string>(value); }
std::string text(double value) { return lexical_cast<std::string>(value); }
std::string text(float value) { return lexical_cast<std::string>(value); }
std::string text(bool value) { return lexical_cast<std::string>(value); }
int toInt(const std::string& s) { return lexical_cast<int>(s); }
double toDouble(const std::string& s) { return lexical_cast<double>(s); }
float toFloat(const std::string& s) { return lexical_cast<float>(s); }
bool toBool(const std::string& s) { return lexical_cast<bool>(s); }

constexpr int kNotANumber = std::numeric_limits<int>::min();

TEST(LexicalCast, FormatsNumbersAndBooleans) {
    EXPECT_EQ(text(-17), "-17");
    EXPECT_EQ(text(1234567), "1234567");
    EXPECT_EQ(text(std::numeric_limits<int>::min()), "-2147483648");
    EXPECT_EQ(text(true), "1");
    EXPECT_EQ(text(false), "0");
    for (const std::string s : {"", " padded ", "<a&b>"}) {
        EXPECT_EQ(lexical_cast<std::string>(s), s);
    }
}

TEST(LexicalCast, FormatsFloatingPointWithSeventeenSignificantDigits) {
    EXPECT_EQ(text(0.1), "0.10000000000000001");
    EXPECT_EQ(text(1.0 / 3), "0.33333333333333331");
    EXPECT_EQ(text(-2.5), "-2.5");
    EXPECT_EQ(text(-0.0), "-0");
    // General notation: fixed up to seventeen digits before the point, scientific beyond.
    EXPECT_EQ(text(1e16), "10000000000000000");
    EXPECT_EQ(text(1e17), "1e+17");
    EXPECT_EQ(text(1e-5), "1.0000000000000001e-05");
    EXPECT_EQ(text(-std::numeric_limits<double>::infinity()), "-inf");

    EXPECT_EQ(text(0.1f), "0.10000000149011612");
    EXPECT_EQ(text(1.5f), "1.5");
    EXPECT_EQ(text(std::numeric_limits<float>::max()), "3.4028234663852886e+38");
}

TEST(LexicalCast, ParsesBooleansByExactText) {
    EXPECT_TRUE(toBool("true"));
    EXPECT_TRUE(toBool("1"));
    for (const char* s : {"", "TRUE", "True", "true ", " true", "1 ", "01", "yes", "false", "0"}) {
        EXPECT_FALSE(toBool(s)) << '"' << s << '"';
    }
}

TEST(LexicalCast, ParsesIntegers) {
    EXPECT_EQ(toInt(""), 0);
    EXPECT_EQ(toInt("0"), 0);
    EXPECT_EQ(toInt("-0"), 0);
    EXPECT_EQ(toInt("+000"), 0);
    EXPECT_EQ(toInt("-42"), -42);
    EXPECT_EQ(toInt("2147483647"), 2147483647);
    // A non-zero prefix is the value: the rest of the text is ignored.
    EXPECT_EQ(toInt("12abc"), 12);
    EXPECT_EQ(toInt("1.5"), 1);
    // Zero from text that is not all digits marks it as no number.
    EXPECT_EQ(toInt("abc"), kNotANumber);
    EXPECT_EQ(toInt("0x"), kNotANumber);
    EXPECT_EQ(toInt("0.5"), kNotANumber);
    EXPECT_EQ(toInt(" 0"), kNotANumber);
    EXPECT_EQ(toInt("+-1"), kNotANumber);
    // Only a sign: nothing after it is a non-digit.
    EXPECT_EQ(toInt("-"), 0);
}

TEST(LexicalCast, ParsesDoublesIgnoringTrailingText) {
    EXPECT_EQ(toDouble(""), 0.0);
    EXPECT_EQ(toDouble("0.1"), 0.1);
    EXPECT_EQ(toDouble("-1.5e3"), -1500.0);
    EXPECT_EQ(toDouble("2.5abc"), 2.5);
    EXPECT_EQ(toDouble("1,5"), 1.0);
    EXPECT_EQ(toDouble("  3.25"), 3.25);
    EXPECT_EQ(toDouble("abc"), 0.0);
    EXPECT_TRUE(std::signbit(toDouble("-0")));
}

TEST(LexicalCast, ParsesFloatsByNarrowingTheDouble) {
    EXPECT_EQ(toFloat(""), 0.0f);
    EXPECT_EQ(toFloat("0.1"), 0.1f);
    EXPECT_EQ(toFloat("2.5x"), 2.5f);
    EXPECT_EQ(toFloat("-1e39"), -std::numeric_limits<float>::infinity());
}

TEST(LexicalCast, NumbersRoundTripThroughText) {
    for (const double value : {-1.0 / 3, 6.02214076e23, 5e-324, 1.7976931348623157e308}) {
        EXPECT_EQ(toDouble(text(value)), value) << text(value);
    }
    for (const float value : {-1.0f / 3, 3.4028235e38f, 1e-45f}) {
        EXPECT_EQ(toFloat(text(value)), value) << text(value);
    }
}

// Restores the C and C++ global locales when a test ends.
class LocaleGuard {
public:
    LocaleGuard() : m_saved(std::setlocale(LC_ALL, nullptr)) {}
    LocaleGuard(const LocaleGuard&) = delete;
    LocaleGuard& operator=(const LocaleGuard&) = delete;
    ~LocaleGuard() {
        std::locale::global(std::locale::classic());
        std::setlocale(LC_ALL, m_saved.c_str());
    }

private:
    std::string m_saved;
};

// The name of an installed locale whose decimal point is a comma, or null.
const char* commaLocale() {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8", "de_DE",
                             "fr_FR", "it_IT.UTF-8", "es_ES.UTF-8", "nl_NL.UTF-8", "ru_RU.UTF-8"}) {
        if (std::setlocale(LC_ALL, name) != nullptr &&
            std::strcmp(std::localeconv()->decimal_point, ",") == 0) {
            return name;
        }
    }
    return nullptr;
}

TEST(LexicalCast, NumberTextsIgnoreTheProcessLocale) {
    const LocaleGuard guard;
    const char* name = commaLocale();
    if (name == nullptr) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    std::locale::global(std::locale(name));
    const std::string numeric = std::setlocale(LC_NUMERIC, nullptr);

    EXPECT_EQ(text(1.5), "1.5");
    EXPECT_EQ(text(0.25f), "0.25");
    EXPECT_EQ(text(1234567), "1234567");
    EXPECT_EQ(toDouble("1.5"), 1.5);
    EXPECT_EQ(toFloat("0.25"), 0.25f);
    EXPECT_EQ(toInt("1234567"), 1234567);
    EXPECT_EQ(toInt("0"), 0);
    // Each parse puts the caller's locale back.
    EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), numeric);

    // Text that is not a number leaves the numeric category at "C".
    EXPECT_EQ(toInt("abc"), kNotANumber);
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}

}  // namespace
