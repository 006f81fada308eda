// nlohmann/json's from_json and to_json on plain structs equivalent to the generated types.
#include "BindingPeer.hpp"

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cvsoa::bench {
namespace {

struct PlainTicket {
    std::string uid;
    std::string value;
};

struct PlainValue {
    std::string value;
    std::optional<bool> isNull;
};

struct PlainProperty {
    std::string name;
    std::vector<PlainValue> values;
};

// A model object: the uid and the optional attributes that the generated types write when set,
// and the three property lists.
struct PlainObject {
    std::string uid;
    std::optional<std::string> objectID;
    std::optional<std::string> classUid;
    std::optional<std::string> cParamID;
    std::optional<std::string> jbt_addition;
    std::optional<std::string> className;
    std::optional<std::string> type;
    std::optional<bool> isObsolete;
    std::optional<bool> updateDesc;
    std::optional<bool> isHistorical;
    std::vector<PlainProperty> properties;
    std::vector<PlainProperty> uiproperties;
    std::vector<PlainProperty> props;
};

struct PlainServiceData {
    std::vector<PlainObject> plainObjects;
    std::vector<std::string> created;
    std::vector<std::string> updated;
    std::vector<std::string> deleted;
};

struct PlainResponse {
    std::string qname;
    std::vector<PlainTicket> tickets;
    PlainServiceData serviceData;
};

void readTexts(const nlohmann::json& json, const char* name, std::vector<std::string>& texts) {
    const auto found = json.find(name);
    if (found != json.end()) {
        found->get_to(texts);
    }
}

template <class T>
void readOptional(const nlohmann::json& json, const char* name, std::optional<T>& value) {
    const auto found = json.find(name);
    if (found != json.end()) {
        value = found->get<T>();
    }
}

template <class T>
void writeOptional(nlohmann::json& json, const char* name, const std::optional<T>& value) {
    if (value) {
        json[name] = *value;
    }
}

// A list is written only when it has entries, and read only when its key is there.
template <class T>
void readList(const nlohmann::json& json, const char* name, std::vector<T>& list) {
    const auto found = json.find(name);
    if (found != json.end()) {
        found->get_to(list);
    }
}

template <class T>
void writeList(nlohmann::json& json, const char* name, const std::vector<T>& list) {
    if (!list.empty()) {
        json[name] = list;
    }
}

void from_json(const nlohmann::json& json, PlainValue& value) {
    json.at("value").get_to(value.value);
    readOptional(json, "isNull", value.isNull);
}

void to_json(nlohmann::json& json, const PlainValue& value) {
    json = nlohmann::json{{"value", value.value}};
    writeOptional(json, "isNull", value.isNull);
}

void from_json(const nlohmann::json& json, PlainProperty& property) {
    json.at("name").get_to(property.name);
    readList(json, "values", property.values);
}

void to_json(nlohmann::json& json, const PlainProperty& property) {
    json = nlohmann::json{{"name", property.name}};
    writeList(json, "values", property.values);
}

void from_json(const nlohmann::json& json, PlainObject& object) {
    json.at("uid").get_to(object.uid);
    readOptional(json, "objectID", object.objectID);
    readOptional(json, "classUid", object.classUid);
    readOptional(json, "cParamID", object.cParamID);
    readOptional(json, "jbt_addition", object.jbt_addition);
    readOptional(json, "className", object.className);
    readOptional(json, "type", object.type);
    readOptional(json, "isObsolete", object.isObsolete);
    readOptional(json, "updateDesc", object.updateDesc);
    readOptional(json, "isHistorical", object.isHistorical);
    readList(json, "properties", object.properties);
    readList(json, "uiproperties", object.uiproperties);
    readList(json, "props", object.props);
}

void to_json(nlohmann::json& json, const PlainObject& object) {
    json = nlohmann::json{{"uid", object.uid}};
    writeOptional(json, "objectID", object.objectID);
    writeOptional(json, "classUid", object.classUid);
    writeOptional(json, "cParamID", object.cParamID);
    writeOptional(json, "jbt_addition", object.jbt_addition);
    writeOptional(json, "className", object.className);
    writeOptional(json, "type", object.type);
    writeOptional(json, "isObsolete", object.isObsolete);
    writeOptional(json, "updateDesc", object.updateDesc);
    writeOptional(json, "isHistorical", object.isHistorical);
    writeList(json, "properties", object.properties);
    writeList(json, "uiproperties", object.uiproperties);
    writeList(json, "props", object.props);
}

template <class T>
const T* present(const std::optional<T>& value) {
    return value ? &*value : nullptr;
}

void addObject(const PlainObject& object, BindingSummary& summary) {
    ObjectDigest digest;
    digest.text(object.uid)
        .optional(present(object.objectID))
        .optional(present(object.classUid))
        .optional(present(object.cParamID))
        .optional(present(object.jbt_addition))
        .optional(present(object.className))
        .optional(present(object.type))
        .flag(present(object.isObsolete))
        .flag(present(object.updateDesc))
        .flag(present(object.isHistorical));
    for (const auto* properties : {&object.properties, &object.uiproperties, &object.props}) {
        digest.list(properties->size());
        for (const PlainProperty& property : *properties) {
            digest.text(property.name).list(property.values.size());
            for (const PlainValue& value : property.values) {
                digest.text(value.value).flag(present(value.isNull));
            }
        }
    }
    summary.addObject(digest);
}

void from_json(const nlohmann::json& json, PlainServiceData& data) {
    readList(json, "plainObjects", data.plainObjects);
    readTexts(json, "created", data.created);
    readTexts(json, "updated", data.updated);
    readTexts(json, "deleted", data.deleted);
}

void to_json(nlohmann::json& json, const PlainServiceData& data) {
    json = nlohmann::json::object();
    writeList(json, "plainObjects", data.plainObjects);
    for (const auto& [name, texts] :
         {std::pair{"created", &data.created}, std::pair{"updated", &data.updated},
          std::pair{"deleted", &data.deleted}}) {
        if (!texts->empty()) {
            json[name] = *texts;
        }
    }
}

// The tickets are a map from the key's uid to the ticket, as the generated types write them.
void from_json(const nlohmann::json& json, PlainResponse& response) {
    response.qname = json.value(".QName", std::string());
    const auto& tickets = json.at("tickets");
    response.tickets.reserve(tickets.size());
    for (const auto& [uid, value] : tickets.items()) {
        response.tickets.push_back(PlainTicket{uid, value.get<std::string>()});
    }
    json.at("ServiceData").get_to(response.serviceData);
}

void to_json(nlohmann::json& json, const PlainResponse& response) {
    nlohmann::json tickets = nlohmann::json::object();
    for (const PlainTicket& ticket : response.tickets) {
        tickets[ticket.uid] = ticket.value;
    }
    json = nlohmann::json{{".QName", response.qname},
                          {"tickets", std::move(tickets)},
                          {"ServiceData", response.serviceData}};
}

class NlohmannPeer : public BindingPeer {
public:
    void read(const std::string& text) override {
        m_response = nlohmann::json::parse(text).get<PlainResponse>();
    }

    std::string write() const override { return nlohmann::json(m_response).dump(); }

    BindingSummary summary(bool withValues) const override {
        BindingSummary result;
        for (const PlainTicket& ticket : m_response.tickets) {
            result.add(ticket.uid, withValues ? &ticket.value : nullptr);
        }
        const PlainServiceData& data = m_response.serviceData;
        for (const PlainObject& object : data.plainObjects) {
            addObject(object, result);
        }
        for (const auto& [name, uids] :
             {std::pair{"created", &data.created}, std::pair{"updated", &data.updated},
              std::pair{"deleted", &data.deleted}}) {
            for (const std::string& uid : *uids) {
                result.addListed(name, uid);
            }
        }
        return result;
    }

private:
    PlainResponse m_response;
};

}  // namespace

std::unique_ptr<BindingPeer> makeNlohmannPeer() { return std::make_unique<NlohmannPeer>(); }

}  // namespace cvsoa::bench
