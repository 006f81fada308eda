#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/ExceptionMapper.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/DocumentReader.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/common/xml/TypeRegistry.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/internal/json/InvalidTypeException.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/ParsingException.hpp>

#include "common/xml/GeneratedTypes.hpp"
#include "common/xml/JsonBinder.hpp"
#include "common/xml/XmlBinder.hpp"
#include "internal/json/JsonScanner.hpp"

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace Corvane::Soa::Common::Xml {

using Internal::Json::JSONObject;
using Internal::Json::JsonScanner;

namespace {

using Path = DocumentReader::Path;

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool isJson(const std::string& text) {
    for (const char c : text) {
        if (!isBlank(c)) {
            return c == '{' || c == '[';
        }
    }
    return false;
}

// The descriptor of `object` when its class is the generated one, else null.
const TypeDescriptor* generatedType(const BaseObject& object) {
    const TypeDescriptor* type = TypeRegistry::find(object.getNamespace(), object.getTypeName());
    return type != nullptr && GeneratedTypes::isGenerated(object, *type) ? type : nullptr;
}

bool isDirect(Path path) { return path != Path::Tree; }

// What the direct path alone does with a document it does not follow.
void handOver(Path path) {
    if (path == Path::DirectOnly) {
        throw std::domain_error("The direct reader does not follow this document.");
    }
}

// JSON

AutoPtr<JSONObject> jsonTree(const std::string& text) {
    AutoPtr<JSONObject> root = Internal::Json::Parser().parse(text).dynamicCast<JSONObject>();
    if (!root) {
        throw Internal::Json::ParsingException(
            "The root of a typed JSON document must be a JSONObject {}.\n");
    }
    return root;
}

void readJsonTree(const std::string& text, BaseObject& object) { object.parseJSON(jsonTree(text)); }

// Whether the direct path bound the whole document; false when it gave up and the tree path
// must read it.
bool bindJson(const std::string& text, BaseObject& object, const TypeDescriptor& type, bool named) {
    JsonBinder binder(object, type, named);
    Utf8String transcoder;
    JsonScanner<JsonBinder> scanner(text.data(), text.size(), transcoder, binder);
    scanner.parseDocument();
    return !binder.gaveUp();
}

void readJson(const std::string& text, BaseObject& object, Path path) {
    const TypeDescriptor* type = isDirect(path) ? generatedType(object) : nullptr;
    if (type == nullptr || !bindJson(text, object, *type, false)) {
        handOver(path);
        readJsonTree(text, object);
    }
}

AutoPtr<BaseObject> createJson(const std::string& name) {
    AutoPtr<BaseObject> object = TypeRegistry::create(name);
    if (!object) {
        throw Internal::Json::InvalidTypeException("No type is registered as \"" + name + "\".");
    }
    return object;
}

// The ".QName" of a document that begins with it, as the writer puts it, plain text; empty for
// any other beginning.
std::string leadingName(const std::string& text) {
    static constexpr char kKey[] = "\".QName\"";
    std::size_t i = 0;
    auto skip = [&]() {
        while (i < text.size() && isBlank(text[i])) {
            ++i;
        }
    };
    skip();
    if (i == text.size() || text[i] != '{') {
        return std::string();
    }
    ++i;
    skip();
    if (text.compare(i, sizeof kKey - 1, kKey) != 0) {
        return std::string();
    }
    i += sizeof kKey - 1;
    skip();
    if (i == text.size() || text[i] != ':') {
        return std::string();
    }
    ++i;
    skip();
    if (i == text.size() || text[i] != '"') {
        return std::string();
    }
    // Up to the first quote that no backslash escapes; ASCII only, which no code page changes.
    const std::size_t begin = i + 1;
    std::size_t end = begin;
    while (end < text.size() && text[end] != '"') {
        if (static_cast<unsigned char>(text[end]) >= 0x80) {
            return std::string();
        }
        end += text[end] == '\\' ? 2 : 1;
    }
    if (end >= text.size()) {
        return std::string();
    }
    return Internal::Json::JsonText::unescape(text.data() + begin, text.data() + end);
}

AutoPtr<BaseObject> readJsonNew(const std::string& text, Path path) {
    if (isDirect(path)) {
        const std::string name = leadingName(text);
        const TypeDescriptor* type = name.empty() ? nullptr : TypeRegistry::find(name);
        if (type != nullptr) {
            AutoPtr<BaseObject> object(type->create());
            if (bindJson(text, *object, *type, true)) {
                return object;
            }
        }
        handOver(path);
    }
    const AutoPtr<JSONObject> root = jsonTree(text);
    AutoPtr<BaseObject> object = createJson(root->getString(".QName"));
    object->parseJSON(root);
    return object;
}

// XML

void readXmlTree(const std::string& text, BaseObject& object) {
    SAXToNodeParser parser;
    object.parse(*parser.parseString(text));
}

AutoPtr<BaseObject> createXml(const std::string& namespaceUri, const std::string& name) {
    AutoPtr<BaseObject> object = TypeRegistry::create(namespaceUri, name);
    if (!object) {
        throw Exceptions::DomException("No type is registered for the element '" + name +
                                       "' of the namespace '" + namespaceUri + "'.");
    }
    return object;
}

void readXml(const std::string& text, BaseObject& object, Path path) {
    const TypeDescriptor* type = isDirect(path) ? generatedType(object) : nullptr;
    if (type == nullptr || !bindXml(text, &object, type)) {
        handOver(path);
        readXmlTree(text, object);
    }
}

AutoPtr<BaseObject> readXmlNew(const std::string& text, Path path) {
    if (isDirect(path)) {
        AutoPtr<BaseObject> object;
        if (bindXml(text, object)) {
            return object;
        }
        handOver(path);
    }
    SAXToNodeParser parser;
    const XMLNode& root = *parser.parseString(text);
    AutoPtr<BaseObject> object = createXml(getRootNamespace(text), root.getName());
    object->parse(root);
    return object;
}

// The local name of the root element, read from the text without parsing it: after white
// space, the XML declaration, processing instructions and comments. Empty for any other start.
std::string_view rootName(const std::string& text) {
    std::size_t i = 0;
    for (;;) {
        while (i < text.size() && isBlank(text[i])) {
            ++i;
        }
        std::string_view close;
        if (text.compare(i, 2, "<?") == 0) {
            close = "?>";
        } else if (text.compare(i, 4, "<!--") == 0) {
            close = "-->";
        } else {
            break;
        }
        i = text.find(close, i);
        if (i == std::string::npos) {
            return {};
        }
        i += close.size();
    }
    if (i == text.size() || text[i] != '<') {
        return {};
    }
    const std::size_t begin = i + 1;
    const std::size_t end = text.find_first_of(" \t\r\n/>", begin);
    if (end == std::string::npos) {
        return {};
    }
    std::string_view name(text.data() + begin, end - begin);
    const std::size_t colon = name.rfind(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

bool isErrorDocument(std::string_view root) {
    static constexpr std::string_view kErrors[] = {"InvalidUserException",
                                                   "InvalidCredentialsException",
                                                   "InternalServerException",
                                                   "ConnectionException",
                                                   "ProtocolException",
                                                   "ServiceException",
                                                   "CvResponse"};
    for (const std::string_view error : kErrors) {
        if (root == error) {
            return true;
        }
    }
    return false;
}

std::string slurp(std::istream& in) {
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string slurpFile(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw Exceptions::IOException("The document '" + file +
                                      "' cannot be read; check its name and its permissions.");
    }
    return slurp(in);
}

}  // namespace

void DocumentReader::read(const std::string& text, BaseObject& object, Path path) {
    if (isJson(text)) {
        readJson(text, object, path);
    } else {
        readXml(text, object, path);
    }
}

AutoPtr<BaseObject> DocumentReader::read(const std::string& text, Path path) {
    return isJson(text) ? readJsonNew(text, path) : readXmlNew(text, path);
}

void DocumentReader::readReply(const std::string& text, BaseObject& object, Path path) {
    if (!isJson(text) && isErrorDocument(rootName(text))) {
        // Throws, unless it is a legacy reply that holds an ordinary response.
        Exceptions::ExceptionMapper::parseExceptionString(text);
    }
    read(text, object, path);
}

void DocumentReader::readStream(std::istream& in, BaseObject& object, Path path) {
    read(slurp(in), object, path);
}

AutoPtr<BaseObject> DocumentReader::readStream(std::istream& in, Path path) {
    return read(slurp(in), path);
}

void DocumentReader::readFile(const std::string& file, BaseObject& object, Path path) {
    read(slurpFile(file), object, path);
}

AutoPtr<BaseObject> DocumentReader::readFile(const std::string& file, Path path) {
    return read(slurpFile(file), path);
}

}  // namespace Corvane::Soa::Common::Xml
