#include "JsonQuoted.hpp"

#include <array>
#include <cstdio>

namespace cvsoa {

std::string jsonQuoted(std::string_view text) {
    std::string out = "\"";
    out.reserve(text.size() + 2);
    for (const char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
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
                if (static_cast<unsigned char>(c) < 0x20U) {
                    std::array<char, 8> escaped{};
                    std::snprintf(escaped.data(), escaped.size(), "\\u%04x",
                                  static_cast<unsigned>(static_cast<unsigned char>(c)));
                    out += escaped.data();
                } else {
                    out += c;
                }
        }
    }
    out += '"';
    return out;
}

}  // namespace cvsoa
