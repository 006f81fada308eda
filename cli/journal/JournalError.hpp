#ifndef CVSOA_CLI_JOURNAL_JOURNALERROR_HPP
#define CVSOA_CLI_JOURNAL_JOURNALERROR_HPP

#include <cstddef>
#include <stdexcept>
#include <string>

namespace cvsoa::journal {

/// A line of a journal that is not a record (or a header that is not one); `what()` names the
/// line and shows it.
class JournalError : public std::runtime_error {
public:
    JournalError(std::size_t line, const std::string& message)
        : std::runtime_error(message), m_line(line) {}

    std::size_t line() const noexcept { return m_line; }

private:
    std::size_t m_line;
};

}  // namespace cvsoa::journal

#endif
