#ifndef CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_INVALIDUSEREXCEPTION_HPP
#define CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_INVALIDUSEREXCEPTION_HPP

#include <corvane/soa/common/AccountedAllocation.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {

/// The user is not known to the server; carries the server's response text beside the error.
class CORVANE_SOA_API InvalidUserException : public SoaException {
public:
    InvalidUserException();
    InvalidUserException(int code, int level, const std::string& message,
                         const std::string& response);
    InvalidUserException(const InvalidUserException& other);
    InvalidUserException& operator=(const InvalidUserException& other);
    ~InvalidUserException() override;

    const std::string& getCvResponse() const noexcept { return m_cvResponse; }

    /// The fields, identity and factory of the type, made by cvsoa-gen from its schema.
    static const ::Corvane::Soa::Common::Xml::TypeDescriptor& typeDescriptor();

    CORVANE_SOA_ACCOUNTED_ALLOCATION(
        "Corvane::Schemas::Soa::_2006_03::Exceptions::InvalidUserException")

protected:
    ::Corvane::Soa::Common::Xml::BaseObject* reallyClone() const override;

private:
    std::string m_cvResponse;
};

}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions

#endif
