#include <corvane/soa/common/ZipEntry.hpp>

namespace Corvane::Soa::Common {

namespace {

constexpr unsigned kUnixHost = 3;
constexpr unsigned kFileTypeMask = 0170000;
constexpr unsigned kSymbolicLink = 0120000;

}  // namespace

DateTime ZipEntry::getModificationTime() const {
    // MS-DOS date and time: years since 1980, month and day from 1; two-second steps.
    const unsigned date = m_record.dosDate;
    const unsigned time = m_record.dosTime;
    return DateTime(static_cast<int>(1980 + (date >> 9U)), static_cast<int>((date >> 5U) & 15U),
                    static_cast<int>(date & 31U), static_cast<int>(time >> 11U),
                    static_cast<int>((time >> 5U) & 63U), static_cast<int>(2 * (time & 31U)));
}

unsigned ZipEntry::getUnixMode() const noexcept {
    return (m_record.versionMadeBy >> 8U) == kUnixHost ? m_record.externalAttributes >> 16U : 0U;
}

bool ZipEntry::isSymbolicLink() const noexcept {
    return (getUnixMode() & kFileTypeMask) == kSymbolicLink;
}

}  // namespace Corvane::Soa::Common
