#include <corvane/soa/common/StringUtils.hpp>
#include <corvane/soa/common/Version.hpp>

#include <cstdlib>

namespace Corvane::Soa::Common {

namespace {

// atoi without its undefined behaviour on overflow: strtol's value, keeping the low 32 bits.
int toInt(const std::string& text) {
    const long value = std::strtol(text.c_str(), nullptr, 10);
    return static_cast<int>(static_cast<std::uint32_t>(static_cast<unsigned long>(value)));
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

Version::Version(const std::string& text) : m_major(2005), m_minor(1), m_patch(0) {
    const std::vector<std::string> pieces = StringUtils::split(text, "VP.");
    if (!pieces.empty()) {
        m_major = toInt(pieces[0]);
    }
    if (pieces.size() > 1) {
        m_minor = toInt(pieces[1]);
    }
    if (pieces.size() > 2) {
        m_patch = toInt(pieces[2]);
    }
    // A build label's fourth part, "30_20161205", starts with the service-pack level; its
    // first digit alone is the patch.
    if (pieces.size() > 3) {
        const std::string& build = pieces[3];
        if (build.size() >= 3 && isDigit(build[0]) && isDigit(build[1]) && build[2] == '_') {
            m_patch = build[0] - '0';
        }
    }
}

bool Version::operator==(const Version& other) const noexcept {
    return m_major == other.m_major && m_minor == other.m_minor && m_patch == other.m_patch;
}

bool Version::operator<(const Version& other) const noexcept {
    if (m_major != other.m_major) {
        return m_major < other.m_major;
    }
    if (m_minor != other.m_minor) {
        return m_minor < other.m_minor;
    }
    return m_patch < other.m_patch;
}

std::string Version::getCorvaneVersion() { return "11000.2.0"; }

std::string Version::getCorvaneVersionLabel() { return "V11000.2.0.30_20161205.00"; }

}  // namespace Corvane::Soa::Common
