#ifndef CVSOA_CLI_JOURNAL_JOURNAL_HPP
#define CVSOA_CLI_JOURNAL_JOURNAL_HPP

#include <cstdint>
#include <string>
#include <vector>

namespace cvsoa::journal {

/// One operation (enter to exit) or command (start to end) of a journal, in clock ticks from
/// the journal's start.
struct Span {
    std::int64_t start = 0;
    std::int64_t end = 0;
    /// The time not spent in the spans nested in this one.
    std::int64_t self = 0;
    /// Index into `Journal::names`.
    std::uint32_t name = 0;
    /// Index into `Journal::threads`.
    std::uint32_t thread = 0;
    /// 0 for an outermost span.
    std::uint32_t depth = 0;
    bool command = false;
    /// Never exited: it ends where the journal ends.
    bool unfinished = false;
};

/// A performance journal as read back: its header, and every span.
struct Journal {
    /// Clock ticks per second, from the header.
    std::int64_t frequency = 0;
    std::string label;
    std::string system;
    std::string release;
    std::string started;
    /// The header says so, or records carry thread ids.
    bool usesThreads = false;
    bool hasTrailer = false;
    /// The latest time recorded.
    std::int64_t end = 0;
    std::vector<std::string> names;
    /// Thread ids in the order they first appear; a journal without thread ids has one thread,
    /// numbered 0.
    std::vector<std::uint64_t> threads;
    /// In the order in which they ended.
    std::vector<Span> spans;
    /// What was cut short, unmatched or left out, each naming its line.
    std::vector<std::string> warnings;

    /// "SOA-CPP <label> on <system> <release>, started <date>", of what the header gives.
    std::string origin() const;

    double milliseconds(double ticks) const {
        return ticks * 1000.0 / static_cast<double>(frequency);
    }
};

}  // namespace cvsoa::journal

#endif
