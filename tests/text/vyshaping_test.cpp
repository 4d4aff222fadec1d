// Arabic shaping: cases of input units and the units expected in visual order (worked out by
// hand from the form tables and the run rules), the kept lam-alef, the edges of the entry
// points and the allocation failure.
#include "vyshaping.h"

#include "../../src/text/vyshapingprivate.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Units = std::vector<unsigned short>;

Units shaped(Units u)
{
    arabicRulesConvert(u.data(), int(u.size()));
    return u;
}

void* failingAllocate(size_t)
{
    return nullptr;
}

} // namespace

TEST(VyShaping, ArabicCases)
{
    const struct {
        const char* what;
        Units in;
        Units out;
    } cases[] = {
        {"beh initial, medial, final", {0x0628, 0x0628, 0x0628}, {0xFE90, 0xFE92, 0xFE91}},
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
        {"beh before a shaped alef", {0x0628, 0xFE8E}, {0xFE8E, 0xFE8F}},
        {"peh, tcheh, keheh between behs",
         {0x0628, 0x067E, 0x0686, 0x06A9, 0x0628},
         {0xFE90, 0xFB91, 0xFB7D, 0xFB59, 0xFE91}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(shaped(c.in), c.out) << c.what;
}

TEST(VyShaping, LamAlefKeepsTheAlefInItsOwnUnit_Kept)
{
    EXPECT_EQ(shaped({0x0644, 0x0627}), (Units{0xFE8E, 0xFEFB}));
    EXPECT_EQ(shaped({0x0644, 0x0627, 0x0628}), (Units{0xFE8F, 0xFE8E, 0xFEFB}));
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
    arabicRulesConvert(s, -1);
    reversalHebrew(s + 1, 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(Units(s, s + 2), (Units{0x0628, 0x05D0}));
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
