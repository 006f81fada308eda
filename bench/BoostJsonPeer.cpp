// Boost.JSON's parse and value_to, and value_from and serialize, on the plain structs that the
// nlohmann/json peer binds: the same work with another library's tree.
#include "BindingPeer.hpp"
#include "PlainResponse.hpp"

#include <boost/json.hpp>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cvsoa::bench {
namespace plain {

class BoostReader {
public:
    explicit BoostReader(const boost::json::object& json) : m_json(json) {}

    template <class T>
    void required(const char* name, T& value) const {
        value = boost::json::value_to<T>(m_json.at(name));
    }
    template <class T>
    void optional(const char* name, std::optional<T>& value) const {
        if (const boost::json::value* found = m_json.if_contains(name)) {
            value = boost::json::value_to<T>(*found);
        }
    }
    template <class T>
    void list(const char* name, std::vector<T>& list) const {
        if (const boost::json::value* found = m_json.if_contains(name)) {
            list = boost::json::value_to<std::vector<T>>(*found);
        }
    }

private:
    const boost::json::object& m_json;
};

class BoostWriter {
public:
    explicit BoostWriter(boost::json::object& json) : m_json(json) {}

    template <class T>
    void required(const char* name, const T& value) {
        m_json[name] = boost::json::value_from(value);
    }
    template <class T>
    void optional(const char* name, const std::optional<T>& value) {
        if (value) {
            m_json[name] = boost::json::value_from(*value);
        }
    }
    template <class T>
    void list(const char* name, const std::vector<T>& list) {
        if (!list.empty()) {
            m_json[name] = boost::json::value_from(list);
        }
    }

private:
    boost::json::object& m_json;
};

// Boost.JSON's conversions of every struct that lists its members.
template <class T, class = decltype(&T::template members<BoostReader, T>)>
T tag_invoke(boost::json::value_to_tag<T> /*tag*/, const boost::json::value& json) {
    T value;
    BoostReader reader(json.as_object());
    T::members(reader, value);
    return value;
}

template <class T, class = decltype(&T::template members<BoostWriter, const T>)>
void tag_invoke(boost::json::value_from_tag /*tag*/, boost::json::value& json, const T& value) {
    BoostWriter writer(json.emplace_object());
    T::members(writer, value);
}

}  // namespace plain

namespace {

using plain::PlainResponse;
using plain::PlainServiceData;
using plain::PlainTicket;

// The tickets are a map from the key's uid to the ticket, as the generated types write them.
PlainResponse responseOf(const boost::json::value& root) {
    const boost::json::object& json = root.as_object();
    PlainResponse response;
    if (const boost::json::value* name = json.if_contains(".QName")) {
        response.qname = std::string(name->as_string());
    }
    const boost::json::object& tickets = json.at("tickets").as_object();
    response.tickets.reserve(tickets.size());
    for (const auto& [uid, value] : tickets) {
        response.tickets.push_back(PlainTicket{std::string(uid), std::string(value.as_string())});
    }
    response.serviceData = boost::json::value_to<PlainServiceData>(json.at("ServiceData"));
    return response;
}

class BoostJsonPeer : public BindingPeer {
public:
    void read(const std::string& text) override {
        m_response = responseOf(boost::json::parse(text));
    }

    std::string write() const override {
        boost::json::object json;
        json[".QName"] = m_response.qname;
        boost::json::object& tickets = json["tickets"].emplace_object();
        for (const PlainTicket& ticket : m_response.tickets) {
            tickets[ticket.uid] = ticket.value;
        }
        json["ServiceData"] = boost::json::value_from(m_response.serviceData);
        return boost::json::serialize(json);
    }

    BindingSummary summary(bool withValues) const override {
        return plain::summaryOf(m_response, withValues);
    }

private:
    PlainResponse m_response;
};

}  // namespace

std::unique_ptr<BindingPeer> makeBoostJsonPeer() { return std::make_unique<BoostJsonPeer>(); }

}  // namespace cvsoa::bench
