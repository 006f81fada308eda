#include "internal/common/LocalZone.hpp"

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <map>
#include <mutex>
#include <vector>

namespace Corvane::Soa::Internal::Common {

namespace {

using Seconds = std::int64_t;  // seconds of a wall-clock reading counted from 1970-01-01T00:00

constexpr Seconds kDay = 86400;

// Days from 1970-01-01 to the given civil date (proleptic Gregorian); any month is normalised
// into the year first, and days beyond the month's length simply run on.
std::int64_t daysFromCivil(std::int64_t year, std::int64_t month, std::int64_t day) {
    const std::int64_t m0 = month - 1;
    year += m0 >= 0 ? m0 / 12 : -((11 - m0) / 12);
    month = m0 - 12 * (m0 >= 0 ? m0 / 12 : -((11 - m0) / 12)) + 1;
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yoe = year - era * 400;
    const std::int64_t doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5;
    const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468 + (day - 1);
}

struct Civil {
    std::int64_t year;
    int month, day, hour, minute, second;
};

Civil civilFromSeconds(Seconds s) {
    std::int64_t days = s / kDay;
    Seconds rest = s % kDay;
    if (rest < 0) {
        rest += kDay;
        --days;
    }
    const std::int64_t z = days + 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const std::int64_t doe = z - era * 146097;
    const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const std::int64_t mp = (5 * doy + 2) / 153;
    const auto day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    const auto month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    const std::int64_t year = yoe + era * 400 + (month <= 2 ? 1 : 0);
    return Civil{year,
                 month,
                 day,
                 static_cast<int>(rest / 3600),
                 static_cast<int>(rest / 60 % 60),
                 static_cast<int>(rest % 60)};
}

Seconds secondsFromFields(std::int64_t year, int month, int day, int hour, int minute, int second) {
    return daysFromCivil(year, month, day) * kDay + std::int64_t{hour} * 3600 +
           std::int64_t{minute} * 60 + second;
}

// tm_year of a year, wrapping instead of overflowing for absurd years.
int tmYear(std::int64_t year) {
    return static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(year - 1900)));
}

bool daylightByMktime(std::int64_t year, int month, int day, int hour, int minute, int second) {
    if (year <= 1969) {
        return false;
    }
    std::tm fields{};
    fields.tm_year = tmYear(year);
    fields.tm_mon = static_cast<int>(static_cast<std::uint32_t>(month) - 1U);
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    const std::time_t t = std::mktime(&fields);
    if (t < 0) {
        return false;
    }
    std::tm local{};
    return localtime_r(&t, &local) != nullptr && local.tm_isdst > 0;
}

bool daylightAt(Seconds s) {
    const Civil c = civilFromSeconds(s);
    return daylightByMktime(c.year, c.month, c.day, c.hour, c.minute, c.second);
}

// The daylight state through one civil year: the state at its first second and every change,
// as the first second (of the wall-clock count) that has the new state.
struct YearTable {
    bool initial = false;
    std::vector<std::pair<Seconds, bool>> changes;

    bool at(Seconds s) const {
        bool state = initial;
        for (const auto& change : changes) {  // a handful of entries at most
            if (s < change.first) {
                break;
            }
            state = change.second;
        }
        return state;
    }
};

// Samples every day of the year and, where two samples differ, searches the second at which the
// state changes. Real zones change at most once a day.
YearTable buildYearTable(std::int64_t year) {
    const Seconds first = daysFromCivil(year, 1, 1) * kDay;
    const Seconds last = daysFromCivil(year + 1, 1, 1) * kDay - 1;
    YearTable table;
    table.initial = daylightAt(first);
    Seconds previous = first;
    bool state = table.initial;
    for (Seconds sample = first + kDay;; sample += kDay) {
        const Seconds point = sample > last ? last : sample;
        const bool now = daylightAt(point);
        if (now != state) {
            Seconds low = previous;  // state at low: `state`; at high: `now`
            Seconds high = point;
            while (high - low > 1) {
                const Seconds mid = low + (high - low) / 2;
                (daylightAt(mid) == state ? low : high) = mid;
            }
            table.changes.emplace_back(high, now);
            state = now;
        }
        if (point == last) {
            break;
        }
        previous = point;
    }
    return table;
}

// Years whose tables are kept; outside them the decision is made directly.
constexpr std::int64_t kFirstTabledYear = 1970;
constexpr std::int64_t kLastTabledYear = 100000;

const YearTable& yearTable(std::int64_t year) {
    thread_local std::int64_t lastYear = 0;
    thread_local const YearTable* lastTable = nullptr;
    if (lastTable != nullptr && lastYear == year) {
        return *lastTable;
    }
    static std::mutex mutex;
    static std::map<std::int64_t, YearTable> tables;  // entries never move once inserted
    std::lock_guard<std::mutex> lock(mutex);
    auto entry = tables.find(year);
    if (entry == tables.end()) {
        entry = tables.emplace(year, buildYearTable(year)).first;
    }
    lastYear = year;
    lastTable = &entry->second;
    return entry->second;
}

std::string offsetText(int offset) {
    char text[16];
    const int hours = offset / 60;
    const int minutes = offset % 60;
    std::snprintf(text, sizeof text, "%c%.2d:%.2d", offset >= 0 ? '+' : '-',
                  hours < 0 ? -hours : hours, minutes < 0 ? -minutes : minutes);
    return text;
}

struct Offsets {
    int standard = 0;
    int daylight = 60;
    std::string standardText;
    std::string daylightText;
};

// The standard offset is the difference between now read as local time and now's UTC fields read
// as local standard time: the UTC fields carry no daylight flag, so daylight saving never enters.
Offsets computeOffsets() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    std::tm utc{};
    localtime_r(&now, &local);
    gmtime_r(&now, &utc);
    const std::time_t l = std::mktime(&local);
    const std::time_t g = std::mktime(&utc);
    Offsets offsets;
    offsets.standard = static_cast<int>(std::difftime(l, g)) / 60;
    offsets.daylight = offsets.standard + 60;
    offsets.standardText = offsetText(offsets.standard);
    offsets.daylightText = offsetText(offsets.daylight);
    return offsets;
}

const Offsets& offsets() {
    static const Offsets computed = computeOffsets();
    return computed;
}

}  // namespace

int LocalZone::standardOffset() { return offsets().standard; }

int LocalZone::daylightOffset() { return offsets().daylight; }

const std::string& LocalZone::standardOffsetText() { return offsets().standardText; }

const std::string& LocalZone::daylightOffsetText() { return offsets().daylightText; }

bool LocalZone::isDaylight(int year, int month, int day, int hour, int minute, int second) {
    if (year <= 1969) {
        return false;
    }
    // mktime normalises the fields exactly as this count does, so the decision depends on the
    // normalised reading only.
    const Seconds s = secondsFromFields(year, month, day, hour, minute, second);
    const Civil c = civilFromSeconds(s);
    if (c.year < kFirstTabledYear || c.year > kLastTabledYear) {
        return daylightByMktime(year, month, day, hour, minute, second);
    }
    return yearTable(c.year).at(s);
}

bool LocalZone::isDaylightByMktime(int year, int month, int day, int hour, int minute, int second) {
    return daylightByMktime(year, month, day, hour, minute, second);
}

}  // namespace Corvane::Soa::Internal::Common
