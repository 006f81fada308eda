#include <corvane/soa/common/AutoPtr.hpp>

#include <gtest/gtest.h>

TEST(AutoPtr, Placeholder) { SUCCEED(); }
