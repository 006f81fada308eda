#include "CommandRegistry.hpp"

#include <corvane/soa/common/Properties.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <fstream>
#include <iostream>
#include <memory>
#include <string>

namespace cvsoa {

namespace {

using Corvane::Soa::Common::Properties;
using Corvane::Soa::Common::Exceptions::IOException;

struct PropertiesOptions {
    std::string file;
    std::string key;
    std::string output;
};

[[noreturn]] void fail(const std::string& message) {
    std::cerr << "cvsoa properties: " << message << '\n';
    throw CLI::RuntimeError(1);
}

Properties loadFile(const std::string& path) {
    Properties properties;
    try {
        if (path == "-") {
            properties.load(std::cin, "standard input");
        } else {
            properties.load(path);
        }
    } catch (const IOException& e) {
        fail(e.getMessage());
    }
    return properties;
}

// The text to standard output, or to the file named by -o.
void emit(const std::string& output, const std::string& text) {
    if (output.empty() || output == "-") {
        std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
        return;
    }
    std::ofstream out(output, std::ios::binary);
    if (!out.write(text.data(), static_cast<std::streamsize>(text.size())) || !out.flush()) {
        fail(output + ": cannot be written (check the directory and its permissions)");
    }
}

CLI::App* addFileCommand(CLI::App* properties, const char* name, const char* description,
                         PropertiesOptions& options) {
    CLI::App* command = properties->add_subcommand(name, description);
    command->add_option("file", options.file, "properties file ('-': standard input)")->required();
    command->add_option("-o,--output", options.output, "write here instead of standard output");
    return command;
}

void addPropertiesCommand(CLI::App& app) {
    CLI::App* properties = app.add_subcommand(
        "properties", "Read properties files (key=value lines, as the Java platform writes them)");
    properties->require_subcommand(1);

    auto showOptions = std::make_shared<PropertiesOptions>();
    addFileCommand(properties, "show",
                   "Print every key=value in file order, escaped, itself a properties file",
                   *showOptions)
        ->callback(
            [showOptions] { emit(showOptions->output, loadFile(showOptions->file).toText()); });

    auto getOptions = std::make_shared<PropertiesOptions>();
    CLI::App* get =
        addFileCommand(properties, "get",
                       "Print the value of one key (exit status 1 when it is absent)", *getOptions);
    get->add_option("key", getOptions->key, "the key, as loaded (without escapes)")->required();
    get->callback([getOptions] {
        const Properties loaded = loadFile(getOptions->file);
        const std::string* value = loaded.find(getOptions->key);
        if (value == nullptr) {
            fail((getOptions->file == "-" ? std::string("standard input") : getOptions->file) +
                 ": no key \"" + getOptions->key + "\" (`cvsoa properties show " +
                 getOptions->file + "` lists the keys)");
        }
        emit(getOptions->output, *value + "\n");
    });
}

const CommandRegistration registration(78, addPropertiesCommand);

}  // namespace

}  // namespace cvsoa
