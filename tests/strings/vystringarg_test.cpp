// Place markers: arg against the marker rules (lowest number first, `L` grouping, fill and
// width), the missing-marker messages, and multiArg's binding of distinct markers.
#include "vylocale.h"
#include "vystring.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <string>
#include <vector>

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

TEST(VyStringArg, ScanFindsTheLowestMarkerAndItsLength)
{
    const ArgEscapeData d = findArgEscapes(VyString("%2 %1 %L1 %01 %L %%1 100%"));
    EXPECT_EQ((std::vector<int>{d.minEscape, d.occurrences, d.localeOccurrences, d.escapeLength}),
              (std::vector<int>{1, 4, 1, 2 + 3 + 3 + 2}));
    EXPECT_EQ(findArgEscapes(VyString("no markers %")).minEscape, INT_MAX);
}

TEST(VyStringArg, MarkersFillLowestFirst)
{
    EXPECT_EQ(U8(VyString("%1 and %2").arg("x")), "x and %2");
    EXPECT_EQ(U8(VyString("%1 and %2").arg("x").arg("y")), "x and y");
    EXPECT_EQ(U8(VyString("%3-%3").arg("x")), "x-x");
    EXPECT_EQ(U8(VyString("%10 %2").arg("a").arg("b")), "b a");
    EXPECT_EQ(U8(VyString("%05|%123").arg("a").arg("b")), "a|b3"); // two digits at most
    EXPECT_EQ(U8(VyString("%L%1 %%1").arg("v")), "%Lv %v");
    EXPECT_EQ(U8(VyString("%\u0661 %\u0662").arg("a")), "a %\u0662"); // any script's digit
    EXPECT_EQ(U8(VyString("%1 ab %").arg("x")), "x ab %");            // markers cut off at the end
    EXPECT_EQ(U8(VyString("%1 ab %L").arg("x")), "x ab %L");
    EXPECT_EQ(U8(VyString("%1").arg(VyString("ab"), 4, '*')), "**ab");
    EXPECT_EQ(U8(VyString("%1").arg(VyString("ab"), -4, '*')), "ab**");
    EXPECT_EQ(U8(VyString("[%1]").arg(VyString("abcdef"), 3, '*')), "[abcdef]");
    EXPECT_EQ(U8(VyString("%1").arg('\xE9')), "\u00E9");

    // 99 markers: each arg fills the next one.
    VyString t;
    std::string expected;
    for (int i = 1; i <= 99; ++i)
        t.append(VyString("%")).append(VyString::number(i));
    for (int i = 1; i <= 99; ++i) {
        t = t.arg(i * 2);
        expected += std::to_string(i * 2);
    }
    EXPECT_EQ(U8(t), expected);
}

TEST(VyStringArg, NumbersWithLocaleMarkersAndZeroFill)
{
    EXPECT_EQ(U8(VyString("%L1 %1").arg(1234567)), "1,234,567 1234567");
    EXPECT_EQ(U8(VyString("%L1").arg(1234567.5, 0, 'f', 1)), "1,234,567.5");
    EXPECT_EQ(U8(VyString("%1").arg(-42, 5, 10, '0')), "-0042");
    EXPECT_EQ(U8(VyString("%1").arg(42, -5, 10, '0')), "42000");
    EXPECT_EQ(U8(VyString("%1|%L1").arg(255u, 6, 16, '.')), "....ff|....ff");
    EXPECT_EQ(U8(VyString("%1").arg(-1, 0, 16)), "ffffffffffffffff");
    EXPECT_EQ(U8(VyString("%1").arg(2.5e-7, 0, 'E', 2)), "2.50E-07");
    EXPECT_EQ(U8(VyString("%1").arg(0.1)), "0.1");
    {
        const unsigned short saved = VyLocale::mNumberOptions;
        VyLocale::mNumberOptions = 1;
        EXPECT_EQ(U8(VyString("%L1").arg(1234567)), "1234567");
        VyLocale::mNumberOptions = saved;
    }
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
    EXPECT_EQ(U8(VyString("%1%2%3").multiArg(3, args)), "ABC");
    EXPECT_EQ(U8(VyString("%\u0661 %1").multiArg(1, args)), "%\u0661 A"); // ASCII digits only
    std::string out = stdoutOf([&] { EXPECT_EQ(U8(VyString("%7-%7").multiArg(3, args)), "A-A"); });
    EXPECT_EQ(out, "VyString::arg: argument missing.\n");
}
