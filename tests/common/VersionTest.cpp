#include <corvane/soa/common/StringUtils.hpp>
#include <corvane/soa/common/Version.hpp>

#include <gtest/gtest.h>

using Corvane::Soa::Common::StringUtils;
using Corvane::Soa::Common::Version;

namespace {
std::string parts(const Version& v) {
    return std::to_string(v.getMajor()) + "." + std::to_string(v.getMinor()) + "." +
           std::to_string(v.getPatch());
}
}  // namespace

TEST(Version, ReadsNumbersLabelsAndTheServicePackDigit) {
    EXPECT_EQ(parts(Version("11000.2.0")), "11000.2.0");
    EXPECT_EQ(parts(Version("V11000.2.0.30_20161205.00")), "11000.2.3");
    EXPECT_EQ(parts(Version("10.1.5.41_x")), "10.1.4");
    EXPECT_EQ(parts(Version("10.1.5.4_x")), "10.1.5");  // the fourth part needs two digits
    EXPECT_EQ(parts(Version("10.1.5.41x")), "10.1.5");  // ... and then '_'
    EXPECT_EQ(parts(Version("P10..1.V5.")), "10.1.5");  // runs of separators
    EXPECT_EQ(parts(Version("")), "2005.1.0");
    EXPECT_EQ(parts(Version("11")), "11.1.0");
    EXPECT_EQ(parts(Version("a.b.c")), "0.0.0");
    EXPECT_EQ(parts(Version("99999999999.-3.+4")), "1215752191.-3.4");  // low 32 bits
}

TEST(Version, ComparesPartByPart) {
    const Version sp3("V11000.2.0.30_20161205.00");
    EXPECT_GT(sp3, Version(11000, 2, 0));
    EXPECT_LT(sp3, Version(11000, 3, 0));
    EXPECT_EQ(sp3, Version(11000, 2, 3));
    EXPECT_NE(sp3, Version(11000, 2, 4));
    EXPECT_LE(sp3, Version(11000, 2, 3));
    EXPECT_GE(Version(12, 0, 0), Version(11, 99, 99));
}

TEST(Version, ReportsTheLibrarysOwnVersion) {
    EXPECT_EQ(Version::getCorvaneVersion(), "11000.2.0");
    EXPECT_EQ(Version::getCorvaneVersionLabel(), "V11000.2.0.30_20161205.00");
    EXPECT_EQ(Version(Version::getCorvaneVersionLabel()), Version(11000, 2, 3));
}

TEST(StringUtils, SplitTrimReplace) {
    using Pieces = std::vector<std::string>;
    EXPECT_EQ(StringUtils::split("..a.b..c.", "."), (Pieces{"a", "b", "c"}));
    EXPECT_EQ(StringUtils::split("a,b;c", ",;"), (Pieces{"a", "b", "c"}));
    EXPECT_EQ(StringUtils::split("", "."), Pieces{});
    EXPECT_EQ(StringUtils::split("...", "."), Pieces{});
    EXPECT_EQ(StringUtils::split("abc", ""), Pieces{"abc"});
    EXPECT_EQ(StringUtils::trim(" \t a b \r\n"), "a b");
    EXPECT_EQ(StringUtils::trim(" \n "), "");
    EXPECT_EQ(StringUtils::replace("aaa", "a", "aa"), "aaaaaa");
    EXPECT_EQ(StringUtils::replace("a-b-c", "-", ""), "abc");
    EXPECT_EQ(StringUtils::replace("abc", "", "x"), "abc");
}
