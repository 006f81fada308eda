#ifndef CORVANE_SOA_INTERNAL_COMMON_AUTHUTILS_HPP
#define CORVANE_SOA_INTERNAL_COMMON_AUTHUTILS_HPP

#include <corvane/soa/Export.hpp>

#include <string>

namespace Corvane::Soa::Internal::Common {

/// Tells the operations that carry credentials (the logins and authentications of the session
/// services) from all others, so that callers can treat them apart.
class CORVANE_SOA_API AuthUtils {
public:
    AuthUtils() = delete;

    /// Whether `operation` is one of the seven login operation names and `service` one of the
    /// five session services ("Core-2006-03-Session", ..., "CvLoginService"). Both compare
    /// exactly, case included; any of the operations counts in any of the services.
    static bool isLoginOperation(const ::std::string& service, const ::std::string& operation);

private:
    static constexpr const char* SESSION_0603_SERVICE = "Core-2006-03-Session";
    static constexpr const char* SESSION_0806_SERVICE = "Core-2008-06-Session";
    static constexpr const char* SESSION_1106_SERVICE = "Core-2011-06-Session";
    static constexpr const char* SESSION_1510_SERVICE = "Core-2015-10-Session";
    static constexpr const char* CVSERVICE_LOGIN_SERVICE = "CvLoginService";
    static constexpr const char* LOGIN_METHOD_NAME = "login";
    static constexpr const char* LOGIN_LOCALE_METHOD_NAME = "loginWithLocale";
    static constexpr const char* SSOLOGIN_METHOD_NAME = "loginSSO";
    static constexpr const char* AUTHENTICATE_METHOD_NAME = "authenticate";
    static constexpr const char* AUTH_LOCALE_METHOD_NAME = "authenticateWithLocale";
    static constexpr const char* SPONSORED_LOGIN_METHOD_NAME = "sponsoredLogin";
    static constexpr const char* SPONSORED_SSOLOGIN_METHOD_NAME = "sponsoredLoginSSO";
};

}  // namespace Corvane::Soa::Internal::Common

#endif
