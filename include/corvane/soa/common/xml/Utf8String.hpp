#ifndef CORVANE_SOA_COMMON_XML_UTF8STRING_HPP
#define CORVANE_SOA_COMMON_XML_UTF8STRING_HPP

#include <corvane/soa/Export.hpp>

#include <cstddef>
#include <memory>
#include <string>

struct UConverter;

namespace Corvane::Soa::Common::Xml {

/// Converts text between UTF-8 (the wire form) and a local code page, such as "Shift_JIS",
/// "Big5", "EUC-JP" or "windows-1252", with the converters of the ICU common library.
///
/// Conversion runs through a UTF-16 work buffer in pieces; the converters keep their state
/// from one piece to the next, so a character that straddles a piece boundary comes out
/// whole. When the local page is UTF-8 (any spelling: "UTF-8", "utf_8", "UTF 8"), `encode` and
/// `decode` copy the text unchanged.
///
/// Bytes that do not form a character of the source page raise an error; characters that the
/// target page cannot represent become that page's substitution character. Errors are thrown
/// as `InternalServerException` with code 534 and level 3 (see `kConversionErrorCode`):
///   "Error opening local (NAME) converter U_FILE_ACCESS_ERROR"
///   "Error opening UTF-8 converter ERROR"
///   "An error occured converting NAME (ALIAS, ALIAS, ...) to Unicode.ERROR"
///   "An error occured converting Unicode to NAME (ALIAS, ALIAS, ...).ERROR"
///
/// An object serves one thread at a time.
class CORVANE_SOA_API Utf8String {
public:
    /// Capacity of the UTF-16 work buffer, in 16-bit units.
    static constexpr std::size_t sUnicodeBufferSize = 20480;
    /// Capacity of the local-bytes work buffer, in bytes.
    static constexpr std::size_t sLocalBufferSize = 30720;
    /// The name against which UTF-8 is recognised, once spaces, '-' and '_' are removed and
    /// letters are made upper case.
    static constexpr const char* sUTF8 = "UTF8";

    /// Code of the `InternalServerException`s thrown here: 533 is taken by malformed date
    /// texts, the library's other internal failure; conversions come next. Level 3 is the
    /// error level.
    static constexpr int kConversionErrorCode = 534;
    static constexpr int kConversionErrorLevel = 3;

    /// Uses the default local code page: the one set by `setDefaultEncoding` (or, the same
    /// thing, `setDefaultCharacterEncoding`), else ICU's default for the process.
    Utf8String();
    /// Uses the named local code page (empty: as the default constructor).
    explicit Utf8String(const std::string& codePage);
    Utf8String(const Utf8String&) = delete;
    Utf8String& operator=(const Utf8String&) = delete;
    ~Utf8String();

    /// Sets the process-wide default local code page. It is the same setting as
    /// `setDefaultCharacterEncoding`, and is meant to be made once, at start-up.
    static void setDefaultEncoding(const std::string& codePage);
    /// The process-wide default local code page; empty until set.
    static const std::string& getDefaultEncoding();

    /// Appends the UTF-8 form of the local text `local` to `utf8`.
    void encode(const std::string& local, std::string& utf8);
    /// Appends the local form of the UTF-8 text `utf8` to `local`.
    void decode(const std::string& utf8, std::string& local);
    /// Appends the local form of the zero-terminated UTF-16 text to `local`. When
    /// `replaceHexOneA` is true, every 0x1A byte of the result (the substitution byte that many
    /// code pages write for a character they cannot represent, and never a legal XML character)
    /// becomes '?'.
    void decode(const unsigned short* utf16, std::string& local, bool replaceHexOneA);
    /// As above, for a zero-terminated `char16_t` text.
    void decode(const char16_t* utf16, std::string& local, bool replaceHexOneA);
    /// As above, for `length` units that need not be zero-terminated.
    void decode(const char16_t* utf16, std::size_t length, std::string& local, bool replaceHexOneA);

    /// The local code page as it was opened (the name given, the default, or ICU's default).
    const std::string& getLocalCodePage() const noexcept { return m_codePage; }
    /// Whether the local code page is UTF-8, so that conversions are copies.
    bool isLocalUtf8() const noexcept { return m_localIsUtf8; }

private:
    void initialize(std::string codePage);
    static bool isUtf8(const std::string& name, std::string& normalised);
    static void replaceOneA(char* bytes, std::size_t length);

    // Converts `length` bytes through UTF-16: `from` decodes them, `to` encodes the result.
    void convert(UConverter* from, UConverter* to, const char* bytes, std::size_t length,
                 std::string& out);
    // Encodes UTF-16 units with `to`, appending to `out`; `flush` on the last piece.
    void fromUnicode(UConverter* to, const char16_t* begin, const char16_t* end, bool flush,
                     bool replaceHexOneA, std::string& out);

    UConverter* m_local = nullptr;
    UConverter* m_utf8 = nullptr;
    std::string m_codePage;
    bool m_localIsUtf8 = false;
    std::unique_ptr<char16_t[]> m_unicodeBuffer;
    std::unique_ptr<char[]> m_localBuffer;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
