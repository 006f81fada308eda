#include "SchemaSet.hpp"

#include "SchemaReader.hpp"

#include <filesystem>

namespace Corvane::Soa::Gen {

namespace fs = std::filesystem;

namespace {

const char* const kXsd = "http://www.w3.org/2001/XMLSchema";

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The Base schema's model object and service data have field kinds of their own.
bool isBase(const QualifiedName& name, const char* local) {
    return endsWith(name.ns, "/Schemas/Soa/2006-03/Base") && name.local == local;
}

}  // namespace

SchemaSet::SchemaSet(const std::vector<std::string>& files,
                     const std::vector<std::string>& importDirs)
    : m_importDirs(importDirs) {
    for (const std::string& file : files) {
        m_given.push_back(load(file).ns);
    }
    for (auto& entry : m_byFile) {
        resolve(entry.second);
    }
}

std::vector<std::string> SchemaSet::files() const {
    std::vector<std::string> result;
    for (const auto& entry : m_byFile) {
        result.push_back(entry.first);
    }
    return result;
}

const SchemaModel& SchemaSet::load(const std::string& file) {
    const std::string path = fs::weakly_canonical(file).string();
    const auto known = m_byFile.find(path);
    if (known != m_byFile.end()) {
        return known->second;
    }
    SchemaModel& schema = m_byFile[path] = SchemaReader::read(file);
    const auto [at, added] = m_byNamespace.emplace(schema.ns, &schema);
    if (!added) {
        throw GeneratorError(
            file, 0,
            "declares the namespace " + schema.ns + " that " + at->second->file + " declares too");
    }
    for (const SchemaModel::Import& import : schema.imports) {
        if (m_byNamespace.count(import.ns) != 0) {
            continue;
        }
        if (!import.location.empty()) {
            const fs::path location = fs::path(file).parent_path() / import.location;
            if (!fs::exists(location)) {
                throw GeneratorError(
                    file, import.line,
                    "the imported schema " + location.string() + " does not exist");
            }
            load(location.string());
            continue;
        }
        const std::string found = findNamespace(import.ns);
        if (found.empty()) {
            throw GeneratorError(file, import.line,
                                 "no schema of the imported namespace " + import.ns +
                                     " was found: give its file or a directory with --import-dir");
        }
        load(found);
    }
    return schema;
}

const QualifiedName* SchemaSet::element(const QualifiedName& name) const {
    const auto owner = m_byNamespace.find(name.ns);
    if (owner == m_byNamespace.end()) {
        return nullptr;
    }
    const auto found = owner->second->elements.find(name.local);
    return found == owner->second->elements.end() ? nullptr : &found->second;
}

std::string SchemaSet::findNamespace(const std::string& ns) {
    if (!m_scanned) {
        m_scanned = true;
        for (const std::string& dir : m_importDirs) {
            if (!fs::is_directory(dir)) {
                continue;
            }
            for (const auto& entry : fs::recursive_directory_iterator(dir)) {
                if (entry.is_regular_file() && entry.path().extension() == ".xsd") {
                    m_candidates.emplace(SchemaReader::targetNamespace(entry.path().string()),
                                         entry.path().string());
                }
            }
        }
    }
    const auto found = m_candidates.find(ns);
    return found == m_candidates.end() ? std::string() : found->second;
}

void SchemaSet::resolve(SchemaModel& schema) {
    for (TypeModel& type : schema.types) {
        for (FieldModel& field : type.fields) {
            const auto fail = [&](const std::string& what) {
                throw GeneratorError(schema.file, field.line, what);
            };
            if (field.byReference) {
                const QualifiedName* declared = element(field.type);
                if (declared == nullptr) {
                    fail("the element {" + field.type.ns + "}" + field.type.local +
                         " is not declared in any schema read (is its schema imported?)");
                }
                field.type = *declared;
                field.byReference = false;
            }
            if (field.type.ns == kXsd) {
                static const std::map<std::string, Kind> scalars = {
                    {"string", Kind::Text},   {"boolean", Kind::Boolean},
                    {"int", Kind::Integer},   {"float", Kind::Float},
                    {"double", Kind::Double}, {"dateTime", Kind::DateTime}};
                const auto scalar = scalars.find(field.type.local);
                if (scalar == scalars.end()) {
                    fail("the type xsd:" + field.type.local + " is not supported");
                }
                if (field.attribute) {
                    field.kind = scalar->second;
                } else if (scalar->second != Kind::Text) {
                    fail("an element of type xsd:" + field.type.local +
                         " is not supported (make it an attribute)");
                } else {
                    field.kind = field.list ? Kind::TextList : Kind::TextElement;
                }
                continue;
            }
            if (field.attribute) {
                fail("an attribute of type " + field.type.local + " is not supported");
            }
            const auto owner = m_byNamespace.find(field.type.ns);
            bool declared = false;
            if (owner != m_byNamespace.end()) {
                for (const TypeModel& candidate : owner->second->types) {
                    declared = declared || candidate.name == field.type.local;
                }
            }
            if (!declared) {
                fail("the type {" + field.type.ns + "}" + field.type.local +
                     " is not declared in any schema read (is its schema imported?)");
            }
            if (field.list) {
                field.kind = Kind::StructureList;
            } else if (isBase(field.type, "ModelObject")) {
                field.kind = Kind::Reference;
            } else if (isBase(field.type, "ServiceData")) {
                field.kind = Kind::ServiceData;
            } else {
                field.kind = Kind::Structure;
            }
        }
        if (type.mapEntry) {
            checkMapEntry(schema, type);
        }
        if (!schema.handWritten) {
            placeSeldomFields(schema, type);
        }
    }
}

void SchemaSet::placeSeldomFields(const SchemaModel& schema, TypeModel& type) {
    // The bytes a field takes in its object when it is seldom set (an optional attribute with
    // its presence flag, or a list), else 0.
    const auto seldomBytes = [](const FieldModel& field) -> std::size_t {
        if (field.kind == Kind::StructureList || field.kind == Kind::TextList) {
            return 24;
        }
        if (!field.attribute || !field.optional) {
            return 0;
        }
        switch (field.kind) {
            case Kind::Text:
                return 33;
            case Kind::Boolean:
                return 2;
            case Kind::Integer:
            case Kind::Float:
                return 5;
            case Kind::Double:
                return 9;
            default:
                return 25;
        }
    };
    // Below this the block's pointer and its allocation, when the fields are set, would cost
    // about what it saves when they are not.
    constexpr std::size_t kBlockBytes = 64;
    std::size_t bytes = 0;
    for (const FieldModel& field : type.fields) {
        bytes += seldomBytes(field);
    }
    if (bytes < kBlockBytes) {
        return;
    }
    type.hasBlock = true;
    for (FieldModel& field : type.fields) {
        if (field.name == "seldom") {
            throw GeneratorError(schema.file, field.line,
                                 "the field name \"seldom\" is not supported in " + type.name +
                                     " (the type keeps its seldom-set fields under that name)");
        }
        field.inBlock = seldomBytes(field) != 0;
    }
}

void SchemaSet::checkMapEntry(const SchemaModel& schema, const TypeModel& type) {
    // JSON writes a map as one object: each entry's key becomes a member name, so it must be
    // a text or a reference's uid, and its value one JSON value.
    for (const FieldModel& field : type.fields) {
        const bool key = field.name == "key";
        const bool supported = key ? field.kind == Kind::Text || field.kind == Kind::Reference
                                   : field.kind == Kind::Text || field.kind == Kind::Structure ||
                                         field.kind == Kind::Reference ||
                                         field.kind == Kind::StructureList;
        if (!supported) {
            throw GeneratorError(
                schema.file, field.line,
                std::string("the map entry ") + type.name + " has a " + (key ? "key" : "value") +
                    " of a kind that is not supported (a key is a text attribute or a model "
                    "object; a value is a text attribute, a structure, a model object or a "
                    "list of structures)");
        }
    }
}

}  // namespace Corvane::Soa::Gen
