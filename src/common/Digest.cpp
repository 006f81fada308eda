#include <corvane/soa/common/Digest.hpp>

#include <corvane/soa/common/exceptions/IOException.hpp>
#include "common/FileDescriptor.hpp"

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <istream>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

namespace Corvane::Soa::Common {

using Exceptions::IOException;

namespace {

// Large enough that each read costs little next to hashing it, small enough to stay in the
// processor's cache between being read and being hashed. Files are read, not mapped: mapping
// would save copying the bytes, but a file cut short by another process while mapped ends the
// whole program with SIGBUS.
constexpr std::size_t kBlockSize = std::size_t{256} * 1024;

// Fetched once: looking the algorithm up by name is the slow part of starting a digest.
const EVP_MD* sha256() {
    static EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    if (algorithm == nullptr) {
        throw std::runtime_error("SHA-256 is not available from the crypto library");
    }
    return algorithm;
}

EVP_MD_CTX* started() {
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    if (context == nullptr) {
        throw std::bad_alloc();
    }
    if (EVP_DigestInit_ex2(context, sha256(), nullptr) != 1) {
        EVP_MD_CTX_free(context);
        throw std::runtime_error("SHA-256 cannot be started");
    }
    return context;
}

std::string ioMessage(const std::string& path, int error) {
    return "cannot read '" + path + "': " + std::strerror(error);
}

}  // namespace

Digest::Digest() : m_context(started()) {}

Digest::Digest(const Digest& other) : m_context(nullptr) { *this = other; }

Digest& Digest::operator=(const Digest& other) {
    if (this == &other) {
        return *this;
    }
    if (other.m_context == nullptr) {
        reset();
        return *this;
    }
    if (m_context == nullptr) {
        m_context = started();
    }
    if (EVP_MD_CTX_copy_ex(static_cast<EVP_MD_CTX*>(m_context),
                           static_cast<const EVP_MD_CTX*>(other.m_context)) != 1) {
        throw std::bad_alloc();
    }
    return *this;
}

Digest::Digest(Digest&& other) noexcept : m_context(std::exchange(other.m_context, nullptr)) {}

Digest& Digest::operator=(Digest&& other) noexcept {
    std::swap(m_context, other.m_context);
    return *this;
}

Digest::~Digest() { EVP_MD_CTX_free(static_cast<EVP_MD_CTX*>(m_context)); }

Digest& Digest::update(const void* data, std::size_t size) {
    if (m_context == nullptr) {
        m_context = started();
    }
    EVP_DigestUpdate(static_cast<EVP_MD_CTX*>(m_context), data, size);
    return *this;
}

Digest& Digest::update(std::istream& in) {
    const std::unique_ptr<char[]> block(new char[kBlockSize]);
    while (in) {
        in.read(block.get(), static_cast<std::streamsize>(kBlockSize));
        update(block.get(), static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad()) {
        throw IOException("cannot read the stream being digested");
    }
    return *this;
}

Digest::Bytes Digest::bytes() {
    if (m_context == nullptr) {
        m_context = started();
    }
    auto* context = static_cast<EVP_MD_CTX*>(m_context);
    Bytes result{};
    EVP_DigestFinal_ex(context, result.data(), nullptr);
    EVP_DigestInit_ex2(context, nullptr, nullptr);
    return result;
}

std::string Digest::hex() { return toHex(bytes()); }

void Digest::reset() {
    if (m_context == nullptr) {
        m_context = started();
        return;
    }
    EVP_DigestInit_ex2(static_cast<EVP_MD_CTX*>(m_context), sha256(), nullptr);
}

Digest::Bytes Digest::of(std::string_view bytes) {
    Bytes result{};
    EVP_Digest(bytes.data(), bytes.size(), result.data(), nullptr, sha256(), nullptr);
    return result;
}

std::string Digest::hexOf(std::string_view bytes) { return toHex(of(bytes)); }

Digest::Bytes Digest::ofFile(const std::string& path) {
    const FileDescriptor descriptor = FileDescriptor::openForReading(path);
    if (!descriptor.isOpen()) {
        throw IOException(ioMessage(path, errno));
    }
    const int file = descriptor.get();
    ::posix_fadvise(file, 0, 0, POSIX_FADV_SEQUENTIAL);
    const std::unique_ptr<char[]> block(new char[kBlockSize]);
    Digest digest;
    for (;;) {
        const ssize_t got = ::read(file, block.get(), kBlockSize);
        if (got > 0) {
            digest.update(block.get(), static_cast<std::size_t>(got));
        } else if (got == 0) {
            return digest.bytes();
        } else if (errno != EINTR) {
            throw IOException(ioMessage(path, errno));
        }
    }
}

std::string Digest::hexOfFile(const std::string& path) { return toHex(ofFile(path)); }

std::string Digest::toHex(const Bytes& bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text(2 * kSize, '\0');
    for (std::size_t i = 0; i < kSize; ++i) {
        text[2 * i] = kDigits[bytes[i] >> 4];
        text[2 * i + 1] = kDigits[bytes[i] & 0x0f];
    }
    return text;
}

}  // namespace Corvane::Soa::Common
