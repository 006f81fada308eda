#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include "internal/common/LocalZone.hpp"

#include <climits>
#include <cstring>
#include <ctime>

namespace Corvane::Soa::Common {

using Internal::Common::LocalZone;

namespace {

constexpr int kMonthLengths[2][13] = {
    {31, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
    {31, 31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
};

bool isLeapYear(std::int64_t year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

// Length of month m of year y. Month 0 reads the table's spare first entry (31); other months
// outside 1..12, which only unchecked values can hold, count as the month they normalise to.
std::int64_t monthLength(std::int64_t m, std::int64_t y) {
    if (m < 0 || m > 12) {
        m = ((m - 1) % 12 + 12) % 12 + 1;
    }
    return kMonthLengths[isLeapYear(y) ? 1 : 0][m];
}

// Days in 400 consecutive years of the Gregorian calendar, wherever they start.
constexpr std::int64_t kDaysIn400Years = 146097;

// The arithmetic runs in 64 bits and each field keeps the low 32 bits of its result, so that
// absurd values wrap instead of overflowing.
int wrap(std::int64_t value) {
    return static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value)));
}

const char kNullText[] = "0001-01-01T00:00:00";
const char kNullWireText[] = "0001-01-01T00:00:00+00:00";
const char kWireFormat[] = "%Y-%m-%dT%H:%M:%S";

[[noreturn]] void throwUnparsable(const std::string& text) {
    throw Schemas::Soa::_2006_03::Exceptions::InternalServerException(
        "Unable to parse the input string as a Date. Expecting a string with the syntax of "
        "'yyyy-MM-dd'T'HH:mm:ssZ'. Received the string '" +
            text + "'.",
        533, 3);
}

// Reads the text as sscanf's "%d" conversions and literal characters would: blanks before a
// number are skipped, a number is an optional sign and digits, and the first mismatch stops
// the reading (later fields keep their values). Reading stops at a zero byte, as C text does.
class FieldReader {
public:
    explicit FieldReader(const std::string& text)
        : m_p(text.c_str()), m_end(text.c_str() + std::strlen(text.c_str())) {}

    bool number(int& out) {
        while (m_p != m_end && (*m_p == ' ' || (*m_p >= '\t' && *m_p <= '\r'))) {
            ++m_p;
        }
        const char* p = m_p;
        bool negative = false;
        if (p != m_end && (*p == '+' || *p == '-')) {
            negative = *p == '-';
            ++p;
        }
        if (p == m_end || *p < '0' || *p > '9') {
            return false;
        }
        // Like strtol: the magnitude saturates at the long range; the int keeps its low bits.
        std::uint64_t magnitude = 0;
        constexpr std::uint64_t kLimit = static_cast<std::uint64_t>(LONG_MAX) + 1;
        for (; p != m_end && *p >= '0' && *p <= '9'; ++p) {
            const auto digit = static_cast<std::uint64_t>(*p - '0');
            magnitude = magnitude > (kLimit - digit) / 10 ? kLimit : magnitude * 10 + digit;
        }
        if (!negative && magnitude == kLimit) {
            magnitude = kLimit - 1;
        }
        const std::uint64_t value = negative ? (~magnitude + 1) : magnitude;
        out = static_cast<int>(static_cast<std::uint32_t>(value));
        m_p = p;
        return true;
    }

    bool literal(char c) {
        if (m_p != m_end && *m_p == c) {
            ++m_p;
            return true;
        }
        return false;
    }

private:
    const char* m_p;
    const char* m_end;
};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Length of a run of digits at `pos`.
std::size_t digitsAt(const std::string& text, std::size_t pos) {
    std::size_t n = 0;
    while (pos + n < text.size() && isDigit(text[pos + n])) {
        ++n;
    }
    return n;
}

// Position after "Y-M-DTh:m:s" with an optional ".fraction" (each part one or more digits), or
// npos when the text does not start so.
std::size_t endOfDateAndTime(const std::string& text) {
    static constexpr char kSeparators[] = "--T::";
    std::size_t pos = 0;
    for (int part = 0; part < 6; ++part) {
        const std::size_t n = digitsAt(text, pos);
        if (n == 0) {
            return std::string::npos;
        }
        pos += n;
        if (part < 5) {
            if (pos >= text.size() || text[pos] != kSeparators[part]) {
                return std::string::npos;
            }
            ++pos;
        }
    }
    if (pos < text.size() && text[pos] == '.' && digitsAt(text, pos + 1) > 0) {
        pos += 1 + digitsAt(text, pos + 1);
    }
    return pos;
}

// Other writers give UTC as a trailing "Z", or give no offset at all; both mean +00:00, and
// are rewritten so, since the offset rule below would misread them.
std::string withNumericOffset(const std::string& text) {
    const std::size_t end = endOfDateAndTime(text);
    if (end == std::string::npos) {
        return text;
    }
    if (end == text.size()) {
        return text + "+00:00";
    }
    if (end + 1 == text.size() && text[end] == 'Z') {
        return text.substr(0, end) + "+00:00";
    }
    return text;
}

}  // namespace

DateTime::DateTime() { setFromLocalTime(static_cast<std::int64_t>(std::time(nullptr))); }

DateTime::DateTime(std::int64_t seconds) { setFromLocalTime(seconds); }

DateTime::DateTime(int year, int month, int day, int hour, int minute, int second) {
    init(year, month, day, hour, minute, second);
}

DateTime::DateTime(const std::string& text) {
    if (text.empty() || text.compare(0, sizeof kNullText - 1, kNullText) == 0) {
        init(1, 1, 1, 0, 0, 0);
        return;
    }
    std::string work = withNumericOffset(text);
    std::size_t colons = 0;
    for (const char c : work) {
        colons += c == ':' ? 1 : 0;
    }
    if (colons < 3) {
        // An offset written +0100 gains its ':' here.
        work.insert(work.size() >= 2 ? work.size() - 2 : 0, 1, ':');
    }

    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int fraction = 0;
    int offsetHours = 0;
    int offsetMinutes = 0;
    FieldReader in(work);
    const bool hasFraction = work.find('.') != std::string::npos;
    // Each step runs only when the one before it succeeded, as with sscanf.
    (void)(in.number(year) && in.literal('-') && in.number(month) && in.literal('-') &&
           in.number(day) && in.literal('T') && in.number(hour) && in.literal(':') &&
           in.number(minute) && in.literal(':') && in.number(second) &&
           (!hasFraction || (in.literal('.') && in.number(fraction))) && in.number(offsetHours) &&
           in.literal(':') && in.number(offsetMinutes));

    if (year < 1 || month < 1 || month > 12 || day < 1 || day > 31 || hour < 0 || hour > 24 ||
        minute < 0 || minute > 59 || second < 0 || second > 59 || offsetHours < -24 ||
        offsetHours > 24 || offsetMinutes < 0 || offsetMinutes > 59) {
        throwUnparsable(text);
    }
    init(year, month, day, hour, minute, second);

    // To local time: move by the difference between the local standard offset and the text's.
    // The sign of the offset is that of its hours, so -00:30 counts as +00:30.
    const int offset = offsetHours * 60 + (offsetHours < 0 ? -offsetMinutes : offsetMinutes);
    const int diff = LocalZone::standardOffset() - offset;
    const int magnitude = diff < 0 ? -diff : diff;
    const DateTime shift(0, 0, 0, magnitude / 60, magnitude % 60, 0);
    *this = diff < 0 ? *this - shift : *this + shift;
    if (isDayLight()) {
        const int daylight = LocalZone::daylightOffset() - LocalZone::standardOffset();
        *this = *this + DateTime(0, 0, 0, daylight / 60, daylight % 60, 0);
    }
}

DateTime DateTime::getNullDate() { return DateTime(1, 1, 1, 0, 0, 0); }

void DateTime::init(int year, int month, int day, int hour, int minute, int second) noexcept {
    m_year = year;
    m_month = month;
    m_day = day;
    m_hour = hour;
    m_minute = minute;
    m_second = second;
}

void DateTime::setFromLocalTime(std::int64_t seconds) {
    const auto t = static_cast<std::time_t>(seconds);
    std::tm local{};
    if (localtime_r(&t, &local) == nullptr) {
        *this = getNullDate();  // beyond what the C library can represent
        return;
    }
    init(wrap(std::int64_t{local.tm_year} + 1900), local.tm_mon + 1, local.tm_mday, local.tm_hour,
         local.tm_min, local.tm_sec);
}

bool DateTime::isNull() const noexcept {
    return m_year == 1 && m_month == 1 && m_day == 1 && m_hour == 0 && m_minute == 0 &&
           m_second == 0;
}

bool DateTime::isDayLight() const {
    return LocalZone::isDaylight(m_year, m_month, m_day, m_hour, m_minute, m_second);
}

std::string DateTime::toString() const {
    std::string text;
    appendTo(text);
    return text;
}

void DateTime::appendTo(std::string& out) const {
    if (isNull()) {
        out += kNullWireText;
        return;
    }
    const std::string& offset =
        isDayLight() ? LocalZone::daylightOffsetText() : LocalZone::standardOffsetText();
    // The usual case is written digit by digit: exactly what strftime writes for fields in
    // these ranges, at a fraction of its cost.
    const auto twoDigits = [](int v) { return v >= 0 && v <= 99; };
    if (m_year >= 0 && twoDigits(m_month) && twoDigits(m_day) && twoDigits(m_hour) &&
        twoDigits(m_minute) && twoDigits(m_second)) {
        char text[40];
        char* p = text;
        char digits[12];
        int n = 0;
        for (unsigned y = static_cast<unsigned>(m_year); n == 0 || y != 0; y /= 10) {
            digits[n++] = static_cast<char>('0' + y % 10);
        }
        for (int pad = n; pad < 4; ++pad) {
            *p++ = '0';  // years below 1000 keep four digits
        }
        while (n > 0) {
            *p++ = digits[--n];
        }
        const int rest[5] = {m_month, m_day, m_hour, m_minute, m_second};
        const char separators[5] = {'-', '-', 'T', ':', ':'};
        for (int i = 0; i < 5; ++i) {
            *p++ = separators[i];
            *p++ = static_cast<char>('0' + rest[i] / 10);
            *p++ = static_cast<char>('0' + rest[i] % 10);
        }
        out.reserve(out.size() + static_cast<std::size_t>(p - text) + offset.size());
        out.append(text, p);
        out += offset;
        return;
    }
    std::string result = toString(kWireFormat);
    const std::size_t dash = result.find('-');
    if (dash < 4) {  // npos is never below 4
        result.insert(0, 4 - dash, '0');
    }
    out += result;
    out += offset;
}

// The fields as the C library's broken-down time, with the daylight flag of this value.
std::tm DateTime::dtElementsToTm() const {
    std::tm fields{};
    fields.tm_year = wrap(std::int64_t{m_year} - 1900);
    fields.tm_mon = wrap(std::int64_t{m_month} - 1);
    fields.tm_mday = m_day;
    fields.tm_hour = m_hour;
    fields.tm_min = m_minute;
    fields.tm_sec = m_second;
    fields.tm_isdst = isDayLight() ? 1 : 0;
    return fields;
}

std::string DateTime::toString(const std::string& format) const {
    if (isNull()) {
        return kNullWireText;
    }
    std::tm fields = dtElementsToTm();
    // Years above 9999 are printed as 2599 and then put back in full.
    const bool longYear = m_year > 9999;
    if (longYear) {
        fields.tm_year = 699;
    }
    char text[128];
    const std::size_t length = std::strftime(text, sizeof text, format.c_str(), &fields);
    std::string result(text, length);
    if (longYear) {
        const std::size_t at = result.find("2599");
        if (at != std::string::npos) {
            result.replace(at, 4, std::to_string(m_year));
        }
    }
    return result;
}

int DateTime::timeZoneOffset() const {
    return isDayLight() ? LocalZone::daylightOffset() : LocalZone::standardOffset();
}

int DateTime::getTimeZoneOffset() {
    const int standard = LocalZone::standardOffset();
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    bool daylight = false;
    if (localtime_r(&now, &local) != nullptr && local.tm_year >= 70) {
        std::tm copy = local;
        const std::time_t t = std::mktime(&copy);
        std::tm again{};
        daylight = t >= 0 && localtime_r(&t, &again) != nullptr && again.tm_isdst > 0;
    }
    return daylight ? LocalZone::daylightOffset() : standard;
}

std::int64_t DateTime::toTime() const {
    std::tm fields = dtElementsToTm();
    return static_cast<std::int64_t>(std::mktime(&fields));
}

bool DateTime::operator==(const DateTime& other) const noexcept {
    return this == &other ||
           (m_year == other.m_year && m_month == other.m_month && m_day == other.m_day &&
            m_hour == other.m_hour && m_minute == other.m_minute && m_second == other.m_second);
}

bool DateTime::operator<(const DateTime& other) const noexcept {
    const std::int32_t a[6] = {m_year, m_month, m_day, m_hour, m_minute, m_second};
    const std::int32_t b[6] = {other.m_year, other.m_month,  other.m_day,
                               other.m_hour, other.m_minute, other.m_second};
    for (int i = 0; i < 6; ++i) {
        if (a[i] != b[i]) {
            return a[i] < b[i];
        }
    }
    return false;
}

DateTime DateTime::operator+(const DateTime& amount) const {
    std::int64_t second = std::int64_t{m_second} + amount.m_second;
    std::int64_t carry = second / 60;
    second -= carry * 60;
    std::int64_t minute = std::int64_t{m_minute} + amount.m_minute + carry;
    carry = minute / 60;
    minute -= carry * 60;
    std::int64_t hour = std::int64_t{m_hour} + amount.m_hour + carry;
    carry = hour / 24;
    hour -= carry * 24;
    std::int64_t day = std::int64_t{m_day} + amount.m_day + carry;
    std::int64_t m = m_month;
    std::int64_t y = m_year;
    while (day > monthLength(m, y)) {
        if (m >= 1 && m <= 12 && day > kDaysIn400Years + 31) {
            day -= kDaysIn400Years;  // 4800 turns of this loop, taken at once
            y += 400;
            continue;
        }
        day -= monthLength(m, y);
        ++m;
        if (m > 12) {
            ++y;
            m -= 12;
        }
    }
    m += amount.m_month;
    std::int64_t year = std::int64_t{amount.m_year} + y;
    if (m >= 13) {
        const std::int64_t k = (m - 13) / 12 + 1;
        m -= 12 * k;
        year += k;
    }
    DateTime result(0, 0, 0, 0, 0, 0);
    result.init(wrap(year), wrap(m), wrap(day), wrap(hour), wrap(minute), wrap(second));
    return result;
}

DateTime DateTime::operator-(const DateTime& amount) const {
    std::int64_t minuteOfA = m_minute;
    std::int64_t hourOfA = m_hour;
    std::int64_t dayOfA = m_day;
    std::int64_t second = std::int64_t{m_second} - amount.m_second;
    if (second < 0) {
        const std::int64_t k = (-second - 1) / 60 + 1;
        second += 60 * k;
        minuteOfA -= k;
    }
    std::int64_t minute = minuteOfA - amount.m_minute;
    if (minute < 0) {
        const std::int64_t k = (-minute - 1) / 60 + 1;
        minute += 60 * k;
        hourOfA -= k;
    }
    std::int64_t hour = hourOfA - amount.m_hour;
    if (hour < 0) {
        const std::int64_t k = (-hour - 1) / 24 + 1;
        hour += 24 * k;
        dayOfA -= k;
    }
    std::int64_t day = dayOfA - amount.m_day;
    std::int64_t m = m_month;
    std::int64_t y = m_year;
    while (day < 1) {
        if (m >= 1 && m <= 12 && day < -kDaysIn400Years) {
            day += kDaysIn400Years;  // 4800 turns of this loop, taken at once
            y -= 400;
            continue;
        }
        --m;
        if (m < 1) {
            m = 12;
            --y;
        }
        day += monthLength(m, y);
    }
    const std::int64_t monthBefore = m;
    m -= amount.m_month;
    std::int64_t year = y - amount.m_year;
    if (m < 1) {
        const std::int64_t k = (std::int64_t{amount.m_month} - monthBefore) / 12 + 1;
        m = monthBefore - amount.m_month + 12 * k;
        year = y - k - amount.m_year;
    }
    DateTime result(0, 0, 0, 0, 0, 0);
    result.init(wrap(year), wrap(m), wrap(day), wrap(hour), wrap(minute), wrap(second));
    return result;
}

DateTime DateTime::operator+=(const DateTime& amount) {
    *this = *this + amount;
    return *this;
}

DateTime DateTime::operator-=(const DateTime& amount) {
    *this = *this - amount;
    return *this;
}

}  // namespace Corvane::Soa::Common
