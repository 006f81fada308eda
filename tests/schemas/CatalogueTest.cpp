// The library's catalogue of generated types as a whole: every namespace with exactly its
// types, and every type filled in every field and carried through both wire forms unchanged.
#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/DocumentReader.hpp>
#include <corvane/soa/common/xml/FieldDescriptor.hpp>
#include <corvane/soa/common/xml/ListAccess.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/common/xml/TypeRegistry.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/schemas.hpp>

#include "ReadOutcome.hpp"
#include "WireForms.hpp"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::DateTime;
using Corvane::Soa::Common::Xml::BaseObject;
using Corvane::Soa::Common::Xml::FieldDescriptor;
using Corvane::Soa::Common::Xml::FieldKind;
using Corvane::Soa::Common::Xml::TypeDescriptor;
using Corvane::Soa::Common::Xml::TypeRegistry;

constexpr std::string_view kBase = "http://corvane.com/Schemas/";

// Each namespace's URI path after "/Schemas/" and its number of types.
std::map<std::string, std::size_t> expectedCatalogue() {
    return {
        {"Core/2006-03/FileManagement", 10},
        {"Core/2006-03/Session", 15},
        {"Core/2007-01/FileManagement", 4},
        {"Core/2007-01/Session", 10},
        {"Core/2007-06/Session", 2},
        {"Core/2007-12/Session", 3},
        {"Core/2008-03/Session", 9},
        {"Core/2008-06/Session", 7},
        {"Core/2009-04/Session", 4},
        {"Core/2010-04/Session", 13},
        {"Core/2011-06/Session", 12},
        {"Core/2012-02/Session", 6},
        {"Core/2015-10/FileManagement", 8},
        {"Core/2015-10/Session", 5},
        {"Internal/Core/2006-03/Types", 2},
        {"Internal/Core/2007-05/Session", 2},
        {"Internal/Core/2007-12/Session", 1},
        {"Internal/Core/2008-03/Session", 1},
        {"Internal/Core/2008-06/FileManagement", 21},
        {"Internal/Core/2008-06/Session", 2},
        {"Internal/Core/2010-09/FileManagement", 2},
        {"Internal/Core/2014-10/FileManagement", 6},
        {"Internal/Core/2014-11/Session", 2},
        {"Soa/ObjectPropertyPolicy", 3},
        {"Soa/2006-03/Base", 26},
        {"Soa/2006-03/Exceptions", 8},
        {"Soa/2006-09/ClientContext", 6},
        {"Soa/2011-06/MetaModel", 30},
    };
}

// The library's own types, without the tests' own schema.
std::vector<const TypeDescriptor*> catalogue() {
    std::vector<const TypeDescriptor*> types;
    for (const std::string& name : TypeRegistry::names()) {
        if (name.compare(0, kBase.size(), kBase) == 0 &&
            name.compare(kBase.size(), 5, "Test/") != 0) {
            types.push_back(TypeRegistry::find(name));
        }
    }
    return types;
}

template <class T>
T& at(const FieldDescriptor& field, BaseObject& object) {
    return *static_cast<T*>(field.member(object, true));
}

// What a filled object carries: everything, or only what JSON can bring back. A map (a list of
// map entries) read from JSON gives entries whose key alone is set (for a model object key,
// its uid alone).
enum class Fill { Everything, ReadableFromJson };

void fill(BaseObject& object, const TypeDescriptor& type, int seed, int depth, Fill what,
          bool inMap = false);

void fillField(BaseObject& object, const FieldDescriptor& field, int seed, int depth, Fill what) {
    const std::string text = field.name + "<&>\"' \xC3\xA9" + std::to_string(seed);
    if (field.flag != nullptr) {
        *static_cast<bool*>(field.flag(object, true)) = true;
    }
    switch (field.kind) {
        case FieldKind::Text:
            at<std::string>(field, object) = text;
            break;
        case FieldKind::TextElement:
            at<std::string>(field, object) = "<raw a=\"1\">" + text + "</raw>";
            break;
        case FieldKind::Boolean:
            at<bool>(field, object) = seed % 2 == 1;
            break;
        case FieldKind::Integer:
            at<int>(field, object) = -1000 * seed - 7;
            break;
        case FieldKind::Float:
            at<float>(field, object) = 0.5F + static_cast<float>(seed);
            break;
        case FieldKind::Double:
            at<double>(field, object) = -2.25 * seed;
            break;
        case FieldKind::DateTime:
            at<DateTime>(field, object) = DateTime(2014, 3, 22, 0, 19, 59 - seed % 60);
            break;
        case FieldKind::Structure:
        case FieldKind::Reference:
        case FieldKind::ServiceData:
            if (depth < 3) {
                fill(*static_cast<BaseObject*>(field.member(object, true)), field.type(), seed + 1,
                     depth + 1, what);
            }
            break;
        case FieldKind::StructureList:
            for (int i = 0; depth < 3 && i < 2; ++i) {
                fill(*field.list->append(field.member(object, true)), field.type(), seed + i + 1,
                     depth + 1, what, field.type().mapEntry);
            }
            break;
        case FieldKind::TextList:
            at<std::vector<std::string>>(field, object) = {text, "", "second " + text};
            break;
    }
}

// Gives every field of `object` a value made from `seed`, nested objects to a small depth
// (the catalogue's types refer to one another in cycles). Texts carry markup and non-ASCII
// characters; the CDATA text carries markup but no "]]>".
void fill(BaseObject& object, const TypeDescriptor& type, int seed, int depth, Fill what,
          bool inMap) {
    for (const FieldDescriptor& field : type) {
        if (!inMap || field.name != "key") {
            if (!inMap || what == Fill::Everything) {
                fillField(object, field, seed, depth, what);
            }
            continue;
        }
        // A map's keys travel in JSON as member names, which the reader keeps as written (not
        // unescaped): they hold no character that JSON escapes.
        const std::string key = "key \xC3\xA9<&>'" + std::to_string(seed);
        if (field.kind == FieldKind::Text) {
            at<std::string>(field, object) = key;
            continue;
        }
        auto& reference = *static_cast<BaseObject*>(field.member(object, true));
        if (what == Fill::Everything) {
            fillField(object, field, seed, depth, what);
        }
        for (const FieldDescriptor& keyField : field.type()) {
            if (keyField.name == "uid") {
                at<std::string>(keyField, reference) = key;
            }
        }
    }
}

TEST(Catalogue, HoldsEachNamespaceWithExactlyItsTypes) {
    std::map<std::string, std::size_t> found;
    std::size_t total = 0;
    for (const TypeDescriptor* type : catalogue()) {
        ++found[type->namespaceUri->substr(kBase.size())];
        ++total;
    }
    EXPECT_EQ(found, expectedCatalogue());
    EXPECT_EQ(found.size(), 28U);
    EXPECT_EQ(total, 220U);
}

TEST(Catalogue, EveryTypeRoundTripsInBothWireForms) {
    for (const TypeDescriptor* type : catalogue()) {
        SCOPED_TRACE(type->qualifiedName);
        AutoPtr<BaseObject> object(type->create());
        EXPECT_EQ(object->getQaulifiedName(), *type->namespaceUri + "." + type->name);
        fill(*object, *type, 1, 0, Fill::Everything);

        const std::string xml = WireForms::xmlOf(*object);
        Corvane::Soa::Common::Xml::SAXToNodeParser parser;
        AutoPtr<BaseObject> fromXml(type->create());
        fromXml->parse(*parser.parseString(xml));
        EXPECT_EQ(WireForms::xmlOf(*fromXml), xml);

        AutoPtr<BaseObject> fromJson(type->create());
        fromJson->parseJSON(Corvane::Soa::Internal::Json::Parser()
                                .parse(WireForms::jsonOf(*object))
                                .dynamicCast<Corvane::Soa::Internal::Json::JSONObject>());
        AutoPtr<BaseObject> readable(type->create());
        fill(*readable, *type, 1, 0, Fill::ReadableFromJson);
        EXPECT_EQ(WireForms::jsonOf(*fromJson), WireForms::jsonOf(*readable));

        const AutoPtr<BaseObject> copy(object->clone());
        EXPECT_EQ(typeid(*copy), typeid(*object));
        EXPECT_EQ(object->askRefCount(), 1);
    }
}

// The direct reader, alone, gives every filled type back as the tree path does, from both forms,
// into a new object and into the caller's.
TEST(Catalogue, EveryTypeReadsDirectlyAsThroughTheTree) {
    using Corvane::Soa::Common::Xml::DocumentReader;
    for (const TypeDescriptor* type : catalogue()) {
        SCOPED_TRACE(type->qualifiedName);
        AutoPtr<BaseObject> object(type->create());
        fill(*object, *type, 1, 0, Fill::Everything);
        auto make = [type] { return type->create(); };
        for (const std::string& text : {WireForms::xmlOf(*object), WireForms::jsonOf(*object)}) {
            EXPECT_EQ(ReadOutcome::ofNew(text, DocumentReader::Path::DirectOnly),
                      ReadOutcome::ofNew(text, DocumentReader::Path::Tree));
            EXPECT_EQ(ReadOutcome::ofInto(text, make, DocumentReader::Path::DirectOnly),
                      ReadOutcome::ofInto(text, make, DocumentReader::Path::Tree));
        }
    }
}

}  // namespace
