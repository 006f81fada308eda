#ifndef CORVANE_SOA_COMMON_PROPERTIESREADER_HPP
#define CORVANE_SOA_COMMON_PROPERTIESREADER_HPP

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Corvane::Soa::Common {

/// Reads the entries of a properties text, which must be UTF-8, one logical line at a time:
/// lines and separators exactly as the Java platform's `Properties.load` finds them, escapes
/// decoded into UTF-8.
class PropertiesReader {
public:
    /// `name` names the text in messages ("<text>", a file's path); both must outlive the reader.
    PropertiesReader(std::string_view text, const std::string& name) noexcept
        : m_text(text), m_name(name) {}

    /// The next key and value; false at the end. IOException at a malformed \uXXXX escape.
    bool next(std::string& key, std::string& value);

private:
    // The next logical line, its continuations joined, into `m_line`; false at the end.
    bool nextLine();
    // Takes the line end at the position: one "\n" or "\r".
    void takeLineEnd() noexcept;
    // `part` (at `offset` in the line) with its escapes decoded, into `out`.
    void unescape(std::string_view part, std::size_t offset, std::string& out) const;
    [[noreturn]] void malformed(std::size_t offset) const;

    std::string_view m_text;
    const std::string& m_name;
    std::size_t m_position = 0;
    std::size_t m_lineNumber = 1;  // of the physical line at m_position
    std::string_view m_line;
    std::string m_joined;  // a logical line of several physical lines
    // Where each physical line of the logical line starts in it, and its number.
    std::vector<std::pair<std::size_t, std::size_t>> m_segments;
};

}  // namespace Corvane::Soa::Common

#endif
