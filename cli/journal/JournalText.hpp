#ifndef CVSOA_CLI_JOURNAL_JOURNALTEXT_HPP
#define CVSOA_CLI_JOURNAL_JOURNALTEXT_HPP

#include <cstddef>
#include <string>
#include <string_view>

namespace cvsoa::journal {

/// Texts from a journal as they are shown: names may hold any bytes.
class JournalText {
public:
    /// Valid UTF-8 without control characters: each byte that does not start a well-formed
    /// character, and each control character but the tab, becomes U+FFFD. Safe in XML and JSON.
    static std::string printable(std::string_view text);
    /// Printable text of at most `limit` characters: a longer one is cut and ends in "...".
    static std::string shortened(std::string_view text, std::size_t limit);
    /// "%.<decimals>f"
    static std::string fixed(double value, int decimals);
};

}  // namespace cvsoa::journal

#endif
