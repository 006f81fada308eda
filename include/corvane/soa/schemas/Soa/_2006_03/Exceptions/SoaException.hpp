#ifndef CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_SOAEXCEPTION_HPP
#define CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_SOAEXCEPTION_HPP

#include <corvane/soa/common/AccountedAllocation.hpp>
#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/Error.hpp>

#include <exception>
#include <set>
#include <string>
#include <vector>

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {

/// Base of the service exceptions: one or more errors, kept in the order they were added.
/// `getMessage()`, `getCode()`, `getLevel()` and `what()` answer for the first error.
class CORVANE_SOA_API SoaException : public ::Corvane::Soa::Common::Xml::BaseObject,
                                     public std::exception {
public:
    SoaException();
    SoaException(const SoaException& other);
    SoaException& operator=(const SoaException& other);
    ~SoaException() override;

    const std::vector<::Corvane::Soa::Common::AutoPtr<Error>>& getErrors() const noexcept {
        return m_errors;
    }
    /// Appends an error after those already carried.
    void addError(const std::string& message, int code, int level);

    std::string getMessage() const;
    int getCode() const;
    int getLevel() const;
    const char* what() const noexcept override;

    /// The fields, identity and factory of the type, made by cvsoa-gen from its schema.
    static const ::Corvane::Soa::Common::Xml::TypeDescriptor& typeDescriptor();

    void outputXML(::Corvane::Soa::Common::Xml::XmlStream& stream) const override;
    void outputXML(::Corvane::Soa::Common::Xml::XmlStream& stream,
                   const std::string& elementName) const override;
    void parse(const ::Corvane::Soa::Common::Xml::XMLNode& node) override;
    void getNamespaces(std::set<std::string>& namespaces) const override;
    void writeJSON(::Corvane::Soa::Common::Xml::JsonStream* stream) const override;
    using ::Corvane::Soa::Common::Xml::BaseObject::parseJSON;
    void parseJSON(
        ::Corvane::Soa::Common::AutoPtr<::Corvane::Soa::Internal::Json::JSONObject> json) override;

    CORVANE_SOA_ACCOUNTED_ALLOCATION("Corvane::Schemas::Soa::_2006_03::Exceptions::SoaException")

protected:
    /// The base part of a derived exception named `typeName`, with no error or with one.
    explicit SoaException(const char* typeName);
    SoaException(const char* typeName, const std::string& message, int code, int level);

    ::Corvane::Soa::Common::Xml::BaseObject* reallyClone() const override;

    std::vector<::Corvane::Soa::Common::AutoPtr<Error>> m_errors;
};

}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions

#endif
