#include "CommandRegistry.hpp"

#include <corvane/soa/common/DocumentSignature.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/exceptions/SignatureException.hpp>

#include <cerrno>
#include <cstring>
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

// Exit status of a signature or certificate that is not valid (1 and 2 are taken by unreadable
// input and usage).
constexpr int kNotValid = 3;

struct VerifyOptions {
    std::string key;
    std::string certificate;
    std::string bundle;
    std::string file;
    std::string signature;
};

std::string label(const std::string& path) {
    return path == "-" ? "standard input" : "'" + path + "'";
}

std::string readInput(const std::string& path) {
    if (path == "-") {
        return std::string(std::istreambuf_iterator<char>(std::cin),
                           std::istreambuf_iterator<char>());
    }
    std::ifstream file(path, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file.is_open() || file.bad()) {
        throw IOException("cannot read " + label(path) + ": " + std::strerror(errno));
    }
    return bytes;
}

void notValid(const std::string& why) {
    std::cout << "Verification failure: " << why << '\n';
    throw CLI::RuntimeError(kNotValid);
}

void verify(const VerifyOptions& options) {
    if (options.key.empty() == options.certificate.empty()) {
        throw CLI::ValidationError("verify",
                                   "give either --key or --cert (see cvsoa verify --help)");
    }
    if (options.file == "-" && options.signature == "-") {
        throw CLI::ValidationError("verify", "only one of FILE and SIG can be standard input");
    }
    const std::string& keyPath = options.key.empty() ? options.certificate : options.key;
    try {
        const DocumentSignature verifier = options.key.empty()
                                               ? DocumentSignature::fromCertificateFile(keyPath)
                                               : DocumentSignature::fromPublicKeyFile(keyPath);
        const std::string signature = readInput(options.signature);
        const std::string document = readInput(options.file);
        if (!verifier.verify(document, signature, "the signature in " + label(options.signature))) {
            notValid("the signature in " + label(options.signature) + " is not that of " +
                     label(options.file) + " with the key in " + label(keyPath));
        }
        std::string reason;
        if (!options.bundle.empty() && !verifier.isTrustedBy(options.bundle, &reason)) {
            notValid("the certificate " + label(keyPath) + " is not trusted by " +
                     label(options.bundle) + ": " + reason);
        }
        std::cout << "Verified OK\n";
    } catch (const SignatureException& e) {
        std::cerr << "cvsoa verify: " << e.getMessage() << '\n';
        throw CLI::RuntimeError(1);
    } catch (const IOException& e) {
        std::cerr << "cvsoa verify: " << e.getMessage() << '\n';
        throw CLI::RuntimeError(1);
    }
}

void addVerifyCommand(CLI::App& app) {
    auto options = std::make_shared<VerifyOptions>();
    CLI::App* command = app.add_subcommand(
        "verify", "Verify a file's signature (as cvsoa sign writes it): exit 0 valid, 3 not valid");
    CLI::Option* key =
        command->add_option("--key", options->key, "the public key (PEM) that verifies");
    CLI::Option* certificate =
        command->add_option("--cert", options->certificate, "a certificate (PEM) that verifies")
            ->excludes(key);
    command
        ->add_option("--ca", options->bundle,
                     "trusted certificates (PEM): the certificate must chain up to one of them "
                     "and be valid now")
        ->needs(certificate);
    command->add_option("file", options->file, "the document (- for standard input)")->required();
    command
        ->add_option("signature", options->signature, "its signature file (- for standard input)")
        ->required();
    command->footer(
        "Examples:\n  cvsoa verify --key key.pub.pem report.xml report.xml.sig\n"
        "  cvsoa verify --cert signer.pem --ca trusted.pem report.xml report.xml.sig");
    command->callback([options] { verify(*options); });
}

const CommandRegistration registration(76, addVerifyCommand);

}  // namespace

}  // namespace cvsoa
