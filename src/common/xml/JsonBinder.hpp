#ifndef CORVANE_SOA_SRC_COMMON_XML_JSONBINDER_HPP
#define CORVANE_SOA_SRC_COMMON_XML_JSONBINDER_HPP

// The handler of the JSON scanner that binds a document straight into a generated object, with
// no value tree. Not part of the exported interface.

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/internal/json/Value.hpp>

#include "common/xml/GeneratedTypes.hpp"
#include "internal/json/TreeBuilder.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Soa::Common::Xml {

class BaseObject;
struct FieldDescriptor;
struct TypeDescriptor;

/// Binds the tokens of one JSON document into a generated object by its type's descriptor, as
/// `parseJSON` of the document's tree would. Members are matched to fields by their key as
/// written, unknown members are skipped, and a type that reads itself (a member object that is
/// not what its generator made) gets its own subtree as a tree.
///
/// Whatever the tree path would refuse, or would read in a way this binder does not follow (a
/// missing or mistyped member, a repeated member holding a structure, a root of another shape),
/// makes the binder give up: it stops binding, the scan goes on to the end so that the text's
/// own faults are reported first, and `gaveUp()` tells the caller to read the text through the
/// tree, which then gives the tree path's result or exception.
class JsonBinder {
public:
    using Tree = ::Corvane::Soa::Internal::Json::Parser::TreeBuilder;
    using Result = Tree::Result;

    struct Object {
        Tree::Object tree;
        bool forwarded;
    };
    struct Array {
        Tree::Array tree;
        bool forwarded;
    };

    /// Binds into `root` of `type`; `named` when the type was taken from the document's first
    /// ".QName", which must then be its only one.
    JsonBinder(BaseObject& root, const TypeDescriptor& type, bool named);
    JsonBinder(const JsonBinder&) = delete;
    JsonBinder& operator=(const JsonBinder&) = delete;
    ~JsonBinder();

    bool gaveUp() const noexcept { return m_gaveUp; }

    Object beginObject();
    void key(Object& object, const char* text, std::size_t length);
    void member(Object& object, Result&& value);
    Result endObject(Object& object);
    Array beginArray();
    void element(Array& array, ::Corvane::Soa::Internal::Json::Value::ValueType kind,
                 Result&& value);
    Result endArray(Array& array);
    Result string(const char* begin, const char* end, bool escaped);
    Result date(const DateTime& value);
    Result integer(int value);
    Result real(double value);
    Result boolean(bool value);
    Result null();

private:
    enum class Frame : std::uint8_t { Object, Map, List, TextList, Skip };

    struct Level {
        Frame frame;
        // Object: the object bound and its type. List: the element type.
        BaseObject* object;
        const TypeDescriptor* type;
        // Object: the field the current member names, null for a member no field names.
        // List, TextList, Map: the list's field.
        const FieldDescriptor* field;
        // List, TextList, Map: the list.
        void* list;
        // Object: the fields met so far, by index. Map: where its keys start in m_mapKeys.
        std::uint64_t seen;
    };

    void giveUp();
    void pushObject(BaseObject& object, const TypeDescriptor& type);
    // The value of the current member, or of the current element, is a scalar that `bind`
    // stores; false when it is not one the field takes from this kind of token.
    template <class Bind>
    Result scalar(Bind&& bind);
    void finishObject(const Level& level);
    void finishMap(const Level& level);
    std::uint64_t required(const TypeDescriptor& type);

    std::vector<Level> m_levels;
    // A map's key as written, and its first eight bytes as a big-endian number (zeros past its
    // end): keys whose numbers differ are in the order of their numbers.
    struct MapKey {
        std::uint64_t head;
        std::string_view text;
    };
    std::vector<MapKey> m_mapKeys;
    // The subtree of a type that reads itself from a tree, while it is read.
    Tree m_tree;
    int m_treeDepth = 0;
    BaseObject* m_treeTarget = nullptr;
    GeneratedTypes::Cache m_generated;
    std::vector<std::pair<const TypeDescriptor*, std::uint64_t>> m_required;
    BaseObject& m_root;
    const TypeDescriptor& m_rootType;
    // Whether the root's type came from its ".QName", and the ".QName" members met so far.
    bool m_named;
    int m_names = 0;
    bool m_gaveUp = false;
};

}  // namespace Corvane::Soa::Common::Xml

#endif
