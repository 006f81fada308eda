#include "CommandRegistry.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace cvsoa {

namespace {

struct Entry {
    int order;
    CommandRegistry::AddCommand addCommand;
};

// Constant-initialised, so it exists before any registration runs.
struct Registered {
    std::array<Entry, CommandRegistry::kCapacity> entries;
    int count;
};
Registered g_registered{};

}  // namespace

void CommandRegistry::add(int order, AddCommand addCommand) noexcept {
    if (g_registered.count == kCapacity) {
        std::abort();  // a build with more subcommands than room for them
    }
    g_registered.entries[static_cast<std::size_t>(g_registered.count++)] = {order, addCommand};
}

void CommandRegistry::addAllTo(CLI::App& app) {
    const auto first = g_registered.entries.begin();
    const auto last = first + g_registered.count;
    std::stable_sort(first, last, [](const Entry& a, const Entry& b) { return a.order < b.order; });
    std::for_each(first, last, [&app](const Entry& entry) { entry.addCommand(app); });
}

}  // namespace cvsoa
