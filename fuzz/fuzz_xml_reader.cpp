// Any byte string given to the XML reader yields a tree or a DomException; nothing else.
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using Corvane::Soa::Common::Exceptions::DomException;
using Corvane::Soa::Common::Xml::SAXToNodeParser;
using Corvane::Soa::Common::Xml::XMLNode;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        SAXToNodeParser parser;
        const XMLNode* root = parser.parseString(text);
        // Walk the tree without recursion, touching every name, attribute and text.
        std::vector<const XMLNode*> pending{root};
        std::size_t bytes = 0;
        while (!pending.empty()) {
            const XMLNode* node = pending.back();
            pending.pop_back();
            bytes += node->getName().size() + node->getText().size();
            for (const auto& attribute : node->attrs()) {
                bytes += attribute.first.size() + attribute.second.size();
            }
            for (const XMLNode* child : node->getChildren()) {
                pending.push_back(child);
            }
        }
        (void)bytes;
    } catch (const DomException&) {
    }
    return 0;
}
