// nlohmann/json's from_json and to_json on plain structs equivalent to the generated types.
#include "BindingPeer.hpp"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace cvsoa::bench {
namespace {

struct PlainTicket {
    std::string uid;
    std::string value;
};

struct PlainServiceData {
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

void from_json(const nlohmann::json& json, PlainServiceData& data) {
    readTexts(json, "created", data.created);
    readTexts(json, "updated", data.updated);
    readTexts(json, "deleted", data.deleted);
}

void to_json(nlohmann::json& json, const PlainServiceData& data) {
    json = nlohmann::json::object();
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
        return result;
    }

private:
    PlainResponse m_response;
};

}  // namespace

std::unique_ptr<BindingPeer> makeNlohmannPeer() { return std::make_unique<NlohmannPeer>(); }

}  // namespace cvsoa::bench
