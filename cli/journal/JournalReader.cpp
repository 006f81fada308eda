#include "JournalReader.hpp"

#include "JournalError.hpp"
#include "JournalText.hpp"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>
#include <unordered_map>

namespace cvsoa::journal {

namespace {

// How much of a faulty line a message shows.
constexpr std::size_t kShownCharacters = 60;

std::string quoted(std::string_view line) {
    return "\"" + JournalText::shortened(line, kShownCharacters) + "\"";
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Reads an unsigned decimal number from the front of `text`.
template <class Number>
bool takeNumber(std::string_view& text, Number& value) {
    if (text.empty() || !isDigit(text.front())) {
        return false;
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (text.substr(0, prefix.size()) != prefix) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

std::int64_t saturatingAdd(std::int64_t a, std::int64_t b) {
    return a > std::numeric_limits<std::int64_t>::max() - b
               ? std::numeric_limits<std::int64_t>::max()
               : a + b;
}

enum class Kind { Enter, Exit, CommandStart, CommandEnd, Trailer };

struct Record {
    std::int64_t ticks = 0;
    bool hasThread = false;
    std::uint64_t thread = 0;
    Kind kind = Kind::Exit;
    std::string_view name;
};

// "<ticks>[|<thread>]|EN|<name>", "...|EX", "...|SC|<name>", "...|EC|<name>", "<ticks>|TR"
bool parseRecord(std::string_view line, Record& record) {
    if (!takeNumber(line, record.ticks) || !takePrefix(line, "|")) {
        return false;
    }
    if (!line.empty() && isDigit(line.front())) {
        if (!takeNumber(line, record.thread) || !takePrefix(line, "|")) {
            return false;
        }
        record.hasThread = true;
    }
    if (line == "EX" || line == "TR") {
        record.kind = line == "EX" ? Kind::Exit : Kind::Trailer;
        return true;
    }
    const std::string_view code = line.substr(0, 3);
    if (code == "EN|") {
        record.kind = Kind::Enter;
    } else if (code == "SC|") {
        record.kind = Kind::CommandStart;
    } else if (code == "EC|") {
        record.kind = Kind::CommandEnd;
    } else {
        return false;
    }
    record.name = line.substr(3);
    return true;
}

// The state of one reading: the spans still open on each thread.
class Reading {
public:
    explicit Reading(Journal& journal) : m_journal(journal) {}

    void header(std::string_view line) {
        std::vector<std::string_view> fields;
        for (std::size_t at = 0;;) {
            const std::size_t bar = line.find('|', at);
            fields.push_back(line.substr(at, bar == std::string_view::npos ? bar : bar - at));
            if (bar == std::string_view::npos) {
                break;
            }
            at = bar + 1;
        }
        std::string_view frequency = fields.size() > 2 ? fields[2] : std::string_view();
        if (fields.size() < 3 || fields[0] != "0" || fields[1] != "HD") {
            throw JournalError(1,
                               "line 1 is not a journal header (\"0|HD|<ticks per "
                               "second>|...\"): " +
                                   quoted(line));
        }
        if (!takeNumber(frequency, m_journal.frequency) || !frequency.empty() ||
            m_journal.frequency <= 0) {
            throw JournalError(1, "line 1: the header's clock frequency " + quoted(fields[2]) +
                                      " is not a positive number of ticks per second");
        }
        std::string* texts[] = {&m_journal.label, &m_journal.system, &m_journal.release,
                                &m_journal.started};
        for (std::size_t i = 0; i < 4 && i + 4 < fields.size(); ++i) {
            *texts[i] = std::string(fields[i + 4]);
        }
        m_journal.usesThreads =
            std::find(fields.begin() + 3, fields.end(), "UsesThreads") != fields.end();
    }

    bool record(std::string_view line, std::size_t number) {
        Record record;
        if (!parseRecord(line, record)) {
            return false;
        }
        m_journal.end = std::max(m_journal.end, record.ticks);
        if (record.kind == Kind::Trailer) {
            m_journal.hasTrailer = true;
            return true;
        }
        const std::uint32_t thread = threadIndex(record);
        std::vector<Frame>& open = m_open[thread];
        if (record.kind == Kind::Enter || record.kind == Kind::CommandStart) {
            open.push_back({record.ticks, 0, nameIndex(record.name),
                            record.kind == Kind::CommandStart, number});
        } else if (open.empty()) {
            if (m_strayExits++ == 0) {
                m_firstStrayExit = number;
            }
        } else {
            // A command end names its call: one that names another still closes the innermost
            // call, so that nothing is lost, and is noted.
            if (record.kind == Kind::CommandEnd &&
                m_journal.names[open.back().name] != record.name && m_mismatchedEnds++ == 0) {
                m_firstMismatchedEnd = number;
                m_mismatchedName = std::string(record.name);
                m_closedName = open.back().name;
            }
            close(open, thread, record.ticks, false);
        }
        return true;
    }

    // Closes what was never closed, at the journal's end, and notes what was cut short.
    void finish(std::size_t lastLine) {
        if (m_strayExits > 0) {
            m_journal.warnings.push_back(
                "line " + std::to_string(m_firstStrayExit) +
                ": an exit with no operation open was left out" +
                (m_strayExits > 1 ? " (" + std::to_string(m_strayExits) + " such lines)" : ""));
        }
        if (m_mismatchedEnds > 0) {
            m_journal.warnings.push_back(
                "line " + std::to_string(m_firstMismatchedEnd) + ": the end of " +
                quoted(m_mismatchedName) + " closed " + quoted(m_journal.names[m_closedName]) +
                ", the innermost call open" +
                (m_mismatchedEnds > 1 ? " (" + std::to_string(m_mismatchedEnds) + " such lines)"
                                      : ""));
        }
        if (!m_journal.hasTrailer) {
            m_journal.warnings.push_back(
                "the journal has no trailer: it was cut short after line " +
                std::to_string(lastLine) + " and is read as far as it goes");
        }
        std::size_t unfinished = 0;
        const Frame* first = nullptr;
        for (const std::vector<Frame>& open : m_open) {
            for (const Frame& frame : open) {
                ++unfinished;
                if (first == nullptr || frame.line < first->line) {
                    first = &frame;
                }
            }
        }
        if (first != nullptr) {
            m_journal.warnings.push_back(
                "line " + std::to_string(first->line) + ": " +
                quoted(m_journal.names[first->name]) +
                " has no exit; it is counted up to the end of the journal" +
                (unfinished > 1 ? " (" + std::to_string(unfinished - 1) + " more like it)" : ""));
        }
        for (std::uint32_t thread = 0; thread < m_open.size(); ++thread) {
            while (!m_open[thread].empty()) {
                close(m_open[thread], thread, m_journal.end, true);
            }
        }
    }

private:
    struct Frame {
        std::int64_t start;
        std::int64_t nested;  // ticks spent in the spans closed inside this one
        std::uint32_t name;
        bool command;
        std::size_t line;
    };

    void close(std::vector<Frame>& open, std::uint32_t thread, std::int64_t ticks,
               bool unfinished) {
        const Frame frame = open.back();
        open.pop_back();
        Span span;
        span.start = frame.start;
        span.end = std::max(ticks, frame.start);
        const std::int64_t duration = span.end - span.start;
        span.self = std::max<std::int64_t>(0, duration - frame.nested);
        span.name = frame.name;
        span.thread = thread;
        span.depth = static_cast<std::uint32_t>(open.size());
        span.command = frame.command;
        span.unfinished = unfinished;
        if (!open.empty()) {
            open.back().nested = saturatingAdd(open.back().nested, duration);
        }
        m_journal.spans.push_back(span);
    }

    std::uint32_t threadIndex(const Record& record) {
        m_journal.usesThreads = m_journal.usesThreads || record.hasThread;
        const std::uint64_t key = record.hasThread ? record.thread : 0;
        if (!m_open.empty() && key == m_lastThread) {
            return m_lastIndex;
        }
        const auto [found, added] =
            m_threadIndex.try_emplace(key, static_cast<std::uint32_t>(m_open.size()));
        if (added) {
            m_journal.threads.push_back(key);
            m_open.emplace_back();
        }
        m_lastThread = key;
        m_lastIndex = found->second;
        return m_lastIndex;
    }

    std::uint32_t nameIndex(std::string_view name) {
        const auto [found, added] =
            m_nameIndex.try_emplace(name, static_cast<std::uint32_t>(m_journal.names.size()));
        if (added) {
            m_journal.names.emplace_back(name);
        }
        return found->second;
    }

    Journal& m_journal;
    std::vector<std::vector<Frame>> m_open;  // by thread index
    std::unordered_map<std::uint64_t, std::uint32_t> m_threadIndex;
    std::uint64_t m_lastThread = 0;
    std::uint32_t m_lastIndex = 0;
    std::unordered_map<std::string_view, std::uint32_t> m_nameIndex;  // views of the text read
    std::size_t m_strayExits = 0;
    std::size_t m_firstStrayExit = 0;
    std::size_t m_mismatchedEnds = 0;
    std::size_t m_firstMismatchedEnd = 0;
    std::string m_mismatchedName;    // what the first mismatched end named
    std::uint32_t m_closedName = 0;  // and the call it closed
};

}  // namespace

Journal JournalReader::read(std::string_view text) {
    Journal journal;
    if (text.empty()) {
        throw JournalError(1, "the journal is empty: line 1 should be its header");
    }
    Reading reading(journal);
    std::size_t number = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t newline = text.find('\n', at);
        const bool complete = newline != std::string_view::npos;
        std::string_view line = text.substr(at, complete ? newline - at : newline);
        at = complete ? newline + 1 : text.size();
        ++number;
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (number == 1) {
            reading.header(line);
        } else if (number == 2 && line.empty()) {
            continue;  // the header is followed by an empty line
        } else if (!reading.record(line, number)) {
            if (complete) {
                throw JournalError(number, "line " + std::to_string(number) +
                                               " is not a journal record: " + quoted(line));
            }
            journal.warnings.push_back("line " + std::to_string(number) + " is cut short (" +
                                       quoted(line) + ") and was left out");
        }
    }
    reading.finish(number);
    return journal;
}

}  // namespace cvsoa::journal
