// The key, certificate and signature readers take any bytes: the first byte picks the reader
// (a PEM private key, a public key, a certificate, or a base64 signature verified against a
// fixed Ed25519 key), the rest is its input. Anything unreadable is a SignatureException;
// nothing else may escape, and what reads must be usable.
#include <corvane/soa/common/DocumentSignature.hpp>
#include <corvane/soa/common/exceptions/SignatureException.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

using Corvane::Soa::Common::DocumentSignature;
using Corvane::Soa::Common::Exceptions::SignatureException;

namespace {

constexpr std::string_view kDocument = "fuzzed document";

const DocumentSignature& fixedKey() {
    static const DocumentSignature key = DocumentSignature::fromPublicKeyPem(
        "-----BEGIN PUBLIC KEY-----\n"
        "MCowBQYDK2VwAyEAUPQXla8zPdac5JjfRh67WyKclc34g9XBOUXgVE2BvSM=\n"
        "-----END PUBLIC KEY-----\n",
        "fixed key");
    return key;
}

// Its signature of kDocument, so that a seed reaches the valid path.
constexpr std::string_view kValid =
    "0oqNqrnfgoaQU0MRStSelReSRWbVtfdYBkREwSMnI+uiV39QgAwxTElJ9ORMOfrPu74utu66PaegmABV6SBTDg==";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
    try {
        switch (data[0] % 4) {
            case 0: {
                // The corpus's encrypted keys use this passphrase.
                const DocumentSignature key =
                    DocumentSignature::fromPrivateKeyPem(input, "fuzz", "secret");
                if (!key.verify(kDocument, key.sign(kDocument))) {
                    std::abort();
                }
                break;
            }
            case 1:
                DocumentSignature::fromPublicKeyPem(input, "fuzz").verify(kDocument, kValid);
                break;
            case 2:
                if (!DocumentSignature::fromCertificatePem(input, "fuzz").hasCertificate()) {
                    std::abort();
                }
                break;
            default:
                if (fixedKey().verify(kDocument, input) != (input == kValid)) {
                    // Only the one signature is valid (white space around it aside).
                    if (input.find_first_of(" \t\r\n") == std::string_view::npos) {
                        std::abort();
                    }
                }
                break;
        }
    } catch (const SignatureException&) {
    }
    return 0;
}
