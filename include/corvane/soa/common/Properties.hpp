#ifndef CORVANE_SOA_COMMON_PROPERTIES_HPP
#define CORVANE_SOA_COMMON_PROPERTIES_HPP

#include <corvane/soa/Export.hpp>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Corvane::Soa::Common {

/// Keys and values read from and written to a properties file, the text format of the Java
/// platform's properties: loading agrees key for key and byte for byte with what that
/// platform's `Properties.load` reads from a `Reader` in UTF-8.
///
/// Reading: a line whose first character after white space is "#" or "!" is a comment; the key
/// ends at the first unescaped "=", ":" or white space (space, tab, form feed), and white space
/// with at most one "=" or ":" around that separator is skipped; a line ending in an odd number
/// of backslashes goes on in the next line, whose leading white space is dropped; escapes are
/// \t \n \r \f, \uXXXX (a surrogate pair of two escapes is one character) and a backslash
/// before any other character stands for that character. Lines end with "\n", "\r" or "\r\n".
/// The file is UTF-8: bytes that are not UTF-8 become U+FFFD, one for each malformed sequence
/// as the Java platform's decoder counts them, and a byte-order mark is kept as the character
/// it is (that platform keeps it too: it becomes part of the first key). A \uXXXX escape of
/// half a surrogate pair without its other half is U+FFFD, which UTF-8 can hold.
///
/// Keys stay in the order they were first read or set: a repeated key takes the last value and
/// keeps its first place, as when a value is edited in place. Loading adds to what is already
/// held; a text that fails to load leaves the object as it was.
///
/// Writing: one "key=value" line per key, in order, escaped as the Java platform's
/// `Properties.store` does (a backslash, tab, newline, return, form feed, "=", ":", "#", "!";
/// every space of a key, and a value's first space), with the other control characters as
/// \uXXXX and the rest as UTF-8, so that loading the text gives back exactly the same keys and
/// values (when they are UTF-8; other bytes are written as they are and read back as U+FFFD).
class CORVANE_SOA_API Properties {
public:
    using Entry = std::pair<std::string, std::string>;

    /// Adds the entries of the file at `path`. IOException naming the file when it cannot be
    /// read, or with the line of a malformed \uXXXX escape.
    void load(const std::string& path);
    /// The same from the rest of `in`; messages name it `name`.
    void load(std::istream& in, const std::string& name = "<stream>");
    /// The same from `text`; messages name "<text>".
    void loadText(std::string_view text);

    /// Replaces the file at `path` by `toText()` in one step, through symbolic links, as the
    /// policy file is saved (no directories are made). IOException naming the file when it
    /// cannot be written; the file is then left as it was.
    void save(const std::string& path) const;
    /// The text of the file `save` writes.
    std::string toText() const;

    /// The value of `key`, or `defaultValue` when there is none.
    std::string get(const std::string& key, const std::string& defaultValue = {}) const;
    /// The stored value of `key`, or null.
    const std::string* find(std::string_view key) const;
    bool contains(std::string_view key) const { return find(key) != nullptr; }
    /// Sets the value of `key`; a new key goes last.
    void set(const std::string& key, const std::string& value);
    /// Removes `key`, which costs time in proportion to the number of keys; false when absent.
    bool remove(std::string_view key);
    void clear() noexcept;

    /// The keys in order.
    std::vector<std::string> keys() const;
    /// Every key with its value, in order.
    const std::vector<Entry>& entries() const noexcept { return m_entries; }
    std::size_t size() const noexcept { return m_entries.size(); }
    bool empty() const noexcept { return m_entries.empty(); }

    /// The same keys with the same values in the same order.
    bool operator==(const Properties& other) const { return m_entries == other.m_entries; }
    bool operator!=(const Properties& other) const { return !(*this == other); }

private:
    // Where `key` is in the index: the slot holding its entry, or the empty slot it would take.
    std::size_t slotOf(std::string_view key, std::uint32_t hash) const noexcept;
    void setEntry(std::string&& key, std::string&& value);
    // Makes room in the index for `count` keys in all; when it grows, the first `indexed`
    // entries are indexed again.
    void reserve(std::size_t count, std::size_t indexed);
    // Indexes the entries from `start` on, which may repeat each other and earlier keys: a
    // repeated key gives its value to the first entry of that key and goes.
    void indexFrom(std::size_t start);
    void loadFrom(std::string_view text, const std::string& name);

    std::vector<Entry> m_entries;
    // Open addressing over the entries: each slot holds an entry's position plus one (0: empty)
    // in its low half and its key's 32-bit hash in its high half; at most half are taken.
    std::vector<std::uint64_t> m_slots;
};

}  // namespace Corvane::Soa::Common

#endif
