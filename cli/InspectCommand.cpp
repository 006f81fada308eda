#include "CommandRegistry.hpp"

#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

namespace cvsoa {

namespace {

namespace Xml = Corvane::Soa::Common::Xml;
using Corvane::Soa::Common::Exceptions::DomException;

struct InspectOptions {
    std::string path;
    std::string encoding;
};

void fail(const std::string& message) {
    std::cerr << message;
    if (message.empty() || message.back() != '\n') {
        std::cerr << '\n';
    }
    throw CLI::RuntimeError(1);
}

// Lists the bytes outside printable ASCII, reads the document and prints its element tree.
void addInspectCommand(CLI::App& app) {
    auto options = std::make_shared<InspectOptions>();
    CLI::App* command = app.add_subcommand(
        "inspect", "Read an XML document: list unusual bytes, then print its element tree");
    command->add_option("file", options->path, "the XML document")->required();
    command->add_option("--encoding", options->encoding,
                        "code page for the printed text (default: the process's own)");
    command->callback([options] {
        std::ifstream file(options->path, std::ios::binary);
        if (!file) {
            fail("XML Document '" + options->path + "' does not exist.\n");
        }
        const std::string content((std::istreambuf_iterator<char>(file)),
                                  std::istreambuf_iterator<char>());
        std::string report;
        if (!Xml::SAXToNodeParser::checkForIllegalXMLchars(content, report)) {
            std::cout << report << '\n';
        }
        Xml::SAXToNodeParser parser;
        try {
            parser.parseFile(options->path, options->encoding)->output(std::cout, "");
        } catch (const DomException& e) {
            fail(e.getMessage());
        }
    });
}

const CommandRegistration registration(40, addInspectCommand);

}  // namespace

}  // namespace cvsoa
