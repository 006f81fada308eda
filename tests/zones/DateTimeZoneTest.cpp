// Dates read and written in the process's time zone. This program runs once per zone (see
// tests/CMakeLists.txt); each test states its expectation for UTC, CET-1 (one hour east, no
// daylight saving) and Europe/Berlin (daylight saving from the last Sunday of March to the last
// Sunday of October).
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include "internal/common/LocalZone.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using Corvane::Soa::Common::DateTime;
using Corvane::Soa::Internal::Common::LocalZone;

namespace {

// The expectation for the zone this process runs in.
template <class T>
T inZone(const T& utc, const T& cet, const T& berlin) {
    const char* tz = std::getenv("TZ");
    const std::string zone = tz != nullptr ? tz : "";
    return zone == "CET-1" ? cet : zone == "Europe/Berlin" ? berlin : utc;
}

std::string inZone(const char* utc, const char* cet, const char* berlin) {
    return inZone<std::string>(utc, cet, berlin);
}

std::string fields(const DateTime& d) { return d.toString("%Y-%m-%d %H:%M:%S"); }

// Reads the wire text and gives the local fields and the text written back.
std::pair<std::string, std::string> reread(const std::string& text) {
    const DateTime d(text);
    return {fields(d), d.toString()};
}

}  // namespace

TEST(DateTimeZone, ProcessRunsInAKnownZone) {
    const char* tz = std::getenv("TZ");
    ASSERT_NE(tz, nullptr) << "run through ctest, which sets TZ";
    EXPECT_EQ(LocalZone::standardOffset(), inZone(0, 60, 60));
    EXPECT_EQ(LocalZone::daylightOffset(), LocalZone::standardOffset() + 60);
}

TEST(DateTimeZone, WinterDateMovesToLocalTime) {
    const auto [local, wire] = reread("2016-12-05T14:03:09+01:00");
    EXPECT_EQ(local, inZone("2016-12-05 13:03:09", "2016-12-05 14:03:09", "2016-12-05 14:03:09"));
    EXPECT_EQ(wire, inZone("2016-12-05T13:03:09+00:00", "2016-12-05T14:03:09+01:00",
                           "2016-12-05T14:03:09+01:00"));
}

TEST(DateTimeZone, OffsetWithoutColonAndFractionReadTheSame) {
    for (const char* text : {"2016-12-05T14:03:09+0100", "2016-12-05T14:03:09.123+01:00",
                             "2016-12-05T14:03:09.5+0100"}) {
        EXPECT_EQ(DateTime(text), DateTime("2016-12-05T14:03:09+01:00")) << text;
    }
}

TEST(DateTimeZone, SummerDateGainsTheDaylightHourWhereItApplies) {
    const auto [local, wire] = reread("2016-07-01T12:00:00+01:00");
    EXPECT_EQ(local, inZone("2016-07-01 11:00:00", "2016-07-01 12:00:00", "2016-07-01 13:00:00"));
    EXPECT_EQ(wire, inZone("2016-07-01T11:00:00+00:00", "2016-07-01T12:00:00+01:00",
                           "2016-07-01T13:00:00+02:00"));
    // A summer text with the daylight offset comes back unchanged in Berlin.
    EXPECT_EQ(DateTime("2016-07-01T12:00:00+02:00").toString(),
              inZone("2016-07-01T10:00:00+00:00", "2016-07-01T11:00:00+01:00",
                     "2016-07-01T12:00:00+02:00"));
    EXPECT_EQ(DateTime("2016-07-01T12:00:00+02:00").timeZoneOffset(), inZone(0, 60, 120));
    EXPECT_EQ(DateTime("2016-12-01T12:00:00+02:00").timeZoneOffset(), inZone(0, 60, 60));
}

TEST(DateTimeZone, NegativeHalfHourOffsetLosesItsSign) {
    EXPECT_EQ(DateTime("2016-12-05T14:03:09-00:30"), DateTime("2016-12-05T14:03:09+00:30"));
    EXPECT_EQ(fields(DateTime("2016-12-05T14:03:09-00:30")),
              inZone("2016-12-05 13:33:09", "2016-12-05 14:33:09", "2016-12-05 14:33:09"));
    EXPECT_EQ(fields(DateTime("2016-12-05T14:03:09-05:00")),
              inZone("2016-12-05 19:03:09", "2016-12-05 20:03:09", "2016-12-05 20:03:09"));
}

TEST(DateTimeZone, DatesBefore1970AreNeverInDaylightSaving) {
    EXPECT_EQ(reread("1965-07-01T12:00:00+01:00").second,
              inZone("1965-07-01T11:00:00+00:00", "1965-07-01T12:00:00+01:00",
                     "1965-07-01T12:00:00+01:00"));
    EXPECT_EQ(DateTime(1969, 7, 1, 12, 0, 0).timeZoneOffset(), inZone(0, 60, 60));
}

TEST(DateTimeZone, FourDigitAndLongYears) {
    EXPECT_EQ(reread("0987-12-05T14:03:09+00:00").second,
              inZone("0987-12-05T14:03:09+00:00", "0987-12-05T15:03:09+01:00",
                     "0987-12-05T15:03:09+01:00"));
    EXPECT_EQ(reread("12016-12-05T14:03:09+00:00").second,
              inZone("12016-12-05T14:03:09+00:00", "12016-12-05T15:03:09+01:00",
                     "12016-12-05T15:03:09+01:00"));
    // The zone's rule runs on far into the future.
    EXPECT_EQ(reread("12016-07-05T14:03:09+00:00").second,
              inZone("12016-07-05T14:03:09+00:00", "12016-07-05T15:03:09+01:00",
                     "12016-07-05T16:03:09+02:00"));
}

TEST(DateTimeZone, UtcWrittenAsZOrWithoutOffsetLosesNothing) {
    const std::string expected = inZone("2014-03-22T00:19:59+00:00", "2014-03-22T01:19:59+01:00",
                                        "2014-03-22T01:19:59+01:00");
    for (const char* text : {"2014-03-22T00:19:59Z", "2014-03-22T00:19:59.250Z",
                             "2014-03-22T00:19:59", "2014-03-22T00:19:59.250"}) {
        EXPECT_EQ(DateTime(text).toString(), expected) << text;
    }
    EXPECT_EQ(DateTime("2014-07-22T00:19:59Z").toString(),
              inZone("2014-07-22T00:19:59+00:00", "2014-07-22T01:19:59+01:00",
                     "2014-07-22T02:19:59+02:00"));
}

TEST(DateTimeZone, NullDateIgnoresEveryOffset) {
    for (const char* text :
         {"", "0001-01-01T00:00:00-05:00", "0001-01-01T00:00:00+14:00", "0001-01-01T00:00:00"}) {
        const DateTime d(text);
        EXPECT_EQ(d, DateTime::getNullDate()) << text;
        EXPECT_EQ(d.toString(), "0001-01-01T00:00:00+00:00") << text;
        EXPECT_EQ(d.toString("%H"), "0001-01-01T00:00:00+00:00");
    }
}

TEST(DateTimeZone, WireTextRoundTripsThroughLexicalCast) {
    namespace Xml = Corvane::Soa::Common::Xml;
    for (const char* text : {"2016-12-05T14:03:09", "2016-07-01T00:00:00", "2000-02-29T23:59:59",
                             "1999-12-31T23:59:59", "2038-01-19T03:14:08"}) {
        const DateTime d = Xml::lexical_cast<DateTime>(std::string(text) + "+00:00");
        const std::string wire = Xml::lexical_cast<std::string>(d);
        EXPECT_EQ(Xml::lexical_cast<DateTime>(wire), d) << wire;
    }
}

TEST(DateTimeZone, SecondsSince1970AreLocalTime) {
    const DateTime d(std::int64_t{1480946589});  // 2016-12-05T14:03:09Z
    EXPECT_EQ(fields(d),
              inZone("2016-12-05 14:03:09", "2016-12-05 15:03:09", "2016-12-05 15:03:09"));
    EXPECT_EQ(d.toTime(), 1480946589);
    const DateTime summer(std::int64_t{1467374400});  // 2016-07-01T12:00:00Z
    EXPECT_EQ(summer.toTime(), 1467374400);
    EXPECT_EQ(summer.toString(), inZone("2016-07-01T12:00:00+00:00", "2016-07-01T13:00:00+01:00",
                                        "2016-07-01T14:00:00+02:00"));
}

// The daylight decision comes from a per-year table; it must answer exactly as mktime does,
// transitions included.
TEST(DateTimeZone, DaylightTableAgreesWithMktime) {
    for (int year = 1970; year <= 2040; ++year) {
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= 31; day += 3) {
                for (int hour = 0; hour < 24; hour += 5) {
                    ASSERT_EQ(LocalZone::isDaylight(year, month, day, hour, 30, 0),
                              LocalZone::isDaylightByMktime(year, month, day, hour, 30, 0))
                        << year << "-" << month << "-" << day << " " << hour;
                }
            }
        }
    }
    // Every second of the hours around Berlin's 2016 changes (March 27, October 30).
    for (const int day : {27, 30}) {
        const int month = day == 27 ? 3 : 10;
        for (int hour = 0; hour <= 3; ++hour) {
            for (int second = 0; second < 3600; ++second) {
                ASSERT_EQ(
                    LocalZone::isDaylight(2016, month, day, hour, second / 60, second % 60),
                    LocalZone::isDaylightByMktime(2016, month, day, hour, second / 60, second % 60))
                    << month << "/" << day << " " << hour << ":" << second;
            }
        }
    }
    // Unnormalised fields count as the time they normalise to.
    EXPECT_EQ(LocalZone::isDaylight(2016, 6, 31, 24, 60, 60),
              LocalZone::isDaylightByMktime(2016, 6, 31, 24, 60, 60));
    EXPECT_EQ(LocalZone::isDaylight(2016, 3, 26, 49, 0, 0),
              LocalZone::isDaylightByMktime(2016, 3, 26, 49, 0, 0));
}

TEST(DateTimeZone, CurrentOffsetIsOneOfTheTwo) {
    const int now = DateTime::getTimeZoneOffset();
    EXPECT_TRUE(now == LocalZone::standardOffset() || now == LocalZone::daylightOffset());
    EXPECT_EQ(DateTime().timeZoneOffset(), now);
}
