#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/FieldDescriptor.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/ListAccess.hpp>
#include <corvane/soa/common/xml/ObjectRuntime.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>

#include "common/xml/MemberAccess.hpp"

#include <array>
#include <vector>

namespace Corvane::Soa::Common::Xml {

using Internal::Json::JSONArray;
using Internal::Json::JSONObject;
using Internal::Json::Value;

using MemberAccess::assignText;
using MemberAccess::at;
using MemberAccess::held;
using MemberAccess::isSet;
using MemberAccess::markSet;
using MemberAccess::store;

namespace {

const FieldDescriptor* find(const TypeDescriptor& type, const char* name) {
    for (const FieldDescriptor& field : type) {
        if (field.name == name) {
            return &field;
        }
    }
    return nullptr;
}

// The uid of a model object reference: its type's text field "uid".
const FieldDescriptor* uidField(const FieldDescriptor& reference) {
    return find(reference.type(), "uid");
}

std::string attributeText(const FieldDescriptor& field, const BaseObject& object,
                          Utf8String* transcoder) {
    switch (field.kind) {
        case FieldKind::Text:
            return toXmlString(at<std::string>(field, object), transcoder);
        case FieldKind::Boolean:
            return lexical_cast<std::string, bool>(at<bool>(field, object));
        case FieldKind::Integer:
            return lexical_cast<std::string, int>(at<int>(field, object));
        case FieldKind::Float:
            return lexical_cast<std::string, float>(at<float>(field, object));
        case FieldKind::Double:
            return lexical_cast<std::string, double>(at<double>(field, object));
        default:
            return lexical_cast<std::string, DateTime>(at<DateTime>(field, object));
    }
}

void readAttribute(const FieldDescriptor& field, BaseObject& object, const std::string& text) {
    switch (field.kind) {
        case FieldKind::Text:
            assignText(store<std::string>(field, object), text);
            break;
        case FieldKind::Boolean:
            store<bool>(field, object) = lexical_cast<bool, std::string>(text);
            break;
        case FieldKind::Integer:
            store<int>(field, object) = lexical_cast<int, std::string>(text);
            break;
        case FieldKind::Float:
            store<float>(field, object) = lexical_cast<float, std::string>(text);
            break;
        case FieldKind::Double:
            store<double>(field, object) = lexical_cast<double, std::string>(text);
            break;
        default:
            store<DateTime>(field, object) = lexical_cast<DateTime, std::string>(text);
            break;
    }
}

void writeJSONAttribute(const FieldDescriptor& field, const BaseObject& object,
                        JsonStream* stream) {
    const bool present = isSet(field, object);
    switch (field.kind) {
        case FieldKind::Text:
            stream->writeAttribute(field.name, at<std::string>(field, object), present);
            break;
        case FieldKind::Boolean:
            stream->writeAttribute(field.name, at<bool>(field, object), present);
            break;
        case FieldKind::Integer:
            stream->writeAttribute(field.name, at<int>(field, object), present);
            break;
        case FieldKind::Float:
            stream->writeAttribute(field.name, at<float>(field, object), present);
            break;
        case FieldKind::Double:
            stream->writeAttribute(field.name, at<double>(field, object), present);
            break;
        default:
            stream->writeAttribute(field.name, at<DateTime>(field, object), present);
            break;
    }
}

// The members of a JSON object that a type's fields name. The members are sorted by key, and
// the descriptor lists its fields in the same order, so one merge of the two finds them all
// rather than a search per field. A type without that order, or with more fields than fit here,
// searches per field.
class FieldMembers {
public:
    FieldMembers(const TypeDescriptor& type, const JSONObject& json) : m_type(type), m_json(json) {
        m_merged = type.byName != nullptr && type.fieldCount <= m_found.size();
        if (!m_merged) {
            return;
        }
        const JSONObject::Members& members = json.getMembers();
        const auto* member = members.begin();
        for (std::size_t k = 0; k < type.fieldCount; ++k) {
            const std::size_t index = type.byName[k];
            const std::string& name = type.fields[index].name;
            while (member != members.end() && member->key() < name) {
                ++member;
            }
            m_found[index] = member != members.end() && member->key() == name ? member : nullptr;
        }
    }

    // Whether the object has the member of field `index`.
    bool contains(std::size_t index) const {
        return m_merged ? m_found[index] != nullptr : m_json.containsKey(m_type.fields[index].name);
    }

    // The value of that member; null when there is none, or when it holds no value.
    Value* value(std::size_t index) const {
        if (m_merged) {
            return m_found[index] != nullptr ? m_found[index]->value().get() : nullptr;
        }
        const std::string& name = m_type.fields[index].name;
        return m_json.containsKey(name) ? m_json.getValue(name).get() : nullptr;
    }

private:
    const TypeDescriptor& m_type;
    const JSONObject& m_json;
    bool m_merged;
    std::array<const JSONObject::Member*, 48> m_found{};
};

// Copies a text member. A string of a parsed tree is taken from the tree's bytes: asking the
// tree for a std::string would make one first, only to be copied. `found` is the member's
// value when at hand.
void readText(std::string& to, const Value* found, const JSONObject& json, const std::string& key) {
    if (found != nullptr && found->getType() == Value::STRING) {
        assignText(to, static_cast<const Internal::Json::StringValue&>(*found).view());
    } else {
        assignText(to, json.getString(key));  // dates, and the failures in their own words
    }
}

// The member object or array of a field: taken from the member at hand when it is one, else
// asked for by name, which fails in the tree's own words.
AutoPtr<JSONObject> objectOf(Value* found, const JSONObject& json, const std::string& key) {
    if (found != nullptr && found->getType() == Value::OBJECT) {
        return AutoPtr<JSONObject>(static_cast<JSONObject*>(found));
    }
    return json.getJSONObject(key);
}

AutoPtr<JSONArray> arrayOf(Value* found, const JSONObject& json, const std::string& key) {
    if (found != nullptr && found->getType() == Value::ARRAY) {
        return AutoPtr<JSONArray>(static_cast<JSONArray*>(found));
    }
    return json.getJSONArray(key);
}

void readJSONAttribute(const FieldDescriptor& field, BaseObject& object, const JSONObject& json,
                       const Value* found) {
    switch (field.kind) {
        case FieldKind::Text:
            readText(store<std::string>(field, object), found, json, field.name);
            break;
        case FieldKind::Boolean:
            store<bool>(field, object) = json.getBoolean(field.name);
            break;
        case FieldKind::Integer:
            store<int>(field, object) = json.getInteger(field.name);
            break;
        case FieldKind::Float:
            store<float>(field, object) = static_cast<float>(json.getDouble(field.name));
            break;
        case FieldKind::Double:
            store<double>(field, object) = json.getDouble(field.name);
            break;
        default:
            store<DateTime>(field, object) = json.getDate(field.name);
            break;
    }
}

// A list of structures whose elements are map entries is written and read as a JSON object.
bool isMap(const FieldDescriptor& field) {
    return field.kind == FieldKind::StructureList && field.type().mapEntry;
}

}  // namespace

void ObjectRuntime::outputXML(const BaseObject& object, const TypeDescriptor& type,
                              XmlStream& stream, const std::string& elementName) {
    const std::string& ns = *type.namespaceUri;
    if (stream.isRootElement()) {
        std::set<std::string> namespaces;
        object.getNamespaces(namespaces);
        stream.addNamespaces(namespaces);
    }
    stream.writeOpenElement(ns, elementName);
    bool hasElements = false;
    for (const FieldDescriptor& field : type) {
        if (!isAttributeKind(field.kind)) {
            hasElements = true;
        } else if (isSet(field, object)) {
            stream.writeAttribute(field.name,
                                  attributeText(field, object, stream.getUtf8Transcoder()));
        }
    }
    if (!hasElements) {
        stream.writeOpenElementClose(ns, true);
        return;
    }
    stream.writeOpenElementClose(ns, false);
    const std::string prefix = stream.getNamespacePrefix(ns) + ":";
    for (const FieldDescriptor& field : type) {
        switch (field.kind) {
            case FieldKind::Structure:
            case FieldKind::Reference:
                if (isSet(field, object)) {
                    held(field, object).outputXML(stream, prefix + field.name);
                }
                break;
            case FieldKind::ServiceData:
                held(field, object).outputXML(stream, "ServiceData");
                break;
            case FieldKind::StructureList: {
                const void* list = field.member(object, false);
                const std::size_t size = field.list->size(list);
                if (size != 0) {
                    const std::string name = prefix + field.name;
                    for (std::size_t i = 0; i < size; ++i) {
                        field.list->at(list, i)->outputXML(stream, name);
                    }
                }
                break;
            }
            case FieldKind::TextList: {
                const std::string tag = prefix + field.name + ">";
                for (const std::string& text : at<std::vector<std::string>>(field, object)) {
                    stream << "<" << tag << toXmlString(text, stream.getUtf8Transcoder()) << "</"
                           << tag;
                }
                break;
            }
            case FieldKind::TextElement:
                stream.writeOpenElement(ns, field.name);
                stream.writeOpenElementClose(ns, false);
                stream << "<![CDATA[" << at<std::string>(field, object) << "]]>";
                stream.writeCloseElement(ns, field.name);
                break;
            default:
                break;
        }
    }
    stream.writeCloseElement(ns, elementName);
}

void ObjectRuntime::parse(BaseObject& object, const TypeDescriptor& type, const XMLNode& node) {
    bool hasElements = false;
    for (const FieldDescriptor& field : type) {
        if (!isAttributeKind(field.kind)) {
            hasElements = true;
        } else if (field.flag == nullptr) {
            readAttribute(field, object, node.getAttr(field.name));
        } else if (node.existsAttr(field.name)) {
            readAttribute(field, object, node.getAttr(field.name));
            markSet(field, object);
        }
    }
    if (!hasElements) {
        return;
    }
    const std::vector<XMLNode*>& children = node.getChildren();
    for (const XMLNode* child : children) {
        const std::string& name = child->getName();
        for (const FieldDescriptor& field : type) {
            if (isAttributeKind(field.kind) || field.name != name) {
                continue;
            }
            switch (field.kind) {
                case FieldKind::StructureList: {
                    // Room for every child at the first one: one allocation for the whole run.
                    void* list = field.member(object, true);
                    if (field.list->size(list) == 0) {
                        field.list->reserve(list, children.size());
                    }
                    field.list->append(list)->parse(*child);
                    break;
                }
                case FieldKind::TextList:
                    store<std::vector<std::string>>(field, object).push_back(child->getText());
                    break;
                case FieldKind::TextElement:
                    assignText(store<std::string>(field, object), child->getText());
                    break;
                default:
                    held(field, object).parse(*child);
                    markSet(field, object);
                    break;
            }
            break;
        }
    }
}

void ObjectRuntime::getNamespaces(const BaseObject& object, const TypeDescriptor& type,
                                  std::set<std::string>& namespaces) {
    namespaces.insert(*type.namespaceUri);
    for (const FieldDescriptor& field : type) {
        switch (field.kind) {
            case FieldKind::Structure:
            case FieldKind::Reference:
            case FieldKind::ServiceData:
                held(field, object).getNamespaces(namespaces);
                break;
            case FieldKind::StructureList: {
                const void* list = field.member(object, false);
                const std::size_t size = field.list->size(list);
                for (std::size_t i = 0; i < size; ++i) {
                    field.list->at(list, i)->getNamespaces(namespaces);
                }
                break;
            }
            default:
                break;
        }
    }
}

void ObjectRuntime::writeJSON(const BaseObject& object, const TypeDescriptor& type,
                              JsonStream* stream) {
    stream->writeObjectOpen(type.qualifiedName);
    for (const FieldDescriptor& field : type) {
        if (isAttributeKind(field.kind)) {
            writeJSONAttribute(field, object, stream);
        }
    }
    for (const FieldDescriptor& field : type) {
        switch (field.kind) {
            case FieldKind::Structure:
            case FieldKind::Reference:
            case FieldKind::ServiceData:
                stream->writeKey(field.name);
                held(field, object).writeJSON(stream);
                break;
            case FieldKind::StructureList: {
                const void* list = field.member(object, false);
                const std::size_t size = field.list->size(list);
                std::vector<BaseObject*> items;
                items.reserve(size);
                for (std::size_t i = 0; i < size; ++i) {
                    items.push_back(field.list->at(list, i));
                }
                stream->writeVector(items, field.name);
                break;
            }
            case FieldKind::TextList:
                stream->writeVector(at<std::vector<std::string>>(field, object), field.name);
                break;
            case FieldKind::TextElement:
                stream->writeAttribute(field.name, at<std::string>(field, object), true);
                break;
            default:
                break;
        }
    }
    stream->writeObjectClose();
}

void ObjectRuntime::parseJSON(BaseObject& object, const TypeDescriptor& type,
                              AutoPtr<JSONObject>& json) {
    if (!json) {
        return;
    }
    const JSONObject& in = *json;
    const FieldMembers members(type, in);
    for (std::size_t index = 0; index < type.fieldCount; ++index) {
        const FieldDescriptor& field = type.fields[index];
        if (isAttributeKind(field.kind)) {
            if (field.flag == nullptr) {
                readJSONAttribute(field, object, in, members.value(index));
            } else if (members.contains(index)) {
                readJSONAttribute(field, object, in, members.value(index));
                markSet(field, object);
            }
            continue;
        }
        switch (field.kind) {
            case FieldKind::Reference: {
                if (field.flag != nullptr && !members.contains(index)) {
                    break;
                }
                Value* found = members.value(index);
                const Value::ValueType kind =
                    found != nullptr ? found->getType() : in.getValueType(field.name);
                if (kind == Value::STRING) {
                    if (const FieldDescriptor* uid = uidField(field)) {
                        readText(store<std::string>(*uid, held(field, object)), found, in,
                                 field.name);
                    }
                } else {
                    held(field, object).parseJSON(objectOf(found, in, field.name));
                }
                markSet(field, object);
                break;
            }
            case FieldKind::Structure:
            case FieldKind::ServiceData:
                if (field.flag != nullptr && !members.contains(index)) {
                    break;
                }
                held(field, object).parseJSON(objectOf(members.value(index), in, field.name));
                markSet(field, object);
                break;
            case FieldKind::StructureList: {
                if (!members.contains(index)) {
                    break;
                }
                void* list = field.member(object, true);
                if (isMap(field)) {
                    const AutoPtr<JSONObject> map = objectOf(members.value(index), in, field.name);
                    const std::vector<std::string> keys = map->getKeys();
                    field.list->reserve(list, field.list->size(list) + keys.size());
                    for (const std::string& key : keys) {
                        field.list->append(list)->parseSimpleJSONMapEntry(key, map);
                    }
                } else {
                    const AutoPtr<JSONArray> array = arrayOf(members.value(index), in, field.name);
                    const std::size_t size = array->size();
                    field.list->reserve(list, field.list->size(list) + size);
                    for (std::size_t i = 0; i < size; ++i) {
                        field.list->append(list)->parseJSON(array->getJSONObject(i));
                    }
                }
                break;
            }
            case FieldKind::TextList: {
                if (!members.contains(index)) {
                    break;
                }
                const AutoPtr<JSONArray> array = arrayOf(members.value(index), in, field.name);
                auto& texts = store<std::vector<std::string>>(field, object);
                texts.reserve(texts.size() + array->size());
                for (std::size_t i = 0; i < array->size(); ++i) {
                    texts.push_back(array->getString(i));
                }
                break;
            }
            case FieldKind::TextElement:
                readText(store<std::string>(field, object), members.value(index), in, field.name);
                break;
            default:
                break;
        }
    }
    json = nullptr;
}

bool ObjectRuntime::isJsonMapKeyReferenceType(const TypeDescriptor& type) {
    const FieldDescriptor* key = find(type, "key");
    return key != nullptr && key->kind == FieldKind::Reference;
}

void ObjectRuntime::writeJSONKey(const BaseObject& object, const TypeDescriptor& type,
                                 JsonStream* stream) {
    const FieldDescriptor* key = find(type, "key");
    if (key == nullptr) {
        return;
    }
    if (key->kind == FieldKind::Reference) {
        const FieldDescriptor* uid = uidField(*key);
        stream->writeValue(uid == nullptr ? std::string()
                                          : at<std::string>(*uid, held(*key, object)));
    } else if (key->kind == FieldKind::Text) {
        stream->writeValue(at<std::string>(*key, object));
    }
}

void ObjectRuntime::writeJSONValue(const BaseObject& object, const TypeDescriptor& type,
                                   JsonStream* stream) {
    const FieldDescriptor* value = find(type, "value");
    if (value == nullptr) {
        return;
    }
    switch (value->kind) {
        case FieldKind::Text:
            stream->writeValue(at<std::string>(*value, object));
            break;
        case FieldKind::Structure:
        case FieldKind::Reference:
            stream->writeValue(held(*value, object));
            break;
        case FieldKind::StructureList: {
            const void* list = value->member(object, false);
            stream->writeArrayOpen();
            for (std::size_t i = 0; i < value->list->size(list); ++i) {
                stream->writeValue(*value->list->at(list, i));
            }
            stream->writeArrayClose();
            break;
        }
        default:
            break;
    }
}

void ObjectRuntime::parseSimpleJSONMapEntry(BaseObject& object, const TypeDescriptor& type,
                                            const std::string& key) {
    const FieldDescriptor* field = find(type, "key");
    if (field == nullptr) {
        return;
    }
    if (field->kind == FieldKind::Reference) {
        if (const FieldDescriptor* uid = uidField(*field)) {
            assignText(store<std::string>(*uid, held(*field, object)), key);
        }
    } else if (field->kind == FieldKind::Text) {
        assignText(store<std::string>(*field, object), key);
    }
}

void ObjectRuntime::parseComplexJSONMapKey(BaseObject& object, const TypeDescriptor& type,
                                           const AutoPtr<Value>& key) {
    const FieldDescriptor* field = find(type, "key");
    if (field == nullptr || key.get() == nullptr) {
        return;
    }
    if (key->getType() == Value::STRING) {
        parseSimpleJSONMapEntry(object, type,
                                static_cast<const Internal::Json::StringValue&>(*key).getValue());
    } else if (key->getType() == Value::OBJECT && field->kind != FieldKind::Text) {
        held(*field, object).parseJSON(AutoPtr<JSONObject>(static_cast<JSONObject*>(key.get())));
    }
}

void ObjectRuntime::parseComplexJSONMapValue(BaseObject& object, const TypeDescriptor& type,
                                             const AutoPtr<Value>& value) {
    const FieldDescriptor* field = find(type, "value");
    if (field == nullptr || value.get() == nullptr) {
        return;
    }
    if (field->kind == FieldKind::Text && value->getType() == Value::STRING) {
        const std::string_view text =
            static_cast<const Internal::Json::StringValue&>(*value).view();
        assignText(store<std::string>(*field, object), text);
    } else if (field->kind == FieldKind::StructureList && value->getType() == Value::ARRAY) {
        const auto& array = static_cast<const JSONArray&>(*value);
        void* list = field->member(object, true);
        for (std::size_t i = 0; i < array.size(); ++i) {
            field->list->append(list)->parseJSON(array.getJSONObject(i));
        }
    } else if ((field->kind == FieldKind::Structure || field->kind == FieldKind::Reference) &&
               value->getType() == Value::OBJECT) {
        held(*field, object).parseJSON(AutoPtr<JSONObject>(static_cast<JSONObject*>(value.get())));
    }
}

}  // namespace Corvane::Soa::Common::Xml
