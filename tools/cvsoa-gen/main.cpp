// cvsoa-gen: turns service schemas (XSD) into the generated data types of corvane-soa.
#include "CodeWriter.hpp"
#include "SchemaSet.hpp"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Corvane::Soa::Gen::CodeWriter;
using Corvane::Soa::Gen::GeneratorError;
using Corvane::Soa::Gen::SchemaNames;
using Corvane::Soa::Gen::SchemaSet;

const char* const kHelp = R"(Usage: cvsoa-gen [options] SCHEMA.xsd...

Writes one header and one source for each schema given:
  OUT/corvane/soa/schemas/<Area path>/_<yyyy>_<mm>/<Service>.hpp and .cpp
for the target namespace <base>/Schemas/<Area>/<yyyy-mm>/<Service>, with the classes in
namespace Corvane::Schemas::<Area>::_<yyyy>_<mm>::<Service> (the service name's first letter
upper-case, the rest lower-case; a namespace without a version has no version part).

Options:
  -o, --out DIR            where the files go (default: the current directory)
  -I, --import-dir DIR     where to look for imported schemas by namespace (repeatable)
  --depfile FILE           write the schemas read as a make-style dependency file
  --export-macro NAME      the export macro of the classes (default CORVANE_SOA_API)
  --export-header PATH     the header that defines it (default corvane/soa/Export.hpp)
  -h, --help               this text

The schema subset:
  - xsd:schema with targetNamespace (elementFormDefault, attributeFormDefault accepted);
    xsd:import by namespace, with or without schemaLocation (found among the schemas given
    and under the import directories); xsd:annotation anywhere; top-level xsd:element
    declarations naming a declared type.
  - named xsd:complexType holding an xsd:sequence of xsd:element and xsd:attribute.
  - xsd:attribute of xsd:string, boolean, int, float, double or dateTime: an attribute;
    use="required" is always written, otherwise it is written only when set.
  - xsd:element ref="p:Name" of a top-level element declaration: a field named after that
    element, of its type (the service data is <xsd:element ref="base:ServiceData"/>).
  - xsd:element of a complex type: a nested structure (minOccurs="0": written only when set);
    of Base ModelObject: a model object reference; of Base ServiceData: the service data
    (element "ServiceData"); maxOccurs="unbounded": a list of structures, or of texts for
    xsd:string; a single xsd:string element: a text written as CDATA.
  - a type whose fields are exactly key and value is a map entry: its key a text attribute or
    a model object, its value a text attribute, a structure, a model object or a list of
    structures.
  - a type whose optional attributes and lists would take 64 bytes or more of each object
    keeps them in a block made on their first write (accessors unchanged; the mutable ones
    make the block); a field of such a type may not be named "seldom".
  - <xsd:appinfo source="cvsoa-gen">hand-written classes</xsd:appinfo> in the schema's own
    annotation: the classes exist, one header each (<Service>/<Type>.hpp beside the
    schema's header), holding members m_<field> and declaring a static typeDescriptor();
    only their descriptors and their registration are written.
Anything else is refused with "file:line: <what> is not supported" and exit status 1; no
file is written unless every schema is accepted.
)";

void writeFile(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    // Unchanged files are left alone, so that what includes them is not rebuilt.
    {
        std::ifstream in(path, std::ios::binary);
        if (in) {
            const std::string old((std::istreambuf_iterator<char>(in)),
                                  std::istreambuf_iterator<char>());
            if (old == text) {
                return;
            }
        }
    }
    const fs::path temporary = path.string() + ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary);
        out << text;
        if (!out) {
            throw GeneratorError(path.string(), 0, "cannot be written");
        }
    }
    fs::rename(temporary, path);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> files;
    std::vector<std::string> importDirs;
    std::string out = ".";
    std::string depfile;
    std::string exportMacro = "CORVANE_SOA_API";
    std::string exportHeader = "corvane/soa/Export.hpp";
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const auto value = [&]() -> std::string {
            if (i + 1 >= argc) {
                std::cerr << "cvsoa-gen: " << arg << " needs a value; see cvsoa-gen --help\n";
                std::exit(2);
            }
            return argv[++i];
        };
        if (arg == "-h" || arg == "--help") {
            std::cout << kHelp;
            return 0;
        }
        if (arg == "-o" || arg == "--out") {
            out = value();
        } else if (arg == "-I" || arg == "--import-dir") {
            importDirs.push_back(value());
        } else if (arg == "--depfile") {
            depfile = value();
        } else if (arg == "--export-macro") {
            exportMacro = value();
        } else if (arg == "--export-header") {
            exportHeader = value();
        } else if (!arg.empty() && arg[0] == '-') {
            std::cerr << "cvsoa-gen: unknown option " << arg << "; see cvsoa-gen --help\n";
            return 2;
        } else {
            files.push_back(arg);
        }
    }
    if (files.empty()) {
        std::cerr << "cvsoa-gen: no schema given; see cvsoa-gen --help\n";
        return 2;
    }
    try {
        const SchemaSet schemas(files, importDirs);
        const CodeWriter writer(schemas, exportMacro, exportHeader);
        // Everything is generated before anything is written.
        std::vector<std::pair<fs::path, std::string>> outputs;
        for (const std::string& ns : schemas.given()) {
            const auto& schema = schemas.schema(ns);
            const fs::path header = fs::path(out) / SchemaNames::of(schema).header;
            fs::path source = header;
            source.replace_extension(".cpp");
            outputs.emplace_back(header, writer.header(schema));
            outputs.emplace_back(source, writer.source(schema));
        }
        for (const auto& [path, text] : outputs) {
            writeFile(path, text);
        }
        if (!depfile.empty() && !outputs.empty()) {
            std::string deps = outputs.front().first.string() + ":";
            for (const std::string& file : schemas.files()) {
                deps += " " + file;
            }
            writeFile(depfile, deps + "\n");
        }
    } catch (const GeneratorError& e) {
        std::cerr << e.what() << "\n";
        return 1;
    } catch (const std::exception& e) {
        std::cerr << "cvsoa-gen: " << e.what() << "\n";
        return 1;
    }
    return 0;
}
