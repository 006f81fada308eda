#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/FieldDescriptor.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/ListAccess.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>

#include "common/xml/JsonBinder.hpp"
#include "common/xml/MemberAccess.hpp"

#include <algorithm>
#include <utility>

namespace Corvane::Soa::Common::Xml {

using Internal::Json::JSONObject;
using Internal::Json::Value;

using MemberAccess::assignText;
using MemberAccess::held;
using MemberAccess::markSet;
using MemberAccess::store;

namespace {

// A string token into a member: straight from the scanner's buffer, unescaped in place.
void assignToken(std::string& to, const char* begin, const char* end, bool escaped) {
    const auto size = static_cast<std::size_t>(end - begin);
    if (!escaped) {
        assignText(to, std::string_view(begin, size));
        return;
    }
    if (size > to.capacity()) {
        to = std::string(size, '\0');
    } else {
        to.resize(size);
    }
    to.resize(Internal::Json::JsonText::unescapeInto(to.data(), begin, end));
}

std::string tokenText(const char* begin, const char* end, bool escaped) {
    return escaped ? Internal::Json::JsonText::unescape(begin, end)
                   : std::string(begin, static_cast<std::size_t>(end - begin));
}

const FieldDescriptor* fieldNamed(const TypeDescriptor& type, std::string_view name) {
    for (const FieldDescriptor& field : type) {
        if (field.name.size() == name.size() && field.name == name) {
            return &field;
        }
    }
    return nullptr;
}

bool holdsStructure(FieldKind kind) {
    return kind >= FieldKind::Structure && kind <= FieldKind::TextList;
}

}  // namespace

JsonBinder::JsonBinder(BaseObject& root, const TypeDescriptor& type, bool named)
    : m_root(root), m_rootType(type), m_named(named) {
    m_levels.reserve(16);
}

JsonBinder::~JsonBinder() = default;

void JsonBinder::giveUp() {
    m_gaveUp = true;
    m_levels.clear();
    m_mapKeys.clear();
}

std::uint64_t JsonBinder::required(const TypeDescriptor& type) {
    for (const auto& [known, mask] : m_required) {
        if (known == &type) {
            return mask;
        }
    }
    // What the tree path asks for whether it is there or not: the attributes and the single
    // structures that have no presence flag. Lists are read only when present.
    std::uint64_t mask = 0;
    for (std::size_t i = 0; i < type.fieldCount; ++i) {
        const FieldDescriptor& field = type.fields[i];
        const bool asked = field.kind != FieldKind::StructureList &&
                           field.kind != FieldKind::TextList && field.flag == nullptr;
        if (asked) {
            mask |= std::uint64_t{1} << i;
        }
    }
    m_required.emplace_back(&type, mask);
    return mask;
}

void JsonBinder::pushObject(BaseObject& object, const TypeDescriptor& type) {
    if (type.fieldCount > 64) {
        giveUp();
        return;
    }
    m_levels.push_back(Level{Frame::Object, &object, &type, nullptr, nullptr, 0});
}

JsonBinder::Object JsonBinder::beginObject() {
    if (m_treeDepth != 0) {
        ++m_treeDepth;
        return Object{m_tree.beginObject(), true};
    }
    if (m_gaveUp) {
        return Object{{}, false};
    }
    if (m_levels.empty()) {
        pushObject(m_root, m_rootType);
        return Object{{}, false};
    }
    Level& top = m_levels.back();
    switch (top.frame) {
        case Frame::Object: {
            const FieldDescriptor* field = top.field;
            if (field == nullptr) {
                break;
            }
            if (field->kind == FieldKind::Structure || field->kind == FieldKind::Reference ||
                field->kind == FieldKind::ServiceData) {
                BaseObject& member = held(*field, *top.object);
                markSet(*field, *top.object);
                if (!m_generated.isGenerated(member, field->type())) {
                    // A type that reads itself gets its subtree as a tree.
                    m_treeDepth = 1;
                    m_treeTarget = &member;
                    return Object{m_tree.beginObject(), true};
                }
                pushObject(member, field->type());
                return Object{{}, false};
            }
            if (field->kind == FieldKind::StructureList && field->type().mapEntry) {
                m_levels.push_back(Level{Frame::Map, nullptr, &field->type(), field,
                                         field->member(*top.object, true), m_mapKeys.size()});
                return Object{{}, false};
            }
            giveUp();
            return Object{{}, false};
        }
        case Frame::List: {
            BaseObject* element = top.field->list->append(top.list);
            pushObject(*element, *top.type);
            return Object{{}, false};
        }
        case Frame::TextList:
            giveUp();
            return Object{{}, false};
        default:
            break;
    }
    m_levels.push_back(Level{Frame::Skip, nullptr, nullptr, nullptr, nullptr, 0});
    return Object{{}, false};
}

void JsonBinder::key(Object& object, const char* text, std::size_t length) {
    if (object.forwarded) {
        m_tree.key(object.tree, text, length);
        return;
    }
    if (m_gaveUp) {
        return;
    }
    Level& top = m_levels.back();
    if (top.frame == Frame::Map) {
        std::uint64_t head = 0;
        for (std::size_t i = 0; i < 8; ++i) {
            head = (head << 8U) | (i < length ? static_cast<unsigned char>(text[i]) : 0U);
        }
        m_mapKeys.push_back(MapKey{head, std::string_view(text, length)});
        return;
    }
    if (top.frame != Frame::Object) {
        return;
    }
    // The root's type was taken from its first ".QName"; the tree keeps the last one.
    if (m_named && m_levels.size() == 1 && std::string_view(text, length) == ".QName" &&
        ++m_names > 1) {
        giveUp();
        return;
    }
    const TypeDescriptor& type = *top.type;
    const FieldDescriptor* field = fieldNamed(type, std::string_view(text, length));
    top.field = field;
    if (field == nullptr) {
        return;
    }
    const std::uint64_t bit = std::uint64_t{1} << static_cast<std::size_t>(field - type.fields);
    // A repeated member counts by its last value only: a scalar is simply set again, but a
    // structure or a list would keep what the earlier one put in.
    if ((top.seen & bit) != 0 && holdsStructure(field->kind)) {
        giveUp();
        return;
    }
    top.seen |= bit;
}

void JsonBinder::member(Object& object, Result&& value) {
    if (object.forwarded) {
        m_tree.member(object.tree, std::move(value));
    }
}

void JsonBinder::finishObject(const Level& level) {
    const std::uint64_t missing = required(*level.type) & ~level.seen;
    if (missing != 0) {
        giveUp();
    }
}

void JsonBinder::finishMap(const Level& level) {
    // As the tree keeps them: sorted byte-wise, each key once. An entry reads its key only.
    const auto first = m_mapKeys.begin() + static_cast<std::ptrdiff_t>(level.seen);
    std::sort(first, m_mapKeys.end(), [](const MapKey& a, const MapKey& b) {
        return a.head != b.head ? a.head < b.head : a.text < b.text;
    });
    const auto last = std::unique(first, m_mapKeys.end(), [](const MapKey& a, const MapKey& b) {
        return a.head == b.head && a.text == b.text;
    });
    const ListAccess& list = *level.field->list;
    list.reserve(level.list, list.size(level.list) + static_cast<std::size_t>(last - first));
    const FieldDescriptor* key = fieldNamed(*level.type, "key");
    const FieldDescriptor* uid = nullptr;
    if (key != nullptr && key->kind == FieldKind::Reference) {
        uid = fieldNamed(key->type(), "uid");
    }
    for (auto it = first; it != last; ++it) {
        BaseObject* entry = list.append(level.list);
        if (key == nullptr) {
            continue;
        }
        if (key->kind == FieldKind::Reference) {
            if (uid != nullptr) {
                assignText(store<std::string>(*uid, held(*key, *entry)), it->text);
            }
        } else if (key->kind == FieldKind::Text) {
            assignText(store<std::string>(*key, *entry), it->text);
        }
    }
    m_mapKeys.erase(first, m_mapKeys.end());
}

JsonBinder::Result JsonBinder::endObject(Object& object) {
    if (object.forwarded) {
        Result tree = m_tree.endObject(object.tree);
        if (--m_treeDepth == 0 && !m_gaveUp) {
            try {
                m_treeTarget->parseJSON(AutoPtr<JSONObject>(static_cast<JSONObject*>(tree.get())));
            } catch (...) {
                // The tree path reports it, in its own order among the other faults.
                giveUp();
            }
        }
        return tree;
    }
    if (m_gaveUp) {
        return Result();
    }
    const Level level = m_levels.back();
    m_levels.pop_back();
    if (level.frame == Frame::Object) {
        finishObject(level);
    } else if (level.frame == Frame::Map) {
        finishMap(level);
    }
    return Result();
}

JsonBinder::Array JsonBinder::beginArray() {
    if (m_treeDepth != 0) {
        ++m_treeDepth;
        return Array{m_tree.beginArray(), true};
    }
    if (m_gaveUp) {
        return Array{{}, false};
    }
    if (m_levels.empty()) {
        giveUp();
        return Array{{}, false};
    }
    Level& top = m_levels.back();
    if (top.frame == Frame::Object && top.field != nullptr) {
        const FieldDescriptor& field = *top.field;
        if (field.kind == FieldKind::StructureList && !field.type().mapEntry) {
            m_levels.push_back(Level{Frame::List, nullptr, &field.type(), &field,
                                     field.member(*top.object, true), 0});
        } else if (field.kind == FieldKind::TextList) {
            m_levels.push_back(Level{Frame::TextList, nullptr, nullptr, &field,
                                     field.member(*top.object, true), 0});
        } else {
            giveUp();
        }
        return Array{{}, false};
    }
    if (top.frame == Frame::List || top.frame == Frame::TextList) {
        giveUp();
        return Array{{}, false};
    }
    m_levels.push_back(Level{Frame::Skip, nullptr, nullptr, nullptr, nullptr, 0});
    return Array{{}, false};
}

void JsonBinder::element(Array& array, Value::ValueType kind, Result&& value) {
    if (array.forwarded) {
        m_tree.element(array.tree, kind, std::move(value));
    }
}

JsonBinder::Result JsonBinder::endArray(Array& array) {
    if (array.forwarded) {
        --m_treeDepth;
        return m_tree.endArray(array.tree);
    }
    if (!m_gaveUp) {
        m_levels.pop_back();
    }
    return Result();
}

// `bind(field, object)` stores the scalar into the member of the current member's field, or
// says that the field does not take it. A scalar in a list of structures is a fault; in a map
// or a skipped container it is nothing.
template <class Bind>
JsonBinder::Result JsonBinder::scalar(Bind&& bind) {
    if (m_gaveUp) {
        return Result();
    }
    Level& top = m_levels.back();
    if (top.frame == Frame::Object) {
        if (top.field != nullptr && !bind(*top.field, *top.object)) {
            giveUp();
        }
    } else if (top.frame == Frame::List) {
        giveUp();
    } else if (top.frame == Frame::TextList) {
        if (!bind(*top.field, *static_cast<std::vector<std::string>*>(top.list))) {
            giveUp();
        }
    }
    return Result();
}

JsonBinder::Result JsonBinder::string(const char* begin, const char* end, bool escaped) {
    if (m_treeDepth != 0) {
        return m_tree.string(begin, end, escaped);
    }
    struct Bind {
        const char* begin;
        const char* end;
        bool escaped;
        bool operator()(const FieldDescriptor& field, BaseObject& object) const {
            switch (field.kind) {
                case FieldKind::Text:
                case FieldKind::TextElement:
                    assignToken(store<std::string>(field, object), begin, end, escaped);
                    markSet(field, object);
                    return true;
                case FieldKind::Reference: {
                    // A reference given as its bare uid.
                    BaseObject& reference = held(field, object);
                    if (const FieldDescriptor* uid = fieldNamed(field.type(), "uid")) {
                        assignToken(store<std::string>(*uid, reference), begin, end, escaped);
                    }
                    markSet(field, object);
                    return true;
                }
                case FieldKind::DateTime:
                    // A date in another shape, read by the date's own reader; one it refuses
                    // is the tree path's to report.
                    try {
                        store<DateTime>(field, object) =
                            lexical_cast<DateTime, std::string>(tokenText(begin, end, escaped));
                    } catch (...) {
                        return false;
                    }
                    markSet(field, object);
                    return true;
                default:
                    return false;
            }
        }
        bool operator()(const FieldDescriptor& /*field*/, std::vector<std::string>& texts) const {
            texts.push_back(tokenText(begin, end, escaped));
            return true;
        }
    };
    return scalar(Bind{begin, end, escaped});
}

JsonBinder::Result JsonBinder::date(const DateTime& value) {
    if (m_treeDepth != 0) {
        return m_tree.date(value);
    }
    struct Bind {
        const DateTime& value;
        bool operator()(const FieldDescriptor& field, BaseObject& object) const {
            switch (field.kind) {
                case FieldKind::Text:
                case FieldKind::TextElement:
                    // A date-shaped string is a date, and read as text it is the date's text.
                    assignText(store<std::string>(field, object),
                               lexical_cast<std::string, DateTime>(value));
                    markSet(field, object);
                    return true;
                case FieldKind::DateTime:
                    store<DateTime>(field, object) = value;
                    markSet(field, object);
                    return true;
                default:
                    return false;
            }
        }
        bool operator()(const FieldDescriptor& /*field*/, std::vector<std::string>& texts) const {
            texts.push_back(lexical_cast<std::string, DateTime>(value));
            return true;
        }
    };
    return scalar(Bind{value});
}

JsonBinder::Result JsonBinder::integer(int value) {
    if (m_treeDepth != 0) {
        return m_tree.integer(value);
    }
    struct Bind {
        int value;
        bool operator()(const FieldDescriptor& field, BaseObject& object) const {
            switch (field.kind) {
                case FieldKind::Integer:
                    store<int>(field, object) = value;
                    break;
                case FieldKind::Double:
                    store<double>(field, object) = value;
                    break;
                case FieldKind::Float:
                    store<float>(field, object) = static_cast<float>(static_cast<double>(value));
                    break;
                default:
                    return false;
            }
            markSet(field, object);
            return true;
        }
        bool operator()(const FieldDescriptor& /*field*/,
                        std::vector<std::string>& /*texts*/) const {
            return false;
        }
    };
    return scalar(Bind{value});
}

JsonBinder::Result JsonBinder::real(double value) {
    if (m_treeDepth != 0) {
        return m_tree.real(value);
    }
    struct Bind {
        double value;
        bool operator()(const FieldDescriptor& field, BaseObject& object) const {
            switch (field.kind) {
                case FieldKind::Double:
                    store<double>(field, object) = value;
                    break;
                case FieldKind::Float:
                    store<float>(field, object) = static_cast<float>(value);
                    break;
                default:
                    return false;
            }
            markSet(field, object);
            return true;
        }
        bool operator()(const FieldDescriptor& /*field*/,
                        std::vector<std::string>& /*texts*/) const {
            return false;
        }
    };
    return scalar(Bind{value});
}

JsonBinder::Result JsonBinder::boolean(bool value) {
    if (m_treeDepth != 0) {
        return m_tree.boolean(value);
    }
    struct Bind {
        bool value;
        bool operator()(const FieldDescriptor& field, BaseObject& object) const {
            if (field.kind != FieldKind::Boolean) {
                return false;
            }
            store<bool>(field, object) = value;
            markSet(field, object);
            return true;
        }
        bool operator()(const FieldDescriptor& /*field*/,
                        std::vector<std::string>& /*texts*/) const {
            return false;
        }
    };
    return scalar(Bind{value});
}

JsonBinder::Result JsonBinder::null() {
    if (m_treeDepth != 0) {
        return m_tree.null();
    }
    // Every getter refuses a null, an optional member's included.
    struct Bind {
        bool operator()(const FieldDescriptor& /*field*/, BaseObject& /*object*/) const {
            return false;
        }
        bool operator()(const FieldDescriptor& /*field*/,
                        std::vector<std::string>& /*texts*/) const {
            return false;
        }
    };
    return scalar(Bind{});
}

}  // namespace Corvane::Soa::Common::Xml
