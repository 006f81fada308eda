// Any byte string loaded as a policy file gives a policy, a DomException or an IOException;
// nothing else. Loading the file, which reads it with no tree, ends as reading the file into the
// XML reader's tree and the tree into a policy does: the same policy, or the same message. A
// policy that loads saves to a text that loads back into an equal policy.
#include <corvane/soa/common/ObjectPropertyPolicy.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/internal/common/PolicyMarshaller.hpp>

#include <unistd.h>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

using Corvane::Soa::Common::ObjectPropertyPolicy;
using Corvane::Soa::Common::Exceptions::DomException;
using Corvane::Soa::Common::Exceptions::IOException;
using Corvane::Soa::Common::Xml::SAXToNodeParser;
using Corvane::Soa::Internal::Common::PolicyMarshaller;

namespace {

// One file per fuzzing process, rewritten for every input.
const std::string& inputPath() {
    static const std::string path = "/tmp/fuzz_policy-" + std::to_string(::getpid()) + ".xml";
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::FILE* file = std::fopen(inputPath().c_str(), "wb");
    if (file == nullptr || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0) {
        std::abort();
    }
    ObjectPropertyPolicy policy;
    std::string message;
    try {
        policy.load(inputPath());
    } catch (const DomException& e) {
        message = "DomException: " + e.getMessage();
    } catch (const IOException& e) {
        message = "IOException: " + e.getMessage();
    }
    ObjectPropertyPolicy fromTree;
    std::string treeMessage;
    try {
        SAXToNodeParser parser;
        PolicyMarshaller::load(fromTree, *parser.parseFile(inputPath(), "UTF-8"));
    } catch (const DomException& e) {
        treeMessage = "DomException: " + e.getMessage();
    }
    if (message != treeMessage || !(policy == fromTree)) {
        std::abort();
    }
    if (!message.empty()) {
        return 0;
    }
    // Flag modifiers only, as loading makes them: the saved text holds all of the policy.
    const std::string saved = PolicyMarshaller::toXml(policy);
    SAXToNodeParser parser;
    ObjectPropertyPolicy reloaded;
    PolicyMarshaller::load(reloaded, *parser.parseString(saved, "UTF-8"));
    if (!(reloaded == policy) || PolicyMarshaller::toXml(reloaded) != saved) {
        std::abort();
    }
    return 0;
}
