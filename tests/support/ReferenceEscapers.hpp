#ifndef CVSOA_TESTS_SUPPORT_REFERENCEESCAPERS_HPP
#define CVSOA_TESTS_SUPPORT_REFERENCEESCAPERS_HPP

// The escaping rules written the plainest way: one byte at a time, one += each, into a string
// that grows as it goes. Tests hold the library's blockwise escapers to them; the benchmarks
// measure the library against them.

#include <string>

namespace cvsoa::reference {

// What replaces `c` in XML text, or null when it stands as it is.
inline const char* xmlReference(char c) {
    switch (c) {
        case '\t':
            return "&#9;";
        case '\n':
            return "&#10;";
        case '\f':
            return "&#12;";
        case '\r':
            return "&#13;";
        case '"':
            return "&quot;";
        case '%':
            return "&#x25;";
        case '&':
            return "&amp;";
        case '\'':
            return "&apos;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        default:
            return nullptr;
    }
}

// What replaces `c` in a JSON string, or null when it stands as it is.
inline const char* jsonEscapeOf(char c) {
    switch (c) {
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        case '/':
            return "\\/";
        case '\b':
            return "\\b";
        case '\f':
            return "\\f";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return nullptr;
    }
}

template <const char* (*Replacement)(char)>
std::string escapeBytewise(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (const char* replacement = Replacement(c)) {
            out += replacement;
        } else {
            out += c;
        }
    }
    return out;
}

inline std::string xmlEscape(const std::string& text) { return escapeBytewise<xmlReference>(text); }
inline std::string jsonEscape(const std::string& text) {
    return escapeBytewise<jsonEscapeOf>(text);
}

}  // namespace cvsoa::reference

#endif
