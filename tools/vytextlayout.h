// What vytext shows of a laid-out text: the lines, their rectangles and the placed paint
// records, read from a VyFontMetrics; and the painter that turns the records into pixels.
#ifndef VYTEXTLAYOUT_H
#define VYTEXTLAYOUT_H

#include "vyfontmetrics.h"

#include <string>
#include <vector>

// One glyph of a record and the pen position it is drawn from.
struct PlacedGlyph {
    const GlyphBitmap* glyph;
    long long pen;
};

struct PlacedRecord {
    VyRect rect;
    int baseline;
    // The first of the record's own glyphs, the ones painted. A right-to-left record carries
    // every glyph placed since the start of the text; its own are those beyond the previous
    // record's. A left-to-right record owns all of its glyphs (0).
    size_t own;
    // Pens run from x1 at the first own glyph; the glyphs before it lie left of x1.
    std::vector<PlacedGlyph> glyphs;
};

// The glyph pointers belong to the font cache and stay valid while the VyFontMetrics the
// layout was read from lives.
struct TextLayout {
    int units = 0;
    bool rtl = false;
    int lineHeight = 0;
    int lineSpacing = 0;
    int letterSpacing = 0;
    int pitch = 0;
    // The tallest glyph top and the deepest glyph descent of the whole text.
    int ascent = 0;
    int descent = 0;
    VyRect box;
    bool wrap = false;
    // As stored after paintInfoList, which fills in an empty group.
    int alignment = 0;
    VySize sizeHint;
    std::vector<std::string> lines;
    std::vector<VyRect> lineRects;
    std::vector<PlacedRecord> records;
};

// Divides `m` and places its records (one paintInfoList call), and works out each record's
// baseline and pen positions by the painting rule of the --help text.
TextLayout readLayout(VyFontMetrics& m);

// Glyph pixels one image may take in all (overlapping glyphs count again): a few seconds of
// painting.
const long long MaxPaintedPixels = 1LL << 30;

// Paints the records onto `pixels`, `width` × `height` grey bytes (255 white) whose top left
// pixel is (x, y) in the records' coordinates: each glyph's coverage darkens the pixels it
// covers, clipped to the image. False, painting nothing, when the glyphs inside the image
// would cover more than MaxPaintedPixels pixels.
bool paintLayout(const TextLayout& layout, int x, int y, int width, int height,
                 std::vector<unsigned char>& pixels);

#endif
