#include <corvane/soa/internal/common/AuthUtils.hpp>

namespace Corvane::Soa::Internal::Common {

bool AuthUtils::isLoginOperation(const std::string& service, const std::string& operation) {
    if (service != SESSION_0603_SERVICE && service != SESSION_0806_SERVICE &&
        service != SESSION_1106_SERVICE && service != SESSION_1510_SERVICE &&
        service != CVSERVICE_LOGIN_SERVICE) {
        return false;
    }
    return operation == LOGIN_METHOD_NAME || operation == LOGIN_LOCALE_METHOD_NAME ||
           operation == SSOLOGIN_METHOD_NAME || operation == AUTHENTICATE_METHOD_NAME ||
           operation == AUTH_LOCALE_METHOD_NAME || operation == SPONSORED_LOGIN_METHOD_NAME ||
           operation == SPONSORED_SSOLOGIN_METHOD_NAME;
}

}  // namespace Corvane::Soa::Internal::Common
