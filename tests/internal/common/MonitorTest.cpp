// The performance journal, watched from outside: each scenario runs a child process with its
// own environment (the journal reads it when the library loads) and compares what the child
// printed and the journal file it left, with times written as T and its own thread id as $PID.
#include <gtest/gtest.h>

#include "RunCommand.hpp"

#include <sys/utsname.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct ChildRun {
    std::string out;      // the child's line without "pid=...", "$DIR" and "$PID" put back
    std::string journal;  // the normalised journal; "(none)" when no file was left
    std::string pid;
    std::string raw;  // the journal as written
};

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// The header must read "0|HD|1000000000|SOA-CPP|<label>|<system>|<release>|<date>" and may
// end in "|UsesThreads"; it becomes "HD" or "HD|UsesThreads".
std::string normalisedHeader(const std::string& line) {
    utsname system{};
    ::uname(&system);
    const std::string prefix = std::string("0|HD|1000000000|SOA-CPP|V11000.2.0.30_20161205.00|") +
                               system.sysname + "|" + system.release + "|";
    EXPECT_EQ(line.substr(0, prefix.size()), prefix);
    const std::string rest = line.substr(std::min(prefix.size(), line.size()));
    EXPECT_TRUE(
        std::regex_match(rest, std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d(\|UsesThreads)?)")))
        << rest;
    return rest.size() > 19 ? "HD" + rest.substr(19) : "HD";
}

// Times become T (checked to grow from line to line on each thread) and the child's thread id
// $PID.
std::string normalised(const std::string& journal, const std::string& pid) {
    std::istringstream lines(journal);
    std::string line;
    std::string out;
    std::map<std::string, long long> last;  // by the field after the time
    for (int number = 1; std::getline(lines, line); ++number) {
        if (number == 1) {
            out += normalisedHeader(line);
        } else if (number > 2) {
            const std::size_t bar = line.find('|');
            const long long ticks = std::stoll(line.substr(0, bar));
            long long& previous = last[line.substr(bar, line.find('|', bar + 1) - bar)];
            EXPECT_GE(ticks, previous) << "line " << number;
            previous = ticks;
            out += "\nT" + replaceAll(line.substr(bar), "|" + pid + "|", "|$PID|");
        } else {
            EXPECT_EQ(line, "");
            out += "\n";
        }
    }
    return out;
}

class JournalChild : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = fs::temp_directory_path() / "cvsoa-journal-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        m_dir = pattern;
    }
    void TearDown() override { fs::remove_all(m_dir); }

    // Runs the child in m_dir with `environment` ("NAME=value" texts; "$DIR" stands for m_dir)
    // on top of this process's, from which the journal's variables are removed.
    ChildRun run(const std::vector<std::string>& environment, const std::string& steps) {
        std::string command = "cd '" + m_dir +
                              "' && env -u CV_JOURNAL_PERFORMANCE_ONLY "
                              "-u CV_JOURNAL_PERFORMANCE_SINGLE_THREAD -u TEMP -u TMP";
        for (const std::string& variable : environment) {
            command += " '" + replaceAll(variable, "$DIR", m_dir) + "'";
        }
        command += " " CVSOA_JOURNAL_CHILD " " + steps;
        const CommandOutcome child = runCommand(command);
        EXPECT_EQ(child.status, 0) << command;
        const std::string& printed = child.output;
        ChildRun result;
        const std::size_t space = printed.find_first_of(" \n");
        result.pid = printed.substr(4, space - 4);
        result.out = printed.substr(std::min(space + 1, printed.size()));
        if (!result.out.empty() && result.out.back() == '\n') {
            result.out.pop_back();
        }
        result.out = replaceAll(replaceAll(result.out, m_dir, "$DIR"), "_SOA" + result.pid + ".pjl",
                                "_SOA$PID.pjl");
        result.journal = "(none)";
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_dir)) {
            if (entry.path().extension() == ".pjl") {
                EXPECT_EQ(result.journal, "(none)") << "a second journal";
                EXPECT_EQ(entry.path().filename(), "cvsoa_journal_child_SOA" + result.pid + ".pjl");
                std::ifstream file(entry.path());
                result.raw.assign(std::istreambuf_iterator<char>(file),
                                  std::istreambuf_iterator<char>());
                result.journal = normalised(result.raw, result.pid);
            }
        }
        return result;
    }

    std::string m_dir;
};

const char* const kOn = "CV_JOURNAL_PERFORMANCE_ONLY=1";
const char* const kSingleOn = "CV_JOURNAL_PERFORMANCE_ONLY=true";
const char* const kSingle = "CV_JOURNAL_PERFORMANCE_SINGLE_THREAD=1";
const char* const kInTemp = "TEMP=$DIR";
// What dumpTimes returns, in a scenario's expected output.
const char* const kDumped = "dump=$DIR/cvsoa_journal_child_SOA$PID.pjl";

TEST_F(JournalChild, Scenarios) {
    using Environment = std::vector<std::string>;
    const Environment on = {kOn, kInTemp};
    const Environment single = {kSingleOn, kSingle, kInTemp};
    const std::string pair = "HD|UsesThreads\n\nT|$PID|EN|a\nT|$PID|EX\nT|TR";
    const std::string singlePair = "HD\n\nT|EN|a\nT|EX\nT|TR";
    const std::string notCompared = "(not compared)";
    const struct {
        const char* name;
        Environment environment;
        const char* steps;
        const char* out;
        std::string journal;
    } scenarios[] = {
        {"unset", {kInTemp}, "en:a ex lines dump", "lines=none dump=", "(none)"},
        {"empty", {"CV_JOURNAL_PERFORMANCE_ONLY=", kInTemp}, "en:a ex dump", "dump=", "(none)"},
        {"on", on, "en:a ex lines dump", "lines=4 $J", pair},
        {"1 stays threaded", {kOn, kSingle, kInTemp}, "en:a ex dump", "$J", pair},
        {"true, alone, threaded", {kSingleOn, kInTemp}, "en:a ex dump", "$J", pair},
        {"single", single, "en:a ex dump", "$J", singlePair},
        {"TRUE, set empty",
         {"CV_JOURNAL_PERFORMANCE_ONLY=TRUE", "CV_JOURNAL_PERFORMANCE_SINGLE_THREAD=", kInTemp},
         "en:a ex dump",
         "$J",
         singlePair},
        {"nothing recorded", on, "dump lines", "dump= lines=none", "(none)"},
        {"commands, markEnd of three", single, "sc:login en:a ex3 ec:login dump", "$J",
         "HD\n\nT|SC|login\nT|EN|a\nT|EX\nT|EC|login\nT|TR"},
        {"outermost end writes", single, "en:a en:b lines ex lines ex lines",
         "lines=none lines=none lines=6", notCompared},
        {"1001st pending line", single, "en:a ex enters:1000 lines en:b lines",
         "lines=4 lines=1005", notCompared},
        {"header counts", single, "enters:998 lines en:x lines", "lines=none lines=1001",
         notCompared},
        {"off drops, on restarts", single, "en:a ex en:b off lines on en:c ex dump", "lines=4 $J",
         "HD\n\nT|EN|c\nT|EX\nT|TR"},
        {"enabled by the program", {kInTemp}, "on en:a ex dump", "$J", pair},
        {"TMP", {kOn, "TEMP=", "TMP=$DIR"}, "en:a ex dump", "$J", pair},
        {"working directory",
         {kOn},
         "en:a ex dump",
         "dump=./cvsoa_journal_child_SOA$PID.pjl",
         pair},
        {"no directory",
         {kOn, "TEMP=/nonexistent-cvsoa"},
         "en:a ex dump on en:b ex dump",
         "dump= dump=",
         "(none)"},
        {"thread provider", on, "provider:77 en:a ex dump", "$J",
         "HD|UsesThreads\n\nT|77|EN|a\nT|77|EX\nT|TR"},
        {"scoped", single, "scoped:op dump", "$J", "HD\n\nT|EN|op\nT|EX\nT|TR"},
    };
    for (const auto& scenario : scenarios) {
        SCOPED_TRACE(scenario.name);
        const ChildRun result = run(scenario.environment, scenario.steps);
        EXPECT_EQ(result.out, replaceAll(scenario.out, "$J", kDumped));
        if (scenario.journal != notCompared) {
            EXPECT_EQ(result.journal, scenario.journal);
        }
        fs::remove_all(m_dir);
        fs::create_directory(m_dir);
    }
}

// Eight threads record nested operations for a second: every record reaches the file, and each
// thread's enters and exits pair up in order.
TEST_F(JournalChild, EightThreadsLoseNoRecord) {
    const ChildRun result = run({kOn, kInTemp}, "threads:8:1000 dump");
    ASSERT_EQ(result.out.substr(0, 8), "records=");
    const long records = std::stol(result.out.substr(8));
    std::istringstream lines(result.raw);
    std::string line;
    std::map<std::string, long> open;  // by thread id
    long seen = 0;
    std::string last;
    for (int number = 1; std::getline(lines, line); ++number) {
        last = line;
        if (number <= 2 || line.find("|TR") != std::string::npos) {
            continue;
        }
        const std::size_t bar = line.find('|');
        const std::size_t kind = line.find('|', bar + 1);
        long& depth = open[line.substr(bar + 1, kind - bar - 1)];
        depth += line.compare(kind, 4, "|EN|") == 0 ? 1 : -1;
        ASSERT_GE(depth, 0) << "line " << number << ": " << line;
        ++seen;
    }
    EXPECT_EQ(seen, records);
    EXPECT_EQ(open.size(), 8U);
    for (const auto& [thread, depth] : open) {
        EXPECT_EQ(depth, 0) << "thread " << thread;
    }
    EXPECT_NE(last.find("|TR"), std::string::npos);
}

}  // namespace
