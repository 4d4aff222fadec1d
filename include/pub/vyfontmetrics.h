// VyFontMetrics: one piece of text in one font, measured, divided into lines and placed.
//
// The object owns a VyFontEngine that applies the script rules and holds one glyph per UTF-16
// unit. Measuring (calcTextLength and its accessors) works out the width and unit count of
// every character cell: a single unit, or a Thai consonant with the marks stacked on it.
// Line division (divideText) breaks the text at newlines and, with word wrap, before a word or
// an ideograph that would pass `maxWidth`; it fills four parallel results: the text, the
// glyphs, the rectangle and one unaligned paint record per line. paintInfoList places the
// records inside `textRect` by the alignment flags.
//
// Character classes (single units, no surrogate handling): ideographic units are U+30A0 to
// U+30FF, U+4E00 to U+9FCF and U+AC00 to U+D7AF, each one a break opportunity of its own;
// Thai units are U+0E00 to U+0E7F; only U+0020 is a space and only U+000A a newline.
//
// Threads: an object belongs to one thread. The glyph pointers it hands out belong to the font
// cache and stay valid while the object lives.
#ifndef VYFONTMETRICS_H
#define VYFONTMETRICS_H

#include "vyglobal.h"

#include "vyfont.h"
#include "vyfontengine.h"
#include "vylist.h"
#include "vyrect.h"
#include "vysize.h"
#include "vystring.h"
#include "vystringlist.h"
#include "vyvector.h"

// One line to paint: its box and its glyphs in drawing order, left to right.
struct VY_EXPORT PaintInfo {
    // As built by division (0, y, width - 1, y + pitch - 1). paintInfoList sets x1 and x2
    // inside `textRect` and moves y2; y1 keeps the line's relative top.
    VyRect rect;
    VyVector<GlyphBitmap const*> glyphs;
};

// Carried by every VyFontMetrics for the framework above; the library neither writes nor reads
// it.
struct VY_EXPORT DrawPositionInfo {
    int x = 0;
    int y = 0;
    VyVector<int> widths;
    VyList<VyRect> rects;
};

class VY_EXPORT VyFontMetrics
{
public:
    // Alignment flags: bits 0-2 are the horizontal group, bits 4-6 the vertical group. Within
    // a group only the exact values right, hCenter, bottom and vCenter select those placements;
    // any other non-zero combination acts as left, respectively top.
    enum Alignment {
        AlignLeft = 0x01,
        AlignRight = 0x02,
        AlignHCenter = 0x04,
        AlignTop = 0x10,
        AlignBottom = 0x20,
        AlignVCenter = 0x40,
        AlignHorizontalMask = 0x07,
        AlignVerticalMask = 0x70
    };

    // Resolves the glyphs of `text` in `font` through a new engine (which may purge the font
    // cache when it is over its limit). Nothing is measured or divided yet.
    VyFontMetrics(const VyString& text, const VyFont& font, int lineSpacing, int letterSpacing);
    // Deletes the engine first, which gives its glyph holds back.
    virtual ~VyFontMetrics();
    VyFontMetrics(const VyFontMetrics&) = delete;
    VyFontMetrics& operator=(const VyFontMetrics&) = delete;

    void setWorpWrap(bool on);
    // Only the flags change: alignment is applied afresh by every paintInfoList call.
    void setAlignment(int flags);
    // With w >= 1 the box becomes (x, y, x + w - 1, y + h - 1) and w the wrap width. With
    // w < 1 the wrap width becomes 0x7fffffff and the box stays. h is not checked.
    void setTextMinRect(int x, int y, int w, int h);
    bool isRightToLeft() const;

    // The line height of the engine.
    int textPixelSize();
    // The line height of `text` in `font`, through a temporary engine.
    static int textPixelSize(VyString text, VyFont font);
    // A shared copy of the engine's glyphs (visual order for right-to-left text).
    VyVector<GlyphBitmap const*> glyphBitmap() const;

    // Measures every cell, appending to the two vectors and adding to `pixelLength`; returns
    // `pixelLength`. Nothing is reset first (see the source). The marks of a Thai cell are
    // looked up at offsets from a running index, which can name the glyph after the cell; an
    // index past the last glyph adds nothing. A text ending in a consonant, a vowel above and
    // a tone (U+0E17 U+0E35 U+0E48, say) thus ends in one cell of 3 units as wide as the wider
    // of the consonant and the vowel.
    int calcTextLength();
    // `pixelLength`, measured first when it is -1 (for the empty text: -1 every time).
    int lengthForPixel();
    // Units per cell and pixels per cell, measured first when empty.
    VyVector<int> charCombinationNum();
    VyVector<int> characterWidth();
    // Width of the word that starts (rtl false) or ends (rtl true) the n units at s, every unit
    // costing its advance plus `letterSpacing`. `glyphs` points at n `const GlyphBitmap*`
    // aligned with s. No bounds are checked: the caller guarantees n units and n glyphs.
    int nextWordSize(unsigned short* s, int n, void* glyphs, bool rtl);
    // Bytes the framework accounts for c in UTF-8. Kept: Hebrew, Arabic and the Arabic
    // presentation forms count 2, since the forms stand for the two-byte letters that shaping
    // replaced.
    int unicodeByteSize(unsigned short c);
    // The Thai stacking test of the engine; does nothing when any pointer is null.
    static void thaiFontCheck(const unsigned short* s, int* tone, int* upper, int* lower);

    // Opens the font file through the font cache and sets its memory limit (-1: none).
    static void setFontFile(const VyString& path, int limit);
    static void closeFontFile();
    // Frees the pixels of every glyph that nobody holds.
    static void clearFontCache();

    // Breaks the text into lines; -1 for the empty text (the previous results stay), else 0.
    // A Thai cell ending the text whose tone would take its width from past the last glyph
    // keeps the width it has. Dividing again rewrites the last division's results in place
    // where no copy shares them: a line allocates only when it is new or outgrows the string or
    // glyph vector it takes over. A new line costs a string (two blocks), a list node for it
    // and one for its rectangle, and a glyph vector.
    int divideText();
    // (widest line, bottom of the last line + 1); (0, 0) without lines.
    VySize sizeHint();
    VyList<VyRect>& lineRects();
    VyStringList& subText();
    // Kept: divides only while no line glyphs exist, ignoring `layoutDirty`; callers that
    // change the box or the wrap read the glyphs after lineRects, subText or paintInfoList.
    VyVector<VyVector<GlyphBitmap const*>> subGlyphBitmap();

    // The paint records placed inside `textRect` (see the source for the placement rules).
    VyVector<PaintInfo>& paintInfoList();

    VyStringList lines;
    VyVector<VyVector<GlyphBitmap const*>> lineGlyphs;
    VyVector<int> combinationNums;
    VyVector<int> characterWidths;
    VyList<VyRect> lineRectList;
    // Logical order, never reshaped or reversed.
    VyString text;
    VyFontEngine* engine;
    int pixelLength;
    int lineSpacing;
    int letterSpacing;
    int maxWidth;
    // Stored for the framework; no operation here reads it.
    int fontSize;
    bool wordWrap;
    // Bit 0 of the font's flags; widens line rectangles.
    bool boldFace;
    int alignment;
    // The x and y last given to setTextMinRect; stored for the framework, never read here.
    struct {
        int x;
        int y;
    } textOrigin;
    VyRect textRect;
    DrawPositionInfo drawPosition;
    VyVector<PaintInfo> paintList;
    bool layoutDirty;
};

#endif
