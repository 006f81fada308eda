#include <corvane/soa/internal/common/AuthUtils.hpp>

#include <gtest/gtest.h>

#include <string>

namespace {

using ::Corvane::Soa::Internal::Common::AuthUtils;

TEST(AuthUtils, KnowsTheLoginOperationsOfTheSessionServices) {
    const struct {
        const char* service;
        const char* operation;
        bool login;
    } cases[] = {
        {"Core-2015-10-Session", "sponsoredLoginSSO", true},
        {"Core-2006-03-Session", "authenticate", true},
        {"Core-2008-06-Session", "loginWithLocale", true},
        {"Core-2011-06-Session", "authenticateWithLocale", true},
        {"CvLoginService", "login", true},
        {"CvLoginService", "loginSSO", true},
        {"Core-2006-03-Session", "sponsoredLogin", true},
        {"core-2015-10-session", "login", false},
        {"Core-2006-03-Session", "logout", false},
        {"Core-2006-03-Session", "Login", false},
        {"Core-2006-03-Session", "login ", false},
        {"Core-2007-01-Session", "login", false},
        {"", "", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(AuthUtils::isLoginOperation(c.service, c.operation), c.login)
            << c.service << " " << c.operation;
    }
    EXPECT_FALSE(AuthUtils::isLoginOperation(std::string("CvLoginService\0", 15), "login"));
}

}  // namespace
