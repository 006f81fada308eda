// DateTime behaviour that does not depend on the time zone: validation, arithmetic, comparison
// and formatting of the raw fields.
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <gtest/gtest.h>

#include <climits>
#include <string>

using Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;
using Corvane::Soa::Common::DateTime;

namespace {

std::string fields(const DateTime& d) {
    return std::to_string(d.year()) + "-" + std::to_string(d.month()) + "-" +
           std::to_string(d.day()) + " " + std::to_string(d.hour()) + ":" +
           std::to_string(d.minute()) + ":" + std::to_string(d.second());
}

std::string sum(const DateTime& from, const DateTime& by) { return fields(from + by); }
std::string difference(const DateTime& from, const DateTime& by) { return fields(from - by); }

}  // namespace

TEST(DateTimeText, MalformedTextThrowsCode533WithTheInputQuoted) {
    for (const char* text :
         {"2016-13-01T00:00:00+00:00", "2016-00-01T00:00:00+00:00", "2016-12-32T00:00:00+00:00",
          "2016-12-00T00:00:00+00:00", "2016-12-05T25:00:00+00:00", "2016-12-05T14:60:00+00:00",
          "2016-12-05T14:03:60+00:00", "2016-12-05T14:03:09+25:00", "2016-12-05T14:03:09+01:60",
          "0000-12-05T14:03:09+00:00", "garbage", "2016-12-05", "T", ":::", "-5-12-05T14:03:09"}) {
        try {
            DateTime d{std::string(text)};
            ADD_FAILURE() << "no exception for " << text;
        } catch (const InternalServerException& e) {
            EXPECT_EQ(e.getCode(), 533);
            EXPECT_EQ(e.getLevel(), 3);
            EXPECT_EQ(e.getMessage(),
                      std::string("Unable to parse the input string as a Date. Expecting a "
                                  "string with the syntax of 'yyyy-MM-dd'T'HH:mm:ssZ'. Received "
                                  "the string '") +
                          text + "'.");
        }
    }
}

TEST(DateTimeText, AbsurdNumbersWrapWithoutUndefinedBehaviour) {
    // Validation does not check the month's length.
    EXPECT_NO_THROW(DateTime("2016-02-31T24:00:00+00:00"));
    EXPECT_NO_THROW(DateTime("2016-12-05T14:03:09-24:59"));
    // Year 2147483647 is valid; carrying past it wraps. Huge numbers saturate as strtol does.
    EXPECT_NO_THROW(DateTime("2147483647-12-31T23:59:59-24:00").toString());
    EXPECT_THROW(DateTime("99999999999999999999-12-31T23:59:59+00:00"), InternalServerException);
    EXPECT_THROW(DateTime("2016--5-31T23:59:59+00:00"), InternalServerException);
    EXPECT_NO_THROW(DateTime(INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX).toString());
    EXPECT_NO_THROW(DateTime(INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN).toString());
    EXPECT_NO_THROW(DateTime(2016, 1, 1, 0, 0, 0) + DateTime(INT_MAX, INT_MAX, INT_MAX, 0, 0, 0));
    EXPECT_NO_THROW(DateTime(2016, 1, 1, 0, 0, 0) - DateTime(INT_MAX, INT_MAX, INT_MAX, 0, 0, 0));
    // Like C text, the reading stops at a zero byte: what follows it is not seen.
    const std::string withZero("2016-12-05T14:03:09\0+05:00", 26);
    EXPECT_EQ(DateTime{withZero}, DateTime("2016-12-05T14:03:09+00:00"));
}

TEST(DateTimeArithmetic, AdditionCarriesUpToDaysThenAddsMonths) {
    // January 31 plus one month is February 31, by design.
    EXPECT_EQ(sum({2016, 1, 31, 10, 0, 0}, {0, 1, 0, 0, 0, 0}), "2016-2-31 10:0:0");
    EXPECT_EQ(sum({2016, 12, 31, 0, 0, 0}, {0, 0, 1, 0, 0, 0}), "2017-1-1 0:0:0");
    EXPECT_EQ(sum({2016, 12, 31, 23, 59, 59}, {0, 0, 0, 0, 0, 1}), "2017-1-1 0:0:0");
    EXPECT_EQ(sum({2016, 2, 28, 12, 0, 0}, {0, 0, 1, 12, 0, 0}), "2016-3-1 0:0:0");
    EXPECT_EQ(sum({2015, 2, 28, 0, 0, 0}, {0, 0, 1, 0, 0, 0}), "2015-3-1 0:0:0");
    EXPECT_EQ(sum({2016, 11, 15, 0, 0, 0}, {1, 14, 0, 0, 0, 0}), "2019-1-15 0:0:0");
    EXPECT_EQ(sum({2016, 1, 1, 0, 0, 0}, {0, 0, 366, 0, 0, 0}), "2017-1-1 0:0:0");
    // Days are counted through every month and leap year on the way.
    EXPECT_EQ(sum({2000, 3, 1, 0, 0, 0}, {0, 0, 146097 * 3 + 10, 0, 0, 0}), "3200-3-11 0:0:0");
    DateTime d(2016, 1, 31, 0, 0, 0);
    const DateTime returned = (d += DateTime(0, 0, 1, 0, 0, 0));
    EXPECT_EQ(fields(d), "2016-2-1 0:0:0");
    EXPECT_EQ(returned, d);
}

TEST(DateTimeArithmetic, SubtractionBorrowsDownFromDays) {
    EXPECT_EQ(difference({2016, 3, 1, 0, 0, 0}, {0, 0, 1, 0, 0, 0}), "2016-2-29 0:0:0");
    EXPECT_EQ(difference({2015, 3, 1, 0, 0, 0}, {0, 0, 1, 0, 0, 0}), "2015-2-28 0:0:0");
    EXPECT_EQ(difference({2017, 1, 1, 0, 0, 0}, {0, 0, 0, 0, 0, 1}), "2016-12-31 23:59:59");
    EXPECT_EQ(difference({2016, 1, 15, 0, 0, 0}, {0, 1, 0, 0, 0, 0}), "2015-12-15 0:0:0");
    EXPECT_EQ(difference({2016, 3, 15, 0, 0, 0}, {1, 15, 0, 0, 0, 0}), "2013-12-15 0:0:0");
    EXPECT_EQ(difference({2016, 3, 31, 0, 0, 0}, {0, 1, 0, 0, 0, 0}), "2016-2-31 0:0:0");
    EXPECT_EQ(difference({2016, 12, 5, 1, 2, 3}, {0, 0, 0, 0, 0, 7384}), "2016-12-4 22:58:59");
    EXPECT_EQ(difference({3200, 3, 11, 0, 0, 0}, {0, 0, 146097 * 3 + 10, 0, 0, 0}),
              "2000-3-1 0:0:0");
    DateTime d(2016, 3, 1, 0, 0, 0);
    d -= DateTime(0, 0, 1, 0, 0, 0);
    EXPECT_EQ(fields(d), "2016-2-29 0:0:0");
}

TEST(DateTimeComparison, ComparesRawFieldsInOrder) {
    const DateTime a(2016, 12, 5, 14, 3, 9);
    EXPECT_EQ(a, DateTime(2016, 12, 5, 14, 3, 9));
    EXPECT_NE(a, DateTime(2016, 12, 5, 14, 3, 10));
    EXPECT_LT(a, DateTime(2016, 12, 5, 14, 3, 10));
    EXPECT_LT(a, DateTime(2017, 1, 1, 0, 0, 0));
    EXPECT_GT(a, DateTime(2016, 11, 30, 23, 59, 59));
    EXPECT_LE(a, a);
    EXPECT_GE(a, a);
    // No normalisation: 14:02:60 is the same moment but not the same value, and sorts first.
    const DateTime unnormalised(2016, 12, 5, 14, 2, 60);
    EXPECT_NE(a, unnormalised);
    EXPECT_LT(unnormalised, a);
}

TEST(DateTimeFormat, FormatsFieldsWithStrftime) {
    const DateTime d(2016, 12, 5, 14, 3, 9);
    EXPECT_EQ(d.toString("%Y/%m/%d %H.%M.%S"), "2016/12/05 14.03.09");
    EXPECT_EQ(d.toString("%d %b %Y"), "05 Dec 2016");
    EXPECT_EQ(DateTime(12016, 1, 2, 3, 4, 5).toString("%Y-%m-%d"), "12016-01-02");
    EXPECT_EQ(DateTime(987, 1, 2, 3, 4, 5).toString("%Y"), "987");
    EXPECT_EQ(DateTime::getNullDate().toString("%Y"), "0001-01-01T00:00:00+00:00");
    EXPECT_EQ(fields(DateTime::getNullDate()), "1-1-1 0:0:0");
}

TEST(DateTimeFormat, AppendToAddsTheWireTextAfterWhatIsThere) {
    // The usual fields, the null date, and fields outside the usual ranges (strftime's path).
    for (const DateTime& d : {DateTime(2016, 12, 5, 14, 3, 9), DateTime::getNullDate(),
                              DateTime(12016, 1, 2, 3, 4, 5), DateTime(2016, 100, 2, 3, 4, 5)}) {
        std::string text = "at ";
        d.appendTo(text);
        EXPECT_EQ(text, "at " + d.toString());
    }
}
