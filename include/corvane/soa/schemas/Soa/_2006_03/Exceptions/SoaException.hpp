#ifndef CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_SOAEXCEPTION_HPP
#define CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_SOAEXCEPTION_HPP

#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/Error.hpp>

#include <exception>
#include <string>
#include <vector>

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {

/// Base of the service exceptions: one or more errors, kept in the order they were added.
/// `getMessage()`, `getCode()`, `getLevel()` and `what()` answer for the first error.
class CORVANE_SOA_API SoaException : public ::Corvane::Soa::Common::Xml::BaseObject,
                                     public std::exception {
public:
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

    void getNamespaces(std::set<std::string>& namespaces) const override;

protected:
    explicit SoaException(const char* typeName);
    SoaException(const char* typeName, const std::string& message, int code, int level);

    ::Corvane::Soa::Common::Xml::BaseObject* reallyClone() const override;

private:
    std::vector<::Corvane::Soa::Common::AutoPtr<Error>> m_errors;
};

}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions

#endif
