// Both ways of reading a typed document agree on any byte string: the direct reader and the
// tree path give the same object (written in both forms) or throw the same exception class with
// the same message. The first two bytes pick a registered type and the third how the document
// is read: into a new object of the type it names, or into an object of the picked type.
#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/DocumentReader.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/TypeRegistry.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace Xml = Corvane::Soa::Common::Xml;
using Corvane::Soa::Common::AutoPtr;
using Path = Xml::DocumentReader::Path;

namespace {

std::string written(const Xml::BaseObject& object) {
    Xml::XmlStream xml;
    object.outputXML(xml);
    std::ostringstream json;
    Xml::JsonStream stream(&json);
    object.writeJSON(&stream);
    return xml.str() + "\n" + json.str();
}

// The object written, or the exception; `handedOver` tells of a document the direct path alone
// does not follow.
template <class Read>
std::string outcome(Read&& read, bool* handedOver = nullptr) {
    try {
        return written(*read());
    } catch (const std::domain_error&) {
        if (handedOver != nullptr) {
            *handedOver = true;
        }
        return "handed over";
    } catch (const std::exception& e) {
        return std::string("throws ") + typeid(e).name() + ": " + e.what();
    }
}

void differ(const std::string& direct, const std::string& tree) {
    std::fprintf(stderr, "direct:\n%s\ntree:\n%s\n", direct.c_str(), tree.c_str());
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) {
        return 0;
    }
    static const std::vector<std::string> types = Xml::TypeRegistry::names();
    const std::string& type = types[(std::size_t{data[0]} << 8U | data[1]) % types.size()];
    const bool intoPicked = (data[2] & 1U) != 0;
    const std::string text(reinterpret_cast<const char*>(data) + 3, size - 3);

    if (!intoPicked) {
        const std::string tree =
            outcome([&] { return Xml::DocumentReader::read(text, Path::Tree); });
        const std::string direct =
            outcome([&] { return Xml::DocumentReader::read(text, Path::Direct); });
        if (direct != tree) {
            differ(direct, tree);
        }
        return 0;
    }
    auto into = [&](Path path) {
        return [&text, &type, path] {
            AutoPtr<Xml::BaseObject> object = Xml::TypeRegistry::create(type);
            Xml::DocumentReader::read(text, *object, path);
            return object;
        };
    };
    const std::string tree = outcome(into(Path::Tree));
    bool handedOver = false;
    const std::string alone = outcome(into(Path::DirectOnly), &handedOver);
    if (handedOver) {
        // Read partly and then through the tree: only a failure must be the same.
        const std::string direct = outcome(into(Path::Direct));
        if ((direct.rfind("throws", 0) == 0 || tree.rfind("throws", 0) == 0) && direct != tree) {
            differ(direct, tree);
        }
        return 0;
    }
    if (alone != tree) {
        differ(alone, tree);
    }
    return 0;
}
