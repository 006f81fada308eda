#ifndef CORVANE_SOA_COMMON_DOCUMENTSIGNATURE_HPP
#define CORVANE_SOA_COMMON_DOCUMENTSIGNATURE_HPP

#include <corvane/soa/Export.hpp>

#include <ctime>
#include <memory>
#include <string>
#include <string_view>

namespace Corvane::Soa::Common {

/// Signs a document's bytes with a private key and verifies them with a public key or an X.509
/// certificate, all read from PEM. The scheme is the key's own, over SHA-256: RSA PKCS#1 v1.5,
/// ECDSA (the signature in DER) or Ed25519 (pure, over the document's bytes themselves). The
/// signatures are those of `openssl dgst -sha256 -sign` (RSA, EC) and
/// `openssl pkeyutl -sign -rawin` (Ed25519), carried as base64 text on one line.
///
///     const DocumentSignature signer = DocumentSignature::fromPrivateKeyFile("key.pem");
///     const std::string signature = signer.sign(document);
///     DocumentSignature::fromCertificateFile("cert.pem").verify(document, signature);  // true
///
/// A key, certificate or signature that cannot be read or used is a SignatureException whose
/// message names the file and what is wrong; a file that cannot be opened is an IOException. A
/// well-formed signature that does not match is not an error: `verify` gives false. Copies share
/// the key, which does not change: one object may sign or verify on several threads at once.
class CORVANE_SOA_API DocumentSignature {
public:
    /// A private key (PKCS#8 or the key type's own PEM form), encrypted or not; `passphrase` is
    /// needed for an encrypted one and ignored otherwise. Signs, and verifies with its public half.
    static DocumentSignature fromPrivateKeyFile(const std::string& path,
                                                const std::string& passphrase = {});
    /// A public key ("PUBLIC KEY" PEM). A private key file is accepted too (its public half).
    static DocumentSignature fromPublicKeyFile(const std::string& path);
    /// The first certificate of a PEM file; its public key verifies.
    static DocumentSignature fromCertificateFile(const std::string& path);

    /// The same from PEM text in memory; `name` stands for the file in messages.
    static DocumentSignature fromPrivateKeyPem(std::string_view pem, const std::string& name,
                                               const std::string& passphrase = {});
    static DocumentSignature fromPublicKeyPem(std::string_view pem, const std::string& name);
    static DocumentSignature fromCertificatePem(std::string_view pem, const std::string& name);

    /// "RSA", "EC" or "Ed25519".
    std::string getKeyType() const;
    bool canSign() const noexcept;
    bool hasCertificate() const noexcept;

    /// The signature of `document`, base64 on one line (no line break). SignatureException when
    /// this holds no private key.
    std::string sign(std::string_view document) const;
    /// Whether `signature` (base64, white space around it ignored) is this key's signature of
    /// `document`. SignatureException when it is not base64 text; `signatureName` names it in
    /// the message (e.g. its file).
    bool verify(std::string_view document, std::string_view signature,
                const std::string& signatureName = "the signature") const;

    /// The same over files; IOException naming a file that cannot be read. A document is read
    /// whole: Ed25519 signs it in one piece, and the other schemes take it the same way.
    std::string signFile(const std::string& documentPath) const;
    bool verifyFile(const std::string& documentPath, const std::string& signaturePath) const;

    /// Whether the certificate chains up to one of the certificates in the PEM bundle at
    /// `bundlePath` (its trusted roots, and intermediates) and every certificate of the chain is
    /// valid at `at` (0: now). When it is not, `reason` (if given) says why, e.g. "certificate
    /// has expired". SignatureException when this holds no certificate or the bundle holds none.
    bool isTrustedBy(const std::string& bundlePath, std::string* reason = nullptr,
                     std::time_t at = 0) const;

private:
    struct Key;
    explicit DocumentSignature(std::shared_ptr<const Key> key);

    std::shared_ptr<const Key> m_key;
};

}  // namespace Corvane::Soa::Common

#endif
