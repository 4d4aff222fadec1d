// BmpData: writes a raw 8-bit or 24-bit image or a glyph's coverage to a BMP file and prints
// glyph coverage as text, to inspect what the rasteriser produced. A debugging aid: nothing in the
// library calls it.
//
// The class has no state. Files are written with stdio; write errors are not checked. Any
// thread may use it; two threads writing the same path race as two fopen calls would.
#ifndef VYBMPDATA_H
#define VYBMPDATA_H

#include "vyglobal.h"

struct GlyphBitmap;

// A raw image handed to the writer. Not owned: `data` stays the caller's.
struct VY_EXPORT Image {
    int width;           // pixels per row
    int height;          // rows
    int channels;        // bytes per pixel: 1 (grey) or 3 (colour); anything else writes no image
    unsigned char* data; // height rows of width × channels bytes, top row first, no padding
};

class VY_EXPORT BmpData
{
public:
    BmpData() {}

    // Writes `image` to `path` as an uncompressed BMP, rows bottom-up and padded to 4 bytes. A
    // 1-channel image becomes an 8-bit file with a grey palette (entry i = i, i, i, 0) whose
    // header width is the padded row length, so the padding shows as black columns on the
    // right; a 3-channel image becomes a 24-bit file whose pixel bytes are written in the order
    // they stand in `data`. For other channel counts the file holds only the two bytes "BM".
    // Returns fclose's result, or 0 when the file cannot be created.
    int SaveImage(const char* path, Image* image);
    // Saves a glyph's coverage as an 8-bit image of `width` × `rows` (see above). The glyph must
    // still have its pixels unless it has none.
    // Kept: rows are read `width` bytes apart, not `pitch`; a glyph whose pitch is wider shows
    // sheared. The rasteriser's 8-bit bitmaps have pitch = width, which is what this dump was
    // made for.
    int SaveImage(const char* path, GlyphBitmap* glyph);
    // Prints the glyph's coverage as text, as vyShowCoverage(rows, width, buffer) below.
    void showImageDate(GlyphBitmap* glyph);
};

// Prints a coverage bitmap of `rows` rows of `width` bytes as text: the line
// "\nrow = <rows>, col = <width> \n", then per row one character per byte (a space for 0, '1'
// for 1 to 254, '0' for 255) and a newline, also for rows of width 0. A null `buffer` prints
// the first line only.
VY_EXPORT void vyShowCoverage(int rows, int width, const unsigned char* buffer);

#endif
