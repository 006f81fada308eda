#ifndef CVSOA_CLI_JOURNAL_JOURNALSUMMARY_HPP
#define CVSOA_CLI_JOURNAL_JOURNALSUMMARY_HPP

#include "Journal.hpp"

#include <cstdint>
#include <ostream>
#include <vector>

namespace cvsoa::journal {

/// The calls of a journal added up by name: per thread when the journal has threads, commands
/// apart from operations of the same name, the most time first.
class JournalSummary {
public:
    struct Row {
        std::uint32_t name = 0;
        bool command = false;
        std::uint64_t calls = 0;
        double totalTicks = 0;
        double selfTicks = 0;
        std::int64_t maxTicks = 0;
    };
    struct Thread {
        std::uint64_t id = 0;
        std::vector<Row> rows;
    };

    explicit JournalSummary(const Journal& journal);

    const std::vector<Thread>& threads() const noexcept { return m_threads; }

    /// A heading line, then for each thread its id and a table of calls and milliseconds.
    void writeTable(std::ostream& out) const;
    /// The same as one JSON object.
    void writeJson(std::ostream& out) const;

private:
    const Journal& m_journal;
    std::vector<Thread> m_threads;
};

}  // namespace cvsoa::journal

#endif
