#include "CommandRegistry.hpp"

#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/DocumentReader.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/common/xml/TypeRegistry.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/common/xml/XmlUtil.hpp>
#include <corvane/soa/internal/json/JSONException.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

namespace cvsoa {

namespace {

namespace Xml = Corvane::Soa::Common::Xml;
namespace Json = Corvane::Soa::Internal::Json;
using Corvane::Soa::Common::AutoPtr;

struct ConvertOptions {
    std::string path;
    std::string out;
    std::string to;
    std::string type;
    bool check = false;
};

[[noreturn]] void fail(const std::string& message) {
    std::cerr << message << '\n';
    throw CLI::RuntimeError(1);
}

// The whole stream, read in large pieces into a text that has room for a file's size at once.
std::string readStream(std::istream& in) {
    std::string text;
    if (in.seekg(0, std::ios::end)) {
        const std::streamoff size = in.tellg();
        in.seekg(0, std::ios::beg);
        if (size > 0) {
            text.reserve(static_cast<std::size_t>(size));
        }
    }
    in.clear();  // a stream that cannot seek is read from where it is
    constexpr std::size_t kPiece = std::size_t{64} * 1024;
    std::vector<char> piece(kPiece);
    while (in.read(piece.data(), static_cast<std::streamsize>(kPiece)) || in.gcount() > 0) {
        text.append(piece.data(), static_cast<std::size_t>(in.gcount()));
    }
    return text;
}

std::string readAll(const std::string& path) {
    if (path == "-") {
        return readStream(std::cin);
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        fail("cvsoa convert: " + path +
             ": cannot be read; give an existing file, or - for standard input");
    }
    return readStream(file);
}

std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] =
                std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// The registered type of that qualified name, or a failure naming the closest ones.
AutoPtr<Xml::BaseObject> create(const std::string& path, const std::string& qualifiedName) {
    AutoPtr<Xml::BaseObject> object = Xml::TypeRegistry::create(qualifiedName);
    if (object) {
        return object;
    }
    std::vector<std::string> names = Xml::TypeRegistry::names();
    std::stable_sort(names.begin(), names.end(), [&](const std::string& a, const std::string& b) {
        return distance(a, qualifiedName) < distance(b, qualifiedName);
    });
    std::string message = "cvsoa convert: " + path + ": no type is registered as \"" +
                          qualifiedName + "\"; the closest are:";
    for (std::size_t i = 0; i < names.size() && i < 3; ++i) {
        message += "\n  " + names[i];
    }
    fail(message + "\nName one with --type.");
}

struct Document {
    AutoPtr<Xml::BaseObject> object;
    bool json;
};

// Finds the document's type (or takes the one given), builds it and binds the document to it
// through the element tree or the JSON tree, saying in the command's words what is wrong.
Document bindThroughTree(const std::string& path, const std::string& content,
                         const std::string& type) {
    const bool json = Xml::XmlUtil::isJSON(content);
    try {
        if (json) {
            const AutoPtr<Json::JSONObject> root =
                Json::Parser().parse(content).dynamicCast<Json::JSONObject>();
            if (!root) {
                fail("cvsoa convert: " + path + ": the JSON document is not an object");
            }
            const std::string name = !type.empty()                 ? type
                                     : root->containsKey(".QName") ? root->getString(".QName")
                                                                   : std::string();
            if (name.empty()) {
                fail("cvsoa convert: " + path +
                     ": the document has no \".QName\"; name its type with --type");
            }
            AutoPtr<Xml::BaseObject> object = create(path, name);
            object->parseJSON(root);
            return {object, true};
        }
        Xml::SAXToNodeParser parser;
        const Xml::XMLNode& root = *parser.parseString(content);
        AutoPtr<Xml::BaseObject> object = create(
            path, !type.empty() ? type : Xml::getRootNamespace(content) + "." + root.getName());
        object->parse(root);
        return {object, false};
    } catch (const Corvane::Soa::Common::Exceptions::DomException& e) {
        fail("cvsoa convert: " + path + ": " + e.getMessage());
    } catch (const Json::JSONException& e) {
        fail("cvsoa convert: " + path + ": " + e.getMessage());
    }
}

// The same, read straight from the text without a tree. A document that does not read is read
// again through the tree, which tells what is wrong with it.
Document bindDocument(const std::string& path, const std::string& content,
                      const std::string& type) {
    const bool json = Xml::XmlUtil::isJSON(content);
    try {
        AutoPtr<Xml::BaseObject> object;
        if (type.empty()) {
            object = Xml::DocumentReader::read(content);
        } else if ((object = Xml::TypeRegistry::create(type))) {
            Xml::DocumentReader::read(content, *object);
        }
        if (object) {
            return {object, json};
        }
    } catch (const std::exception&) {
        // Said below.
    }
    return bindThroughTree(path, content, type);
}

// Hands what is written on to `target`, without the line end that the XML writer puts before
// the root element.
class WithoutFirstLineEnd : public std::streambuf {
public:
    explicit WithoutFirstLineEnd(std::streambuf* target) : m_target(target) {
        setp(m_buffer, m_buffer + sizeof m_buffer);
    }

protected:
    int_type overflow(int_type c) override {
        if (sync() != 0) {
            return traits_type::eof();
        }
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            *pptr() = traits_type::to_char_type(c);
            pbump(1);
        }
        return traits_type::not_eof(c);
    }

    int sync() override {
        const char* from = pbase();
        if (m_first && from != pptr()) {
            m_first = false;
            from += *from == '\n' ? 1 : 0;
        }
        const std::streamsize size = pptr() - from;
        const bool written = m_target->sputn(from, size) == size;
        setp(m_buffer, m_buffer + sizeof m_buffer);
        return written ? 0 : -1;
    }

private:
    std::streambuf* m_target;
    bool m_first = true;
    char m_buffer[64 * 1024];
};

// Writes `object` to `out` as it goes: the output is never held whole.
void write(const Xml::BaseObject& object, bool json, std::ostream& out) {
    if (json) {
        {
            Xml::JsonStream stream(&out);
            object.writeJSON(&stream);
        }
        out << '\n';
        return;
    }
    auto filter = std::make_unique<WithoutFirstLineEnd>(out.rdbuf());
    std::ostream filtered(filter.get());
    {
        Xml::XmlStream stream(&filtered);
        object.outputXML(stream);
    }
    filtered << '\n';
    filtered.flush();
    if (!filtered) {
        out.setstate(std::ios::badbit);
    }
}

std::string serialise(const Xml::BaseObject& object, bool json) {
    if (json) {
        std::ostringstream out;
        Xml::JsonStream stream(&out);
        object.writeJSON(&stream);
        return out.str() + "\n";
    }
    Xml::XmlStream stream;
    object.outputXML(stream);
    std::string text = stream.str();
    // The writer starts every element on a new line, the root too.
    if (!text.empty() && text.front() == '\n') {
        text.erase(0, 1);
    }
    return text + "\n";
}

void convert(const ConvertOptions& options) {
    const std::string content = readAll(options.path);
    const Document document = bindDocument(options.path, content, options.type);
    const bool toJson = options.to.empty() ? !document.json : options.to == "json";
    // Held whole only to be read back.
    const std::string output = options.check ? serialise(*document.object, toJson) : std::string();
    if (options.check) {
        // Back from the converted text into the document's own form: the same document again?
        const Document back =
            bindDocument("(converted)", output, document.object->getQaulifiedName());
        const bool same =
            serialise(*back.object, document.json) == serialise(*document.object, document.json);
        std::cerr << "round trip: " << (same ? "same document" : "the document differs") << '\n';
        if (!same) {
            throw CLI::RuntimeError(1);
        }
    }
    auto put = [&](std::ostream& out) {
        if (options.check) {
            out << output;
        } else {
            write(*document.object, toJson, out);
        }
    };
    if (options.out.empty() || options.out == "-") {
        put(std::cout);
        return;
    }
    // Written whole or not at all.
    const std::string temporary = options.out + ".tmp";
    {
        std::ofstream file(temporary, std::ios::binary);
        put(file);
        if (!file) {
            std::remove(temporary.c_str());
            fail("cvsoa convert: " + options.out + ": cannot be written; check the directory");
        }
    }
    if (std::rename(temporary.c_str(), options.out.c_str()) != 0) {
        std::remove(temporary.c_str());
        fail("cvsoa convert: " + options.out + ": cannot be written; check the directory");
    }
}

void addConvertCommand(CLI::App& app) {
    auto options = std::make_shared<ConvertOptions>();
    CLI::App* command = app.add_subcommand(
        "convert",
        "Bind an XML or JSON document to its generated type and write it in the other form");
    command->add_option("file", options->path, "the document (- for standard input)")->required();
    command->add_option("-o,--output", options->out, "where to write (standard output otherwise)");
    command->add_option("--to", options->to, "the form to write (default: the other one)")
        ->check(CLI::IsMember({"xml", "json"}));
    command->add_option("--type", options->type,
                        "the qualified type name (namespace.Name) instead of the document's own");
    command->add_flag("--check", options->check,
                      "convert back too and report whether the round trip gives the same document");
    command->callback([options] { convert(*options); });
}

const CommandRegistration registration(45, addConvertCommand);

}  // namespace

}  // namespace cvsoa
