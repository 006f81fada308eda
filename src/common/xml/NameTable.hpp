#ifndef CORVANE_SOA_SRC_COMMON_XML_NAMETABLE_HPP
#define CORVANE_SOA_SRC_COMMON_XML_NAMETABLE_HPP

// The names of a document that the XML reader has converted. Not part of the exported
// interface.

#include "BlockArena.hpp"

#include <corvane/soa/common/xml/Utf8String.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <iterator>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Corvane::Soa::Common::Xml {

// The names of one document by their UTF-16 text, each converted on first sight. Two texts
// that convert to the same name (in a code page that substitutes) get the same Name, so that
// names compare by address. An xsi:type is kept as its type name, without the prefix.
class NameTable {
public:
    // A name of the document (of an element, an attribute or an xsi:type) as the tree keeps it:
    // converted once, whatever number of nodes carry it. `stamp` and `slot` tell whether the
    // element being built already has an attribute of this name, and where.
    struct Name {
        explicit Name(std::string converted) : text(std::move(converted)) {}
        std::string text;
        std::uint64_t stamp = 0;
        std::uint32_t slot = 0;
    };

    explicit NameTable(bool typeNames) : m_typeNames(typeNames) {}

    Name& get(const char16_t* units, std::size_t length, BlockArena& keys, Utf8String& utf8,
              bool replace) {
        // The scanner hands the same element's name, and often the same attribute's, from the
        // same place each time: what was found for a place is tried first, by its text. Only
        // this runs in line, between the scanner's own steps; the rest is a call.
        const Recent& recent = m_recent[(reinterpret_cast<std::uintptr_t>(units) >> 3) % kRecent];
        if (recent.source == units && recent.length == length &&
            sameUnits(recent.key, units, length)) {
            return *recent.name;
        }
        return find(units, length, keys, utf8, replace);
    }

    // Forgets every name; the table keeps its room when the document was small.
    void clear() noexcept {
        constexpr std::size_t kKeptEntries = 1024;
        if (m_entries.size() > kKeptEntries) {
            std::vector<Entry>().swap(m_entries);
        } else {
            std::fill(m_entries.begin(), m_entries.end(), Entry{});
        }
        m_count = 0;
        std::fill(std::begin(m_recent), std::end(m_recent), Recent{});
        m_byText.clear();
        m_names.clear();
    }

private:
    static std::uint64_t hashUnits(const char16_t* units, std::size_t length) {
        constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15ULL;
        std::uint64_t hash = length * kMultiplier;
        std::size_t i = 0;
        for (; i + 4 <= length; i += 4) {
            std::uint64_t word = 0;
            std::memcpy(&word, units + i, sizeof word);
            hash = (hash ^ word) * kMultiplier;
            hash ^= hash >> 32;
        }
        if (i < length) {
            std::uint64_t word = 0;
            std::memcpy(&word, units + i, (length - i) * sizeof(char16_t));
            hash = (hash ^ word) * kMultiplier;
            hash ^= hash >> 32;
        }
        return hash;
    }

    // Whether two runs of `length` units are the same; names are short, so in line.
    static bool sameUnits(const char16_t* a, const char16_t* b, std::size_t length) {
        std::size_t i = 0;
        for (; i + 4 <= length; i += 4) {
            std::uint64_t x = 0;
            std::uint64_t y = 0;
            std::memcpy(&x, a + i, sizeof x);
            std::memcpy(&y, b + i, sizeof y);
            if (x != y) {
                return false;
            }
        }
        for (; i < length; ++i) {
            if (a[i] != b[i]) {
                return false;
            }
        }
        return true;
    }

    // The look-up behind get(): by hash, then adding the name when it is new.
#if defined(__GNUC__) || defined(__clang__)
    __attribute__((noinline))
#endif
    Name&
    find(const char16_t* units, std::size_t length, BlockArena& keys, Utf8String& utf8,
         bool replace) {
        const std::uint64_t hash = hashUnits(units, length);
        Name* name = nullptr;
        const char16_t* key = nullptr;
        if (!m_entries.empty()) {
            const std::size_t mask = m_entries.size() - 1;
            for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
                const Entry& entry = m_entries[at];
                if (entry.name == nullptr) {
                    break;
                }
                if (entry.hash == hash && entry.length == length &&
                    sameUnits(entry.key, units, length)) {
                    name = entry.name;
                    key = entry.key;
                    break;
                }
            }
        }
        if (name == nullptr) {
            const Entry& added = add(hash, units, length, keys, utf8, replace);
            name = added.name;
            key = added.key;
        }
        m_recent[(reinterpret_cast<std::uintptr_t>(units) >> 3) % kRecent] =
            Recent{units, key, length, name};
        return *name;
    }

    struct Entry {
        std::uint64_t hash = 0;
        const char16_t* key = nullptr;
        std::size_t length = 0;
        Name* name = nullptr;  // none: a free entry
    };

    struct Recent {
        const char16_t* source = nullptr;  // where the scanner had the name
        const char16_t* key = nullptr;
        std::size_t length = 0;
        Name* name = nullptr;
    };
    static constexpr std::size_t kRecent = 64;

    const Entry& add(std::uint64_t hash, const char16_t* units, std::size_t length,
                     BlockArena& keys, Utf8String& utf8, bool replace) {
        std::string text;
        utf8.decode(units, length, text, replace);
        if (m_typeNames) {
            const std::size_t colon = text.find(':');
            if (colon != std::string::npos) {
                text.erase(0, colon + 1);
            }
        }
        Name* name = nullptr;
        const auto same = m_byText.find(text);
        if (same != m_byText.end()) {
            name = same->second;
        } else {
            name = &m_names.emplace_back(std::move(text));
            m_byText.emplace(name->text, name);
        }
        if (2 * (m_count + 1) > m_entries.size()) {
            rehash(std::max<std::size_t>(64, 2 * m_entries.size()));
        }
        auto* const key = static_cast<char16_t*>(keys.allocate(length * sizeof(char16_t) + 1));
        if (length != 0) {
            std::memcpy(key, units, length * sizeof(char16_t));
        }
        ++m_count;
        return place(Entry{hash, key, length, name});
    }

    const Entry& place(const Entry& entry) noexcept {
        const std::size_t mask = m_entries.size() - 1;
        std::size_t at = entry.hash & mask;
        while (m_entries[at].name != nullptr) {
            at = (at + 1) & mask;
        }
        m_entries[at] = entry;
        return m_entries[at];
    }

    void rehash(std::size_t size) {
        std::vector<Entry> old(size);
        old.swap(m_entries);
        for (const Entry& entry : old) {
            if (entry.name != nullptr) {
                place(entry);
            }
        }
    }

    bool m_typeNames;
    std::vector<Entry> m_entries;  // open addressing; a power of two, at most half full
    std::size_t m_count = 0;
    Recent m_recent[kRecent];
    std::deque<Name> m_names;
    std::unordered_map<std::string_view, Name*> m_byText;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
