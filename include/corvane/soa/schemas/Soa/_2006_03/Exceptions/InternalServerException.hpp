#ifndef CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_INTERNALSERVEREXCEPTION_HPP
#define CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_INTERNALSERVEREXCEPTION_HPP

#include <corvane/soa/common/AccountedAllocation.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {

/// A failure inside the server or the library: malformed dates, failed code-page conversions
/// and server faults.
class CORVANE_SOA_API InternalServerException : public SoaException {
public:
    InternalServerException();
    InternalServerException(const std::string& message, int code, int level);
    InternalServerException(const InternalServerException& other);
    InternalServerException& operator=(const InternalServerException& other);
    ~InternalServerException() override;

    /// Adds a further error after those already carried.
    void addMessage(const std::string& message, int code, int level) {
        addError(message, code, level);
    }

    /// The fields, identity and factory of the type, made by cvsoa-gen from its schema.
    static const ::Corvane::Soa::Common::Xml::TypeDescriptor& typeDescriptor();

    CORVANE_SOA_ACCOUNTED_ALLOCATION(
        "Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException")

protected:
    ::Corvane::Soa::Common::Xml::BaseObject* reallyClone() const override;
};

}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions

#endif
