#include "CommandRegistry.hpp"

#include <corvane/soa/common/DocumentSignature.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/exceptions/SignatureException.hpp>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

namespace cvsoa {

namespace {

using Corvane::Soa::Common::DocumentSignature;
using Corvane::Soa::Common::Exceptions::IOException;
using Corvane::Soa::Common::Exceptions::SignatureException;

struct SignOptions {
    std::string key;
    std::string passphraseFile;
    std::string passphraseEnv;
    std::string file;
    std::string output;
};

[[noreturn]] void fail(const std::string& message) {
    std::cerr << "cvsoa sign: " << message << '\n';
    throw CLI::RuntimeError(1);
}

// The passphrase is the first line of the file (without its line end) or the variable's value;
// never an argument, which other users could read from the process list.
std::string passphrase(const SignOptions& options) {
    if (!options.passphraseEnv.empty()) {
        const char* value = std::getenv(options.passphraseEnv.c_str());
        if (value == nullptr) {
            fail("the environment variable " + options.passphraseEnv +
                 " is not set; set it to the key's passphrase");
        }
        return value;
    }
    if (options.passphraseFile.empty()) {
        return {};
    }
    std::ifstream file(options.passphraseFile, std::ios::binary);
    if (!file) {
        fail("cannot read the passphrase file '" + options.passphraseFile + "'");
    }
    std::string line;
    std::getline(file, line);
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return line;
}

// Written whole or not at all.
void write(const std::string& path, const std::string& text) {
    if (path.empty() || path == "-") {
        std::cout << text;
        return;
    }
    const std::string temporary = path + ".tmp";
    {
        std::ofstream file(temporary, std::ios::binary);
        file << text;
        if (!file) {
            std::remove(temporary.c_str());
            fail("'" + path + "' cannot be written; check the directory");
        }
    }
    if (std::rename(temporary.c_str(), path.c_str()) != 0) {
        std::remove(temporary.c_str());
        fail("'" + path + "' cannot be written; check the directory");
    }
}

void sign(const SignOptions& options) {
    try {
        const DocumentSignature signer =
            DocumentSignature::fromPrivateKeyFile(options.key, passphrase(options));
        std::string signature;
        if (options.file == "-") {
            signature = signer.sign(std::string(std::istreambuf_iterator<char>(std::cin),
                                                std::istreambuf_iterator<char>()));
        } else {
            signature = signer.signFile(options.file);
        }
        write(options.output, signature + "\n");
    } catch (const SignatureException& e) {
        fail(e.getMessage());
    } catch (const IOException& e) {
        fail(e.getMessage());
    }
}

void addSignCommand(CLI::App& app) {
    auto options = std::make_shared<SignOptions>();
    CLI::App* command = app.add_subcommand(
        "sign", "Sign a file with a private key (RSA, EC or Ed25519 PEM): base64 on one line");
    command->add_option("--key", options->key, "the private key (PEM)")->required();
    CLI::Option* fromFile =
        command->add_option("--passphrase-file", options->passphraseFile,
                            "an encrypted key's passphrase: the first line of this file");
    command
        ->add_option("--passphrase-env", options->passphraseEnv,
                     "an encrypted key's passphrase: the value of this environment variable")
        ->excludes(fromFile);
    command->add_option("file", options->file, "the document (- for standard input)")->required();
    command->add_option("-o,--output", options->output,
                        "the signature file (standard output otherwise)");
    command->footer(
        "Example:\n  cvsoa sign --key key.pem report.xml -o report.xml.sig\n"
        "The signature is that of openssl dgst -sha256 -sign (RSA, EC) or openssl pkeyutl "
        "-sign -rawin (Ed25519), in base64.");
    command->callback([options] { sign(*options); });
}

const CommandRegistration registration(74, addSignCommand);

}  // namespace

}  // namespace cvsoa
