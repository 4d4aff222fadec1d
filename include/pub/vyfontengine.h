// VyFontEngine: one string in one font turned into the glyphs that will be drawn.
//
// The engine keeps its own copy of the text, rewritten by the script rules (Hebrew runs
// reversed, Arabic shaped and reversed), and one glyph per UTF-16 unit fetched from the font
// cache. It holds one reference (refCount) on every glyph it keeps and gives them all back
// when it dies; the pointers belong to the cache and stay valid while the engine lives and the
// font file is not changed. An engine must not outlive setFontFile or closeFontFile.
//
// Threads: an engine belongs to one thread. Fetching glyphs goes through the cache's lock; the
// destructor's releases are atomic and take no lock.
#ifndef VYFONTENGINE_H
#define VYFONTENGINE_H

#include "vyglobal.h"

#include "vyfont.h"
#include "vyfontcache.h"
#include "vystring.h"
#include "vyvector.h"

class VY_EXPORT VyFontEngine
{
public:
    // Takes the cache singleton and purges it (unheld pixels only) when a limit is set and the
    // accounted pixel memory has reached it.
    VyFontEngine();
    // Gives back one reference per kept glyph.
    ~VyFontEngine();
    VyFontEngine(const VyFontEngine&) = delete;
    VyFontEngine& operator=(const VyFontEngine&) = delete;

    // lanuguageRules(s) then fillGlypBitMapInfo(font); returns a shared copy of `glyphs`.
    // A second call appends its glyphs behind the first ones.
    VyVector<GlyphBitmap const*> resloveText(const VyString& s, const VyFont& font);
    // Appends s to the engine's own text (never shared with s, so s never changes) and
    // rewrites it in place: reversed when it holds Hebrew, else shaped when it holds Arabic.
    // `length` becomes the size of s.
    void lanuguageRules(const VyString& s);
    // Fetches (and holds) the glyphs of the first `length` units of `text`, appending them to
    // `glyphs`, and sets `height` to (tallest top + deepest descent) * 1.36, truncated.
    // Asserts "i < size()" when `length` exceeds the text.
    void fillGlypBitMapInfo(const VyFont& font);
    // Thai stacking test over units 0 to 2 of s; only ever sets the three ints, to 1 or 2 (the
    // caller clears them first). tone 1: a tone mark on the consonant; tone 2: a mark stacked
    // above a vowel; upper/lower: a vowel above/below. s must hold three readable units.
    static void displayThaiFont(const unsigned short* s, int* tone, int* upper, int* lower);

    // Set when the text held Hebrew or Arabic and was rewritten.
    bool rtl;
    // Units of the last string given to lanuguageRules.
    int length;
    // Line height in pixels.
    int height;
    VyString text;
    VyFontCache* cache;
    // One held glyph per unit, in text order.
    VyVector<GlyphBitmap const*> glyphs;
};

#endif
