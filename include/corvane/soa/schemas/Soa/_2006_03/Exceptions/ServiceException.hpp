#ifndef CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_SERVICEEXCEPTION_HPP
#define CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_SERVICEEXCEPTION_HPP

#include <corvane/soa/common/AccountedAllocation.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {

/// A service operation failed: a list of errors (added with `addError`), the uid of the
/// failing object and the client id of the request.
class CORVANE_SOA_API ServiceException : public SoaException {
public:
    ServiceException();
    ServiceException(const ServiceException& other);
    ServiceException& operator=(const ServiceException& other);
    ~ServiceException() override;

    const std::string& getUid() const noexcept { return m_uid; }
    void setUid(const std::string& uid) { m_uid = uid; }
    const std::string& getClientId() const noexcept { return m_clientId; }
    void setClientId(const std::string& clientId) { m_clientId = clientId; }

    /// The fields, identity and factory of the type, made by cvsoa-gen from its schema.
    static const ::Corvane::Soa::Common::Xml::TypeDescriptor& typeDescriptor();

    CORVANE_SOA_ACCOUNTED_ALLOCATION(
        "Corvane::Schemas::Soa::_2006_03::Exceptions::ServiceException")

protected:
    ::Corvane::Soa::Common::Xml::BaseObject* reallyClone() const override;

private:
    std::string m_uid;
    std::string m_clientId;
};

}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions

#endif
