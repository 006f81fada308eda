#ifndef CVSOA_BENCH_PLAINRESPONSE_HPP
#define CVSOA_BENCH_PLAINRESPONSE_HPP

// Plain structs equivalent to the generated types of a FileTicketsResponse, for the JSON peers
// that bind into structs of their own (nlohmann/json, Boost.JSON), and what they hold as a
// summary to check them by.

#include "BindingPeer.hpp"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cvsoa::bench::plain {

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

inline void addObject(const PlainObject& object, BindingSummary& summary) {
    ObjectDigest digest;
    DigestWriter writer(digest);
    PlainObject::members(writer, object);
    summary.addObject(digest);
}

// What a bound response holds.
inline BindingSummary summaryOf(const PlainResponse& response, bool withValues) {
    BindingSummary result;
    for (const PlainTicket& ticket : response.tickets) {
        result.add(ticket.uid, withValues ? &ticket.value : nullptr);
    }
    const PlainServiceData& data = response.serviceData;
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

}  // namespace cvsoa::bench::plain

#endif
