#include "CommandRegistry.hpp"

#include "FlameChart.hpp"
#include "JournalError.hpp"
#include "JournalReader.hpp"
#include "JournalSummary.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>

namespace cvsoa {

namespace {

struct JournalOptions {
    std::string path;
    std::string output;
    std::string svg;
    bool json = false;
};

[[noreturn]] void fail(const std::string& message) {
    std::cerr << "cvsoa journal: " << message << '\n';
    throw CLI::RuntimeError(1);
}

std::string readJournal(const std::string& path) {
    if (path == "-") {
        return std::string(std::istreambuf_iterator<char>(std::cin),
                           std::istreambuf_iterator<char>());
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        fail("cannot read '" + path + "': " + std::strerror(errno) +
             ". Name a journal file (<program>_SOA<pid>.pjl, written to TEMP, TMP or the working "
             "directory when CV_JOURNAL_PERFORMANCE_ONLY is set), or - for standard input.");
    }
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Writes through `write` to `path` (standard output for the empty text or "-").
template <class Write>
void writeTo(const std::string& path, const std::string& what, Write write) {
    if (path.empty() || path == "-") {
        write(std::cout);
        std::cout.flush();
        return;
    }
    std::ofstream file(path, std::ios::binary);
    if (file) {
        write(file);
        file.close();
    }
    if (!file) {
        fail("cannot write the " + what + " to '" + path + "': " + std::strerror(errno) +
             ". Check that its directory exists and is writable.");
    }
}

// Reads a journal and prints its table (or JSON); with --svg, draws its flame chart.
void addJournalCommand(CLI::App& app) {
    auto options = std::make_shared<JournalOptions>();
    CLI::App* command = app.add_subcommand(
        "journal", "Summarise a performance journal (.pjl): time per operation, flame chart");
    command->add_option("file", options->path, "the journal, or - for standard input")->required();
    command->add_option("-o,--output", options->output, "write the table here (default: stdout)");
    command->add_option("--svg", options->svg,
                        "draw a flame chart into this SVG file (open it in a browser)");
    command->add_flag("--json", options->json, "print the table as JSON");
    command->callback([options] {
        const std::string name = options->path == "-" ? "standard input" : options->path;
        const std::string text = readJournal(options->path);
        journal::Journal parsed;
        try {
            parsed = journal::JournalReader::read(text);
        } catch (const journal::JournalError& e) {
            fail(name + ": " + e.what() + ". Only journals written by the library can be read.");
        }
        for (const std::string& warning : parsed.warnings) {
            std::cerr << "cvsoa journal: " << name << ": warning: " << warning << '\n';
        }
        const journal::JournalSummary summary(parsed);
        writeTo(options->output, "table", [&](std::ostream& out) {
            if (options->json) {
                summary.writeJson(out);
            } else {
                summary.writeTable(out);
            }
        });
        if (!options->svg.empty()) {
            const journal::FlameChart chart(parsed);
            writeTo(options->svg, "chart", [&](std::ostream& out) { chart.writeSvg(out); });
        }
    });
}

const CommandRegistration registration(60, addJournalCommand);

}  // namespace

}  // namespace cvsoa
