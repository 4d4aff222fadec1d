#include "vyglobal.h"

#include <gtest/gtest.h>

namespace {

template <typename T> struct Probe {
    void check(int i) { VY_ASSERT_AT(i >= 0, "./../include/pub/probe", 77); }
};

} // namespace

// The check must survive Release builds, which define NDEBUG.
TEST(VyGlobalDeathTest, AssertionNamesConditionSourceLineAndSignature)
{
    Probe<int> probe;
    probe.check(1);
    EXPECT_DEATH(probe.check(-1), "\\./\\.\\./include/pub/probe:77: void \\{anonymous\\}::Probe<T>::"
                                  "check\\(int\\) \\[with T = int\\]: Assertion `i >= 0' failed\\.");
}
