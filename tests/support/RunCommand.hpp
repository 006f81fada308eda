#ifndef CVSOA_TESTS_SUPPORT_RUNCOMMAND_HPP
#define CVSOA_TESTS_SUPPORT_RUNCOMMAND_HPP

#include <sys/wait.h>

#include <cstdio>
#include <string>

struct CommandOutcome {
    int status;          // the exit status; -1 when the command did not exit
    std::string output;  // what it printed on the streams `command` sends to the pipe
};

// Runs `command` through the shell and reads its standard output to the end.
inline CommandOutcome runCommand(const std::string& command) {
    FILE* pipe = ::popen(command.c_str(), "r");
    std::string output;
    char buffer[512];
    for (std::size_t got = 0;
         pipe != nullptr && (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        output.append(buffer, got);
    }
    const int status = pipe != nullptr ? ::pclose(pipe) : -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

#endif
