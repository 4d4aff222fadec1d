// VyBitmap: pixel decoding. The stream stands just behind the 54 header bytes; what follows is
// the colour table or the bit-field masks, extra data up to bfOffBits, then the rows.
//
// Every count here comes from the file, so sizes are computed in 64 bits and checked before
// they index anything: the colour table is read for at most its 2^depth entries, extra data is
// skipped in fixed chunks, and rows are written only inside width × height × 4 bytes.
#include "vybitmap.h"

#include <new>
#include <stdint.h>
#include <string.h>

namespace
{

constexpr long long kHeaderBytes = 54;
constexpr size_t kChunkBytes = 4096;

const RGBApixel kWhite = {255, 255, 255, 255};

bool hasColorTable(int depth)
{
    return depth == 1 || depth == 4 || depth == 8;
}

// Right shifts that bring a 16-bit mask down to at most 31.
int maskShift(uint32_t mask)
{
    int shift = 0;
    while (mask > 31) {
        mask >>= 1;
        ++shift;
    }
    return shift;
}

// Stores one output pixel: bytes blue, green, red, alpha. One 32-bit store on little-endian
// hosts, where the compiler cannot merge the byte stores itself (they may alias the input).
inline void storePixel(unsigned char* out, uint32_t blue, uint32_t green, uint32_t red,
                       uint32_t alpha)
{
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    const uint32_t v = (blue & 0xFF) | (green & 0xFF) << 8 | (red & 0xFF) << 16 | alpha << 24;
    memcpy(out, &v, 4);
#else
    out[0] = uint8_t(blue);
    out[1] = uint8_t(green);
    out[2] = uint8_t(red);
    out[3] = uint8_t(alpha);
#endif
}

// Writes `width` pixels of `Bits`-bit indices from `row` as opaque table colours.
template <int Bits>
void expandIndexed(const unsigned char* row, int width, const RGBApixel* table, unsigned char* out)
{
    constexpr int kPerByte = 8 / Bits;
    constexpr unsigned kMask = (1u << Bits) - 1;
    for (int x = 0; x < width; ++row) {
        const unsigned byte = *row;
        for (int i = 0; i < kPerByte && x < width; ++i, ++x, out += 4) {
            memcpy(out, &table[(byte >> (8 - Bits * (i + 1))) & kMask], 4);
            out[3] = 255;
        }
    }
}

} // namespace

bool VyBitmap::hasWholeRowBytes(int w, int depth)
{
    return (static_cast<long long>(w) * depth) % 8 == 0;
}

void VyBitmap::decode(unsigned char* buffer)
{
    if (!buffer)
        return;
    pixels = buffer;
    // Only an accepted header leaves a stream and a positive size behind. A size whose bytes
    // exceed the address space (possible on 32-bit hosts) cannot match any caller's buffer.
    if (!stream || width < 1 || height < 1)
        return;
    if (static_cast<unsigned long long>(width) * static_cast<unsigned long long>(height) >
        SIZE_MAX / 4)
        return;
    if (bitDepth == 16) {
        decode16();
        return;
    }
    if (!hasColorTable(bitDepth) && bitDepth != 24 && bitDepth != 32)
        return;

    long long extra = static_cast<long long>(bmfh.bfOffBits) - kHeaderBytes;
    if (hasColorTable(bitDepth)) {
        readPalette();
        extra -= 4LL << bitDepth;
    }
    if (extra > 0) {
        puts("Warning: Extra meta data detected in file Data will be skipped.");
        skipBytes(extra);
    }
    decodeRows();
}

// Reads the file's colour entries into the table and pads the rest with white.
void VyBitmap::readPalette()
{
    const int entries = 1 << bitDepth;
    long long k = (static_cast<long long>(bmfh.bfOffBits) - kHeaderBytes) / 4;
    if (k > entries)
        k = entries;
    // A data offset inside the header would give a negative count; nothing is read then.
    if (k < 0)
        k = 0;
    // Kept: the warning promises entries with alpha 0 but they get alpha 255; the palette
    // readers write alpha 255 whatever the table says, so the text was never corrected.
    if (k < tellNumberOfColors())
        puts("Warning: file has an underspecified color table.The tablewill be padded with "
             "extra white (255,255,255,0) entries.");
    for (int i = 0; i < int(k); ++i)
        safeFread(reinterpret_cast<char*>(&colors[i]), 4, 1, stream);
    for (int i = int(k); i < tellNumberOfColors(); ++i)
        setColor(i, kWhite);
}

// Reads and drops `count` bytes in fixed chunks; false when the file ends first.
bool VyBitmap::skipBytes(long long count)
{
    unsigned char chunk[kChunkBytes];
    while (count > 0) {
        const size_t want =
            count < static_cast<long long>(kChunkBytes) ? size_t(count) : kChunkBytes;
        const size_t got = fread(chunk, 1, want, stream);
        count -= static_cast<long long>(got);
        if (got < want)
            return false;
    }
    return true;
}

// Depths 1, 4, 8, 24 and 32: padded rows, bottom row first, written from the last output row
// up, so the output is top-down.
void VyBitmap::decodeRows()
{
    if (!hasWholeRowBytes(width, bitDepth)) {
        // Kept: a row that is not a whole number of bytes never gets a size, and this version
        // waits here for ever (see the header). Callers screen such images with
        // hasWholeRowBytes; the volatile read keeps the loop from being optimised away.
        volatile bool rowSizeFound = false;
        while (!rowSizeFound) {
        }
    }
    long long rowBytes = static_cast<long long>(width) * bitDepth / 8;
    rowBytes = (rowBytes + 3) / 4 * 4;
    // A row the readers cannot address, or one that cannot be held, cannot be read either.
    unsigned char* row = nullptr;
    if (rowBytes <= 0x7fffffff)
        row = new (std::nothrow) unsigned char[size_t(rowBytes)];
    if (!row) {
        puts("Could not read proper amount of data.");
        return;
    }
    for (int y = height - 1; y >= 0; --y) {
        if (fread(row, 1, size_t(rowBytes), stream) < size_t(rowBytes)) {
            puts("Could not read proper amount of data.");
            break;
        }
        bool whole = false;
        switch (bitDepth) {
        case 1:
            whole = read1bitRow(row, int(rowBytes), y);
            break;
        case 4:
            whole = read4bitRow(row, int(rowBytes), y);
            break;
        case 8:
            whole = read8bitRow(row, int(rowBytes), y);
            break;
        case 24:
            whole = read24bitRow(row, int(rowBytes), y);
            break;
        default:
            whole = read32bitRow(row, int(rowBytes), y);
            break;
        }
        if (!whole) {
            puts("Could not read enough pixel data.");
            break;
        }
    }
    delete[] row;
}

// 16 bits: 5-5-5 by default, or the file's red, green and blue masks. Rows are read in file
// order into output rows 0, 1, ... (see the header for why the output stays bottom-up).
void VyBitmap::decode16()
{
    uint16_t masks[3] = {0x7C00, 0x03E0, 0x001F}; // red, green, blue
    if (bmih.biCompression != 0) {
        for (uint16_t& mask : masks) {
            char dropped[2];
            safeFread(reinterpret_cast<char*>(&mask), 2, 1, stream);
            safeFread(dropped, 2, 1, stream);
        }
    }
    long long extra = static_cast<long long>(bmfh.bfOffBits) - kHeaderBytes;
    if (bmih.biCompression == 3)
        extra -= 12;
    if (extra > 0) {
        puts("Warning: Extra meta data detected in file, Data will be skipped.");
        skipBytes(extra);
    }
    const uint32_t redMask = masks[0], greenMask = masks[1], blueMask = masks[2];
    const int redShift = maskShift(redMask);
    const int greenShift = maskShift(greenMask);
    const int blueShift = maskShift(blueMask);
    const int padding = width % 2 ? 2 : 0; // (4 - 2 × width mod 4) mod 4

    // Each row is read in bounded chunks of whole pixels. The first pixel that does not arrive
    // in full ends decoding; the pixels before it are written, the rest of the buffer is left.
    unsigned char chunk[kChunkBytes];
    constexpr int kChunkPixels = int(kChunkBytes / 2);
    for (int y = 0; y < height; ++y) {
        unsigned char* out = pixels + size_t(y) * size_t(width) * 4;
        for (int x = 0; x < width;) {
            const int want = width - x < kChunkPixels ? width - x : kChunkPixels;
            const size_t got = fread(chunk, 2, size_t(want), stream);
            for (size_t i = 0; i < got; ++i, out += 4) {
                const uint32_t v = uint32_t(chunk[2 * i]) | uint32_t(chunk[2 * i + 1]) << 8;
                storePixel(out, ((v & blueMask) >> blueShift) * 8,
                           ((v & greenMask) >> greenShift) * 8, ((v & redMask) >> redShift) * 8,
                           255);
            }
            if (got < size_t(want))
                return;
            x += want;
        }
        for (int i = 0; i < padding; ++i) {
            char dropped;
            safeFread(&dropped, 1, 1, stream);
        }
    }
}

bool VyBitmap::read32bitRow(unsigned char* row, int rowBytes, int y)
{
    if (width < 1)
        return true;
    if (static_cast<long long>(width) * 4 > rowBytes)
        return false;
    memcpy(pixels + size_t(y) * size_t(width) * 4, row, size_t(width) * 4);
    return true;
}

bool VyBitmap::read24bitRow(unsigned char* row, int rowBytes, int y)
{
    if (width < 1)
        return true;
    if (static_cast<long long>(width) * 3 > rowBytes)
        return false;
    unsigned char* out = pixels + size_t(y) * size_t(width) * 4;
    for (int x = 0; x < width; ++x, out += 4, row += 3) {
        storePixel(out, row[0], row[1], row[2], 255);
    }
    return true;
}

bool VyBitmap::read8bitRow(unsigned char* row, int rowBytes, int y)
{
    return readPaletteRow(row, rowBytes, y, 8);
}

bool VyBitmap::read4bitRow(unsigned char* row, int rowBytes, int y)
{
    return readPaletteRow(row, rowBytes, y, 4);
}

bool VyBitmap::read1bitRow(unsigned char* row, int rowBytes, int y)
{
    return readPaletteRow(row, rowBytes, y, 1);
}

// Indexed pixels, the leftmost in the most significant bits of a byte.
bool VyBitmap::readPaletteRow(unsigned char* row, int rowBytes, int y, int bits)
{
    if (width < 1)
        return true;
    if (static_cast<long long>(width) * bits > static_cast<long long>(rowBytes) * 8)
        return false;
    unsigned char* out = pixels + size_t(y) * size_t(width) * 4;
    // A table of the image's own depth holds every index this row can carry.
    if (colors && hasColorTable(bitDepth) && bits <= bitDepth) {
        if (bits == 8)
            expandIndexed<8>(row, width, colors, out);
        else if (bits == 4)
            expandIndexed<4>(row, width, colors, out);
        else
            expandIndexed<1>(row, width, colors, out);
        return true;
    }
    // Otherwise every pixel goes through getColor, which reports the missing table.
    const int perByte = 8 / bits;
    const unsigned mask = (1u << bits) - 1;
    for (int x = 0; x < width; ++x, out += 4) {
        const int shift = 8 - bits * (x % perByte + 1);
        const RGBApixel c = getColor(int((row[x / perByte] >> shift) & mask));
        out[0] = c.blue;
        out[1] = c.green;
        out[2] = c.red;
        out[3] = 255;
    }
    return true;
}
