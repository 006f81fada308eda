// CodeSynthesis XSD (C++/Tree over Xerces-C) bound to FileManagement.xsd at build time.
#include "BindingPeer.hpp"

#include <FileManagement.hxx>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include <initializer_list>
#include <sstream>
#include <utility>

namespace cvsoa::bench {
namespace {

template <class Optional>
auto present(const Optional& value) -> decltype(&value.get()) {
    return value.present() ? &value.get() : nullptr;
}

void addObject(const ::peer_xsd::base::ModelObject& object, BindingSummary& summary) {
    ObjectDigest digest;
    digest.text(object.uid())
        .optional(present(object.objectID()))
        .optional(present(object.classUid()))
        .optional(present(object.cParamID()))
        .optional(present(object.jbt_addition()))
        .optional(present(object.className()))
        .optional(present(object.type()))
        .flag(present(object.isObsolete()))
        .flag(present(object.updateDesc()))
        .flag(present(object.isHistorical()));
    for (const auto* properties : {&object.properties(), &object.uiproperties(), &object.props()}) {
        digest.list(properties->size());
        for (const auto& property : *properties) {
            digest.text(property.name()).list(property.values().size());
            for (const auto& value : property.values()) {
                digest.text(value.value()).flag(present(value.isNull()));
            }
        }
    }
    summary.addObject(digest);
}

class XsdPeer : public BindingPeer {
public:
    XsdPeer() { ::xercesc::XMLPlatformUtils::Initialize(); }
    ~XsdPeer() override {
        m_response.reset();
        ::xercesc::XMLPlatformUtils::Terminate();
    }
    XsdPeer(const XsdPeer&) = delete;
    XsdPeer& operator=(const XsdPeer&) = delete;

    void read(const std::string& text) override {
        m_response.reset();
        ::xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()),
                                            text.size(), "document");
        m_response = ::peer_xsd::files::FileTicketsResponse_(
            source, ::xml_schema::flags::dont_validate | ::xml_schema::flags::dont_initialize);
    }

    std::string write() const override {
        ::xml_schema::namespace_infomap map;
        map["ns0"].name = "http://corvane.com/Schemas/Core/2006-03/FileManagement";
        map["ns1"].name = "http://corvane.com/Schemas/Soa/2006-03/Base";
        std::ostringstream out;
        ::peer_xsd::files::FileTicketsResponse_(
            out, *m_response, map, "UTF-8",
            ::xml_schema::flags::dont_initialize | ::xml_schema::flags::dont_pretty_print);
        return out.str();
    }

    BindingSummary summary(bool withValues) const override {
        BindingSummary result;
        for (const auto& ticket : m_response->tickets()) {
            result.add(ticket.key().uid(), withValues ? &ticket.value() : nullptr);
        }
        const auto& data = m_response->ServiceData();
        for (const auto& object : data.plainObjects()) {
            addObject(object, result);
        }
        for (const auto& [name, uids] :
             {std::pair{"created", &data.created()}, std::pair{"updated", &data.updated()},
              std::pair{"deleted", &data.deleted()}}) {
            for (const auto& uid : *uids) {
                result.addListed(name, uid);
            }
        }
        return result;
    }

private:
    std::unique_ptr<::peer_xsd::files::FileTicketsResponse> m_response;
};

}  // namespace

std::unique_ptr<BindingPeer> makeXsdPeer() { return std::make_unique<XsdPeer>(); }

}  // namespace cvsoa::bench
