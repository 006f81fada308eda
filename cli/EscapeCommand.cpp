#include "CommandRegistry.hpp"

#include <corvane/soa/common/xml/XmlText.hpp>

#include <iostream>
#include <iterator>
#include <memory>
#include <string>

namespace cvsoa {

namespace Xml = Corvane::Soa::Common::Xml;

namespace {

struct EscapeOptions {
    bool json = false;
    bool decode = false;
    std::string text;
    bool textGiven = false;
};

std::string readAll(std::istream& in) {
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

namespace {

void addEscapeCommand(CLI::App& app) {
    auto options = std::make_shared<EscapeOptions>();
    CLI::App* command = app.add_subcommand(
        "escape", "Escape text for XML (or JSON), or undo the escaping; reads TEXT or stdin");
    command->add_flag("--json", options->json, "JSON string escaping instead of XML");
    command->add_flag("-d,--decode", options->decode, "undo the escaping");
    command->add_option("text", options->text, "the text (standard input when absent)");
    command->callback([options, command] {
        const std::string input = command->count("text") != 0 ? options->text : readAll(std::cin);
        std::string output;
        if (options->json) {
            output = options->decode ? Xml::decodeJson(input) : Xml::toJsonString(input);
        } else {
            output = options->decode ? Xml::decodeXml(input) : Xml::toXmlString(input);
        }
        std::cout << output;
        if (command->count("text") != 0) {
            std::cout << '\n';
        }
    });
}

const CommandRegistration registration(20, addEscapeCommand);

}  // namespace

}  // namespace cvsoa
