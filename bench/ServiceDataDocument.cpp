#include "ServiceDataDocument.hpp"

#include "SplitMix.hpp"

#include <array>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace cvsoa::bench {
namespace {

namespace Base = ::Corvane::Schemas::Soa::_2006_03::Base;
namespace Files = ::Corvane::Schemas::Core::_2006_03::Filemanagement;
using ::Corvane::Soa::Common::AutoPtr;

constexpr std::size_t kObjects = 9000;
constexpr std::size_t kTickets = 8;

// A date property value as the server writes them, in UTC. (The JSON reader takes a date-shaped
// string for a date and gives it back in local time, which the benchmark pins to UTC, so that the
// text reads back as written.)
std::string dateOf(SplitMix& random) {
    const std::size_t day = random.below(28) + 1;
    const std::size_t month = random.below(12) + 1;
    const std::size_t seconds = random.below(86400);
    char text[40];
    std::snprintf(text, sizeof text, "20%02zu-%02zu-%02zuT%02zu:%02zu:%02zu+00:00",
                  random.below(10) + 14, month, day, seconds / 3600, seconds / 60 % 60,
                  seconds % 60);
    return text;
}

// Names and descriptions as users type them: some need escaping in XML or JSON, some are not
// ASCII.
constexpr std::array<const char*, 10> kNames = {"Bracket, left",
                                                "Pump housing",
                                                "Shaft \xc3\x98"
                                                "12 \xc3\x97 40 mm",
                                                "Cover & seal kit",
                                                "Valve <DN 25>",
                                                "Geh\xc3\xa4use f\xc3\xbcr \xc3\x96lpumpe",
                                                "Motor \"M-400\"",
                                                "Spring 'soft' 2.5 N/mm",
                                                "Harness, rear (RH)",
                                                "Gasket set"};
constexpr std::array<const char*, 6> kDescriptions = {
    "Released for production after review R-17 & R-18",
    "Replaces the part of the 2019 line; see <ECN 4711>",
    "",
    "Customer asked for \"matte\" finish \xe2\x80\x94 check with supplier",
    "Do not use for new designs",
    "Weight: 1.2 kg; tolerance \xc2\xb1"
    "0.05"};
constexpr std::array<const char*, 5> kUsers = {"J. Smith (jsmith)", "M. M\xc3\xbcller (mmueller)",
                                               "A. Kowalski (akowalski)", "L. Chen (lchen)",
                                               "Administrator (admin)"};
constexpr std::array<const char*, 3> kGroups = {"Engineering", "Manufacturing", "dba"};
constexpr std::array<const char*, 4> kStatuses = {"Released", "Approved", "In Review", "Obsolete"};

struct ObjectClass {
    const char* className;
    const char* type;
};
constexpr std::array<ObjectClass, 5> kClasses = {{{"Part", "Part"},
                                                  {"PartVersion", "PartVersion"},
                                                  {"Document", "PDF"},
                                                  {"Folder", "Folder"},
                                                  {"Form", "PartVersion Sheet"}}};

AutoPtr<Base::Property> property(const std::string& name, const std::vector<std::string>& values) {
    AutoPtr<Base::Property> result(new Base::Property);
    result->setName(name);
    for (const std::string& text : values) {
        AutoPtr<Base::PropertyValue> value(new Base::PropertyValue);
        value->setValue(text);
        result->addValues(value);
    }
    return result;
}

// A property that the server returns as null: one empty value flagged so.
AutoPtr<Base::Property> nullProperty(const std::string& name) {
    AutoPtr<Base::Property> result = property(name, {""});
    result->getValues().front()->setIsNull(true);
    result->getValues().front()->setIsIsNullSet(true);
    return result;
}

AutoPtr<Base::ModelObject> modelObject(std::size_t index, SplitMix& random,
                                       const std::vector<std::string>& uids) {
    AutoPtr<Base::ModelObject> object(new Base::ModelObject);
    const ObjectClass& kind = kClasses[index % kClasses.size()];
    object->setUid(uids[index]);
    object->setClassName(kind.className);
    object->setIsClassNameSet(true);
    object->setType(kind.type);
    object->setIsTypeSet(true);
    if (index % 4 == 0) {
        object->setObjectID(std::to_string(100000 + index));
        object->setIsObjectIDSet(true);
    }
    if (index % 7 == 0) {
        object->setIsHistorical(index % 14 == 0);
        object->setIsIsHistoricalSet(true);
    }
    if (index % 11 == 0) {
        object->setIsObsolete(false);
        object->setIsIsObsoleteSet(true);
    }
    const std::string id = std::to_string(1000000 + index * 3);
    object->addProperties(property("name", {kNames[random.below(kNames.size())]}));
    object->addProperties(
        property("description", {kDescriptions[random.below(kDescriptions.size())]}));
    object->addProperties(property("part_number", {id}));
    object->addProperties(
        property("display_label", {id + " rev. A - " + kNames[index % kNames.size()]}));
    object->addProperties(property("owner", {kUsers[random.below(kUsers.size())]}));
    object->addProperties(property("owner_group", {kGroups[random.below(kGroups.size())]}));
    object->addProperties(property("created_at", {dateOf(random)}));
    object->addProperties(property("modified_at", {dateOf(random)}));
    std::vector<std::string> statuses;
    for (std::size_t n = random.below(3); n > 0; --n) {
        statuses.emplace_back(kStatuses[random.below(kStatuses.size())]);
    }
    object->addProperties(statuses.empty() ? nullProperty("status") : property("status", statuses));
    // References to other objects of the document, by uid.
    std::vector<std::string> related;
    for (std::size_t n = random.below(4); n > 0; --n) {
        related.push_back(uids[random.below(uids.size())]);
    }
    object->addProperties(property("related", related));
    object->addProperties(random.below(5) == 0 ? nullProperty("locked_by")
                                               : property("is_locked", {"N"}));
    return object;
}

void addObjectTo(const Base::ModelObject& object, BindingSummary& summary) {
    ObjectDigest digest;
    const auto text = [](bool set, const std::string& value) { return set ? &value : nullptr; };
    const auto flag = [](bool set, const bool& value) { return set ? &value : nullptr; };
    digest.text(object.getUid())
        .optional(text(object.getIsObjectIDSet(), object.getObjectID()))
        .optional(text(object.getIsClassUidSet(), object.getClassUid()))
        .optional(text(object.getIsCParamIDSet(), object.getCParamID()))
        .optional(text(object.getIsJbt_additionSet(), object.getJbt_addition()))
        .optional(text(object.getIsClassNameSet(), object.getClassName()))
        .optional(text(object.getIsTypeSet(), object.getType()))
        .flag(flag(object.getIsIsObsoleteSet(), object.getIsObsolete()))
        .flag(flag(object.getIsUpdateDescSet(), object.getUpdateDesc()))
        .flag(flag(object.getIsIsHistoricalSet(), object.getIsHistorical()));
    for (const auto* properties :
         {&object.getProperties(), &object.getUiproperties(), &object.getProps()}) {
        digest.list(properties->size());
        for (const AutoPtr<Base::Property>& property : *properties) {
            digest.text(property->getName()).list(property->getValues().size());
            for (const AutoPtr<Base::PropertyValue>& value : property->getValues()) {
                digest.text(value->getValue())
                    .flag(flag(value->getIsIsNullSet(), value->getIsNull()));
            }
        }
    }
    summary.addObject(digest);
}

}  // namespace

// Six bits a character, the 64 bits turning round, so that the first eleven hold them all.
std::string uidOf(std::uint64_t bits) {
    static const char alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
    std::string uid(14, 'A');
    for (char& c : uid) {
        c = alphabet[bits & 63U];
        bits = (bits >> 6U) | (bits << 58U);
    }
    return uid;
}

AutoPtr<Files::FileTicketsResponse> makeServiceDataResponse() {
    SplitMix random(0x5e7f1ce0da7aULL);
    std::vector<std::string> uids;
    uids.reserve(kObjects);
    for (std::size_t i = 0; i < kObjects; ++i) {
        uids.push_back(uidOf(random.next()));
    }
    AutoPtr<Files::FileTicketsResponse> response(new Files::FileTicketsResponse);
    for (std::size_t i = 0; i < kTickets; ++i) {
        AutoPtr<Files::TicketMap> entry(new Files::TicketMap);
        entry->getKey()->setUid(uids[i * 5 + 2]);
        entry->setValue("https://fms.example.com/ticket/" + uids[i * 5 + 2] +
                        "?e=1&v=" + std::to_string(i));
        response->addTickets(entry);
    }
    Base::ServiceData& data = *response->getServiceData();
    for (std::size_t i = 0; i < kObjects; ++i) {
        data.addPlainObjects(modelObject(i, random, uids));
        if (i % 8 == 3) {
            data.addUpdated(uids[i]);
        }
    }
    return response;
}

void addServiceData(const Base::ServiceData& data, BindingSummary& summary) {
    for (const AutoPtr<Base::ModelObject>& object : data.getPlainObjects()) {
        addObjectTo(*object, summary);
    }
    for (const auto& [name, uids] :
         {std::pair{"created", &data.getCreated()}, std::pair{"updated", &data.getUpdated()},
          std::pair{"deleted", &data.getDeleted()}}) {
        for (const std::string& uid : *uids) {
            summary.addListed(name, uid);
        }
    }
}

std::size_t elementCount(const Files::FileTicketsResponse& response) {
    const Base::ServiceData& data = *response.getServiceData();
    std::size_t count = 2 + 2 * response.getTickets().size() + data.getCreated().size() +
                        data.getUpdated().size() + data.getDeleted().size();
    for (const AutoPtr<Base::ModelObject>& object : data.getPlainObjects()) {
        ++count;
        for (const auto* properties :
             {&object->getProperties(), &object->getUiproperties(), &object->getProps()}) {
            for (const AutoPtr<Base::Property>& property : *properties) {
                count += 1 + property->getValues().size();
            }
        }
    }
    return count;
}

}  // namespace cvsoa::bench
