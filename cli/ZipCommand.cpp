#include "CommandRegistry.hpp"

#include <corvane/soa/common/ZipArchive.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

namespace cvsoa {

namespace {

using Corvane::Soa::Common::ZipArchive;
using Corvane::Soa::Common::ZipEntry;
using Corvane::Soa::Common::Exceptions::IOException;

struct ZipOptions {
    std::string archive;
    std::string output;
};

constexpr const char* kStandardInput = "standard input";

[[noreturn]] void fail(const std::string& message) {
    std::cerr << "cvsoa zip: " << message << '\n';
    throw CLI::RuntimeError(1);
}

// `text` with the temporary copy of standard input named as such.
std::string named(std::string text, const std::string& path, const std::string& name) {
    for (std::size_t at = 0; !path.empty() && (at = text.find(path, at)) != std::string::npos;) {
        text.replace(at, path.size(), name);
        at += name.size();
    }
    return text;
}

// The archive `path`, or standard input ("-") copied to a temporary file, since entries are
// read from anywhere in an archive. The copy is unlinked once open.
class OpenArchive {
public:
    explicit OpenArchive(const std::string& path) {
        if (path != "-") {
            m_name = path;
            open(path);
            return;
        }
        m_name = kStandardInput;
        std::string temporary =
            (std::filesystem::temp_directory_path() / "cvsoa-zip-XXXXXX").string();
        const int descriptor = ::mkstemp(temporary.data());
        if (descriptor < 0) {
            fail(
                "cannot make a temporary copy of standard input; set TMPDIR to a writable "
                "directory");
        }
        ::close(descriptor);
        m_temporary = temporary;
        {
            std::ofstream copy(temporary, std::ios::binary);
            copy << std::cin.rdbuf();
        }
        try {
            open(temporary);
        } catch (...) {
            std::remove(temporary.c_str());
            throw;
        }
        std::remove(temporary.c_str());
    }

    const ZipArchive& get() const { return *m_archive; }
    const std::string& name() const { return m_name; }
    // An exception's message with the archive named as the user named it.
    std::string message(const std::string& text) const { return named(text, m_temporary, m_name); }

private:
    void open(const std::string& path) {
        try {
            m_archive = std::make_unique<ZipArchive>(path);
        } catch (const IOException& e) {
            fail(message(e.getMessage()) +
                 "\nName a zip archive, or - to read one from standard input.");
        }
    }

    std::string m_name;
    std::string m_temporary;
    std::unique_ptr<ZipArchive> m_archive;
};

// Writes through `write` to `path` (standard output for the empty text or "-").
template <class Write>
void writeTo(const std::string& path, Write write) {
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
        fail("cannot write '" + path + "'. Check that its directory exists and is writable.");
    }
}

std::string methodName(std::uint16_t method) {
    switch (method) {
        case ZipEntry::kStored:
            return "Stored";
        case ZipEntry::kDeflated:
            return "Defl:N";
        default:
            return "M" + std::to_string(method);
    }
}

std::string percentSaved(std::uint64_t size, std::uint64_t compressed) {
    if (size == 0 || compressed >= size) {
        return "0%";
    }
    return std::to_string((100 * (size - compressed) + size / 2) / size) + "%";
}

// One line a entry, as `unzip -v` prints them, then the totals.
void list(const ZipArchive& archive, std::ostream& out) {
    out << " Length   Method    Size  Cmpr    Date    Time   CRC-32   Name\n"
           "--------  ------  ------- ---- ---------- ----- --------  ----\n";
    std::uint64_t size = 0;
    std::uint64_t compressed = 0;
    char line[128];
    for (const ZipEntry& entry : archive.getEntries()) {
        const auto when = entry.getModificationTime();
        std::snprintf(line, sizeof line, "%8llu  %-6s %8llu %4s %04d-%02d-%02d %02d:%02d %08x  ",
                      static_cast<unsigned long long>(entry.getSize()),
                      methodName(entry.getMethod()).c_str(),
                      static_cast<unsigned long long>(entry.getCompressedSize()),
                      percentSaved(entry.getSize(), entry.getCompressedSize()).c_str(), when.year(),
                      when.month(), when.day(), when.hour(), when.minute(), entry.getCrc32());
        out << line << entry.getName() << '\n';
        size += entry.getSize();
        compressed += entry.getCompressedSize();
    }
    const std::size_t count = archive.getEntries().size();
    std::snprintf(line, sizeof line, "%8llu         %8llu %4s                            ",
                  static_cast<unsigned long long>(size),
                  static_cast<unsigned long long>(compressed),
                  percentSaved(size, compressed).c_str());
    out << "--------          -------  ---                            -------\n"
        << line << count << (count == 1 ? " file\n" : " files\n");
}

// Reads every entry through; one line each, "NAME: OK" or what is wrong. Returns the failures.
std::size_t test(const OpenArchive& archive, std::ostream& out) {
    std::size_t failures = 0;
    const ZipArchive& zip = archive.get();
    for (const ZipEntry& entry : zip.getEntries()) {
        try {
            zip.test(entry);
            out << entry.getName() << ": OK\n";
        } catch (const IOException& e) {
            ++failures;
            std::string what = e.getMessage();
            const std::string prefix = zip.getPath() + ": " + entry.getName() + ": ";
            if (what.compare(0, prefix.size(), prefix) == 0) {
                what.erase(0, prefix.size());
            }
            out << entry.getName() << ": " << archive.message(what) << '\n';
        }
    }
    const std::size_t count = zip.getEntries().size();
    if (failures == 0) {
        out << archive.name() << ": no errors in " << count
            << (count == 1 ? " entry\n" : " entries\n");
    } else {
        out << archive.name() << ": " << failures << " of " << count
            << " entries are damaged or cannot be read\n";
    }
    return failures;
}

void addArchiveOption(CLI::App* command, ZipOptions& options) {
    command->add_option("archive", options.archive, "the zip archive, or - for standard input")
        ->required();
}

// cvsoa zip list|test|extract: the entries of an archive, their check, and their extraction.
void addZipCommand(CLI::App& app) {
    CLI::App* zip =
        app.add_subcommand("zip", "List, test or extract a zip archive (stored or deflated)");
    zip->require_subcommand(1);

    auto listOptions = std::make_shared<ZipOptions>();
    CLI::App* listCommand = zip->add_subcommand(
        "list", "Print each entry's size, method, compressed size, date, CRC-32 and name");
    addArchiveOption(listCommand, *listOptions);
    listCommand->add_option("-o,--output", listOptions->output, "write here (default: stdout)");
    listCommand->callback([listOptions] {
        const OpenArchive archive(listOptions->archive);
        writeTo(listOptions->output, [&](std::ostream& out) { list(archive.get(), out); });
    });

    auto testOptions = std::make_shared<ZipOptions>();
    CLI::App* testCommand = zip->add_subcommand(
        "test", "Read every entry, checking sizes and CRC-32s (exit status 1 when any is wrong)");
    addArchiveOption(testCommand, *testOptions);
    testCommand->add_option("-o,--output", testOptions->output, "write here (default: stdout)");
    testCommand->callback([testOptions] {
        const OpenArchive archive(testOptions->archive);
        std::size_t failures = 0;
        writeTo(testOptions->output, [&](std::ostream& out) { failures = test(archive, out); });
        if (failures > 0) {
            throw CLI::RuntimeError(1);
        }
    });

    auto extractOptions = std::make_shared<ZipOptions>();
    CLI::App* extractCommand = zip->add_subcommand(
        "extract",
        "Write every entry under a directory; unsafe names are refused, symbolic links not made");
    addArchiveOption(extractCommand, *extractOptions);
    extractCommand->add_option("-o,--output", extractOptions->output,
                               "the directory, made when missing (default: the current one)");
    extractCommand->callback([extractOptions] {
        const OpenArchive archive(extractOptions->archive);
        const std::string directory =
            extractOptions->output.empty() ? std::string(".") : extractOptions->output;
        std::size_t written = 0;
        for (const ZipEntry& entry : archive.get().getEntries()) {
            if (entry.isSymbolicLink()) {
                std::cerr << "cvsoa zip: " << archive.name() << ": " << entry.getName()
                          << ": a symbolic link, not created\n";
            } else {
                ++written;
            }
        }
        try {
            archive.get().extractAll(directory);
        } catch (const IOException& e) {
            fail(archive.message(e.getMessage()));
        }
        std::cout << archive.name() << ": " << written << (written == 1 ? " entry" : " entries")
                  << " extracted into " << directory << '\n';
    });
}

const CommandRegistration registration(70, addZipCommand);

}  // namespace

}  // namespace cvsoa
