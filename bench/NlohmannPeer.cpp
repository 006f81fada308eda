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

// The members of each plain struct are listed once, in its static `members(visit, self)`, and
// walked by a visitor that reads them from JSON, writes them to JSON, or mixes them into a digest.
// A visitor takes three kinds of member: required (always written, must be there when read),
// optional (written when set, read when its key is there), and list (written when it has entries,
// read when its key is there).

struct PlainTicket {
    std::string uid;
    std::string value;
};

struct PlainValue {
    std::string value;
    std::optional<bool> isNull;

    template <class Visit, class Self>
    static void members(Visit& visit, Self& self) {
        visit.required("value", self.value);
        visit.optional("isNull", self.isNull);
    }
};

struct PlainProperty {
    std::string name;
    std::vector<PlainValue> values;

    template <class Visit, class Self>
    static void members(Visit& visit, Self& self) {
        visit.required("name", self.name);
        visit.list("values", self.values);
    }
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

    template <class Visit, class Self>
    static void members(Visit& visit, Self& self) {
        visit.required("uid", self.uid);
        visit.optional("objectID", self.objectID);
        visit.optional("classUid", self.classUid);
        visit.optional("cParamID", self.cParamID);
        visit.optional("jbt_addition", self.jbt_addition);
        visit.optional("className", self.className);
        visit.optional("type", self.type);
        visit.optional("isObsolete", self.isObsolete);
        visit.optional("updateDesc", self.updateDesc);
        visit.optional("isHistorical", self.isHistorical);
        visit.list("properties", self.properties);
        visit.list("uiproperties", self.uiproperties);
        visit.list("props", self.props);
    }
};

struct PlainServiceData {
    std::vector<PlainObject> plainObjects;
    std::vector<std::string> created;
    std::vector<std::string> updated;
    std::vector<std::string> deleted;

    template <class Visit, class Self>
    static void members(Visit& visit, Self& self) {
        visit.list("plainObjects", self.plainObjects);
        visit.list("created", self.created);
        visit.list("updated", self.updated);
        visit.list("deleted", self.deleted);
    }
};

struct PlainResponse {
    std::string qname;
    std::vector<PlainTicket> tickets;
    PlainServiceData serviceData;
};

class JsonReader {
public:
    explicit JsonReader(const nlohmann::json& json) : m_json(json) {}

    template <class T>
    void required(const char* name, T& value) const {
        m_json.at(name).get_to(value);
    }
    template <class T>
    void optional(const char* name, std::optional<T>& value) const {
        const auto found = m_json.find(name);
        if (found != m_json.end()) {
            value = found->template get<T>();
        }
    }
    template <class T>
    void list(const char* name, std::vector<T>& list) const {
        const auto found = m_json.find(name);
        if (found != m_json.end()) {
            found->get_to(list);
        }
    }

private:
    const nlohmann::json& m_json;
};

class JsonWriter {
public:
    explicit JsonWriter(nlohmann::json& json) : m_json(json) {}

    template <class T>
    void required(const char* name, const T& value) {
        m_json[name] = value;
    }
    template <class T>
    void optional(const char* name, const std::optional<T>& value) {
        if (value) {
            m_json[name] = *value;
        }
    }
    template <class T>
    void list(const char* name, const std::vector<T>& list) {
        if (!list.empty()) {
            m_json[name] = list;
        }
    }

private:
    nlohmann::json& m_json;
};

// Mixes the members into the digest in their listed order: texts, optional texts and flags, and
// each list as its size followed by its entries' members.
class DigestWriter {
public:
    explicit DigestWriter(ObjectDigest& digest) : m_digest(digest) {}

    void required(const char* /*name*/, const std::string& value) { m_digest.text(value); }
    void optional(const char* /*name*/, const std::optional<std::string>& value) {
        m_digest.optional(value ? &*value : nullptr);
    }
    void optional(const char* /*name*/, const std::optional<bool>& value) {
        m_digest.flag(value ? &*value : nullptr);
    }
    template <class T>
    void list(const char* /*name*/, const std::vector<T>& list) {
        m_digest.list(list.size());
        for (const T& entry : list) {
            T::members(*this, entry);
        }
    }

private:
    ObjectDigest& m_digest;
};

// nlohmann's conversions of every struct that lists its members.
template <class T, class = decltype(&T::template members<JsonReader, T>)>
void from_json(const nlohmann::json& json, T& value) {
    JsonReader reader(json);
    T::members(reader, value);
}

template <class T, class = decltype(&T::template members<JsonWriter, const T>)>
void to_json(nlohmann::json& json, const T& value) {
    json = nlohmann::json::object();
    JsonWriter writer(json);
    T::members(writer, value);
}

void addObject(const PlainObject& object, BindingSummary& summary) {
    ObjectDigest digest;
    DigestWriter writer(digest);
    PlainObject::members(writer, object);
    summary.addObject(digest);
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
