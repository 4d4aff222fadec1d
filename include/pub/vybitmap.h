// VyBitmap: reads an uncompressed BMP image from a file path or from an open stdio stream and
// decodes its pixels into a caller's buffer of 32-bit pixels.
//
// Accepted: depths 1, 4, 8, 16, 24 and 32 without compression, and 16-bit images with bit-field
// masks. Run-length encoded and other compressed images are rejected. An image held in memory
// is read by wrapping its bytes in a stdio stream (fmemopen) and using the FILE* constructor.
//
// Use: construct; when `width` and `height` are positive the header was accepted and the stream
// stands just behind the 54 header bytes. Allocate width × height × 4 bytes (the caller checks
// that the product fits in size_t) and call `decode` once. Output pixels are four bytes: blue,
// green, red, alpha; pixel (x, y) is at byte (y × width + x) × 4, rows without padding. Depths
// other than 16 come out top-down (output row 0 is the image's top row); 16-bit images come out
// bottom-up (see `decode`).
//
// Memory: the object owns its colour table (new[]) and, with the path constructor, its stream.
// It never owns or frees the pixel buffer. The row buffer `decode` allocates is at most one
// output row plus 3 bytes.
//
// Diagnostics are single lines on standard output; nothing throws and nothing ends the process.
// A rejected header leaves width and height 0 and no stream.
//
// Untrusted files: every header field may be hostile. Decoding reads and writes only inside the
// object's colour table and the caller's width × height × 4 bytes, skips extra data in bounded
// chunks, and stops at the first short read leaving the rest of the buffer as it was.
// Kept: a 1-bit image whose width is not a multiple of 8, or a 4-bit image of odd width, makes
// `decode` spin forever (its row size in bytes is not whole). Images the framework ships never
// have such rows, and this version's contract keeps the behaviour. A caller that reads files it
// did not make tests `hasWholeRowBytes(width, bitDepth)` before calling `decode`.
//
// Threads: an object belongs to one thread at a time; the class has no shared state.
#ifndef VYBITMAP_H
#define VYBITMAP_H

#include "vyglobal.h"

#include <stdint.h>
#include <stdio.h>

// One colour-table entry or output pixel, in memory order blue, green, red, alpha. Colour-table
// entries read from a file keep the file's bytes (blue, green, red, reserved).
struct VY_EXPORT RGBApixel {
    uint8_t blue;
    uint8_t green;
    uint8_t red;
    uint8_t alpha;
};

// The 14-byte BMP file header, field by field (the record itself is not packed).
struct VY_EXPORT BMFH {
    uint16_t bfType; // 19778 ("BM") for an accepted file
    uint32_t bfSize;
    uint16_t bfReserved1;
    uint16_t bfReserved2;
    uint32_t bfOffBits; // offset of the pixel data; gives the colour count and the extra data
};

// The 40-byte BMP info header, field by field.
struct VY_EXPORT BMIH {
    uint32_t biSize;
    int32_t biWidth;
    int32_t biHeight;
    uint16_t biPlanes;
    uint16_t biBitCount;
    uint32_t biCompression; // 0 none, 3 bit fields (16-bit only); anything else is rejected
    uint32_t biSizeImage;
    int32_t biXPelsPerMeter;
    int32_t biYPelsPerMeter;
    uint32_t biClrUsed; // not used: the colour count comes from bfOffBits
    uint32_t biClrImportant;
};

class VY_EXPORT VyBitmap
{
public:
    // Opens nothing; width, height and depth 0.
    VyBitmap();
    // Opens `path` for binary reading and reads the headers. Prints "Open <path> file failed."
    // when the file cannot be opened; on a rejected header closes the file and prints
    // "VyBitmap(): BMP header error !!!" after the header's own message.
    explicit VyBitmap(const char* path);
    // Rewinds `stream` to offset 0 and reads the headers; the stream stays the caller's and is
    // never closed. Prints "VyBitmap(): open buffer failed !!!" for a null stream; on a rejected
    // header forgets the stream and prints "VyBitmap(): BMP header error !!!".
    explicit VyBitmap(FILE* stream);
    ~VyBitmap();

    VyBitmap(const VyBitmap&) = delete;
    VyBitmap& operator=(const VyBitmap&) = delete;

    // Zeroes both header records and marks the stream as owned.
    void init();
    // Reads and checks both headers from the stream's current position: the magic "BM" first,
    // then all 52 remaining bytes, the compression, the depth, the size. Each rejection prints
    // its own line and returns false. On success sets width, height, depth, the resolutions and
    // the standard colour table. Needs a stream.
    bool readHeaderInfo();
    // Decodes the pixel data into `buffer` (width × height × 4 bytes), reading on from the end
    // of the info header. Call once, right after construction. Does nothing for a null buffer,
    // when no header was accepted, or when width × height × 4 exceeds SIZE_MAX (on 32-bit
    // hosts no buffer can hold such an image). Depths other than 16 stop at the first short row
    // with "Could not read proper amount of data."; 16-bit decoding stops silently at the first
    // pixel that is not there. Rows not reached keep what the buffer held.
    // Kept: 16-bit images come out bottom-up (file row 0 at output row 0) while every other depth
    // comes out top-down. Callers of this version flip 16-bit images themselves.
    void decode(unsigned char* buffer);

    // Stores the depth and replaces the colour table: 2^depth standard entries for 1, 4 and 8,
    // none otherwise. Returns true.
    bool setBitDepth(int depth);
    // 2^depth for depths 1 to 23; 1 below 1.
    // Kept: 24 and above (32 included) give 2^24, the colour count of a 24-bit image; callers
    // print it as "colours" for direct-colour images too.
    int tellNumberOfColors();
    // Writes the standard palette of the current depth into the table; false only when there is
    // no table (true, writing nothing, for a depth that has no standard palette).
    bool createStandardColorTable();
    // The table entry `index`, unchecked: 0 <= index < 2^depth is the caller's to ensure. Prints
    // a message and returns an all-255 pixel when the depth has no table or the table is null.
    RGBApixel getColor(int index);
    // Stores a table entry, unchecked as for getColor. False, with a message, when the depth has
    // no table or the table is null.
    bool setColor(int index, RGBApixel colour);

    // Convert one file row (`rowBytes` bytes) into output row y of the remembered pixel buffer.
    // False when the row holds fewer than width pixels; a width below 1 writes nothing and
    // returns true. The palette readers look colours up through the table and write alpha 255.
    bool read1bitRow(unsigned char* row, int rowBytes, int y);
    bool read4bitRow(unsigned char* row, int rowBytes, int y);
    bool read8bitRow(unsigned char* row, int rowBytes, int y);
    bool read24bitRow(unsigned char* row, int rowBytes, int y);
    bool read32bitRow(unsigned char* row, int rowBytes, int y);

    // fread of `count` items of `size` bytes; false when the stream was already at end of file
    // or fewer than `count` items arrived.
    bool safeFread(char* buffer, int size, int count, FILE* stream);
    // Byte-swap every field of the file or info header record in place, for big-endian hosts.
    // Decoding never calls them.
    void bmfhSwitchEndianess();
    void bmihSwitchEndianess();

    // True when a row of `width` pixels at `depth` bits is a whole number of bytes, that is when
    // `decode` terminates for the image. Always true for 8, 16, 24 and 32 bits.
    static bool hasWholeRowBytes(int width, int depth);

    // State, readable by tools and tests. Change it only through the members above.
    int32_t width;  // pixels per row; 0 until a header is accepted
    int32_t height; // rows; 0 until a header is accepted
    int32_t bitDepth;
    BMFH bmfh;
    BMIH bmih;
    FILE* stream;          // null after a failed open or a rejected header
    unsigned char* pixels; // the caller's buffer remembered by decode; never owned
    RGBApixel* colors;     // 2^depth entries for depths 1, 4 and 8, else null; owned
    int32_t xPelsPerMeter;
    int32_t yPelsPerMeter;
    bool ownsStream; // true when the path constructor opened the stream

private:
    void readPalette();
    bool skipBytes(long long count);
    void decodeRows();
    void decode16();
    bool readPaletteRow(unsigned char* row, int rowBytes, int y, int bits);
};

#endif
