#ifndef CVSOA_CLI_COMMANDREGISTRY_HPP
#define CVSOA_CLI_COMMANDREGISTRY_HPP

#include <CLI/CLI.hpp>

#include <functional>

namespace cvsoa {

/// Each subcommand lives in a file of its own and registers itself here with a static
/// `CommandRegistration`; `main` adds them all to the application in ascending `order`, which is
/// the order `cvsoa --help` lists them in.
class CommandRegistry {
public:
    using AddCommand = std::function<void(CLI::App&)>;

    static void add(int order, AddCommand addCommand);
    static void addAllTo(CLI::App& app);
};

struct CommandRegistration {
    CommandRegistration(int order, CommandRegistry::AddCommand addCommand) {
        CommandRegistry::add(order, std::move(addCommand));
    }
};

}  // namespace cvsoa

#endif
