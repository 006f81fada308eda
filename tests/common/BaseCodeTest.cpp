#include <corvane/soa/common/BaseCode.hpp>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using ::Corvane::Soa::Common::BaseCode;
using Texts = std::vector<std::string>;

TEST(BaseCode, SubstitutesNumberedPlaceholdersInOrder) {
    const struct {
        const char* text;
        Texts values;
        const char* expected;
    } cases[] = {
        {"", {"a"}, ""},
        {"x %1", {}, "x %1"},
        {"%1 and %2, %1", {"a", "b"}, "a and b, a"},
        {"%1 %2", {"", "b"}, "null b"},
        {"%10 %1", {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"}, "a0 a"},
        {"%1", {"%2", "b"}, "b"},
        {"100% %", {"x"}, "100% %"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(BaseCode::getTextWithSubstitutions(c.text, c.values), c.expected) << c.text;
    }
}

}  // namespace
