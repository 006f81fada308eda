#include <corvane/soa/common/xml/LexicalCast.hpp>

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>
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

// What `f` gives for each of `inputs`, each followed by a space; numbers to 17 digits.
template <class T, class F>
std::string each(F f, std::initializer_list<T> inputs) {
    std::ostringstream out;
    out.precision(17);
    for (const T& input : inputs) {
        out << f(input) << ' ';
    }
    return out.str();
}

TEST(LexicalCast, FormatsNumbersAndBooleans) {
    EXPECT_EQ(text(-17) + " " + text(std::numeric_limits<int>::min()), "-17 -2147483648");
    EXPECT_EQ(text(true) + text(false), "10");
    for (const std::string s : {"", " padded ", "<a&b>"}) {
        EXPECT_EQ(lexical_cast<std::string>(s), s);
    }
    // Seventeen significant digits in general notation: fixed up to seventeen digits before the
    // point, scientific beyond.
    EXPECT_EQ(
        each<double>([](double d) { return text(d); }, {0.1, 1.0 / 3, -2.5, -0.0, 1e16, 1e17, 1e-5,
                                                        -std::numeric_limits<double>::infinity()}),
        "0.10000000000000001 0.33333333333333331 -2.5 -0 10000000000000000 1e+17 "
        "1.0000000000000001e-05 -inf ");
    EXPECT_EQ(each<float>([](float f) { return text(f); },
                          {0.1f, 1.5f, std::numeric_limits<float>::max()}),
              "0.10000000149011612 1.5 3.4028234663852886e+38 ");
}

TEST(LexicalCast, ParsesBooleansByExactText) {
    EXPECT_TRUE(toBool("true"));
    EXPECT_TRUE(toBool("1"));
    for (const char* s : {"", "TRUE", "True", "true ", " true", "1 ", "01", "yes", "false", "0"}) {
        EXPECT_FALSE(toBool(s)) << '"' << s << '"';
    }
}

TEST(LexicalCast, ParsesIntegers) {
    // A non-zero prefix is the value: the rest of the text is ignored. A sign alone has no
    // non-digit after it.
    EXPECT_EQ(
        each<const char*>(toInt, {"", "0", "-0", "+000", "-42", "2147483647", "12abc", "1.5", "-"}),
        "0 0 0 0 -42 2147483647 12 1 0 ");
    // Zero from text that is not all digits marks it as no number.
    for (const char* s : {"abc", "0x", "0.5", " 0", "+-1"}) {
        EXPECT_EQ(toInt(s), kNotANumber) << '"' << s << '"';
    }
}

// Leading white space is skipped and trailing text ignored; a float narrows the double.
TEST(LexicalCast, ParsesDoublesAndFloats) {
    EXPECT_EQ(each<const char*>(toDouble, {"", "0.1", "-1.5e3", "2.5abc", "1,5", "  3.25", "abc"}),
              "0 0.10000000000000001 -1500 2.5 1 3.25 0 ");
    EXPECT_TRUE(std::signbit(toDouble("-0")));
    EXPECT_EQ(each<const char*>(toFloat, {"", "0.1", "2.5x", "-1e39"}),
              "0 0.10000000149011612 2.5 -inf ");
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

    EXPECT_EQ(text(1.5) + " " + text(0.25f) + " " + text(1234567), "1.5 0.25 1234567");
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
