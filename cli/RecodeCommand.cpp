#include "CommandRegistry.hpp"

#include <corvane/soa/common/xml/Utf8String.hpp>

#include <iostream>
#include <iterator>
#include <memory>
#include <string>

namespace cvsoa {

namespace {

namespace Xml = Corvane::Soa::Common::Xml;

struct RecodeOptions {
    std::string from = "UTF-8";
    std::string to = "UTF-8";
};

// Standard input to standard output, from one code page to another by way of UTF-8.
void addRecodeCommand(CLI::App& app) {
    auto options = std::make_shared<RecodeOptions>();
    CLI::App* command = app.add_subcommand(
        "recode", "Convert standard input from one code page to another (e.g. Shift_JIS)");
    command->add_option("--from", options->from, "code page of the input")->capture_default_str();
    command->add_option("--to", options->to, "code page of the output")->capture_default_str();
    command->callback([options] {
        // Both converters open first, so that a wrong name fails before anything is read.
        Xml::Utf8String from(options->from);
        Xml::Utf8String to(options->to);
        const std::string input((std::istreambuf_iterator<char>(std::cin)),
                                std::istreambuf_iterator<char>());
        std::string utf8;
        from.encode(input, utf8);
        std::string output;
        to.decode(utf8, output);
        std::cout.write(output.data(), static_cast<std::streamsize>(output.size()));
    });
}

const CommandRegistration registration(50, addRecodeCommand);

}  // namespace

}  // namespace cvsoa
