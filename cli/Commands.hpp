#ifndef CVSOA_CLI_COMMANDS_HPP
#define CVSOA_CLI_COMMANDS_HPP

#include <CLI/CLI.hpp>

// Each subcommand of cvsoa registers itself on the application and runs from its callback.
namespace cvsoa {

void addEscapeCommand(CLI::App& app);
void addSampleCommand(CLI::App& app);

}  // namespace cvsoa

#endif
