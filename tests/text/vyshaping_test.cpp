// Arabic shaping and right-to-left reordering: cases of input units and the units expected in
// visual order (worked out by hand from the form tables and the run rules), the kept oddities,
// the allocation failure, and a randomized check of the run reversal against a plain model.
#include "vyshaping.h"

#include "../../src/text/vyshapingprivate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace
{

using Units = std::vector<unsigned short>;

struct Case {
    const char* what;
    Units in;
    Units out;
};

Units shaped(Units u)
{
    arabicRulesConvert(u.data(), int(u.size()));
    return u;
}

Units reversedHebrew(Units u)
{
    reversalHebrew(u.data(), int(u.size()));
    return u;
}

const Case kArabicCases[] = {
    {"beh initial, medial, final", {0x0628, 0x0628, 0x0628}, {0xFE90, 0xFE92, 0xFE91}},
    {"jeh joins forward", {0x0698, 0x0628}, {0xFE90, 0xFB8A}},
    // The four lam-alef pairs: the ligature's final form after a letter that joins forward.
    {"lam alef madda isolated", {0x0644, 0x0622}, {0xFE82, 0xFEF5}},
    {"lam alef hamza above final", {0x0628, 0x0644, 0x0623}, {0xFE84, 0xFEF8, 0xFE91}},
    {"lam alef hamza below, medial alef", {0x0644, 0x0625, 0x0628}, {0xFE8F, 0xFE88, 0xFEF9}},
    {"lam alef final after meem", {0x0645, 0x0644, 0x0627}, {0xFE8E, 0xFEFC, 0xFEE3}},
    {"lam before waw with hamza is a plain lam", {0x0644, 0x0624}, {0xFE86, 0xFEDF}},
    // Combining marks pass through and break joining, the lam-alef pair included.
    {"fatha between behs", {0x0628, 0x064E, 0x0628}, {0xFE8F, 0x064E, 0xFE8F}},
    {"fatha between lam and alef", {0x0644, 0x064E, 0x0627}, {0xFE8D, 0x064E, 0xFEDD}},
    // Presentation forms are Arabic: reordered, not reshaped, and joined by nothing.
    {"shaped text", {0xFE91, 0xFE92, 0xFE90}, {0xFE90, 0xFE92, 0xFE91}},
    {"beh before a shaped alef", {0x0628, 0xFE8E}, {0xFE8E, 0xFE8F}},
    // Digits and spaces.
    {"A B 12 C",
     {0x0628, 0x0628, ' ', '1', '2', ' ', 0x0628},
     {0xFE8F, ' ', '1', '2', ' ', 0xFE90, 0xFE91}},
    {"A B x", {0x0628, 0x0628, ' ', 'x'}, {0xFE90, 0xFE91, ' ', 'x'}},
    {"digits before a run stay outside it", {'1', ' ', 0x0628}, {'1', ' ', 0xFE8F}},
    {"two digit groups, two spaces given back",
     {0x0628, '1', ' ', '2', '3', ' ', ' ', 'x'},
     {'2', '3', ' ', '1', 0xFE8F, ' ', ' ', 'x'}},
    {"two runs", {0x0628, 'a', 0x0628, 0x0628}, {0xFE8F, 'a', 0xFE90, 0xFE91}},
    {"Hebrew is not Arabic", {0x05D0, 0x05D1}, {0x05D0, 0x05D1}},
};

const Case kHebrewCases[] = {
    {"letters", {0x05D0, 0x05D1, 0x05D2}, {0x05D2, 0x05D1, 0x05D0}},
    {"123 inside",
     {0x05D0, ' ', '1', '2', '3', ' ', 0x05D1},
     {0x05D1, ' ', '1', '2', '3', ' ', 0x05D0}},
    {"run with a number between Latin words",
     {'a', 'b', ' ', 0x05D0, 0x05D1, ' ', '1', '0', ' ', 'c'},
     {'a', 'b', ' ', '1', '0', ' ', 0x05D1, 0x05D0, ' ', 'c'}},
    {"points belong to the script", {0x05D1, 0x05BC, 0x05D0}, {0x05D0, 0x05BC, 0x05D1}},
    {"Arabic is not Hebrew", {0x0628, 0x0628}, {0x0628, 0x0628}},
};

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

// A letter's forms as the shaped text shows them (alone, after beh, before beh, between
// behs), then the form of a beh after it and of a beh before it, which tell whether it joins
// forward and backward.
Units formsOf(unsigned short c)
{
    const Units before = shaped({c, 0x0628}), after = shaped({0x0628, c});
    return {shaped({c})[0], after[0], before[1], shaped({0x0628, c, 0x0628})[1],
            before[0],      after[1]};
}

// Unicode lays the presentation forms out letter after letter: isolated, final, then initial
// and medial for a letter that has them. A letter with two forms shows its isolated form
// where an initial one would stand and its final form for a medial one. Then the beh forms
// formsOf ends with.
Units expectedForms(int base, int count, bool joinsForward, bool joinsBackward = true)
{
    static const int offsets[3][4] = {{0, 0, 0, 0}, {0, 1, 0, 1}, {0, 1, 2, 3}};
    Units forms;
    for (int offset : offsets[count / 2])
        forms.push_back(static_cast<unsigned short>(base + offset));
    forms.push_back(joinsForward ? 0xFE90 : 0xFE8F);
    forms.push_back(joinsBackward ? 0xFE91 : 0xFE8F);
    return forms;
}

void* failingAllocate(size_t)
{
    return nullptr;
}

} // namespace

TEST(VyShaping, ArabicCases)
{
    for (const Case& c : kArabicCases)
        EXPECT_EQ(shaped(c.in), c.out) << c.what;
}

TEST(VyShaping, EveryLetterTakesItsFormsFromThePresentationBlocks)
{
    auto joinsForward = [](unsigned short c) {
        return c == 0x0626 || c == 0x0628 || (c >= 0x062A && c <= 0x062E) ||
               (c >= 0x0633 && c <= 0x063A) || (c >= 0x0641 && c <= 0x0647) || c == 0x064A;
    };
    int base = 0xFE80;
    for (unsigned short c = 0x0621; c <= 0x064A; ++c) {
        if (c >= 0x063B && c <= 0x0640) { // no forms, no joining
            EXPECT_EQ(formsOf(c), (Units{c, c, c, c, 0xFE8F, 0xFE8F})) << std::hex << c;
            continue;
        }
        const int count = c == 0x0621 ? 1 : joinsForward(c) ? 4 : 2;
        Units expected = expectedForms(base, count, joinsForward(c), c != 0x0621);
        if (c == 0x0629)
            expected[3] = expected[0]; // teh marbuta: see the _Kept test
        EXPECT_EQ(formsOf(c), expected) << std::hex << c;
        base += count;
    }
    EXPECT_EQ(base, 0xFEF5); // where the lam-alef ligatures start
    // All six join both ways; jeh has two forms only.
    const struct {
        unsigned short letter, base;
        int count;
    } extended[] = {{0x067E, 0xFB56, 4}, {0x0686, 0xFB7A, 4}, {0x0698, 0xFB8A, 2},
                    {0x06A9, 0xFB8E, 4}, {0x06AF, 0xFB92, 4}, {0x06CC, 0xFBFC, 4}};
    for (const auto& e : extended)
        EXPECT_EQ(formsOf(e.letter), expectedForms(e.base, e.count, true)) << std::hex << e.letter;
}

TEST(VyShaping, HebrewCases)
{
    for (const Case& c : kHebrewCases)
        EXPECT_EQ(reversedHebrew(c.in), c.out) << c.what;
}

TEST(VyShaping, TehMarbutaTakesItsIsolatedFormBeforeAJoiningLetter_Kept)
{
    EXPECT_EQ(shaped({0x0629, 0x0628}), (Units{0xFE8F, 0xFE93}));
    EXPECT_EQ(shaped({0x0628, 0x0629, 0x0628}), (Units{0xFE8F, 0xFE93, 0xFE91}));
    EXPECT_EQ(shaped({0x0628, 0x0629}), (Units{0xFE94, 0xFE91})); // its own final form
}

TEST(VyShaping, LamAlefKeepsTheAlefInItsOwnUnit_Kept)
{
    EXPECT_EQ(shaped({0x0644, 0x0627}), (Units{0xFE8E, 0xFEFB}));
    EXPECT_EQ(shaped({0x0644, 0x0627, 0x0628}), (Units{0xFE8F, 0xFE8E, 0xFEFB}));
}

TEST(VyShaping, TrailingSpacesAtTheEndOfTheTextGoInFrontOfTheRun_Kept)
{
    EXPECT_EQ(shaped({0x0628, 0x0628, ' ', ' '}), (Units{' ', ' ', 0xFE90, 0xFE91}));
    EXPECT_EQ(reversedHebrew({0x05D0, 0x05D1, ' '}), (Units{' ', 0x05D1, 0x05D0}));
    EXPECT_EQ(reversedHebrew({0x05D0, 0x05D1, ' ', 'x'}), (Units{0x05D1, 0x05D0, ' ', 'x'}));
}

TEST(VyShaping, ConvertRule3AnswersForTheSixExtendedLettersOnly)
{
    EXPECT_EQ(convertRule3(0x0628, 0x0686, 0x0628), 0xFB7D);
    EXPECT_EQ(convertRule3(0x0628, 0x0628, 0x0628), -1);
    EXPECT_EQ(convertRule3(0, 0xFB56, 0), -1);
    EXPECT_EQ(convertRule3(0, 0x067F, 0), -1);
}

TEST(VyShaping, EmptyRangesAndNullChangeNothing)
{
    unsigned short s[] = {0x0628, 0x05D0};
    EXPECT_FALSE(isIncludeArbic(s, 0));
    EXPECT_FALSE(isIncludeHebrew(s + 1, -1));
    EXPECT_FALSE(isIncludeHebrew(nullptr, 4));
    testing::internal::CaptureStdout();
    arabicRulesConvert(nullptr, 3);
    reversalHebrew(nullptr, 3);
    for (int n : {0, -1, -100}) {
        arabicRulesConvert(s, n);
        reversalHebrew(s + 1, n);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(s[0], 0x0628);
    EXPECT_EQ(s[1], 0x05D0);
}

TEST(VyShaping, FailedWorkCopyPrintsAndLeavesTheText)
{
    Units arabic = {0x0628, 0x0628}, hebrew = {0x05D0, 0x05D1};
    vyShapingAllocate = failingAllocate;
    testing::internal::CaptureStdout();
    arabicRulesConvert(arabic.data(), 2);
    reversalHebrew(hebrew.data(), 2);
    const std::string printed = testing::internal::GetCapturedStdout();
    vyShapingAllocate = malloc;
    EXPECT_EQ(printed, "Malloc unicode failed.\nMalloc unicode failed.\n");
    EXPECT_EQ(arabic, (Units{0x0628, 0x0628}));
    EXPECT_EQ(hebrew, (Units{0x05D0, 0x05D1}));
}

// Units of both classes that shaping leaves as they are, units of neither (the classes' edges
// among them), spaces and digits.
TEST(VyShaping, ClassTestsAndRunReversalMatchTheModel)
{
    const unsigned short alphabet[] = {
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
    std::uniform_int_distribution<int> length(0, 80);
    for (int round = 0; round < 3000; ++round) {
        std::u16string text(size_t(length(rng)), u' ');
        for (char16_t& c : text)
            c = alphabet[round % 2 ? classed + pick(rng) % (std::size(alphabet) - classed)
                                   : pick(rng)];
        if (round % 4 == 1 && !text.empty())
            text[rng() % text.size()] = alphabet[pick(rng) % classed];
        const Units in(text.begin(), text.end());
        ASSERT_EQ(isIncludeHebrew(in.data(), int(in.size())),
                  std::any_of(in.begin(), in.end(), hebrew));
        ASSERT_EQ(isIncludeArbic(in.data(), int(in.size())),
                  std::any_of(in.begin(), in.end(), arabic));
        const std::u16string h = model(text, hebrew), a = model(text, arabic);
        ASSERT_EQ(reversedHebrew(in), Units(h.begin(), h.end())) << round;
        ASSERT_EQ(shaped(in), Units(a.begin(), a.end())) << round;
    }
}
