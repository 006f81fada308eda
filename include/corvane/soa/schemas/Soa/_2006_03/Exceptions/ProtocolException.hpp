#ifndef CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_PROTOCOLEXCEPTION_HPP
#define CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_PROTOCOLEXCEPTION_HPP

#include <corvane/soa/common/AccountedAllocation.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {

/// The server's reply did not follow the protocol.
class CORVANE_SOA_API ProtocolException : public SoaException {
public:
    ProtocolException();
    ProtocolException(const std::string& message, int code, int level);
    ProtocolException(const ProtocolException& other);
    ProtocolException& operator=(const ProtocolException& other);
    ~ProtocolException() override;

    /// The fields, identity and factory of the type, made by cvsoa-gen from its schema.
    static const ::Corvane::Soa::Common::Xml::TypeDescriptor& typeDescriptor();

    CORVANE_SOA_ACCOUNTED_ALLOCATION(
        "Corvane::Schemas::Soa::_2006_03::Exceptions::ProtocolException")

protected:
    ::Corvane::Soa::Common::Xml::BaseObject* reallyClone() const override;
};

}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions

#endif
