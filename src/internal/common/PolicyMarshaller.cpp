#include <corvane/soa/internal/common/PolicyMarshaller.hpp>

#include "common/xml/ElementSink.hpp"
#include "internal/common/FileReplacement.hpp"
#include "internal/common/PolicyDocumentReader.hpp"

#include <corvane/soa/common/ObjectPropertyPolicy.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/StringStream.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/schemas/Soa/Objectpropertypolicy.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <utility>

namespace Corvane::Soa::Internal::Common {

namespace {

using ::Corvane::Soa::Common::AutoPtr;
using ::Corvane::Soa::Common::ObjectPropertyPolicy;
using ::Corvane::Soa::Common::PolicyProperty;
using ::Corvane::Soa::Common::PolicyType;
using ::Corvane::Soa::Common::Exceptions::DomException;
using ::Corvane::Soa::Common::Exceptions::IOException;
using ::Corvane::Soa::Common::Xml::StringStream;
using ::Corvane::Soa::Common::Xml::XMLNode;
namespace Schema = ::Corvane::Schemas::Soa::Objectpropertypolicy;

constexpr const char* kName = "name";

// Each flag attribute of `node` becomes a modifier of `target`. Modifiers are kept by name, so
// the order in which they are set makes no difference.
template <class Target>
void readFlags(const XMLNode& node, Target& target) {
    for (const std::string& flag : PolicyMarshaller::flags()) {
        if (node.existsAttr(flag)) {
            target.setModifier(flag, ::Corvane::Soa::Common::Xml::lexical_cast<bool, std::string>(
                                         node.getAttr(flag)));
        }
    }
}

// Sets the flag attribute of `out` that is flag number `index` of `PolicyMarshaller::flags()`.
template <class Out>
void setFlag(Out& out, std::size_t index, bool on) {
    switch (index) {
        case 0:
            out.setWithProperties(on);
            break;
        case 1:
            out.setExcludeUiValues(on);
            break;
        case 2:
            out.setIncludeIsModifiable(on);
            break;
        case 3:
            out.setAsAttribute(on);
            break;
        case 4:
            out.setUIValueOnly(on);
            break;
        case 5:
            out.setExcludeParentProperties(on);
            break;
        default:
            break;
    }
}

// The flag modifiers of `model` become the flag attributes of `out`, "1" or "0" as the model
// reads them. The schema types also know "excludeIsModifiable", which is not a flag: it is
// never set from a model. A model holds few modifiers, so each is matched against the flags
// rather than each flag looked up among them.
template <class Model, class Out>
void writeFlags(const Model& model, Out& out) {
    const auto& flags = PolicyMarshaller::flags();
    for (const auto& [name, value] : model.getModifiers()) {
        for (std::size_t i = 0; i < flags.size(); ++i) {
            if (name == flags[i]) {
                setFlag(out, i, value == "1" || value == "true");
                break;
            }
        }
    }
}

// The policy file's text: the XML declaration and the schema-side form of `policy`.
void writeDocument(const ObjectPropertyPolicy& policy, std::ostream& out) {
    ::Corvane::Soa::Common::Xml::XmlStream stream(&out);
    stream << R"(<?xml version="1.0" encoding="UTF-8"?>)";
    PolicyMarshaller::serialize(policy)->outputXML(stream);
    stream << "\n";
}

// Whether the file can be opened for reading and is not a directory.
bool isReadableFile(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    struct stat status {};
    const bool readable = ::fstat(fd, &status) == 0 && !S_ISDIR(status.st_mode);
    ::close(fd);
    return readable;
}

}  // namespace

const char* const PolicyMarshaller::kNamespace =
    "http://corvane.com/Schemas/Soa/ObjectPropertyPolicy";

const char* const PolicyMarshaller::kSchemaNote =
    "\nPolicy file does not conform to the schema,please refer to the Corvane Services Guide for "
    "more information.";

const std::array<std::string, 6>& PolicyMarshaller::flags() {
    static const std::array<std::string, 6> names = {
        "withProperties", "excludeUiValues", "includeIsModifiable",
        "asAttribute",    "uIValueOnly",     "excludeParentProperties"};
    return names;
}

bool PolicyMarshaller::isAFlag(const std::string& name) {
    for (const std::string& flag : flags()) {
        if (name == flag) {
            return true;
        }
    }
    return false;
}

void PolicyMarshaller::load(ObjectPropertyPolicy& policy, const std::string& path) {
    if (!isReadableFile(path)) {
        throw IOException("Error while loading the policy file specified in:" + path);
    }
    // Policy texts are UTF-8, whatever the process's local code page. The elements go to the
    // model as they are read, with no tree between (a policy file may be large).
    PolicyDocumentReader reader;
    ::Corvane::Soa::Common::Xml::parseFileInto(path, "UTF-8", reader);
    reader.apply(policy);
}

void PolicyMarshaller::load(ObjectPropertyPolicy& policy, const XMLNode& root) {
    if (root.getName() != "ObjectPropertyPolicy") {
        throw DomException(PolicyDocumentReader::invalidRoot(root.getName()));
    }
    readFlags(root, policy);
    for (const XMLNode* child : root.getChildren()) {
        const std::string& name = child->getName();
        if (name == "ObjectType") {
            PolicyType type;
            parse(*child, type);
            policy.addType(std::move(type));
        } else if (name != "Include") {
            throw DomException(PolicyDocumentReader::unexpectedElement(name));
        }
    }
}

void PolicyMarshaller::parse(const XMLNode& node, PolicyType& type) {
    if (!node.existsAttr(kName)) {
        throw DomException(PolicyDocumentReader::typeWithoutName());
    }
    type.setName(node.getAttr(kName));
    readFlags(node, type);
    for (const XMLNode* child : node.getChildren()) {
        PolicyProperty property;
        parse(*child, property);
        type.addProperty(std::move(property));
    }
}

void PolicyMarshaller::parse(const XMLNode& node, PolicyProperty& property) {
    if (node.getName() != "Property" || !node.existsAttr(kName)) {
        throw DomException(PolicyDocumentReader::invalidProperty());
    }
    property.setName(node.getAttr(kName));
    readFlags(node, property);
}

AutoPtr<Schema::ObjectPropertyPolicy> PolicyMarshaller::serialize(
    const ObjectPropertyPolicy& policy) {
    AutoPtr<Schema::ObjectPropertyPolicy> out(new Schema::ObjectPropertyPolicy);
    writeFlags(policy, *out);
    auto& types = out->getObjectType();
    types.reserve(policy.getTypes().size());
    for (const PolicyType& type : policy.getTypes()) {
        types.push_back(serialize(type));
    }
    return out;
}

AutoPtr<Schema::ObjectType> PolicyMarshaller::serialize(const PolicyType& type) {
    AutoPtr<Schema::ObjectType> out(new Schema::ObjectType);
    out->getName() = type.getName();
    writeFlags(type, *out);
    auto& properties = out->getProperty();
    properties.reserve(type.getProperties().size());
    for (const PolicyProperty& property : type.getProperties()) {
        properties.push_back(serialize(property));
    }
    return out;
}

AutoPtr<Schema::Property> PolicyMarshaller::serialize(const PolicyProperty& property) {
    AutoPtr<Schema::Property> out(new Schema::Property);
    out->getName() = property.getName();
    writeFlags(property, *out);
    return out;
}

std::string PolicyMarshaller::toXml(const ObjectPropertyPolicy& policy) {
    StringStream text;
    writeDocument(policy, text);
    return text.str();
}

void PolicyMarshaller::save(const ObjectPropertyPolicy& policy, const std::string& path) {
    // The text is written from where it was made: a file's worth, not copied once more.
    StringStream text;
    writeDocument(policy, text);
    createDir(path);

    // The new file replaces the old one in one step, through any symbolic links.
    if (replaceFile(path, text.str()) != 0) {
        throw IOException("'Error while creating file under:-'" + path);
    }
}

void PolicyMarshaller::createDir(std::string path) {
    const std::size_t last = path.rfind('/');
    if (last == std::string::npos) {
        return;
    }
    const std::string directory = path.substr(0, last);
    const auto make = [&path](const std::string& part) {
        if (part.empty()) {
            return;
        }
        if (::mkdir(part.c_str(), 0777) != 0) {
            const int error = errno;
            if (error == ENOENT || error == EIO || error == ENXIO || error == EACCES ||
                error == EINVAL) {
                throw IOException("'Error in writing ObjectPropertyPolicy in a:-'" + path);
            }
        }
    };
    for (std::size_t slash = directory.find('/'); slash != std::string::npos;
         slash = directory.find('/', slash + 1)) {
        make(directory.substr(0, slash));
    }
    make(directory);
}

}  // namespace Corvane::Soa::Internal::Common
