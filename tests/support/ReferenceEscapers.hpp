#ifndef CVSOA_TESTS_SUPPORT_REFERENCEESCAPERS_HPP
#define CVSOA_TESTS_SUPPORT_REFERENCEESCAPERS_HPP

// The escaping rules written the plainest way: one byte at a time, one += each, into a string
// that grows as it goes. Tests hold the library's blockwise escapers to them; the benchmarks
// measure the library against them.

#include <string>

namespace cvsoa::reference {

inline std::string xmlEscape(const std::string& text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '\t':
                out += "&#9;";
                break;
            case '\n':
                out += "&#10;";
                break;
            case '\f':
                out += "&#12;";
                break;
            case '\r':
                out += "&#13;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '%':
                out += "&#x25;";
                break;
            case '&':
                out += "&amp;";
                break;
            case '\'':
                out += "&apos;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            default:
                out += c;
                break;
        }
    }
    return out;
}

inline std::string jsonEscape(const std::string& text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '/':
                out += "\\/";
                break;
            case '\b':
                out += "\\b";
                break;
            case '\f':
                out += "\\f";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                out += c;
                break;
        }
    }
    return out;
}

}  // namespace cvsoa::reference

#endif
