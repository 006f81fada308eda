#ifndef CVSOA_GEN_STARTTAGS_HPP
#define CVSOA_GEN_STARTTAGS_HPP

#include <map>
#include <string>
#include <vector>

namespace Corvane::Soa::Gen {

/// What the element tree leaves out and the generator needs: for each start tag of a
/// well-formed document, in document order, its line and the namespace prefixes it declares.
class StartTags {
public:
    struct Tag {
        int line;
        std::map<std::string, std::string> prefixes;  // "" for the default namespace
    };

    /// Scans `text`, which the XML reader has already accepted.
    explicit StartTags(const std::string& text);

    const std::vector<Tag>& tags() const noexcept { return m_tags; }

private:
    std::vector<Tag> m_tags;
};

}  // namespace Corvane::Soa::Gen

#endif
