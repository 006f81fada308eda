#include <corvane/soa/common/Properties.hpp>

#include "common/FileDescriptor.hpp"
#include "common/PropertiesReader.hpp"
#include "common/Utf8Repair.hpp"
#include "internal/common/FileReplacement.hpp"

#include <corvane/soa/common/exceptions/IOException.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <functional>
#include <istream>
#include <iterator>
#include <system_error>

namespace Corvane::Soa::Common {

namespace {

using Exceptions::IOException;

constexpr std::uint64_t kPositionMask = 0xFFFFFFFFULL;

std::uint32_t hashOf(std::string_view key) noexcept {
    const std::size_t hash = std::hash<std::string_view>{}(key);
    return static_cast<std::uint32_t>(hash ^ (static_cast<std::uint64_t>(hash) >> 32));
}

std::string errorText(int error) { return std::generic_category().message(error); }

// The whole file at `path`, read with as few calls as its size allows.
std::string readFile(const std::string& path) {
    const FileDescriptor file = FileDescriptor::openForReading(path);
    if (!file.isOpen()) {
        throw IOException(path + ": cannot be opened (" + errorText(errno) +
                          "); check that the file exists and can be read");
    }
    std::string text;
    if (const int error = file.readAll(text); error != 0) {
        throw IOException(path + ": cannot be read (" + errorText(error) +
                          "); check that it is a file and can be read");
    }
    return text;
}

// Whether the byte is written as it is, in a key and in a value.
bool isPlain(unsigned char byte) {
    return byte >= 0x80 || (byte > ' ' && byte < 0x7F && byte != '\\' && byte != '=' &&
                            byte != ':' && byte != '#' && byte != '!');
}

// `text` escaped as a key (`key`) or a value, onto `out`.
void appendEscaped(std::string& out, std::string_view text, bool key) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        // Most characters stand for themselves: copy them in runs.
        if (isPlain(byte)) {
            std::size_t end = i + 1;
            while (end < text.size() && isPlain(static_cast<unsigned char>(text[end]))) {
                ++end;
            }
            out.append(text.data() + i, end - i);
            i = end - 1;
            continue;
        }
        switch (c) {
            case ' ':
                // Every space of a key; only a value's first, which would be skipped as
                // white space after the separator.
                if (key || i == 0) {
                    out += '\\';
                }
                out += ' ';
                break;
            case '\t':
                out += "\\t";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\f':
                out += "\\f";
                break;
            case '\\':
            case '=':
            case ':':
            case '#':
            case '!':
                out += '\\';
                out += c;
                break;
            default: {
                // The other control characters, which a reader of the file would not see.
                const char escape[] = {'\\', 'u', '0', '0', kHex[byte >> 4], kHex[byte & 0xF]};
                out.append(escape, sizeof escape);
                break;
            }
        }
    }
}

}  // namespace

void Properties::load(const std::string& path) { loadFrom(readFile(path), path); }

void Properties::load(std::istream& in, const std::string& name) {
    std::string text;
    char buffer[65536];
    while (in.read(buffer, sizeof buffer) || in.gcount() > 0) {
        text.append(buffer, static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad()) {
        throw IOException(name + ": cannot be read to its end");
    }
    loadFrom(text, name);
}

void Properties::loadText(std::string_view text) { loadFrom(text, "<text>"); }

void Properties::loadFrom(std::string_view text, const std::string& name) {
    std::string repaired;
    if (!isUtf8OrRepair(text, repaired)) {
        text = repaired;
    }
    // The entries are read first and indexed after, so that a text that fails leaves this
    // object as it was.
    const std::size_t start = m_entries.size();
    std::vector<Entry> merged;
    std::vector<Entry>& into = start == 0 ? m_entries : merged;
    // About a key a line.
    into.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    PropertiesReader reader(text, name);
    std::string key;
    std::string value;
    try {
        while (reader.next(key, value)) {
            into.emplace_back(std::move(key), std::move(value));
        }
    } catch (...) {
        if (start == 0) {
            clear();
        }
        throw;
    }
    if (start != 0) {
        m_entries.insert(m_entries.end(), std::make_move_iterator(merged.begin()),
                         std::make_move_iterator(merged.end()));
    }
    reserve(m_entries.size(), start);
    indexFrom(start);
}

void Properties::indexFrom(std::size_t start) {
    // On a large text most keys miss the cache in the index: the slots of the keys a few
    // entries ahead are fetched while the current one goes in.
    constexpr std::size_t kAhead = 8;
    const std::size_t end = m_entries.size();
    const std::size_t mask = m_slots.size() - 1;
    std::uint32_t hashes[kAhead] = {};
    const auto fetch = [&](std::size_t position) {
        const std::uint32_t hash = hashOf(m_entries[position].first);
        hashes[position % kAhead] = hash;
        __builtin_prefetch(&m_slots[hash & mask]);
    };
    for (std::size_t position = start; position < end && position < start + kAhead; ++position) {
        fetch(position);
    }
    std::size_t kept = start;
    for (std::size_t position = start; position < end; ++position) {
        const std::uint32_t hash = hashes[position % kAhead];
        if (position + kAhead < end) {
            fetch(position + kAhead);
        }
        std::uint64_t& slot = m_slots[slotOf(m_entries[position].first, hash)];
        if (slot != 0) {
            m_entries[(slot & kPositionMask) - 1].second = std::move(m_entries[position].second);
            continue;
        }
        if (kept != position) {
            m_entries[kept] = std::move(m_entries[position]);
        }
        ++kept;
        slot = (static_cast<std::uint64_t>(hash) << 32) | kept;
    }
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(kept), m_entries.end());
}

void Properties::save(const std::string& path) const {
    const int error = Internal::Common::replaceFile(path, toText());
    if (error != 0) {
        throw IOException(path + ": cannot be written (" + errorText(error) +
                          "); check the directory and its permissions");
    }
}

std::string Properties::toText() const {
    std::size_t size = 0;
    for (const Entry& entry : m_entries) {
        size += entry.first.size() + entry.second.size() + 2;
    }
    std::string text;
    text.reserve(size + size / 8);
    for (const Entry& entry : m_entries) {
        appendEscaped(text, entry.first, true);
        text += '=';
        appendEscaped(text, entry.second, false);
        text += '\n';
    }
    return text;
}

std::string Properties::get(const std::string& key, const std::string& defaultValue) const {
    const std::string* value = find(key);
    return value != nullptr ? *value : defaultValue;
}

const std::string* Properties::find(std::string_view key) const {
    if (m_entries.empty()) {
        return nullptr;
    }
    const std::uint64_t slot = m_slots[slotOf(key, hashOf(key))];
    return slot != 0 ? &m_entries[(slot & kPositionMask) - 1].second : nullptr;
}

void Properties::set(const std::string& key, const std::string& value) {
    setEntry(std::string(key), std::string(value));
}

bool Properties::remove(std::string_view key) {
    if (m_entries.empty()) {
        return false;
    }
    const std::uint64_t slot = m_slots[slotOf(key, hashOf(key))];
    if (slot == 0) {
        return false;
    }
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>((slot & kPositionMask) - 1));
    // The positions after it have moved: index them again.
    const std::size_t slots = m_slots.size();
    m_slots.clear();
    reserve(slots / 2, m_entries.size());
    return true;
}

void Properties::clear() noexcept {
    m_entries.clear();
    m_slots.clear();
}

std::vector<std::string> Properties::keys() const {
    std::vector<std::string> keys;
    keys.reserve(m_entries.size());
    for (const Entry& entry : m_entries) {
        keys.push_back(entry.first);
    }
    return keys;
}

std::size_t Properties::slotOf(std::string_view key, std::uint32_t hash) const noexcept {
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        const std::uint64_t slot = m_slots[i];
        if (slot == 0 ||
            ((slot >> 32) == hash && m_entries[(slot & kPositionMask) - 1].first == key)) {
            return i;
        }
    }
}

void Properties::setEntry(std::string&& key, std::string&& value) {
    reserve(m_entries.size() + 1, m_entries.size());
    const std::uint32_t hash = hashOf(key);
    std::uint64_t& slot = m_slots[slotOf(key, hash)];
    if (slot != 0) {
        m_entries[(slot & kPositionMask) - 1].second = std::move(value);
        return;
    }
    m_entries.emplace_back(std::move(key), std::move(value));
    slot = (static_cast<std::uint64_t>(hash) << 32) | m_entries.size();
}

void Properties::reserve(std::size_t count, std::size_t indexed) {
    if (count * 2 <= m_slots.size()) {
        return;
    }
    std::size_t slots = 16;
    while (slots < count * 2) {
        slots *= 2;
    }
    m_slots.assign(slots, 0);
    for (std::size_t position = 0; position < indexed; ++position) {
        const std::uint32_t hash = hashOf(m_entries[position].first);
        m_slots[slotOf(m_entries[position].first, hash)] =
            (static_cast<std::uint64_t>(hash) << 32) | (position + 1);
    }
}

}  // namespace Corvane::Soa::Common
