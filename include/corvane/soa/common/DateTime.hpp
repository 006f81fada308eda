#ifndef CORVANE_SOA_COMMON_DATETIME_HPP
#define CORVANE_SOA_COMMON_DATETIME_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AccountedAllocation.hpp>

#include <cstdint>
#include <ctime>
#include <string>

namespace Corvane::Soa::Common {

/// A calendar date and time of day in the machine's local wall-clock time: six integers.
///
/// On the wire a date is ISO 8601 text with a numeric UTC offset, "2016-12-05T14:03:09+01:00".
/// Reading converts the text's offset to local time and keeps no offset; writing appends the
/// local offset (standard or daylight-saving) of the value. 0001-01-01T00:00:00 is the null date,
/// the absence of a date, and always writes as "0001-01-01T00:00:00+00:00".
///
/// The numeric constructors and the arithmetic accept any numbers unchecked; only the text
/// constructor validates. The local zone's offsets are taken once per process, from `TZ`.
class CORVANE_SOA_API DateTime {
public:
    /// The current local time.
    DateTime();
    /// The local time of `seconds` since 1970-01-01T00:00:00Z.
    explicit DateTime(std::int64_t seconds);
    DateTime(int year, int month, int day, int hour, int minute, int second);
    /// Reads the wire text form; throws `InternalServerException` (code 533) on malformed text.
    explicit DateTime(const std::string& text);

    static DateTime getNullDate();

    int year() const noexcept { return m_year; }
    int month() const noexcept { return m_month; }
    int day() const noexcept { return m_day; }
    int hour() const noexcept { return m_hour; }
    int minute() const noexcept { return m_minute; }
    int second() const noexcept { return m_second; }

    /// The wire text form with the local offset of this value.
    std::string toString() const;
    /// Appends the wire text form to `out`: writers that keep a buffer of their own need no
    /// string of its own for each date.
    void appendTo(std::string& out) const;
    /// The fields formatted with `strftime`; no offset is appended.
    std::string toString(const std::string& format) const;

    /// Minutes east of UTC in force at this value: the daylight offset in daylight-saving time.
    int timeZoneOffset() const;
    /// Minutes east of UTC in force now.
    static int getTimeZoneOffset();
    /// Seconds since 1970-01-01T00:00:00Z of this local time.
    std::int64_t toTime() const;

    bool operator==(const DateTime& other) const noexcept;
    bool operator!=(const DateTime& other) const noexcept { return !(*this == other); }
    bool operator<(const DateTime& other) const noexcept;
    bool operator>(const DateTime& other) const noexcept { return other < *this; }
    bool operator<=(const DateTime& other) const noexcept { return !(other < *this); }
    bool operator>=(const DateTime& other) const noexcept { return !(*this < other); }

    /// Adds an amount whose fields count years, months, days, hours, minutes and seconds.
    /// Carries run from seconds up to days; months are added last and the day is not clamped,
    /// so January 31 plus one month is February 31.
    DateTime operator+(const DateTime& amount) const;
    /// Subtracts an amount, borrowing from seconds up to days; months are taken last.
    DateTime operator-(const DateTime& amount) const;
    DateTime operator+=(const DateTime& amount);
    DateTime operator-=(const DateTime& amount);

    CORVANE_SOA_ACCOUNTED_ALLOCATION("DateTime")

private:
    void init(int year, int month, int day, int hour, int minute, int second) noexcept;
    bool isDayLight() const;
    bool isNull() const noexcept;
    void setFromLocalTime(std::int64_t seconds);
    std::tm dtElementsToTm() const;

    std::int32_t m_year = 0;
    std::int32_t m_month = 0;
    std::int32_t m_day = 0;
    std::int32_t m_hour = 0;
    std::int32_t m_minute = 0;
    std::int32_t m_second = 0;
};

}  // namespace Corvane::Soa::Common

#endif
