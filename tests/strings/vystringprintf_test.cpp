// sprintf against C's snprintf over random flags, widths and precisions, the conversions C
// and the library share, and unknown, cut-off and very long formats.
#include "vystring.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

namespace
{

// vsprintf without the compiler's format check, for formats C does not know.
VyString format(const char* f, ...)
{
    va_list ap;
    va_start(ap, f);
    VyString s;
    s.vsprintf(f, ap);
    va_end(ap);
    return s;
}

} // namespace

// Every conversion C and the library share, with random flags, widths (from `*`, a negative one
// left-justifying) and precisions; the number text comes from VyLocale's writers, so this is
// also their check against C: integers of every size in bases 8, 10 and 16, doubles from random
// bits in the three layouts.
TEST(VyStringSprintf, ConversionsAgreeWithC)
{
    std::mt19937_64 rng(21);
    for (int round = 0; round < 40000; ++round) {
        std::string f = "%";
        for (char flag : std::string("#0- +"))
            if (rng() % 3 == 0)
                f += flag;
        f += "*";
        const int width = int(rng() % 51) - 25;
        if (rng() % 2)
            f += "." + std::to_string(rng() % 20);
        const uint64_t bits = rng();
        char expected[512];
        VyString s;
        if (round % 3 == 0) {
            double v = std::ldexp(double(int64_t(rng() % 2000001) - 1000000), int(rng() % 80) - 40);
            const char letter = "eEfFgGaA"[rng() % 8];
            if (rng() % 2 && letter != 'a' && letter != 'A')
                memcpy(&v, &bits, sizeof v);
            if (std::isnan(v)) // C writes "-nan" for some
                continue;
            f += letter;
            snprintf(expected, sizeof expected, f.c_str(), width, v);
            s.sprintf(f.c_str(), width, v);
        } else if (round % 3 == 1) {
            f += std::string(rng() % 2 ? "hh" : "") + "diouxX"[rng() % 6];
            const int v = int(rng() % 3 ? rng() % 1000 : bits);
            snprintf(expected, sizeof expected, f.c_str(), width, v);
            s.sprintf(f.c_str(), width, v);
        } else {
            f += std::string("ll") + "diouxX"[rng() % 6];
            const long long v = (long long)(rng() % 2 ? bits : bits % 100000);
            snprintf(expected, sizeof expected, f.c_str(), width, v);
            s.sprintf(f.c_str(), width, v);
        }
        ASSERT_EQ(U8(s), expected) << f << " " << width;
    }
    char expected[256];
    VyString s;
    const char* text = "t\xC3\xA9xt";
    snprintf(expected, sizeof expected, "[%-*d|%*.*s|%5c|%lld|%zu|%%|%lx]", -6, 42, 7, 3, "abcdef",
             'q', LLONG_MIN, size_t(77), 0xabcdefUL);
    s.sprintf("[%-*d|%*.*s|%5c|%lld|%zu|%%|%lx]", -6, 42, 7, 3, "abcdef", 'q', LLONG_MIN,
              size_t(77), 0xabcdefUL);
    EXPECT_EQ(U8(s), expected);
    // UTF-8 in, a byte cut inside a character dropped, %c a byte, %lc a unit.
    EXPECT_EQ(U8(format("%s|%.2s|%c|%lc", text, text, 0xE9, 0x4E2D)), "t\u00E9xt|t|\u00E9|\u4E2D");
    EXPECT_EQ(U8(s.sprintf("%'d %'.2f", 1234567, 1234.5)), "1,234,567 1,234.50");
    EXPECT_EQ(U8(s.sprintf("%p %p", (void*)0x1234, (void*)nullptr)), "0x1234 0x0");
    int n = -1;
    short h = -1;
    EXPECT_EQ(U8(s.sprintf("\xC3\xA9\xC3\xA9%n-%hn", &n, &h)), "\u00E9\u00E9-");
    EXPECT_EQ(n, 2);
    EXPECT_EQ(h, 3);
}

TEST(VyStringSprintf, OddFormatsAndLongOutput)
{
    EXPECT_EQ(U8(format("a%yb%5")), "a%yb%5"); // unknown and cut-off conversions stay
    EXPECT_EQ(U8(format("100%")), "100%");
    // Megabytes of format and argument: nothing is cut.
    const std::string big(1 << 20, 'x');
    const std::string f = big + "%d" + big + "%s!";
    VyString s("old");
    s.sprintf(f.c_str(), -7, big.c_str());
    EXPECT_EQ(U8(s), big + "-7" + big + big + "!");
}
