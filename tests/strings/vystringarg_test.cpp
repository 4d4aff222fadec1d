// Place markers: arg's fill, width and `L` grouping, the missing-marker messages, and
// multiArg's binding of distinct markers. The marker rules (lowest number first, two digits at
// most, any script's digits, markers cut off at the end) are checked against a model by the arg
// fuzz target, whose seed inputs ctest replays.
#include "vylocale.h"
#include "vystring.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace
{

template <typename F> std::string stdoutOf(F f)
{
    testing::internal::CaptureStdout();
    f();
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

} // namespace

TEST(VyStringArg, FillWidthAndGrouping)
{
    EXPECT_EQ(U8(VyString("%1").arg(VyString("ab"), 4, '*')), "**ab");
    EXPECT_EQ(U8(VyString("%1").arg(VyString("ab"), -4, '*')), "ab**");
    EXPECT_EQ(U8(VyString("%1").arg('\xE9')), "\u00E9");
    EXPECT_EQ(U8(VyString("%L1 %1").arg(1234567)), "1,234,567 1234567");
    EXPECT_EQ(U8(VyString("%L1").arg(1234567.5, 0, 'f', 1)), "1,234,567.5");
    EXPECT_EQ(U8(VyString("%1").arg(-42, 5, 10, '0')), "-0042");
    EXPECT_EQ(U8(VyString("%1|%L1").arg(255u, 6, 16, '.')), "....ff|....ff");
    EXPECT_EQ(U8(VyString("%1").arg(2.5e-7, 0, 'E', 2)), "2.50E-07");
    const unsigned short saved = VyLocale::mNumberOptions;
    VyLocale::mNumberOptions = 1; // no grouping for `L` markers
    EXPECT_EQ(U8(VyString("%L1").arg(1234567)), "1234567");
    VyLocale::mNumberOptions = saved;
}

TEST(VyStringArg, MissingMarkerMessagesPerForm_Kept)
{
    const VyString t("no marker");
    VyString r;
    EXPECT_EQ(stdoutOf([&] { r = t.arg(VyString("x")); }), "VyString::arg: Argument missing.\n");
    EXPECT_EQ(r.d, t.d); // returned shared, unchanged
    EXPECT_EQ(stdoutOf([&] { t.arg('c'); }), "VyString::arg: Argument missing.\n");
    EXPECT_EQ(stdoutOf([&] { t.arg(1.5); }), "VyString::arg: Argument missing.\n");
    EXPECT_EQ(stdoutOf([&] { t.arg(7ULL); }), "VyString::arg: Argument missing.\n");
    EXPECT_EQ(stdoutOf([&] { t.arg(7LL); }), "VyString::arg: Argument missing\n");
    const VyString a("a");
    const VyString* args[] = {&a};
    EXPECT_EQ(stdoutOf([&] { t.multiArg(1, args); }), "VyString::arg: argument missing.\n");
}

TEST(VyStringArg, MultiArgBindsDistinctMarkersInOrder)
{
    const VyString a("A"), b("B"), c("C");
    const VyString* args[] = {&a, &b, &c};
    EXPECT_EQ(U8(VyString("%5 %2 %L5 %100 %1000 %").multiArg(2, args)), "B A B %100 %1000 %");
    EXPECT_EQ(U8(VyString("%\u0661 %1").multiArg(1, args)), "%\u0661 A"); // ASCII digits only
    std::string out = stdoutOf([&] { EXPECT_EQ(U8(VyString("%7-%7").multiArg(3, args)), "A-A"); });
    EXPECT_EQ(out, "VyString::arg: argument missing.\n");
}
