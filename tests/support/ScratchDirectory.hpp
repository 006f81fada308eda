#ifndef CVSOA_TESTS_SUPPORT_SCRATCHDIRECTORY_HPP
#define CVSOA_TESTS_SUPPORT_SCRATCHDIRECTORY_HPP

#include "RunCommand.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// A directory of its own for a test, removed with everything in it at the end, where shell
// commands (openssl, sha256sum, the built tool) run.
class ScratchDirectory {
public:
    ScratchDirectory() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "cvsoa-test-XXXXXX").string();
        m_path = ::mkdtemp(pattern.data()) != nullptr ? pattern : std::string();
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    // Whether `program` can be run from the shell.
    static bool has(const std::string& program) {
        return runCommand("command -v " + program + " >/dev/null 2>&1").status == 0;
    }

    std::string path(const std::string& name) const { return m_path + "/" + name; }

    // Runs `command` in the directory; its exit status and what it wrote (both streams).
    CommandOutcome run(const std::string& command) const {
        return runCommand("cd '" + m_path + "' && { " + command + " ; } 2>&1");
    }

    void write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
    }

    std::string read(const std::string& name) const { return readFile(path(name)); }

    static std::string readFile(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    std::string m_path;
};

#endif
