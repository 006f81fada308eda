#include "StartTags.hpp"

#include <corvane/soa/common/xml/XmlText.hpp>

#include <cstring>

namespace Corvane::Soa::Gen {

namespace {

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

StartTags::StartTags(const std::string& text) {
    int line = 1;
    std::size_t i = 0;
    const std::size_t n = text.size();
    auto skipTo = [&](const char* end) {
        const std::size_t found = text.find(end, i);
        const std::size_t stop = found == std::string::npos ? n : found + std::strlen(end);
        for (; i < stop; ++i) {
            line += text[i] == '\n' ? 1 : 0;
        }
    };
    while (i < n) {
        if (text[i] != '<') {
            line += text[i] == '\n' ? 1 : 0;
            ++i;
            continue;
        }
        if (text.compare(i, 4, "<!--") == 0) {
            skipTo("-->");
        } else if (text.compare(i, 9, "<![CDATA[") == 0) {
            skipTo("]]>");
        } else if (text.compare(i, 2, "<?") == 0) {
            skipTo("?>");
        } else if (text.compare(i, 2, "</") == 0 || text.compare(i, 2, "<!") == 0) {
            skipTo(">");
        } else {
            Tag tag{line, {}};
            ++i;
            while (i < n && !isSpace(text[i]) && text[i] != '>' && text[i] != '/') {
                ++i;
            }
            // Attributes: name = quoted value, up to the end of the tag.
            while (i < n && text[i] != '>') {
                if (isSpace(text[i]) || text[i] == '/') {
                    line += text[i] == '\n' ? 1 : 0;
                    ++i;
                    continue;
                }
                const std::size_t nameStart = i;
                while (i < n && text[i] != '=' && !isSpace(text[i])) {
                    ++i;
                }
                const std::string name = text.substr(nameStart, i - nameStart);
                while (i < n && text[i] != '"' && text[i] != '\'') {
                    line += text[i] == '\n' ? 1 : 0;
                    ++i;
                }
                if (i >= n) {
                    break;
                }
                const char quote = text[i++];
                const std::size_t valueStart = i;
                while (i < n && text[i] != quote) {
                    line += text[i] == '\n' ? 1 : 0;
                    ++i;
                }
                const std::string value =
                    Soa::Common::Xml::decodeXml(text.substr(valueStart, i - valueStart));
                ++i;
                if (name == "xmlns") {
                    tag.prefixes[""] = value;
                } else if (name.compare(0, 6, "xmlns:") == 0) {
                    tag.prefixes[name.substr(6)] = value;
                }
            }
            m_tags.push_back(std::move(tag));
        }
    }
}

}  // namespace Corvane::Soa::Gen
