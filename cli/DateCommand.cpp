#include "CommandRegistry.hpp"

#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace cvsoa {

namespace {

using Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;
using Corvane::Soa::Common::DateTime;

// Reads each wire-form date, prints it as local time and writes it back in wire form.
void addDateCommand(CLI::App& app) {
    auto texts = std::make_shared<std::vector<std::string>>();
    CLI::App* command = app.add_subcommand(
        "date", "Read wire-form dates (2016-12-05T14:03:09+01:00) into local time and back");
    command->add_option("text", *texts, "dates to read")->required();
    command->callback([texts] {
        bool failed = false;
        for (const std::string& text : *texts) {
            try {
                const DateTime date(text);
                const int offset = date.timeZoneOffset();
                char zone[16];
                std::snprintf(zone, sizeof zone, "UTC%c%02d:%02d", offset < 0 ? '-' : '+',
                              std::abs(offset) / 60, std::abs(offset) % 60);
                std::cout << text << "\n  local " << date.toString("%Y-%m-%d %H:%M:%S") << " ("
                          << zone << ")\n  wire  " << date.toString() << '\n';
            } catch (const InternalServerException& e) {
                std::cout << text << "\n  error " << e.getCode() << ": " << e.getMessage() << '\n';
                failed = true;
            }
        }
        if (failed) {
            throw CLI::RuntimeError(1);
        }
    });
}

const CommandRegistration registration(30, addDateCommand);

}  // namespace

}  // namespace cvsoa
