#ifndef CVSOA_CLI_JOURNAL_JOURNALREADER_HPP
#define CVSOA_CLI_JOURNAL_JOURNALREADER_HPP

#include "Journal.hpp"

#include <string_view>

namespace cvsoa::journal {

/// Reads the text of a performance journal back into spans.
///
/// Exits and command ends close the innermost span open on their thread; a command end that
/// names another call than that span's is noted in `Journal::warnings`. A journal cut short
/// is read as far as it goes: spans never closed end with the journal, a last line cut in the
/// middle is left out, and each of these is noted in `Journal::warnings` with its line. A line
/// that is not a record throws `JournalError` naming it.
class JournalReader {
public:
    static Journal read(std::string_view text);
};

}  // namespace cvsoa::journal

#endif
