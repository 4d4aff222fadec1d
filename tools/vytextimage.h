// vytext's image files: the painted box enlarged or inverted for viewing, and written as PNG
// (through libpng) or as BMP (through the library's own writer).
#ifndef VYTEXTIMAGE_H
#define VYTEXTIMAGE_H

#include <string>
#include <vector>

// `width` × `height` grey bytes, rows top to bottom without padding: each pixel becomes a
// `scale` × `scale` square, and with `invert` value v becomes 255 − v.
std::vector<unsigned char> enlarge(const std::vector<unsigned char>& pixels, int width, int height,
                                   int scale, bool invert);

// Write `width` × `height` grey bytes (as enlarge returns them) to `path`. False with a
// one-line reason in `error` when the file cannot be written.
//
// PNG: 8-bit greyscale, no interlacing, no time or text chunks, zlib level 9 and every row
// filter, so the same pixels give the same file with the same libpng and zlib.
bool writePng(const std::string& path, const std::vector<unsigned char>& pixels, int width,
              int height, std::string& error);
// BMP: an 8-bit file with a grey palette whose rows are padded to 4 bytes; the padding shows
// as black columns on the right.
bool writeBmp(const std::string& path, const std::vector<unsigned char>& pixels, int width,
              int height, std::string& error);

#endif
