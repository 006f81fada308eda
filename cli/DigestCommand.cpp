#include "CommandRegistry.hpp"

#include <corvane/soa/common/Digest.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace cvsoa {

namespace {

using Corvane::Soa::Common::Digest;
using Corvane::Soa::Common::Exceptions::IOException;

struct DigestOptions {
    std::vector<std::string> files{"-"};
    bool check = false;
    bool quiet = false;
};

// The lines are those of sha256sum: "<hex>  <name>", and a name holding a backslash, a line
// feed or a carriage return is written with those escaped and a backslash before the line.
std::string escaped(const std::string& name) {
    std::string text;
    for (const char c : name) {
        if (c == '\\' || c == '\n' || c == '\r') {
            text += '\\';
            text += c == '\\' ? '\\' : c == '\n' ? 'n' : 'r';
        } else {
            text += c;
        }
    }
    return text;
}

bool needsEscape(std::string_view name, std::string_view characters) {
    return name.find_first_of(characters) != std::string_view::npos;
}

std::string hexOf(const std::string& path) {
    if (path == "-") {
        Digest digest;
        digest.update(std::cin);
        return digest.hex();
    }
    return Digest::hexOfFile(path);
}

bool printDigests(const DigestOptions& options) {
    bool allRead = true;
    for (const std::string& path : options.files) {
        try {
            const std::string hex = hexOf(path);
            const bool escape = needsEscape(path, "\\\n\r");
            std::cout << (escape ? "\\" : "") << hex << "  " << (escape ? escaped(path) : path)
                      << '\n';
        } catch (const IOException& e) {
            std::cout.flush();
            std::cerr << "cvsoa digest: " << e.getMessage() << '\n';
            allRead = false;
        }
    }
    return allRead;
}

bool isHex(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Undoes `escaped`; false for any other backslash sequence.
bool unescape(std::string_view text, std::string& name) {
    name.clear();
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            name += text[i];
            continue;
        }
        if (++i == text.size()) {
            return false;
        }
        switch (text[i]) {
            case '\\':
                name += '\\';
                break;
            case 'n':
                name += '\n';
                break;
            case 'r':
                name += '\r';
                break;
            default:
                return false;
        }
    }
    return true;
}

// One line of a list: "<hex>  <name>" (or "<hex> *<name>", or one space), or the tagged form
// "SHA256 (<name>) = <hex>"; a backslash in front says the name is escaped.
bool parseLine(std::string_view line, std::string& hex, std::string& name) {
    const bool escape = !line.empty() && line.front() == '\\';
    if (escape) {
        line.remove_prefix(1);
    }
    std::string_view rawName;
    constexpr std::string_view kTag = "SHA256 (";
    if (line.substr(0, kTag.size()) == kTag) {
        const std::size_t close = line.rfind(") = ");
        if (close == std::string_view::npos || close < kTag.size()) {
            return false;
        }
        rawName = line.substr(kTag.size(), close - kTag.size());
        line = line.substr(close + 4);
        if (line.size() != 2 * Digest::kSize) {
            return false;
        }
        hex.assign(line);
    } else {
        if (line.size() < 2 * Digest::kSize + 2 || line[2 * Digest::kSize] != ' ') {
            return false;
        }
        hex.assign(line.substr(0, 2 * Digest::kSize));
        rawName = line.substr(2 * Digest::kSize + 1);
        if (rawName.front() == ' ' || rawName.front() == '*') {
            rawName.remove_prefix(1);
        }
    }
    for (char& c : hex) {
        if (!isHex(c)) {
            return false;
        }
        c = lower(c);
    }
    if (rawName.empty()) {
        return false;
    }
    if (!escape) {
        name.assign(rawName);
        return true;
    }
    return unescape(rawName, name);
}

struct CheckCounts {
    int improper = 0;
    int failed = 0;
    int unreadable = 0;
    int checked = 0;
};

std::string readList(const std::string& path) {
    if (path == "-") {
        return std::string(std::istreambuf_iterator<char>(std::cin),
                           std::istreambuf_iterator<char>());
    }
    std::ifstream file(path, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file.is_open() || file.bad()) {
        throw IOException("cannot read the list '" + path +
                          "'; give a file that sha256sum or "
                          "cvsoa digest wrote, or - for standard input");
    }
    return text;
}

// Checks every file of the list at `path`; false when the list itself cannot be read or holds
// no line to check.
bool checkList(const std::string& path, bool quiet, CheckCounts& counts) {
    const std::string text = readList(path);
    const int checkedBefore = counts.checked;
    std::string hex;
    std::string name;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        std::string_view line(text.data() + start, end - start);
        start = end + 1;
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) {
            line.remove_prefix(1);
        }
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (!parseLine(line, hex, name)) {
            ++counts.improper;
            continue;
        }
        ++counts.checked;
        // Shown as sha256sum -c shows it: escaped only when the name holds a line feed.
        const bool escape = needsEscape(name, "\n");
        const std::string shown = escape ? "\\" + escaped(name) : name;
        std::string actual;
        try {
            actual = hexOf(name);
        } catch (const IOException& e) {
            std::cout.flush();
            std::cerr << "cvsoa digest: " << e.getMessage() << '\n';
            std::cout << shown << ": FAILED open or read\n";
            ++counts.unreadable;
            continue;
        }
        if (actual != hex) {
            std::cout << shown << ": FAILED\n";
            ++counts.failed;
        } else if (!quiet) {
            std::cout << shown << ": OK\n";
        }
    }
    if (counts.checked == checkedBefore) {
        std::cout.flush();
        std::cerr << "cvsoa digest: " << (path == "-" ? "standard input" : path)
                  << ": no properly formatted checksum lines found\n";
        return false;
    }
    return true;
}

void warn(int count, const char* one, const char* many) {
    if (count > 0) {
        std::cerr << "cvsoa digest: WARNING: " << count << ' ' << (count == 1 ? one : many) << '\n';
    }
}

bool checkLists(const DigestOptions& options) {
    CheckCounts counts;
    bool allLists = true;
    for (const std::string& path : options.files) {
        try {
            allLists = checkList(path, options.quiet, counts) && allLists;
        } catch (const IOException& e) {
            std::cout.flush();
            std::cerr << "cvsoa digest: " << e.getMessage() << '\n';
            allLists = false;
        }
    }
    std::cout.flush();
    warn(counts.improper, "line is improperly formatted", "lines are improperly formatted");
    warn(counts.unreadable, "listed file could not be read", "listed files could not be read");
    warn(counts.failed, "computed checksum did NOT match", "computed checksums did NOT match");
    return allLists && counts.failed == 0 && counts.unreadable == 0;
}

void addDigestCommand(CLI::App& app) {
    auto options = std::make_shared<DigestOptions>();
    CLI::App* command = app.add_subcommand(
        "digest", "Print the SHA-256 of files as sha256sum does, or check a list of them");
    command
        ->add_option("files", options->files,
                     "the files (- or none: standard input); with --check, the lists")
        ->capture_default_str();
    command->add_flag("-c,--check", options->check,
                      "read \"<hex>  <name>\" lines (as written here or by sha256sum) and check "
                      "each file; exit 1 when any does not match or cannot be read");
    command->add_flag("--quiet", options->quiet, "with --check, print only the files that fail");
    command->footer(
        "Examples:\n  cvsoa digest *.xml > SHA256SUMS\n  cvsoa digest --check SHA256SUMS");
    command->callback([options] {
        std::ios::sync_with_stdio(false);
        const bool ok = options->check ? checkLists(*options) : printDigests(*options);
        std::cout.flush();
        if (!ok) {
            throw CLI::RuntimeError(1);
        }
    });
}

const CommandRegistration registration(72, addDigestCommand);

}  // namespace

}  // namespace cvsoa
