#include "JournalSummary.hpp"

#include "JournalText.hpp"
#include "JsonQuoted.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>
#include <unordered_map>

namespace cvsoa::journal {

JournalSummary::JournalSummary(const Journal& journal) : m_journal(journal) {
    m_threads.resize(journal.threads.size());
    std::vector<std::unordered_map<std::uint64_t, std::size_t>> rowOf(journal.threads.size());
    for (std::size_t t = 0; t < journal.threads.size(); ++t) {
        m_threads[t].id = journal.threads[t];
    }
    for (const Span& span : journal.spans) {
        Thread& thread = m_threads[span.thread];
        const std::uint64_t key = std::uint64_t{span.name} << 1U | (span.command ? 1U : 0U);
        const auto [found, added] = rowOf[span.thread].try_emplace(key, thread.rows.size());
        if (added) {
            thread.rows.push_back({span.name, span.command, 0, 0, 0, 0});
        }
        Row& row = thread.rows[found->second];
        const std::int64_t duration = span.end - span.start;
        ++row.calls;
        row.totalTicks += static_cast<double>(duration);
        row.selfTicks += static_cast<double>(span.self);
        row.maxTicks = std::max(row.maxTicks, duration);
    }
    for (Thread& thread : m_threads) {
        std::sort(thread.rows.begin(), thread.rows.end(), [&journal](const Row& a, const Row& b) {
            if (a.totalTicks != b.totalTicks) {
                return a.totalTicks > b.totalTicks;
            }
            if (a.name != b.name) {
                return journal.names[a.name] < journal.names[b.name];
            }
            return a.command < b.command;
        });
    }
}

void JournalSummary::writeTable(std::ostream& out) const {
    const Journal& journal = m_journal;
    out << journal.origin() << ": " << journal.spans.size() << " calls";
    if (journal.usesThreads) {
        out << " on " << journal.threads.size()
            << (journal.threads.size() == 1 ? " thread" : " threads");
    }
    out << " in " << JournalText::fixed(journal.milliseconds(static_cast<double>(journal.end)), 3)
        << " ms\n";
    for (const Thread& thread : m_threads) {
        if (journal.usesThreads) {
            out << "\nthread " << thread.id << '\n';
        }
        out << "     calls     total ms      self ms       max ms  operation\n";
        for (const Row& row : thread.rows) {
            std::array<char, 160> figures{};
            std::snprintf(figures.data(), figures.size(), "%10llu %12.3f %12.3f %12.3f  ",
                          static_cast<unsigned long long>(row.calls),
                          journal.milliseconds(row.totalTicks), journal.milliseconds(row.selfTicks),
                          journal.milliseconds(static_cast<double>(row.maxTicks)));
            out << figures.data() << (row.command ? "command " : "")
                << JournalText::printable(journal.names[row.name]) << '\n';
        }
    }
}

void JournalSummary::writeJson(std::ostream& out) const {
    const Journal& journal = m_journal;
    auto ms = [&journal](double ticks) {
        return JournalText::fixed(journal.milliseconds(ticks), 6);
    };
    // Texts from the journal may hold any bytes: made printable, then quoted.
    auto quoted = [](std::string_view text) { return jsonQuoted(JournalText::printable(text)); };
    out << "{\"frequency\":" << journal.frequency << ",\"label\":" << quoted(journal.label)
        << ",\"system\":" << quoted(journal.system) << ",\"release\":" << quoted(journal.release)
        << ",\"started\":" << quoted(journal.started)
        << ",\"usesThreads\":" << (journal.usesThreads ? "true" : "false")
        << ",\"complete\":" << (journal.hasTrailer ? "true" : "false")
        << ",\"totalMs\":" << ms(static_cast<double>(journal.end)) << ",\"threads\":[";
    for (const Thread& thread : m_threads) {
        out << (&thread == m_threads.data() ? "" : ",") << "{\"thread\":";
        if (journal.usesThreads) {
            out << thread.id;
        } else {
            out << "null";
        }
        out << ",\"operations\":[";
        for (const Row& row : thread.rows) {
            out << (&row == thread.rows.data() ? "" : ",")
                << "{\"name\":" << quoted(journal.names[row.name])
                << ",\"kind\":" << (row.command ? "\"command\"" : "\"operation\"")
                << ",\"calls\":" << row.calls << ",\"totalMs\":" << ms(row.totalTicks)
                << ",\"selfMs\":" << ms(row.selfTicks)
                << ",\"maxMs\":" << ms(static_cast<double>(row.maxTicks)) << '}';
        }
        out << "]}";
    }
    out << "],\"warnings\":[";
    for (const std::string& warning : journal.warnings) {
        out << (&warning == journal.warnings.data() ? "" : ",") << quoted(warning);
    }
    out << "]}\n";
}

}  // namespace cvsoa::journal
