// Place markers (arg, multiArg) against the marker rules, number and the to... readers in a
// randomized round trip over every width, sprintf against C's snprintf, and bad input.
#include "vylocale.h"
#include "vystring.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

std::string U8(const VyString& s)
{
    return std::string(s.toUtf8().constData());
}

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

template <typename F> std::string stdoutOf(F f)
{
    testing::internal::CaptureStdout();
    f();
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

// number(v, base) read back by `read`; signed values outside base 10 only when non-negative,
// since those bases write the unsigned 64-bit pattern.
template <typename T> void roundTrip(std::mt19937_64& rng, T (VyString::*read)(bool*, int) const)
{
    const T edges[] = {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), T(0), T(1),
                       T(std::numeric_limits<T>::max() / 3)};
    for (int base : {2, 8, 10, 16, 36}) {
        for (int round = 0; round < 300; ++round) {
            T v = round < 5 ? edges[round] : T(rng() >> (rng() % 64));
            if constexpr (std::is_signed<T>::value) {
                if (round % 2 && v != std::numeric_limits<T>::min())
                    v = T(-v);
                if (base != 10 && v < 0)
                    v = T(-(v + 1));
            }
            bool ok = false;
            const VyString text = VyString::number(v, base);
            ASSERT_EQ((text.*read)(&ok, base), v) << U8(text) << " base " << base;
            ASSERT_TRUE(ok);
        }
    }
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

TEST(VyStringNumber, EveryWidthReadsBackInFiveBases)
{
    std::mt19937_64 rng(11);
    roundTrip(rng, &VyString::toShort);
    roundTrip(rng, &VyString::toUShort);
    roundTrip(rng, &VyString::toInt);
    roundTrip(rng, &VyString::toUInt);
    roundTrip(rng, &VyString::toLong);
    roundTrip(rng, &VyString::toULong);
    roundTrip(rng, &VyString::toLongLong);
    roundTrip(rng, &VyString::toULongLong);
    // Outside base 10 a negative value is its unsigned 64-bit pattern.
    EXPECT_EQ(VyString::number(-5, 16).toULongLong(nullptr, 16), 0ULL - 5);
    EXPECT_EQ(U8(VyString::number(255u, 99)), "255");
}

TEST(VyStringNumber, DoublesWithSeventeenDigitsReadBackExactly)
{
    std::mt19937_64 rng(13);
    for (int round = 0; round < 20000; ++round) {
        double v;
        const uint64_t bits = rng();
        memcpy(&v, &bits, sizeof v);
        if (std::isnan(v))
            continue;
        bool ok = false;
        const VyString text = VyString::number(v, 'g', 17);
        const double back = text.toDouble(&ok);
        ASSERT_TRUE(ok) << U8(text);
        ASSERT_EQ(memcmp(&back, &v, sizeof v), 0) << U8(text);
    }
    EXPECT_EQ(U8(VyString::number(1e100, 'G')), "1E+100");
    EXPECT_EQ(U8(VyString().setNum(2.0f, 'f', 1)), "2.0");
    EXPECT_EQ(U8(VyString::number(0.5, 'x')), "0.5"); // unknown letters are g
}

TEST(VyStringNumber, ReadersRefuseBadTextAndOutOfRange)
{
    bool ok = true;
    const auto read = [&ok](long long v, bool good) { return ok == good ? v : -999; };
    EXPECT_EQ(read(VyString("32768").toShort(&ok), false), 0);
    EXPECT_EQ(read(VyString("-32768").toShort(&ok), true), SHRT_MIN);
    EXPECT_EQ(read(VyString("-1").toUInt(&ok), false), 0);
    EXPECT_EQ(read(VyString("4294967296").toUInt(&ok), false), 0);
    EXPECT_EQ(read(VyString(" 0x1f ").toInt(&ok, 0), true), 31);
    for (const char* bad : {"", "  ", "42x", "4 2", "1,000", "--1", "0x", "1e5", "\xEF\xBC\x91"}) {
        EXPECT_EQ(read(VyString(bad).toLongLong(&ok), false), 0) << bad;
    }
    EXPECT_EQ(VyString("1e5").toDouble(&ok), 1e5);
    EXPECT_EQ(VyString(" -INF ").toDouble(&ok), -HUGE_VAL);
    EXPECT_TRUE(ok);
    EXPECT_EQ(read(static_cast<long long>(VyString("1e309").toDouble(&ok)), false), 0);
    EXPECT_EQ(VyString("3.4028234663852886e38").toFloat(&ok), std::numeric_limits<float>::max());
    EXPECT_TRUE(ok);
    EXPECT_EQ(read(static_cast<long long>(VyString("3.4028235e38").toFloat(&ok)), false), 0);
    EXPECT_EQ(read(static_cast<long long>(VyString("nan").toFloat(&ok)), false), 0);
    EXPECT_EQ(VyString("12").toInt(nullptr), 12);
}

TEST(VyStringSprintf, ConversionsAgreeWithC)
{
    std::mt19937_64 rng(21);
    for (int round = 0; round < 20000; ++round) {
        std::string f = "%";
        for (char flag : std::string("#0- +"))
            if (rng() % 3 == 0)
                f += flag;
        if (rng() % 2)
            f += std::to_string(rng() % 25);
        if (rng() % 2)
            f += "." + std::to_string(rng() % 20);
        char expected[512];
        VyString s;
        if (round % 2) {
            f += "eEfFgGaA"[rng() % 8];
            double v = std::ldexp(double(int64_t(rng() % 2000001) - 1000000), int(rng() % 80) - 40);
            snprintf(expected, sizeof expected, f.c_str(), v);
            s.sprintf(f.c_str(), v);
        } else {
            if (rng() % 2)
                f += "hh";
            f += "diouxX"[rng() % 6];
            const int v = int(rng() % 3 ? rng() % 1000 : rng());
            snprintf(expected, sizeof expected, f.c_str(), v);
            s.sprintf(f.c_str(), v);
        }
        ASSERT_EQ(U8(s), expected) << f;
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
