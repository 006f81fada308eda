#ifndef CORVANE_SOA_INTERNAL_COMMON_LOCALZONE_HPP
#define CORVANE_SOA_INTERNAL_COMMON_LOCALZONE_HPP

#include <corvane/soa/Export.hpp>

#include <string>

namespace Corvane::Soa::Internal::Common {

/// The process's local time zone, as dates need it: the standard and daylight offsets taken once
/// per process, their wire texts, and whether a local wall-clock time falls in daylight saving.
/// Private to the library; exported only so that the zone tests can compare it with `mktime`.
///
/// The daylight decision answers exactly what `mktime` of the fields (read as standard time)
/// followed by `localtime` would, but from a per-year table of the zone's transitions, built
/// once per year with those same calls: deciding costs a table look-up, not a `mktime`.
class CORVANE_SOA_API LocalZone {
public:
    /// Minutes east of UTC of the zone's standard time, taken at the first call.
    static int standardOffset();
    /// Always `standardOffset() + 60`.
    static int daylightOffset();
    /// "+hh:mm" / "-hh:mm" texts of the two offsets.
    static const std::string& standardOffsetText();
    static const std::string& daylightOffsetText();

    /// Whether the local time of the fields, read as standard time, is in daylight saving.
    /// Never before 1970.
    static bool isDaylight(int year, int month, int day, int hour, int minute, int second);
    /// The same decision made directly with `mktime` and `localtime`.
    static bool isDaylightByMktime(int year, int month, int day, int hour, int minute, int second);
};

}  // namespace Corvane::Soa::Internal::Common

#endif
