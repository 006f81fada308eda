#include "CommandRegistry.hpp"

#include <map>

namespace cvsoa {

namespace {
std::multimap<int, CommandRegistry::AddCommand>& commands() {
    static std::multimap<int, CommandRegistry::AddCommand> registered;
    return registered;
}
}  // namespace

void CommandRegistry::add(int order, AddCommand addCommand) {
    commands().emplace(order, std::move(addCommand));
}

void CommandRegistry::addAllTo(CLI::App& app) {
    for (const auto& entry : commands()) {
        entry.second(app);
    }
}

}  // namespace cvsoa
