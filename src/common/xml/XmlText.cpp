#include <corvane/soa/common/xml/XmlText.hpp>

#include "XmlTextAppend.hpp"

#include <array>
#include <atomic>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Corvane::Soa::Common::Xml {

namespace {

// One replacement per byte value: its text (padded to 8 bytes so that it can be copied whole)
// and its length; a length of 0 marks a byte that stands for itself.
struct Replacement {
    char text[8];
    unsigned char length;
};

struct EscapeRule {
    char byte;
    const char* text;
};

constexpr EscapeRule kXmlRules[] = {
    {'\t', "&#9;"},  {'\n', "&#10;"}, {'\f', "&#12;"},  {'\r', "&#13;"}, {'"', "&quot;"},
    {'%', "&#x25;"}, {'&', "&amp;"},  {'\'', "&apos;"}, {'<', "&lt;"},   {'>', "&gt;"},
};

constexpr EscapeRule kJsonRules[] = {
    {'"', "\\\""}, {'\\', "\\\\"}, {'/', "\\/"},  {'\b', "\\b"},
    {'\f', "\\f"}, {'\n', "\\n"},  {'\r', "\\r"}, {'\t', "\\t"},
};

// Escapes text by a fixed set of rules. Sixteen bytes are examined at a time; a block without a
// byte to replace is copied with one store, and the output is written through a pointer into a
// buffer that grows rarely, so no byte is appended on its own.
template <std::size_t N>
class Escaper {
public:
    constexpr explicit Escaper(const EscapeRule (&rules)[N]) : m_table{}, m_bytes{} {
        for (std::size_t k = 0; k < N; ++k) {
            const auto c = static_cast<unsigned char>(rules[k].byte);
            m_bytes[k] = rules[k].byte;
            unsigned char length = 0;
            while (rules[k].text[length] != '\0') {
                m_table[c].text[length] = rules[k].text[length];
                ++length;
            }
            m_table[c].length = length;
        }
    }

    const Replacement& operator[](unsigned char c) const { return m_table[c]; }

    std::string escape(const std::string& text) const {
        const char* in = text.data();
        const std::size_t size = text.size();
        if (size < kShort) {
            return escapeShort(text);
        }
        // Room for a sixteen-byte block stored whole plus one replacement.
        constexpr std::size_t kSlack = 16 + sizeof(Replacement::text);
        std::string out(size + size / 5 + kSlack, '\0');
        char* base = out.data();
        char* o = base;
        const auto reserve = [&](std::size_t needed) {
            if (static_cast<std::size_t>(base + out.size() - o) < needed) {
                const auto used = static_cast<std::size_t>(o - base);
                out.resize(out.size() + out.size() / 2 + needed);
                base = out.data();
                o = base + used;
            }
        };
        std::size_t i = 0;
#if defined(__SSE2__)
        __m128i needles[N];
        for (std::size_t k = 0; k < N; ++k) {
            needles[k] = _mm_set1_epi8(m_bytes[k]);
        }
        const auto hitsIn = [&needles](__m128i block) {
            __m128i hits = _mm_setzero_si128();
            for (std::size_t k = 0; k < N; ++k) {
                hits = _mm_or_si128(hits, _mm_cmpeq_epi8(block, needles[k]));
            }
            return static_cast<unsigned>(_mm_movemask_epi8(hits));
        };
        const auto load = [](const char* p) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        };
        const auto store = [](char* p, __m128i v) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
        };
        // Whole blocks while a sixteen-byte load from any byte of the block stays in the text:
        // the block is stored raw, and after each replacement the rest of it is stored again
        // behind the replacement.
        while (i + 32 <= size) {
            reserve(16 * sizeof(Replacement::text) + 16);
            const __m128i block = load(in + i);
            unsigned mask = hitsIn(block);
            store(o, block);
            if (mask == 0) {
                o += 16;
                i += 16;
                continue;
            }
            std::size_t done = 0;  // bytes of the block already in the output
            do {
                const auto hit = static_cast<std::size_t>(__builtin_ctz(mask));
                o += hit - done;
                const Replacement& r = m_table[static_cast<unsigned char>(in[i + hit])];
                std::memcpy(o, r.text, sizeof r.text);
                o += r.length;
                done = hit + 1;
                store(o, load(in + i + done));
                mask &= mask - 1;
            } while (mask != 0);
            o += 16 - done;
            i += 16;
        }
        // The last blocks: one replacement at a time, loading again after each.
        while (i + 16 <= size) {
            reserve(kSlack);
            const __m128i block = load(in + i);
            const unsigned mask = hitsIn(block);
            store(o, block);
            if (mask == 0) {
                o += 16;
                i += 16;
                continue;
            }
            const auto first = static_cast<std::size_t>(__builtin_ctz(mask));
            o += first;
            i += first;
            const Replacement& r = m_table[static_cast<unsigned char>(in[i])];
            std::memcpy(o, r.text, sizeof r.text);
            o += r.length;
            ++i;
        }
#endif
        for (; i < size; ++i) {
            reserve(sizeof(Replacement::text));
            const Replacement& r = m_table[static_cast<unsigned char>(in[i])];
            if (r.length == 0) {
                *o++ = in[i];
            } else {
                std::memcpy(o, r.text, sizeof r.text);
                o += r.length;
            }
        }
        out.resize(static_cast<std::size_t>(o - base));
        return out;
    }

private:
    // Texts shorter than this (most attribute values and element texts) are measured first and
    // written into a string of the exact size: one that needs no escape is a plain copy, held in
    // place when it is short enough.
    static constexpr std::size_t kShort = 64;

    std::string escapeShort(const std::string& text) const {
        std::size_t extra = 0;
        for (const char c : text) {
            const unsigned char length = m_table[static_cast<unsigned char>(c)].length;
            extra += length == 0 ? 0 : length - 1U;
        }
        if (extra == 0) {
            return text;
        }
        std::string out(text.size() + extra, '\0');
        char* o = out.data();
        for (const char c : text) {
            const Replacement& r = m_table[static_cast<unsigned char>(c)];
            if (r.length == 0) {
                *o++ = c;
            } else {
                std::memcpy(o, r.text, r.length);
                o += r.length;
            }
        }
        return out;
    }

    std::array<Replacement, 256> m_table;
    char m_bytes[N];
};

constexpr Escaper kXmlEscaper(kXmlRules);
constexpr Escaper kJsonEscaper(kJsonRules);

// escapeJsonInto sizes its output on two bytes per replaced byte.
constexpr bool jsonReplacementsAreTwoBytes() {
    for (const EscapeRule& rule : kJsonRules) {
        if (rule.text[0] == '\0' || rule.text[1] == '\0' || rule.text[2] != '\0') {
            return false;
        }
    }
    return true;
}
static_assert(jsonReplacementsAreTwoBytes());

// The references that decodeXml understands, tried in this order at each '&'.
struct Entity {
    const char* text;
    std::size_t length;
    char character;
};

constexpr Entity kEntities[] = {
    {"&amp;", 5, '&'},   {"&lt;", 4, '<'},    {"&gt;", 4, '>'},    {"&#x25;", 6, '%'},
    {"&#37;", 5, '%'},   {"&quot;", 6, '"'},  {"&apos;", 6, '\''}, {"&#10;", 5, '\n'},
    {"&#xA;", 5, '\n'},  {"&#xa;", 5, '\n'},  {"&#x0A;", 6, '\n'}, {"&#x0a;", 6, '\n'},
    {"&#12;", 5, '\f'},  {"&#xC;", 5, '\f'},  {"&#xc;", 5, '\f'},  {"&#x0C;", 6, '\f'},
    {"&#x0c;", 6, '\f'}, {"&#13;", 5, '\r'},  {"&#xD;", 5, '\r'},  {"&#xd;", 5, '\r'},
    {"&#x0D;", 6, '\r'}, {"&#x0d;", 6, '\r'}, {"&#9;", 4, '\t'},
};

// Code-page families whose lead bytes open a two-byte character.
enum Family : int { kUndecided = -1, kSingleByte = 0, kJapanese = 1, kChinese = 2 };

constexpr const char* kJapanesePages[] = {"Shift_JIS",         "ibm-942_P12A-1999",
                                          "ibm-943_P15A-2003", "ibm-943_P130-1999",
                                          "euc-jp-2007",       "ISO_2022,locale=ja,version=1"};
constexpr const char* kChinesePages[] = {"Big5",
                                         "windows-950-2000",
                                         "ibm-1375_P100-2007",
                                         "ibm-5471_P100-2006",
                                         "ibm-1373_P100-2002",
                                         "ibm-950_P110-1999"};

std::string& defaultEncoding() {
    static std::string name;
    return name;
}

std::atomic<int> g_family{kUndecided};

template <std::size_t N>
bool isOneOf(const std::string& name, const char* const (&pages)[N]) {
    for (const char* page : pages) {
        if (name == page) {
            return true;
        }
    }
    return false;
}

int decideFamily() {
    const std::string& name = defaultEncoding();
    if (isOneOf(name, kJapanesePages)) {
        return kJapanese;
    }
    if (isOneOf(name, kChinesePages)) {
        return kChinese;
    }
    return kSingleByte;
}

int family() {
    int decided = g_family.load(std::memory_order_relaxed);
    if (decided == kUndecided) {
        decided = decideFamily();
        g_family.store(decided, std::memory_order_relaxed);
    }
    return decided;
}

bool isLeadByte(int fam, unsigned char c) {
    if (fam == kJapanese) {
        const unsigned high = c >> 4U;
        return high == 8 || high == 9 || high == 14;
    }
    if (fam == kChinese) {
        return c >= 0x81 && c <= 0xFE;
    }
    return false;
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool endsName(char c) { return isSpace(c) || c == '>' || c == '/'; }

// Skips a declaration, comment or processing instruction starting at `pos` ('<' followed by
// '?' or '!'); returns the position after it, or npos when it is not closed.
std::size_t skipMarkup(const std::string& xml, std::size_t pos) {
    if (xml.compare(pos, 4, "<!--") == 0) {
        const std::size_t end = xml.find("-->", pos + 4);
        return end == std::string::npos ? end : end + 3;
    }
    if (xml[pos + 1] == '?') {
        const std::size_t end = xml.find("?>", pos + 2);
        return end == std::string::npos ? end : end + 2;
    }
    const std::size_t end = xml.find('>', pos + 2);
    return end == std::string::npos ? end : end + 1;
}

}  // namespace

std::string toXmlString(const std::string& text) { return kXmlEscaper.escape(text); }

std::string decodeXml(const std::string& text) {
    const std::size_t first = text.find('&');
    if (first == std::string::npos) {
        return text;
    }
    std::string out;
    out.reserve(text.size());
    out.append(text, 0, first);
    std::size_t pos = first;
    const std::size_t size = text.size();
    while (pos < size) {
        // At an '&': the first reference that matches whole, or the '&' itself.
        char decoded = '&';
        std::size_t consumed = 1;
        for (const Entity& entity : kEntities) {
            if (size - pos >= entity.length &&
                std::memcmp(text.data() + pos, entity.text, entity.length) == 0) {
                decoded = entity.character;
                consumed = entity.length;
                break;
            }
        }
        out.push_back(decoded);
        pos += consumed;
        const std::size_t next = text.find('&', pos);
        const std::size_t stop = next == std::string::npos ? size : next;
        out.append(text, pos, stop - pos);
        pos = stop;
    }
    return out;
}

std::string toJsonString(const std::string& text) {
    const int fam = family();
    if (fam == kSingleByte) {
        return kJsonEscaper.escape(text);
    }
    // A double-byte page: the byte after a lead byte may look like '\\' or '/', and belongs to
    // the character, so it is copied unexamined.
    std::string out;
    out.reserve(text.size() + text.size() / 5 + 16);
    const std::size_t size = text.size();
    for (std::size_t i = 0; i < size; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (isLeadByte(fam, c)) {
            out.push_back(text[i]);
            if (i + 1 < size) {
                out.push_back(text[++i]);
            }
            continue;
        }
        const Replacement& r = kJsonEscaper[c];
        if (r.length == 0) {
            out.push_back(text[i]);
        } else {
            out.append(r.text, r.length);
        }
    }
    return out;
}

// The writers' form of toJsonString. Every JSON replacement is two bytes long, so `out` needs
// room for at most twice the input; within that room a sixteen-byte block without a byte to
// replace is stored whole, and nothing is appended byte by byte.
char* escapeJsonInto(char* out, const char* text, std::size_t size) {
    const int fam = family();
    const char* p = text;
    const char* const end = text + size;
    if (fam != kSingleByte) {
        while (p != end) {
            const auto c = static_cast<unsigned char>(*p);
            if (isLeadByte(fam, c)) {
                *out++ = *p++;
                if (p != end) {
                    *out++ = *p++;  // the trail byte belongs to the character
                }
                continue;
            }
            const Replacement& r = kJsonEscaper[c];
            if (r.length == 0) {
                *out++ = *p++;
            } else {
                std::memcpy(out, r.text, 2);
                out += 2;
                ++p;
            }
        }
        return out;
    }
#if defined(__SSE2__)
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i backslash = _mm_set1_epi8('\\');
    const __m128i slash = _mm_set1_epi8('/');
    const __m128i low = _mm_set1_epi8('\b');
    const __m128i high = _mm_set1_epi8('\r');
    // While sixteen bytes remain the room left is at least thirty-two, so a block may be stored
    // before it is examined. The control bytes from '\b' to '\r' are candidates; the table
    // decides (the vertical tab stands for itself).
    while (end - p >= 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), block);
        const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(_mm_max_epu8(block, low), high), block);
        const __m128i hits = _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi8(block, quote), _mm_cmpeq_epi8(block, backslash)),
            _mm_or_si128(_mm_cmpeq_epi8(block, slash), control));
        auto mask = static_cast<unsigned>(_mm_movemask_epi8(hits));
        while (mask != 0) {
            const auto hit = static_cast<unsigned>(__builtin_ctz(mask));
            const Replacement& r = kJsonEscaper[static_cast<unsigned char>(p[hit])];
            if (r.length != 0) {
                break;
            }
            mask &= mask - 1;
        }
        if (mask == 0) {
            p += 16;
            out += 16;
            continue;
        }
        const auto hit = static_cast<std::size_t>(__builtin_ctz(mask));
        out += hit;
        std::memcpy(out, kJsonEscaper[static_cast<unsigned char>(p[hit])].text, 2);
        out += 2;
        p += hit + 1;
    }
#endif
    for (; p != end; ++p) {
        const Replacement& r = kJsonEscaper[static_cast<unsigned char>(*p)];
        if (r.length == 0) {
            *out++ = *p;
        } else {
            std::memcpy(out, r.text, 2);
            out += 2;
        }
    }
    return out;
}

void appendJsonString(std::string& out, const char* text, std::size_t size) {
    const std::size_t used = out.size();
    out.resize(used + 2 * size);
    char* const last = escapeJsonInto(out.data() + used, text, size);
    out.resize(static_cast<std::size_t>(last - out.data()));
}

void appendDecodedJson(std::string& out, const char* text, std::size_t size) {
    const char* p = text;
    const char* const end = text + size;
    out.reserve(out.size() + size);
    while (p != end) {
        const auto* backslash =
            static_cast<const char*>(std::memchr(p, '\\', static_cast<std::size_t>(end - p)));
        if (backslash == nullptr) {
            out.append(p, end);
            return;
        }
        out.append(p, backslash);
        if (backslash + 1 == end) {
            out.push_back('\\');  // a lone backslash at the end stays
            return;
        }
        const char c = backslash[1];
        switch (c) {
            case '"':
            case '\\':
            case '/':
                out.push_back(c);
                break;
            case 'b':
                out.push_back('\b');
                break;
            case 'f':
                out.push_back('\f');
                break;
            case 'n':
                out.push_back('\n');
                break;
            case 'r':
                out.push_back('\r');
                break;
            case 't':
                out.push_back('\t');
                break;
            default:
                out.push_back('\\');
                out.push_back(c);
                break;
        }
        p = backslash + 2;
    }
}

std::string decodeJson(const std::string& text) {
    if (text.find('\\') == std::string::npos) {
        return text;
    }
    std::string out;
    appendDecodedJson(out, text.data(), text.size());
    return out;
}

std::string getRootNamespace(const std::string& xml) {
    std::size_t pos = xml.find('<');
    while (pos != std::string::npos && pos + 1 < xml.size() &&
           (xml[pos + 1] == '?' || xml[pos + 1] == '!')) {
        pos = skipMarkup(xml, pos);
        pos = pos == std::string::npos ? pos : xml.find('<', pos);
    }
    if (pos == std::string::npos || pos + 1 >= xml.size()) {
        return std::string();
    }
    std::size_t i = pos + 1;
    const std::size_t nameStart = i;
    while (i < xml.size() && !endsName(xml[i])) {
        ++i;
    }
    const std::string name = xml.substr(nameStart, i - nameStart);
    const std::size_t colon = name.find(':');
    const std::string wanted =
        colon == std::string::npos ? std::string("xmlns") : "xmlns:" + name.substr(0, colon);

    // The attributes of the start tag: name = "value" or name = 'value'.
    const std::size_t size = xml.size();
    while (i < size) {
        while (i < size && isSpace(xml[i])) {
            ++i;
        }
        if (i >= size || xml[i] == '>' || xml[i] == '/') {
            break;
        }
        const std::size_t attrStart = i;
        while (i < size && xml[i] != '=' && !endsName(xml[i])) {
            ++i;
        }
        const std::size_t attrEnd = i;
        while (i < size && isSpace(xml[i])) {
            ++i;
        }
        if (i >= size || xml[i] != '=') {
            break;
        }
        ++i;
        while (i < size && isSpace(xml[i])) {
            ++i;
        }
        if (i >= size || (xml[i] != '"' && xml[i] != '\'')) {
            break;
        }
        const char quote = xml[i++];
        const std::size_t valueEnd = xml.find(quote, i);
        if (valueEnd == std::string::npos) {
            break;
        }
        if (xml.compare(attrStart, attrEnd - attrStart, wanted) == 0) {
            return decodeXml(xml.substr(i, valueEnd - i));
        }
        i = valueEnd + 1;
    }
    return std::string();
}

std::size_t findElement(const std::string& xml, const std::string& name, bool closing) {
    const std::size_t size = xml.size();
    for (std::size_t pos = xml.find('<'); pos != std::string::npos; pos = xml.find('<', pos + 1)) {
        std::size_t i = pos + 1;
        if (closing) {
            if (i >= size || xml[i] != '/') {
                continue;
            }
            ++i;
        } else if (i < size && (xml[i] == '/' || xml[i] == '?' || xml[i] == '!')) {
            continue;
        }
        const std::size_t nameStart = i;
        while (i < size && !endsName(xml[i])) {
            ++i;
        }
        if (i >= size) {
            return std::string::npos;  // the last tag is cut off
        }
        std::size_t localStart = nameStart;
        for (std::size_t k = nameStart; k < i; ++k) {
            if (xml[k] == ':') {
                localStart = k + 1;
            }
        }
        if (i - localStart == name.size() && xml.compare(localStart, name.size(), name) == 0) {
            return pos;
        }
    }
    return std::string::npos;
}

bool isFirstOfMultibyte(const char& byte) {
    return isLeadByte(family(), static_cast<unsigned char>(byte));
}

void setDefaultCharacterEncoding(const std::string& codePage) {
    defaultEncoding() = codePage;
    // The lead-byte rule follows the page just set.
    g_family.store(decideFamily(), std::memory_order_relaxed);
}

const std::string& getDefaultCharacterEncoding() { return defaultEncoding(); }

}  // namespace Corvane::Soa::Common::Xml
