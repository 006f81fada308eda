#ifndef CORVANE_SOA_COMMON_DIGEST_HPP
#define CORVANE_SOA_COMMON_DIGEST_HPP

#include <corvane/soa/Export.hpp>

#include <array>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Corvane::Soa::Common {

/// SHA-256 of bytes, strings, streams and files, at once or in pieces.
///
///     Digest digest;
///     digest.update(header).update(body);
///     const std::string hex = digest.hex();  // 64 lower-case hex digits; digest starts over
///
/// A Digest is reusable: taking the result (`bytes`, `hex`) starts it over, empty. It is
/// copyable: a copy carries on from the same bytes on its own (digest a shared prefix once, then
/// copy it for each ending). One object is for one thread at a time.
class CORVANE_SOA_API Digest {
public:
    static constexpr std::size_t kSize = 32;
    using Bytes = std::array<unsigned char, kSize>;

    Digest();
    Digest(const Digest& other);
    Digest& operator=(const Digest& other);
    Digest(Digest&& other) noexcept;
    Digest& operator=(Digest&& other) noexcept;
    ~Digest();

    Digest& update(const void* data, std::size_t size);
    Digest& update(std::string_view bytes) { return update(bytes.data(), bytes.size()); }
    /// Everything left in `in`, read in large blocks. IOException when the stream fails other
    /// than by reaching its end.
    Digest& update(std::istream& in);

    /// The digest of everything given since the start; the object starts over.
    Bytes bytes();
    /// The same as 64 lower-case hex digits.
    std::string hex();
    /// Forgets what was given.
    void reset();

    static Bytes of(std::string_view bytes);
    static std::string hexOf(std::string_view bytes);
    /// A file's digest, read in large blocks (never whole). IOException naming the file when it
    /// cannot be opened or read.
    static Bytes ofFile(const std::string& path);
    static std::string hexOfFile(const std::string& path);
    static std::string toHex(const Bytes& bytes);

private:
    void* m_context;  // the crypto library's running state; null only once moved from
};

}  // namespace Corvane::Soa::Common

#endif
