// `cvsoa journal`'s reader, table and flame chart. The journals here count 1000 ticks a second,
// so that ticks read as milliseconds.
#include "FlameChart.hpp"
#include "JournalError.hpp"
#include "JournalReader.hpp"
#include "JournalSummary.hpp"

#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using cvsoa::journal::FlameChart;
using cvsoa::journal::Journal;
using cvsoa::journal::JournalError;
using cvsoa::journal::JournalReader;
using cvsoa::journal::JournalSummary;

std::string header() { return "0|HD|1000|SOA-CPP|V1|Linux|6.1|2024-05-01 12:00:00"; }

template <class Write>
std::string written(Write write) {
    std::ostringstream out;
    write(out);
    return out.str();
}

TEST(JournalReaderTest, LinesThatAreNotRecordsAreNamed) {
    const struct {
        std::string text;
        std::string message;
    } cases[] = {
        {"", "the journal is empty: line 1 should be its header"},
        {"hello\n", "line 1 is not a journal header (\"0|HD|<ticks per second>|...\"): \"hello\""},
        {"0|HD|0|SOA-CPP\n",
         "line 1: the header's clock frequency \"0\" is not a positive number "
         "of ticks per second"},
        {header() + "\n\n5|EN|a\nbogus\n", "line 4 is not a journal record: \"bogus\""},
        {header() + "\n\n5|EN\n", "line 3 is not a journal record: \"5|EN\""},
        {header() + "\n\n-5|EX\n", "line 3 is not a journal record: \"-5|EX\""},
        {header() + "\n\n5|7|EXIT\n", "line 3 is not a journal record: \"5|7|EXIT\""},
        {header() + "\n\n99999999999999999999|EX\n",
         "line 3 is not a journal record: \"99999999999999999999|EX\""},
        {header() + "\n\n5|EN|a\n\n6|EX\n", "line 4 is not a journal record: \"\""},
        {header() + "\n\n5|XX|\x01" + std::string(80, 'x') + "\n",
         "line 3 is not a journal record: \"5|XX|\xEF\xBF\xBD" + std::string(51, 'x') + "...\""},
    };
    for (const auto& test : cases) {
        try {
            JournalReader::read(test.text);
            ADD_FAILURE() << "read: " << test.text;
        } catch (const JournalError& e) {
            EXPECT_EQ(e.what(), test.message);
        }
    }
}

// A journal cut short is read as far as it goes: what is open ends with the journal.
TEST(JournalReaderTest, AJournalCutShortIsReadWithWarnings) {
    const Journal journal =
        JournalReader::read(header() + "\n\n2|EX\n3|EN|a\n4|EN|b\n6|EX\n9|EN|c\n12|E");
    EXPECT_EQ(journal.warnings, (std::vector<std::string>{
                                    "line 8 is cut short (\"12|E\") and was left out",
                                    "line 3: an exit with no operation open was left out",
                                    "the journal has no trailer: it was cut short after line 8 and "
                                    "is read as far as it goes",
                                    "line 4: \"a\" has no exit; it is counted up to the end of the "
                                    "journal (1 more like it)",
                                }));
    ASSERT_EQ(journal.spans.size(), 3U);
    EXPECT_EQ(journal.spans[0].end - journal.spans[0].start, 2);  // b
    EXPECT_FALSE(journal.spans[0].unfinished);
    EXPECT_TRUE(journal.spans[2].unfinished);  // a, from 3 to 9
    EXPECT_EQ(journal.spans[2].end, 9);
    EXPECT_EQ(journal.spans[2].self, 4);  // 6 ticks, 2 of them in b

    // A command end that names another call closes the innermost one all the same.
    const Journal mismatched = JournalReader::read(
        header() +
        "\n\n1|SC|login\n2|EN|send\n3|EN|load\n4|EC|login\n5|EC|login\n6|EC|login\n7|TR\n");
    EXPECT_EQ(
        mismatched.warnings,
        (std::vector<std::string>{"line 6: the end of \"login\" closed \"load\", the innermost "
                                  "call open (2 such lines)"}));
    ASSERT_EQ(mismatched.spans.size(), 3U);
    EXPECT_EQ(mismatched.names[mismatched.spans[2].name], "login");
    EXPECT_EQ(mismatched.spans[2].end, 6);
}

std::string threadedJournal() {
    return header() + "|UsesThreads" +
           "\n\n"
           "0|7|SC|login\n"
           "1|7|EN|send\n"
           "2|8|EN|load\n"
           "4|7|EX\n"
           "5|7|EN|send\n"
           "9|7|EX\n"
           "10|8|EX\n"
           "11|7|EC|login\n"
           "12|TR\n";
}

TEST(JournalReaderTest, TheTableAddsCallsUpPerThread) {
    const Journal journal = JournalReader::read(threadedJournal());
    EXPECT_TRUE(journal.warnings.empty());
    const JournalSummary summary(journal);
    EXPECT_EQ(written([&](std::ostream& out) { summary.writeTable(out); }),
              "SOA-CPP V1 on Linux 6.1, started 2024-05-01 12:00:00: 4 calls on 2 threads in "
              "12.000 ms\n"
              "\nthread 7\n"
              "     calls     total ms      self ms       max ms  operation\n"
              "         1       11.000        4.000       11.000  command login\n"
              "         2        7.000        7.000        4.000  send\n"
              "\nthread 8\n"
              "     calls     total ms      self ms       max ms  operation\n"
              "         1        8.000        8.000        8.000  load\n");
    EXPECT_EQ(written([&](std::ostream& out) { summary.writeJson(out); }),
              R"({"frequency":1000,"label":"V1","system":"Linux","release":"6.1",)"
              R"("started":"2024-05-01 12:00:00","usesThreads":true,"complete":true,)"
              R"("totalMs":12.000000,"threads":[{"thread":7,"operations":[)"
              R"({"name":"login","kind":"command","calls":1,"totalMs":11.000000,)"
              R"("selfMs":4.000000,"maxMs":11.000000},)"
              R"({"name":"send","kind":"operation","calls":2,"totalMs":7.000000,)"
              R"("selfMs":7.000000,"maxMs":4.000000}]},)"
              R"({"thread":8,"operations":[{"name":"load","kind":"operation","calls":1,)"
              R"("totalMs":8.000000,"selfMs":8.000000,"maxMs":8.000000}]}],"warnings":[]})"
              "\n");
}

// The chart's SVG reads back with the library's own XML reader, one box per drawn operation.
TEST(JournalReaderTest, TheChartHoldsOneBoxPerDrawnOperation) {
    const Journal journal = JournalReader::read(threadedJournal() + "13|7|EN|a<&\"b\xFF\n");
    const FlameChart chart(journal);
    ASSERT_EQ(chart.boxes().size(), 5U);
    ::Corvane::Soa::Common::Xml::SAXToNodeParser parser;
    const auto* svg = parser.parseString(written([&](std::ostream& out) { chart.writeSvg(out); }));
    std::vector<std::string> titles;
    for (const auto* node : svg->getChildren()) {
        if (node->getName() == "g") {
            ASSERT_EQ(node->getChildren().size() >= 2, true);
            EXPECT_EQ(node->getChildren()[1]->getName(), "rect");
            const std::string& title = node->getChildren()[0]->getText();
            titles.push_back(title.substr(0, title.find('\n')));
        }
    }
    // By thread, depth and time; the unfinished "a" after the trailer is drawn too, its bad byte
    // replaced.
    EXPECT_EQ(titles, (std::vector<std::string>{"command login", "a<&\"b\xEF\xBF\xBD", "send",
                                                "send", "load"}));
}

// Spans narrower than a pixel merge, and a chart never holds more boxes than its limit.
TEST(JournalReaderTest, NarrowSpansMergeWithinTheLimit) {
    std::string text = header() + "\n\n0|EN|long\n";
    for (int i = 1; i <= 100000; ++i) {
        text += std::to_string(i * 10) + "|EN|tiny\n" + std::to_string(i * 10 + 1) + "|EX\n";
    }
    text += "1000005|EX\n1000010|TR\n";
    const Journal journal = JournalReader::read(text);
    for (const std::size_t limit : {std::size_t{10000}, std::size_t{50}}) {
        const FlameChart chart(journal, FlameChart::kDefaultWidth, limit);
        EXPECT_LE(chart.boxes().size(), limit);
        std::size_t calls = chart.leftOut();
        for (const FlameChart::Box& box : chart.boxes()) {
            calls += box.calls;
        }
        EXPECT_EQ(calls, journal.spans.size());
        EXPECT_EQ(chart.boxes().front().span, journal.spans.size() - 1);  // "long", unmerged
        EXPECT_EQ(chart.boxes().back().span, FlameChart::kMerged);
    }
    // Rows beyond the limit: the deepest go.
    std::string deep = header() + "\n\n";
    for (int i = 0; i < 300; ++i) {
        deep += "0|EN|d\n";
    }
    const FlameChart chart(JournalReader::read(deep), FlameChart::kDefaultWidth, 100);
    EXPECT_EQ(chart.boxes().size(), 100U);
    EXPECT_EQ(chart.leftOut(), 200U);
    EXPECT_EQ(chart.boxes().back().depth, 99U);
}

}  // namespace
