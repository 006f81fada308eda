#ifndef CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_ERROR_HPP
#define CORVANE_SOA_SCHEMAS_SOA_2006_03_EXCEPTIONS_ERROR_HPP

#include <corvane/soa/common/AccountedAllocation.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>

#include <set>
#include <string>

namespace Corvane::Schemas::Soa::_2006_03::Exceptions {

/// Namespace URI of the exception types.
inline constexpr const char* kNamespaceUri = "http://corvane.com/Schemas/Soa/2006-03/Exceptions";

/// One error reported by the server: a message with an integer code and an integer level.
class CORVANE_SOA_API Error : public ::Corvane::Soa::Common::Xml::BaseObject {
public:
    Error();
    Error(std::string message, int code, int level);
    Error(const Error& other);
    Error& operator=(const Error& other);
    ~Error() override;

    const std::string& getMessage() const noexcept { return m_message; }
    int getCode() const noexcept { return m_code; }
    int getLevel() const noexcept { return m_level; }
    void setMessage(const std::string& message) { m_message = message; }
    void setCode(int code) noexcept { m_code = code; }
    void setLevel(int level) noexcept { m_level = level; }

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

    CORVANE_SOA_ACCOUNTED_ALLOCATION("Corvane::Schemas::Soa::_2006_03::Exceptions::Error")

protected:
    ::Corvane::Soa::Common::Xml::BaseObject* reallyClone() const override;

private:
    std::string m_message;
    int m_code = 0;
    int m_level = 0;
};

}  // namespace Corvane::Schemas::Soa::_2006_03::Exceptions

#endif
