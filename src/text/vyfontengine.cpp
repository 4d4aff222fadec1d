#include "vyfontengine.h"

#include "vyfontcacheprivate.h"
#include "vyshaping.h"

VyFontEngine::VyFontEngine() : rtl(false), length(0), height(0), cache(VyFontCache::instance())
{
    if (cache->limit != -1 && cache->limit <= cache->usedBytes)
        cache->cleanCache(false);
}

VyFontEngine::~VyFontEngine()
{
    const int n = glyphs.size();
    const GlyphBitmap* const* g = glyphs.constData();
    for (int i = 0; i < n; ++i)
        vyGlyphRelease(g[i]);
}

VyVector<GlyphBitmap const*> VyFontEngine::resloveText(const VyString& s, const VyFont& font)
{
    lanuguageRules(s);
    fillGlypBitMapInfo(font);
    return glyphs;
}

void VyFontEngine::lanuguageRules(const VyString& s)
{
    length = s.size();
    text.append(s);
    // The rules below rewrite the buffer in place: it must be ours alone.
    if (text.d->ref.load(std::memory_order_acquire) != 1)
        text.detach();
    unsigned short* units = text.d->data;
    if (isIncludeHebrew(units, length)) {
        rtl = true;
        reversalHebrew(units, length);
    } else if (isIncludeArbic(units, length)) {
        rtl = true;
        arabicRulesConvert(units, length);
    }
}

void VyFontEngine::fillGlypBitMapInfo(const VyFont& font)
{
    height = 0;
    if (length < 1)
        return;
    // `glyphs` is not emptied: a second call appends behind the first glyphs. The units are
    // taken from the start of the whole text, `length` of them, and fetched as one run. Asserts
    // "i < size()" when `length` exceeds the text.
    text.at(length - 1);
    const int first = glyphs.size();
    glyphs.resize(first + length);
    const GlyphBitmap** g = glyphs.data() + first;
    vyGlyphRun(text.unicode(), length, font, g);
    int top = 0;
    int descent = 0;
    for (int i = 0; i < length; ++i) {
        if (g[i]->descent > descent)
            descent = g[i]->descent;
        if (g[i]->top > top)
            top = g[i]->top;
    }
    // The tallest top plus the deepest descent, with 36 percent of leading on top, truncated
    // toward zero.
    height = int(double(descent + top) + double(descent + top) * 0.36);
}

namespace
{

// A unit of the Thai block with a non-zero low byte.
bool isThaiMark(unsigned short c)
{
    return (c >> 8) == 0x0E && (c & 0xFF) != 0;
}

} // namespace

void VyFontEngine::displayThaiFont(const unsigned short* s, int* tone, int* upper, int* lower)
{
    const unsigned short c0 = s[0];
    if (c0 < 0x0E01 || c0 > 0x0E2E || c0 == 0x0E24 || c0 == 0x0E26)
        return;
    const unsigned short c1 = s[1];
    if (!isThaiMark(c1))
        return;
    switch (c1) {
    case 0x0E31:
    case 0x0E34:
    case 0x0E35:
    case 0x0E36:
    case 0x0E37:
        *upper = 1;
        break;
    case 0x0E38:
    case 0x0E39:
        *lower = 1;
        break;
    case 0x0E3A:
        *lower = 1;
        return;
    case 0x0E47:
    case 0x0E4C:
    case 0x0E4D:
    case 0x0E4E:
        *upper = 1;
        return;
    case 0x0E48:
    case 0x0E49:
    case 0x0E4A:
    case 0x0E4B:
        *tone = 1;
        return;
    default:
        return;
    }
    const unsigned short c2 = s[2];
    if (!isThaiMark(c2))
        return;
    // Kept: the flags are read back as indexes into s. A flag just set to 1 names unit 1 (the
    // vowel being stacked on); a flag still 0 names unit 0, the consonant, which never matches.
    // The framework's Thai layout was tuned against exactly these outcomes (a maitaikhu U+0E47
    // stacks only over sara ue/ii, a thanthakhat only over sara i or sara u).
    switch (c2) {
    case 0x0E47:
        if (s[*upper] == 0x0E37 || s[*upper] == 0x0E35)
            *tone = 2;
        break;
    case 0x0E48:
    case 0x0E49:
    case 0x0E4A:
    case 0x0E4B:
        *tone = 2;
        break;
    case 0x0E4C:
    case 0x0E4D:
        if (s[*upper] == 0x0E34 || s[*lower] == 0x0E38)
            *tone = 2;
        break;
    default:
        return;
    }
}
