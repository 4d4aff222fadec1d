// The fixture of the tests that need the font cache: unifont open, no limit, everything
// dropped at the end. The layout tests give every unit they lay out a synthetic record with
// chosen metrics first; unifont is only their safety net.
#ifndef LAYOUTFIXTURE_H
#define LAYOUTFIXTURE_H

#include "syntheticglyphs.h"
#include "textfonts.h"
#include "vyfontmetrics.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <string>

const VyFont kPlain(40, false, false, false, false);
const VyFont kBold(40, true, false, false, false);

// Units of the tests, named.
const char16_t kIdeo1 = 0x4E2D, kIdeo2 = 0x6587, kKatakana = 0x30A2, kHangul = 0xAC00;
const char16_t kThaiKo = 0x0E01, kSaraI = 0x0E34, kSaraU = 0x0E38, kMaiEk = 0x0E48;
const char16_t kAlef = 0x05D0, kBet = 0x05D1;

class LayoutTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        VyFontCache::instance()->setFontFile(VyString(UNIFONT));
        VyFontCache::instance()->limit = -1;
    }
    void TearDown() override { VyFontCache::instance()->closeFontFile(); }

    // Gives every unit of `units` the advance `advance` in the plain and the bold font, with
    // a bitmap `width` pixels wide.
    static void advances(const std::u16string& units, int advance, int width = 2)
    {
        for (char16_t c : units) {
            vyPutGlyph(c, kPlain, advance, width);
            vyPutGlyph(c, kBold, advance, width);
        }
    }
};

#endif
