#include "CommandRegistry.hpp"
#include "JsonQuoted.hpp"

#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/ExceptionMapper.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ConnectionException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidCredentialsException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidUserException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ProtocolException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ServiceException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace cvsoa {

namespace {

namespace Soa = ::Corvane::Schemas::Soa::_2006_03::Exceptions;
using ::Corvane::Soa::Common::Exceptions::DomException;
using ::Corvane::Soa::Common::Exceptions::ExceptionMapper;

struct ErrorOptions {
    std::string path;
    std::string output;
    bool json = false;
    std::string type;
    std::string message;
    int code = 0;
    int level = 0;
    std::string uid;
    std::string clientId;
    std::string response;
};

[[noreturn]] void fail(int status, const std::string& message) {
    std::cerr << "cvsoa error: " << message << '\n';
    throw CLI::RuntimeError(status);
}

// The exception's type name, as the document names it.
std::string typeName(const Soa::SoaException& e) {
    if (dynamic_cast<const Soa::InvalidCredentialsException*>(&e) != nullptr) {
        return "InvalidCredentialsException";
    }
    if (dynamic_cast<const Soa::InvalidUserException*>(&e) != nullptr) {
        return "InvalidUserException";
    }
    if (dynamic_cast<const Soa::ProtocolException*>(&e) != nullptr) {
        return "ProtocolException";
    }
    if (dynamic_cast<const Soa::ConnectionException*>(&e) != nullptr) {
        return "ConnectionException";
    }
    if (dynamic_cast<const Soa::ServiceException*>(&e) != nullptr) {
        return "ServiceException";
    }
    return "InternalServerException";
}

// The extra texts some types carry, as (label, JSON key, value), empty ones left out.
struct Extra {
    const char* label;
    const char* key;
    std::string value;
};

std::vector<Extra> extrasOf(const Soa::SoaException& e) {
    std::vector<Extra> extras;
    if (const auto* service = dynamic_cast<const Soa::ServiceException*>(&e)) {
        extras.push_back({"uid", "uid", service->getUid()});
        extras.push_back({"client id", "clientId", service->getClientId()});
    }
    if (const auto* user = dynamic_cast<const Soa::InvalidUserException*>(&e)) {
        extras.push_back({"response", "response", user->getCvResponse()});
    }
    return extras;
}

void printJson(std::ostream& out, const Soa::SoaException& e) {
    out << "{\"errorDocument\":true,\"type\":\"" << typeName(e) << '"';
    for (const Extra& extra : extrasOf(e)) {
        if (!extra.value.empty()) {
            out << ",\"" << extra.key << "\":" << jsonQuoted(extra.value);
        }
    }
    out << ",\"errors\":[";
    const char* separator = "";
    for (const auto& error : e.getErrors()) {
        out << separator << "{\"code\":" << error->getCode() << ",\"level\":" << error->getLevel()
            << ",\"message\":" << jsonQuoted(error->getMessage()) << '}';
        separator = ",";
    }
    out << "]}\n";
}

// Multi-line texts continue on lines indented under the first.
void printIndented(std::ostream& out, const std::string& text) {
    for (const char c : text) {
        out << c;
        if (c == '\n') {
            out << "    ";
        }
    }
    out << '\n';
}

void printText(std::ostream& out, const Soa::SoaException& e) {
    out << typeName(e) << '\n';
    for (const auto& error : e.getErrors()) {
        out << "  code " << error->getCode() << ", level " << error->getLevel() << ": ";
        printIndented(out, error->getMessage());
    }
    for (const Extra& extra : extrasOf(e)) {
        if (!extra.value.empty()) {
            out << "  " << extra.label << ": ";
            printIndented(out, extra.value);
        }
    }
}

// Reads the reply and reports it; exits with 3 for an error document.
void readReply(const ErrorOptions& options, std::ostream& out) {
    ::Corvane::Soa::Common::Xml::SAXToNodeParser parser;
    try {
        if (options.path == "-") {
            parser.parseStream(&std::cin);
        } else {
            parser.parseFile(options.path);
        }
    } catch (const DomException& e) {
        std::cerr << e.getMessage();
        if (e.getMessage().empty() || e.getMessage().back() != '\n') {
            std::cerr << '\n';
        }
        fail(1, "'" + options.path + "' is not a readable XML document; give a reply document " +
                    "(or - for standard input)");
    }
    try {
        ExceptionMapper::parseExceptionString(parser.getRootNode());
    } catch (const Soa::SoaException& e) {
        if (options.json) {
            printJson(out, e);
        } else {
            printText(out, e);
        }
        out.flush();
        throw CLI::RuntimeError(3);
    }
    out << (options.json ? "{\"errorDocument\":false}\n" : "not an error document\n");
}

std::unique_ptr<Soa::SoaException> makeException(const ErrorOptions& o) {
    if (o.type == "InvalidCredentialsException") {
        return std::make_unique<Soa::InvalidCredentialsException>(o.message, o.code, o.level);
    }
    if (o.type == "InvalidUserException") {
        return std::make_unique<Soa::InvalidUserException>(o.code, o.level, o.message, o.response);
    }
    if (o.type == "ProtocolException") {
        return std::make_unique<Soa::ProtocolException>(o.message, o.code, o.level);
    }
    if (o.type == "ConnectionException") {
        return std::make_unique<Soa::ConnectionException>(o.message, o.code, o.level);
    }
    if (o.type == "InternalServerException") {
        return std::make_unique<Soa::InternalServerException>(o.message, o.code, o.level);
    }
    if (o.type == "ServiceException") {
        auto service = std::make_unique<Soa::ServiceException>();
        service->addError(o.message, o.code, o.level);
        service->setUid(o.uid);
        service->setClientId(o.clientId);
        return service;
    }
    fail(2, "unknown exception type '" + o.type +
                "'; use InvalidCredentialsException, InvalidUserException, ProtocolException, "
                "ConnectionException, InternalServerException or ServiceException");
}

void run(const ErrorOptions& options, const CLI::App& command) {
    const bool writing = command.count("--write") != 0;
    if (writing == (command.count("file") != 0)) {
        fail(2,
             "give either a reply document (FILE or -) or --write TYPE (see cvsoa error --help)");
    }
    if (writing && command.count("--message") == 0) {
        fail(2, "--write needs --message (see cvsoa error --help)");
    }
    if (!writing && command.count("--message") + command.count("--code") +
                            command.count("--level") + command.count("--uid") +
                            command.count("--client-id") + command.count("--response") !=
                        0) {
        fail(2, "--message, --code, --level, --uid, --client-id and --response go with --write");
    }
    std::unique_ptr<Soa::SoaException> exception = writing ? makeException(options) : nullptr;

    std::ofstream file;
    if (!options.output.empty() && options.output != "-") {
        file.open(options.output, std::ios::binary);
        if (!file) {
            fail(1, "cannot write '" + options.output + "'; check the directory and permissions");
        }
    }
    std::ostream& out = file.is_open() ? static_cast<std::ostream&>(file) : std::cout;
    if (writing) {
        ExceptionMapper::writeSoaException(*exception, out);
    } else {
        readReply(options, out);
    }
}

// Decodes a server reply into its exception, or writes an error document for test replies.
void addErrorCommand(CLI::App& app) {
    auto options = std::make_shared<ErrorOptions>();
    CLI::App* command = app.add_subcommand(
        "error",
        "Decode a server error document into its exception (exit 3), or write one (--write)");
    command->add_option("file", options->path, "the reply document, - for standard input");
    command->add_option("-o,--output", options->output, "where to print (standard output)");
    command->add_flag("--json", options->json, "print the exception as a JSON object");
    command->add_option("--write", options->type,
                        "write an error document of this exception type instead, e.g. "
                        "InternalServerException or ServiceException");
    command->add_option("--message", options->message, "the error's message (with --write)");
    command->add_option("--code", options->code, "the error's code (with --write; 0)");
    command->add_option("--level", options->level, "the error's level (with --write; 0)");
    command->add_option("--uid", options->uid, "a ServiceException's uid (with --write)");
    command->add_option("--client-id", options->clientId,
                        "a ServiceException's client id (with --write)");
    command->add_option("--response", options->response,
                        "an InvalidUserException's response text (with --write)");
    command->callback([options, command] { run(*options, *command); });
}

const CommandRegistration registration(45, addErrorCommand);

}  // namespace

}  // namespace cvsoa
