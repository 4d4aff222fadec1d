// Run reversal of Hebrew and Arabic text: random texts against a plain model of the run rules,
// and the kept trailing spaces of a run that ends the text.
#include "vyshaping.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace
{

// The text after `rule` rewrote it in place.
template <void (*rule)(unsigned short*, int)> std::u16string applied(std::u16string t)
{
    rule(reinterpret_cast<unsigned short*>(&t[0]), int(t.size()));
    return t;
}

// The run rules written the plain way: cut a run into pieces (a group of digits or one unit)
// and put the pieces in reverse order.
template <typename InClass> std::u16string model(const std::u16string& t, InClass rtl)
{
    auto digit = [](char16_t c) { return c >= u'0' && c <= u'9'; };
    std::u16string out;
    size_t i = 0;
    while (i < t.size()) {
        if (!rtl(t[i])) {
            out += t[i++];
            continue;
        }
        size_t end = i;
        while (end < t.size() && (rtl(t[end]) || t[end] == u' ' || digit(t[end])))
            ++end;
        if (end < t.size())
            end = t.find_last_not_of(u' ', end - 1) + 1;
        std::vector<std::u16string> pieces;
        for (size_t k = i; k < end; ++k) {
            if (digit(t[k]) && !pieces.empty() && digit(pieces.back().back()))
                pieces.back() += t[k];
            else
                pieces.emplace_back(1, t[k]);
        }
        for (auto p = pieces.rbegin(); p != pieces.rend(); ++p)
            out += *p;
        i = end;
    }
    return out;
}

} // namespace

// Units of both classes that shaping leaves as they are (Hebrew points and letters, Arabic
// marks, digits and presentation forms), units of neither (the classes' edges among them),
// spaces and digits. The class tests of the entry points agree with the same classes.
TEST(VyRtlReversal, RandomTextsMatchTheModel)
{
    const char16_t alphabet[] = {
        0x0590, 0x05D0, 0x05FF,                                                   // Hebrew
        0x0600, 0x064B, 0x0660, 0x06FF, 0x0750, 0x077F, 0xFB50, 0xFDFF,           // Arabic
        0xFE70, 0xFEFF,                                                           //
        0x058F, 0x0700, 0x074F, 0x0780, 0xFB4F, 0xFE00, 0xFE6F, 0xFF00, 'a', '.', // neither
        ' ',    ' ',    ' ',    ' ',    '0',    '5',    '9',    '9'};
    auto hebrew = [](char16_t c) { return c >= 0x0590 && c <= 0x05FF; };
    auto arabic = [](char16_t c) {
        return (c >= 0x0600 && c <= 0x06FF) || (c >= 0x0750 && c <= 0x077F) ||
               (c >= 0xFB50 && c <= 0xFDFF) || (c >= 0xFE70 && c <= 0xFEFF);
    };
    // Odd rounds draw only units of neither class (the alphabet's first 13 have one), and one
    // in two of them then gets one classed unit anywhere: the class tests read long texts to
    // the end or find the answer late.
    const size_t classed = 13;
    std::mt19937 rng(6);
    std::uniform_int_distribution<size_t> pick(0, std::size(alphabet) - 1);
    for (int round = 0; round < 3000; ++round) {
        std::u16string text(rng() % 81, u' ');
        for (char16_t& c : text)
            c = alphabet[round % 2 ? classed + pick(rng) % (std::size(alphabet) - classed)
                                   : pick(rng)];
        if (round % 4 == 1 && !text.empty())
            text[rng() % text.size()] = alphabet[pick(rng) % classed];
        const auto* units = reinterpret_cast<const unsigned short*>(text.data());
        ASSERT_EQ(isIncludeHebrew(units, int(text.size())),
                  std::any_of(text.begin(), text.end(), hebrew));
        ASSERT_EQ(isIncludeArbic(units, int(text.size())),
                  std::any_of(text.begin(), text.end(), arabic));
        ASSERT_EQ(applied<reversalHebrew>(text), model(text, hebrew)) << round;
        ASSERT_EQ(applied<arabicRulesConvert>(text), model(text, arabic)) << round;
    }
}

TEST(VyRtlReversal, TrailingSpacesAtTheEndOfTheTextGoInFrontOfTheRun_Kept)
{
    EXPECT_EQ(applied<arabicRulesConvert>(u"\u0628\u0628  "), u"  \uFE90\uFE91");
    EXPECT_EQ(applied<reversalHebrew>(u"\u05D0\u05D1 "), u" \u05D1\u05D0");
    EXPECT_EQ(applied<reversalHebrew>(u"\u05D0\u05D1 x"), u"\u05D1\u05D0 x");
}
