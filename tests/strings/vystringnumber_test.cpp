// number and setNum read back by the to... readers in a randomized round trip over every width
// and base, and the readers refusing out-of-range values. Doubles are written against C's
// snprintf (vystringprintf_test.cpp) and read against C's strtod (vylocaleparse_test.cpp); the
// number fuzz target also reads 17 digits back bit for bit.
#include "vystring.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <type_traits>

namespace
{

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

// Bad text in every form is refused by the number fuzz target, whose seed inputs ctest replays.
TEST(VyStringNumber, ReadersRefuseOutOfRange)
{
    bool ok = true;
    const auto read = [&ok](long long v, bool good) { return ok == good ? v : -999; };
    EXPECT_EQ(read(VyString("32768").toShort(&ok), false), 0);
    EXPECT_EQ(read(VyString("-1").toUInt(&ok), false), 0);
    EXPECT_EQ(read(VyString(" 0x1f ").toInt(&ok, 0), true), 31);
    EXPECT_EQ(read(static_cast<long long>(VyString("1e309").toDouble(&ok)), false), 0);
    EXPECT_EQ(VyString("3.4028234663852886e38").toFloat(&ok), std::numeric_limits<float>::max());
    EXPECT_TRUE(ok);
    EXPECT_EQ(read(static_cast<long long>(VyString("3.4028235e38").toFloat(&ok)), false), 0);
    EXPECT_EQ(read(static_cast<long long>(VyString("nan").toFloat(&ok)), false), 0);
    EXPECT_EQ(U8(VyString().setNum(2.0f, 'F', 1)), "2.0");
    EXPECT_EQ(U8(VyString::number(0.5, 'x')), "0.5"); // unknown letters are g
}
