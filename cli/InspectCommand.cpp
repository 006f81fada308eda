#include "CommandRegistry.hpp"

#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlUtil.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/ParsingException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

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

namespace Json = Corvane::Soa::Internal::Json;

// Reads a JSON document and prints its tree; the parser's message (with the line and character)
// when it cannot.
void inspectJson(const std::string& content) {
    try {
        Json::Parser parser;
        const auto root = parser.parse(content);
        if (const auto object = root.dynamicCast<Json::JSONObject>()) {
            object->serializeObject(std::cout);
        } else if (const auto array = root.dynamicCast<Json::JSONArray>()) {
            array->serializeDocument(std::cout);
        }
        std::cout << '\n';
    } catch (const Json::ParsingException& e) {
        fail(e.getMessage());
    } catch (const Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException& e) {
        fail(e.getMessage());
    }
}

// XML: lists the bytes outside printable ASCII, reads the document and prints its element tree.
// JSON (a document starting with '{'): reads it and prints its tree.
void addInspectCommand(CLI::App& app) {
    auto options = std::make_shared<InspectOptions>();
    CLI::App* command = app.add_subcommand(
        "inspect", "Read an XML or JSON document and print its tree (or the exact error)");
    command->add_option("file", options->path, "the XML or JSON document, - for standard input")
        ->required();
    command->add_option("--encoding", options->encoding,
                        "code page for the printed text (default: the process's own)");
    command->callback([options] {
        std::string content;
        if (options->path == "-") {
            content.assign(std::istreambuf_iterator<char>(std::cin),
                           std::istreambuf_iterator<char>());
        } else {
            std::ifstream file(options->path, std::ios::binary);
            if (!file) {
                fail("Document '" + options->path + "' does not exist.\n");
            }
            content.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        }
        if (!content.empty() && Xml::XmlUtil::isJSON(content)) {
            inspectJson(content);
            return;
        }
        std::string report;
        if (!Xml::SAXToNodeParser::checkForIllegalXMLchars(content, report)) {
            std::cout << report << '\n';
        }
        Xml::SAXToNodeParser parser;
        try {
            Xml::XMLNode* root = options->path == "-"
                                     ? parser.parseString(content, options->encoding)
                                     : parser.parseFile(options->path, options->encoding);
            root->output(std::cout, "");
        } catch (const DomException& e) {
            fail(e.getMessage());
        }
    });
}

const CommandRegistration registration(40, addInspectCommand);

}  // namespace

}  // namespace cvsoa
