#ifndef CORVANE_SOA_COMMON_VERSION_HPP
#define CORVANE_SOA_COMMON_VERSION_HPP

#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AccountedAllocation.hpp>

#include <cstdint>
#include <string>

namespace Corvane::Soa::Common {

/// A three-part version number (major, minor, patch), compared part by part.
class CORVANE_SOA_API Version {
public:
    Version(int major, int minor, int patch) noexcept
        : m_major(major), m_minor(minor), m_patch(patch) {}

    /// Reads "11000.2.0", "V11000.2.0" or a build label "V11000.2.0.30_20161205.00": the parts
    /// are separated by any of 'V', 'P' and '.'; a fourth part of the form "dd_..." replaces the
    /// patch by its first digit (the service-pack level). Missing parts keep 2005.1.0.
    explicit Version(const std::string& text);

    int getMajor() const noexcept { return m_major; }
    int getMinor() const noexcept { return m_minor; }
    int getPatch() const noexcept { return m_patch; }

    bool operator==(const Version& other) const noexcept;
    bool operator!=(const Version& other) const noexcept { return !(*this == other); }
    bool operator<(const Version& other) const noexcept;
    bool operator<=(const Version& other) const noexcept { return !(other < *this); }
    bool operator>(const Version& other) const noexcept { return other < *this; }
    bool operator>=(const Version& other) const noexcept { return !(*this < other); }

    /// "11000.2.0"
    static std::string getCorvaneVersion();
    /// "V11000.2.0.30_20161205.00"
    static std::string getCorvaneVersionLabel();

    CORVANE_SOA_ACCOUNTED_ALLOCATION("Version")

private:
    std::int32_t m_major;
    std::int32_t m_minor;
    std::int32_t m_patch;
};

}  // namespace Corvane::Soa::Common

#endif
