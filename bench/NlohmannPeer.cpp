// nlohmann/json's from_json and to_json on plain structs equivalent to the generated types.
#include "BindingPeer.hpp"
#include "PlainResponse.hpp"

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cvsoa::bench {
namespace plain {

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

}  // namespace plain

namespace {

using plain::PlainResponse;

class NlohmannPeer : public BindingPeer {
public:
    void read(const std::string& text) override {
        m_response = nlohmann::json::parse(text).get<PlainResponse>();
    }

    std::string write() const override { return nlohmann::json(m_response).dump(); }

    BindingSummary summary(bool withValues) const override {
        return plain::summaryOf(m_response, withValues);
    }

private:
    PlainResponse m_response;
};

}  // namespace

std::unique_ptr<BindingPeer> makeNlohmannPeer() { return std::make_unique<NlohmannPeer>(); }

}  // namespace cvsoa::bench
