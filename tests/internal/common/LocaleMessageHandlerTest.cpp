#include <corvane/soa/internal/common/LocaleMessageHandler.hpp>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using ::Corvane::Soa::Internal::Common::LocaleMessageHandler;
using Texts = std::vector<std::string>;

class Catalogue : public LocaleMessageHandler {
public:
    std::string getMessage(int code) override {
        return code == 1 ? "all null bell %1 %2" : std::string();
    }
    using LocaleMessageHandler::getMessage;
};

TEST(LocaleMessageHandler, SearchesTheTokensThatFollowThePercentSign) {
    const struct {
        int code;
        Texts parameters;
        const char* expected;
    } cases[] = {
        {1, {}, "all null bell %1 %2"},
        {1, {"x", "y", "z"}, "all null bell %1 %2"},  // empty tokens change nothing
        {1, {"1", "2", "3", "N"}, "all N bell %1 %2"},
        {1, {"1", "2", "3", "", "U", "LL"}, "aLL nU beLL %1 %2"},
        {1, {"1", "2", "3", "N", "U", "", "_", "8", "9"}, "anu__ N benu__ %1 %2"},
        {2, {"x"}, ""},
    };
    Catalogue catalogue;
    for (const auto& c : cases) {
        EXPECT_EQ(catalogue.getMessage(c.code, c.parameters), c.expected);
    }
    LocaleMessageHandler base;
    EXPECT_EQ(base.getMessage(1, {"x"}), "");
}

}  // namespace
