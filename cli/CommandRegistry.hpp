#ifndef CVSOA_CLI_COMMANDREGISTRY_HPP
#define CVSOA_CLI_COMMANDREGISTRY_HPP

#include <CLI/CLI.hpp>

namespace cvsoa {

/// Each subcommand lives in a file of its own and registers itself here with a static
/// `CommandRegistration`; `main` adds them all to the application in ascending `order`, which is
/// the order `cvsoa --help` lists them in. Registering allocates nothing, so it cannot fail
/// during static initialisation.
class CommandRegistry {
public:
    using AddCommand = void (*)(CLI::App&);

    /// The most subcommands the tool can hold.
    static constexpr int kCapacity = 32;

    static void add(int order, AddCommand addCommand) noexcept;
    static void addAllTo(CLI::App& app);
};

struct CommandRegistration {
    CommandRegistration(int order, CommandRegistry::AddCommand addCommand) noexcept {
        CommandRegistry::add(order, addCommand);
    }
};

}  // namespace cvsoa

#endif
