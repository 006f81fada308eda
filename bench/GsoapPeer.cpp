// gSOAP bound to FileManagement.xsd at build time (wsdl2h, soapcpp2), reading in strict mode.
#include "BindingPeer.hpp"

#include <soapH.h>

#include <fm.nsmap>
#include <initializer_list>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace cvsoa::bench {
namespace {

void addObject(const base__ModelObject& object, BindingSummary& summary) {
    ObjectDigest digest;
    digest.text(object.uid)
        .optional(object.objectID)
        .optional(object.classUid)
        .optional(object.cParamID)
        .optional(object.jbt_USCOREaddition)
        .optional(object.className)
        .optional(object.type)
        .flag(object.isObsolete)
        .flag(object.updateDesc)
        .flag(object.isHistorical);
    for (const auto* properties : {&object.properties, &object.uiproperties, &object.props}) {
        digest.list(properties->size());
        for (const base__Property* property : *properties) {
            digest.text(property->name).list(property->values.size());
            for (const base__PropertyValue* value : property->values) {
                digest.text(value->value).flag(value->isNull);
            }
        }
    }
    summary.addObject(digest);
}

// The rest of the document that gSOAP's receive callback hands out.
struct Pending {
    const char* data = nullptr;
    std::size_t left = 0;
};

std::size_t receive(struct soap* context, char* buffer, std::size_t length) {
    auto* pending = static_cast<Pending*>(context->user);
    const std::size_t n = length < pending->left ? length : pending->left;
    std::copy(pending->data, pending->data + n, buffer);
    pending->data += n;
    pending->left -= n;
    return n;
}

class GsoapPeer : public BindingPeer {
public:
    GsoapPeer() : m_context(soap_new1(SOAP_XML_STRICT | SOAP_C_UTFSTRING)) {
        m_context->frecv = receive;
        m_context->user = &m_pending;
    }
    ~GsoapPeer() override {
        soap_destroy(m_context);
        soap_end(m_context);
        soap_free(m_context);
    }
    GsoapPeer(const GsoapPeer&) = delete;
    GsoapPeer& operator=(const GsoapPeer&) = delete;

    void read(const std::string& text) override {
        soap_destroy(m_context);
        soap_end(m_context);
        m_pending = Pending{text.data(), text.size()};
        if (soap_read_fm__FileTicketsResponse(m_context, &m_response) != SOAP_OK) {
            std::ostringstream message;
            soap_stream_fault(m_context, message);
            throw std::runtime_error("gSOAP could not read the document: " + message.str());
        }
    }

    std::string write() const override {
        std::ostringstream out;
        m_context->os = &out;
        const int status = soap_write_fm__FileTicketsResponse(m_context, &m_response);
        m_context->os = nullptr;
        if (status != SOAP_OK) {
            throw std::runtime_error("gSOAP could not write the document");
        }
        return out.str();
    }

    BindingSummary summary(bool withValues) const override {
        BindingSummary result;
        for (const fm__TicketMap* ticket : m_response.tickets) {
            result.add(ticket->key != nullptr ? ticket->key->uid : std::string(),
                       withValues ? &ticket->value : nullptr);
        }
        if (const base__ServiceData* data = m_response.base__ServiceData_) {
            for (const base__ModelObject* object : data->plainObjects) {
                addObject(*object, result);
            }
            for (const auto& [name, uids] :
                 {std::pair{"created", &data->created}, std::pair{"updated", &data->updated},
                  std::pair{"deleted", &data->deleted}}) {
                for (const std::string& uid : *uids) {
                    result.addListed(name, uid);
                }
            }
        }
        return result;
    }

private:
    struct soap* m_context;
    Pending m_pending;
    fm__FileTicketsResponse m_response;
};

}  // namespace

std::unique_ptr<BindingPeer> makeGsoapPeer() { return std::make_unique<GsoapPeer>(); }

}  // namespace cvsoa::bench
