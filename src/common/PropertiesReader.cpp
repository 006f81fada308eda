#include "common/PropertiesReader.hpp"

#include <corvane/soa/common/exceptions/IOException.hpp>

#include <cstring>

namespace Corvane::Soa::Common {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\f'; }
bool isLineEnd(char c) { return c == '\n' || c == '\r'; }

// The end of the physical line that starts at `from`: the first "\n" or "\r", or the end.
std::size_t lineEnd(std::string_view text, std::size_t from) {
    const char* start = text.data() + from;
    const std::size_t left = text.size() - from;
    const void* newline = std::memchr(start, '\n', left);
    const std::size_t span =
        newline != nullptr ? static_cast<std::size_t>(static_cast<const char*>(newline) - start)
                           : left;
    const void* carriage = std::memchr(start, '\r', span);
    return from + (carriage != nullptr
                       ? static_cast<std::size_t>(static_cast<const char*>(carriage) - start)
                       : span);
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

void appendUtf8(std::string& out, unsigned code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        const char bytes[] = {static_cast<char>(0xC0 | (code >> 6)),
                              static_cast<char>(0x80 | (code & 0x3F))};
        out.append(bytes, 2);
    } else if (code < 0x10000) {
        const char bytes[] = {static_cast<char>(0xE0 | (code >> 12)),
                              static_cast<char>(0x80 | ((code >> 6) & 0x3F)),
                              static_cast<char>(0x80 | (code & 0x3F))};
        out.append(bytes, 3);
    } else {
        const char bytes[] = {static_cast<char>(0xF0 | (code >> 18)),
                              static_cast<char>(0x80 | ((code >> 12) & 0x3F)),
                              static_cast<char>(0x80 | ((code >> 6) & 0x3F)),
                              static_cast<char>(0x80 | (code & 0x3F))};
        out.append(bytes, 4);
    }
}

constexpr unsigned kReplacement = 0xFFFD;

}  // namespace

bool PropertiesReader::next(std::string& key, std::string& value) {
    if (!nextLine()) {
        return false;
    }
    // The key ends at the first unescaped separator or white space; white space and at most one
    // "=" or ":" follow before the value.
    const std::string_view line = m_line;
    std::size_t keyLength = 0;
    std::size_t valueStart = line.size();
    bool separator = false;
    bool escaped = false;
    for (; keyLength < line.size(); ++keyLength) {
        const char c = line[keyLength];
        if (!escaped && (c == '=' || c == ':')) {
            valueStart = keyLength + 1;
            separator = true;
            break;
        }
        if (!escaped && isBlank(c)) {
            valueStart = keyLength + 1;
            break;
        }
        escaped = c == '\\' && !escaped;
    }
    for (; valueStart < line.size(); ++valueStart) {
        const char c = line[valueStart];
        if (!isBlank(c)) {
            if (separator || (c != '=' && c != ':')) {
                break;
            }
            separator = true;
        }
    }
    unescape(line.substr(0, keyLength), 0, key);
    unescape(line.substr(valueStart), valueStart, value);
    return true;
}

void PropertiesReader::takeLineEnd() noexcept {
    const char c = m_text[m_position++];
    // "\r\n" counts once, at its "\n".
    if (c == '\n' || m_position == m_text.size() || m_text[m_position] != '\n') {
        ++m_lineNumber;
    }
}

bool PropertiesReader::nextLine() {
    const std::string_view text = m_text;
    m_joined.clear();
    m_segments.clear();
    bool joining = false;    // the line so far is in m_joined
    bool afterJoin = false;  // just past a line end that continues the line
    for (;;) {
        // White space before the text; before a logical line, blank lines too, but not after a
        // continuation, where an empty line ends the logical line.
        while (m_position < text.size()) {
            const char c = text[m_position];
            if (isBlank(c)) {
                ++m_position;
            } else if (!afterJoin && isLineEnd(c)) {
                takeLineEnd();
            } else {
                break;
            }
        }
        if (m_position == text.size()) {
            m_line = m_joined;
            return !m_joined.empty();
        }
        afterJoin = false;
        // A comment is a "#" or "!" first on a logical line, also after a continuation that left
        // the line empty.
        const char first = text[m_position];
        if (m_joined.empty() && (first == '#' || first == '!')) {
            m_position = lineEnd(text, m_position);
            if (m_position == text.size()) {
                return false;
            }
            takeLineEnd();
            continue;
        }
        const std::size_t start = m_position;
        if (m_joined.empty()) {
            m_segments.clear();
        }
        m_segments.emplace_back(m_joined.size(), m_lineNumber);
        m_position = lineEnd(text, start);
        const std::string_view segment = text.substr(start, m_position - start);
        std::size_t backslashes = 0;
        while (backslashes < segment.size() && segment[segment.size() - 1 - backslashes] == '\\') {
            ++backslashes;
        }
        const bool continues = backslashes % 2 == 1;
        const auto finish = [&](std::string_view kept) {
            if (joining) {
                m_joined.append(kept);
                m_line = m_joined;
            } else {
                m_line = kept;
            }
            return true;
        };
        // A backslash last in the text, or last before the line end that is last in it, is
        // dropped (a line of one backslash is an empty key).
        const std::string_view kept = continues ? segment.substr(0, segment.size() - 1) : segment;
        if (m_position == text.size()) {
            return finish(kept);
        }
        if (segment.empty() && m_joined.empty()) {
            takeLineEnd();  // the empty line after a continuation that left nothing
            continue;
        }
        const char end = text[m_position];
        takeLineEnd();
        if (m_position == text.size() || !continues) {
            return finish(kept);
        }
        // The line goes on in the next one, whose leading white space is dropped.
        m_joined.append(kept);
        joining = true;
        if (end == '\r' && text[m_position] == '\n') {
            ++m_position;
            ++m_lineNumber;
        }
        afterJoin = true;
    }
}

void PropertiesReader::unescape(std::string_view part, std::size_t offset, std::string& out) const {
    std::size_t i = part.find('\\');
    if (i == std::string_view::npos) {
        out.assign(part.data(), part.size());
        return;
    }
    out.assign(part.data(), i);
    // A high surrogate waits for the low one that makes the pair with it.
    unsigned high = 0;
    const auto flushHigh = [&] {
        if (high != 0) {
            appendUtf8(out, kReplacement);
            high = 0;
        }
    };
    while (i < part.size()) {
        if (part[i] != '\\') {
            flushHigh();
            std::size_t next = part.find('\\', i);
            if (next == std::string_view::npos) {
                next = part.size();
            }
            out.append(part.data() + i, next - i);
            i = next;
            continue;
        }
        const std::size_t escape = i;
        i += 1;
        if (i == part.size()) {
            break;  // the line never ends in an odd backslash
        }
        const char c = part[i++];
        if (c != 'u') {
            flushHigh();
            out += c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c == 'f' ? '\f' : c;
            continue;
        }
        if (part.size() - i < 4) {
            malformed(offset + escape);
        }
        unsigned code = 0;
        for (std::size_t digit = 0; digit < 4; ++digit) {
            const int nibble = hexValue(part[i++]);
            if (nibble < 0) {
                malformed(offset + escape);
            }
            code = (code << 4) | static_cast<unsigned>(nibble);
        }
        if (code >= 0xD800 && code <= 0xDBFF) {
            flushHigh();
            high = code;
        } else if (code >= 0xDC00 && code <= 0xDFFF) {
            appendUtf8(out, high != 0 ? 0x10000 + ((high - 0xD800) << 10) + (code - 0xDC00)
                                      : kReplacement);
            high = 0;
        } else {
            flushHigh();
            appendUtf8(out, code);
        }
    }
    flushHigh();
}

void PropertiesReader::malformed(std::size_t offset) const {
    // The physical line of the escape.
    std::size_t lineNumber = m_segments.empty() ? m_lineNumber : m_segments.front().second;
    for (const auto& [start, number] : m_segments) {
        if (start <= offset) {
            lineNumber = number;
        }
    }
    // The escape as written: "\u" and what follows, up to four more characters.
    std::size_t end = offset + 2;
    for (int count = 0; count < 4 && end < m_line.size(); ++count) {
        do {
            ++end;
        } while (end < m_line.size() && (static_cast<unsigned char>(m_line[end]) & 0xC0U) == 0x80U);
    }
    throw Exceptions::IOException(m_name + ": line " + std::to_string(lineNumber) +
                                  ": malformed \\uxxxx escape \"" +
                                  std::string(m_line.substr(offset, end - offset)) +
                                  "\": write four hexadecimal digits after \\u, or \\\\ for a "
                                  "backslash");
}

}  // namespace Corvane::Soa::Common
